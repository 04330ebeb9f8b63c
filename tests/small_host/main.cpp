// Every family of the library, used as a host on a small system uses it.
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <initializer_list>
#include <new>

#include "kfl/kfl.h"
#include "tests/small_host/host.h"

namespace {

bool same(const char* a, const char* b) { return a && b && strcmp(a, b) == 0; }

void writeFile(const char* name, const char* text) {
    FILE* const file = fopen(name, "w");
    CHECK(file != nullptr);
    if (!file) return;
    fputs(text, file);
    fclose(file);
}

bool fileHolds(const char* name, const char* text) {
    char got[256] = {};
    FILE* const file = fopen(name, "r");
    if (!file) return false;
    const size_t n = fread(got, 1, sizeof got - 1, file);
    fclose(file);
    return n == strlen(text) && memcmp(got, text, n) == 0;
}

void useStrings() {
    kfl::AString s("one");
    s.append(" two");
    CHECK(same(s.c_str(), "one two"));
    CHECK(s.find("two", 0) == 4);
    s.insert(0, ">");
    s.erase(0, 1);
    CHECK(s == kfl::AString("one two"));
    kfl::AString lines("a\nbc\n");
    kfl::AStringIterator it(lines, 20);
    CHECK(same(it.Next(), "a\n"));
    CHECK(same(it.Next(), "bc\n"));
    CHECK(it.Next() == nullptr);

    ProtectionElement handle(new kfl::AString("held"));
    const ProtectionElement other(handle);
    CHECK(handle.get()->referenceCount() == 2);
}

void useFormats() {
    char text[64];
    CHECK(BoundedStringBase::format(text, sizeof text, "%s %05d %#x %c %ld", "n", -42, 255u, 'c',
                                    -5L) == 17);
    CHECK(same(text, "n -0042 0xff c -5"));
    CHECK(same(StringFormat("%d%%", 7).getString(), "7%"));
    CHECK(same(kfl::AString(StringFormat("%s", "made")).c_str(), "made"));
}

void useStreams() {
    kfl::AString s("stream");
    kfl::AStringInputStream in(s);
    char got[8] = {};
    CHECK(in.read(got, 3) == 3 && same(got, "str"));
    kfl::AStringOutputStream out(s);
    out.writeChar('s');
    CHECK(same(s.c_str(), "streams"));
    char array[4];
    BufferOutputStream to(array);
    CHECK(to.write("abc", 3) == 3 && memcmp(array, "abc", 3) == 0);
    BufferInputStream from(array, 3);
    CHECK(from.read(got, 3) == 3 && memcmp(got, "abc", 3) == 0);

    StringsContainer list(2);
    char first[] = "first";
    list.addString(first);
    CHECK(list.getNumberOfStrings() == 1 && same(list.getString(1), "first"));
}

struct Item : kfl::SObject {
    explicit Item(int* counter) : alive(counter) { ++*alive; }
    ~Item() override { --*alive; }
    int* alive;
};

void useCollections() {
    int alive = 0;
    kfl::OrdCollect items;
    for (int i = 0; i < 30; ++i) items.add(new Item(&alive));
    CHECK(items.count() == 30 && alive == 30);
    CHECK(dynamic_cast<Item*>(items.first()) != nullptr);
    items.freeContents();
    CHECK(alive == 0);

    int numbers[3] = {};
    kfl::VoidPtrOrderedCollection pointers;
    for (int& number : numbers) pointers.insertAt(0, &number);
    CHECK(pointers.idAt(2) == &numbers[0] && pointers.removeAt(1) == &numbers[1]);
    kfl::VoidPtrStack stack(1);
    CHECK(stack.push(numbers) && stack.pop() == numbers);
    kfl::Container words(2, 3);
    char word[] = "abc";
    words.atPut(5, word);
    char got[4] = {};
    words.atGet(5, got);
    CHECK(same(got, "abc"));
}

void useMemory() {
    Buffer buffer(4, 4);
    unsigned char bytes[] = "0123456789";
    CHECK(buffer.Write(bytes, 10) == 10);
    unsigned char got[11] = {};
    CHECK(buffer.Read(got, 10) == 10 && memcmp(got, bytes, 10) == 0);
    LocalHeap heap(2, 7, LocalHeap::GrowOnDemand);
    heap.initialize();
    void* const a = heap.allocateBlock(7);
    void* const b = heap.allocateBlock(7);
    void* const c = heap.allocateBlock(7);
    CHECK(a && b && c && heap.inUse() == 3);
    heap.deallocateBlock(b, 7);
    CHECK(heap.allocateBlock(7) == b && heap.maxInUse() == 3);
}

void useConfiguration() {
    writeFile("small.ini", "; first\n[net]\nport = 8080\nrate=2.5\non=true\n");
    kfl::IniFileParser ini;
    CHECK(ini.parseFile("small.ini"));
    CHECK(ini.getInt("PORT", "net") == 8080);
    CHECK(ini.getFloat("rate", "net") > 2.4f && ini.getFloat("rate", "net") < 2.6f);
    CHECK(ini.getInt("none", "net") == INT_MIN);
    kfl::AString host("");
    kfl::AString path("");
    unsigned short port = 0;
    kfl::FileTransferProtocol protocol = kfl::protocolNone;
    CHECK(kfl::URIParser::parseFileTransferURI("ftp://h:2121/p/q", protocol, host, port, path));
    CHECK(protocol == kfl::protocolFTP && port == 2121 && same(host.c_str(), "h") &&
          same(path.c_str(), "p/q"));
    // A program that is not position independent may read a copy of its own.
    CHECK(kfl::lookupStringIgnoreCase("https", kfl::fileTransferProtocols) == kfl::protocolHTTPS);
    remove("small.ini");
}

void useSockets() {
    int code = -1;
    const int descriptor = createSocket(&code);
    CHECK(descriptor >= 0 && code == 0);
    timeval wait = {0, 20000};
    char byte = 0;
    CHECK(recvFromSocket(descriptor, &byte, 1, &wait, &code) == 0 && code == 0);
    CHECK(wait.tv_sec == 0 && wait.tv_usec == 0);
    CHECK(recvFromSocket(-1, &byte, 1, &wait, &code) == -1 && code == 3);
    CHECK(socketResultToString(code) != nullptr);
    close(descriptor);

    char path[] = "small.socket";
    IPCSocket receiver(path);
    CHECK(receiver.initialize(code) && receiver.bind());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, path);
    sendto(receiver.descriptor(), "hello", 6, 0, reinterpret_cast<sockaddr*>(&address),
           sizeof address);
    char got[16];
    wait.tv_sec = 5;
    CHECK(receiver.receive(got, sizeof got, wait, code) == 6 && same(got, "hello"));
    unlink(path);
}

void useProcesses() {
    writeFile("small.txt", "content");
    CHECK(kfl::osCopyFile("small.txt", "small.copy", true) == 0);
    CHECK(fileHolds("small.copy", "content"));
    const int exited = kfl::osSystem("exit 3");
    CHECK(WIFEXITED(exited) && WEXITSTATUS(exited) == 3);
    const int status = kfl::osCreateProcess("/bin/echo said", true, "small.out");
    CHECK(WIFEXITED(status) && WEXITSTATUS(status) == 0 && fileHolds("small.out", "said\n"));
    for (const char* name : {"small.txt", "small.copy", "small.out"}) remove(name);
    RandomNumberGenerator::getNumber();
}

kfl::OSThread thread;
int rounds = 0;

void run(void*) {
    thread.threadHasStarted();
    // A request may fall between two waits: so the work ends by itself, too.
    while (rounds < 2000 && !thread.isRequestedToStop(1000000)) ++rounds;
    thread.threadIsStopping();
    thread.leave();
}

void useThreads() {
    CHECK(thread.create(1, run, nullptr, 0) != -1);
    usleep(50000);
    CHECK(thread.destroy() == 0);
    CHECK(rounds > 0);
}

// Bytes of FIPS-197's first example, a file, and the chaining modes.
void useCipher() {
    char key[16];
    char plain[32];
    for (int i = 0; i < 16; ++i) {
        key[i] = static_cast<char>(i);
        plain[i] = static_cast<char>(i * 0x11);
    }
    memcpy(plain + 16, plain, 16);
    const unsigned char expected[] = {0x69, 0xc4, 0xe0, 0xd8, 0x6a, 0x7b, 0x04, 0x30,
                                      0xd8, 0xcd, 0xb7, 0x80, 0x70, 0xb4, 0xc5, 0x5a};
    kfl::AES::Rijndael cipher;
    cipher.makeKey(key, kfl::AES::Rijndael::_nullchain, 16, 16);
    char result[32];
    cipher.encryptBlock(plain, result);
    CHECK(memcmp(result, expected, 16) == 0);
    for (int size : {16, 32}) {
        for (int mode : {0, 1, 2}) {
            char back[32];
            cipher.makeKey(key, plain, 16, size);
            cipher.encrypt(plain, result, 32, mode);
            cipher.makeKey(key, plain, 16, size);
            cipher.decrypt(result, back, 32, mode);
            CHECK(memcmp(back, plain, 32) == 0 && memcmp(result, plain, 32) != 0);
        }
    }
    writeFile("small.plain", "sixteen bytes!!!");
    cipher.makeKey(key, plain, 16, 16);
    cipher.encryptFile("small.plain", "small.enc", 1);
    cipher.makeKey(key, plain, 16, 16);
    cipher.decryptFile("small.enc", "small.back", 1);
    CHECK(fileHolds("small.back", "sixteen bytes!!!"));
    for (const char* name : {"small.plain", "small.enc", "small.back"}) remove(name);
    const int before = eventCount;
    cipher.encrypt(plain, result, 5, 0);
    CHECK(eventCount == before + 1 && same(lastEvent, kfl::AES::Rijndael::_ErrorMsg2));
    CHECK(kfl::AES::Rijndael::_T1[1] == 0xf87c7c84u);
}

void useEvents() {
    raiseSyslogEvent(7, 1, 2, 3, "small", 4, "event");
    raiseSyslogAlarm(5, true, 1, 2, 3, "small", 4, "alarm");
}

// An allocator's exception passes through the library, and leaves the string as it was.
void failToAllocate() {
#ifndef __SANITIZE_ADDRESS__  // which ends a program that asks for so much
    kfl::AString s("kept");
    bool caught = false;
    try {
        s.expandTo(UINT_MAX);
    } catch (const std::bad_alloc&) {
        caught = true;
    }
    CHECK(caught || sizeof(void*) > 4);
    CHECK(same(s.c_str(), "kept"));
#endif
}

}  // namespace

int main() {
    useStrings();
    useFormats();
    useStreams();
    useCollections();
    useMemory();
    useConfiguration();
    useSockets();
    useProcesses();
    useThreads();
    useCipher();
    useEvents();
    failToAllocate();
    return checksEnd();
}
