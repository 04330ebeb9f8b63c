// What works on bytes, fed from and into places that no word may stand at: each of the offsets 0 to
// 7 behind an aligned address. The results are the same at each offset and on each processor,
// whatever its order of bytes:
//     unaligned EXPECTED_FILE    compares them with the file's lines
//     unaligned                  prints them
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <initializer_list>

#include "kfl/kfl.h"
#include "tests/small_host/host.h"

namespace {

constexpr int offsets = 8;

// All lines of one offset, and where the next one goes.
char lines[16384];
size_t used = 0;

__attribute__((format(printf, 1, 2))) void say(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    used += static_cast<size_t>(vsnprintf(lines + used, sizeof lines - used, format, arguments));
    va_end(arguments);
    if (used >= sizeof lines) abort();
}

void sayBytes(const char* what, const void* from, size_t n) {
    say("%s:", what);
    const unsigned char* const bytes = static_cast<const unsigned char*>(from);
    for (size_t i = 0; i < n; ++i) say(" %02x", bytes[i]);
    say("\n");
}

// Room that begins at an offset behind an aligned address.
class Place {
  public:
    explicit Place(int offset) : bytes_(room_ + offset) {}

    char* bytes() { return bytes_; }
    unsigned char* octets() { return reinterpret_cast<unsigned char*>(bytes_); }
    char* holding(const char* text) { return strcpy(bytes_, text); }
    char* pattern(size_t n) {
        for (size_t i = 0; i < n; ++i) bytes_[i] = static_cast<char>(i * 37 + 11);
        return bytes_;
    }

  private:
    alignas(8) char room_[512] = {};
    char* bytes_;
};

void strings(int offset) {
    Place text(offset);
    Place set(offset);
    kfl::AString s(text.holding("unaligned text"), 3);
    s.append(text.holding("+piece"), 4);
    s.insert(2, set.holding("--"));
    s.erase(1, 2);
    s.replace('e', 'E');
    say("string: %s %d %d %d\n", s.c_str(), s.find(set.holding("tExt"), 0),
        s.findFirstOf(set.holding("+"), 0), s.findLastNotOf(set.holding("ipc")));
}

void formats(int offset) {
    Place format(offset);
    Place argument(offset);
    Place out(offset);
    const int n =
        BoundedStringBase::format(out.bytes(), 100, format.holding("%-6s|%08lx|%+d|%.3s"),
                                  argument.holding("abc"), 0x12ab34cdL, 77, argument.bytes());
    say("format: %d %s\n", n, out.bytes());
    char* const end = BoundedStringBase::number(out.bytes(), out.bytes() + 30, -123456, 10, 12, 8,
                                                BoundedStringBase::SIGN);
    sayBytes("number", out.bytes(), static_cast<size_t>(end - out.bytes()));
    say("StringFormat: %s\n", StringFormat("%s", argument.bytes()).getString());
}

void streams(int offset) {
    Place from(offset);
    Place to(offset);
    BufferInputStream in(from.pattern(23), 23);
    in.read(to.bytes(), 23);
    sayBytes("input stream", to.bytes(), 23);
    BufferOutputStream out(to.bytes());
    out.write(from.holding("written"), 7);
    out.writeChar('!');
    sayBytes("output stream", to.bytes(), 8);
    kfl::AString s("");
    kfl::AStringOutputStream intoString(s);
    intoString.write(from.bytes(), 5);
    kfl::AStringInputStream fromString(s);
    fromString.read(to.bytes(), 5);
    sayBytes("string streams", to.bytes(), 5);
}

void containers(int offset) {
    for (unsigned int size : {1u, 3u, 4u, 7u, 8u}) {
        Place from(offset);
        Place to(offset);
        kfl::Container words(2, size);
        words.atPut(1, from.pattern(size * 3), 3);
        words.atGet(1, to.bytes(), 3);
        sayBytes("container", to.bytes(), size * 3);
    }
}

void buffers(int offset) {
    Place from(offset);
    Place to(offset);
    Buffer buffer(5, 20);
    from.pattern(19);
    buffer.Write(from.octets(), 19);
    // An odd place to read from, too.
    buffer.Read(to.octets(), 3);
    buffer.Read(to.octets() + 1, 15);
    sayBytes("buffer", to.bytes(), 16);
    Buffer other(1, 1);
    other.OneLocationWrite(from.octets(), 6);
    other += buffer;
    other.Read(to.octets(), 7);
    sayBytes("buffers", to.bytes(), 7);
    buffer.Unread(5);
    kfl::AString s(from.holding("s"));
    s.append(&buffer);
    sayBytes("string of a buffer", s.c_str(), s.length());
}

// A block after another of an odd size stands at any place; all of it is the caller's.
void blocks(int offset) {
    const unsigned size = 9 + static_cast<unsigned>(offset);
    LocalHeap heap(3, size, LocalHeap::GrowOnDemand);
    heap.initialize();
    unsigned char* held[7];
    for (int i = 0; i < 7; ++i) {
        held[i] = static_cast<unsigned char*>(heap.allocateBlock(size));
        memset(held[i], 'a' + i, size);
    }
    for (int i = 0; i < 7; i += 2) heap.deallocateBlock(held[i], size);
    for (int i = 0; i < 7; i += 2) {
        held[i] = static_cast<unsigned char*>(heap.allocateBlock(size));
        memset(held[i], 'A' + i, size);
    }
    say("blocks: %u %u", heap.inUse(), heap.maxInUse());
    for (unsigned char* block : held) say(" %c%c", block[0], block[size - 1]);
    say("\n");
}

void configuration(int offset) {
    Place key(offset);
    Place value(offset);
    Place section(offset);
    kfl::IniFileParser ini;
    ini.flags = kfl::IniFileParser::iniCreateSections | kfl::IniFileParser::iniCreateKeys;
    ini.setValue(key.holding("speed"), value.holding("0012"), section.holding("line"));
    say("ini: %s %d\n", ini.getValue(key.holding("SPEED"), section.holding("LINE")),
        ini.getInt(key.bytes(), section.bytes()));
    const kfl::KeyValuePair pair(key.bytes(), value.bytes());
    const kfl::NameValuePair named(key.bytes(), value.bytes());
    say("pairs: %s=%s %s=%s\n", pair.key.c_str(), pair.value.c_str(), named.name.c_str(),
        named.value.c_str());
    kfl::AString host("");
    kfl::AString path("");
    unsigned short port = 0;
    kfl::FileTransferProtocol protocol = kfl::protocolNone;
    const bool taken = kfl::URIParser::parseFileTransferURI(
        value.holding("tftp://box.example:6969/images/new.bin"), protocol, host, port, path);
    say("uri: %d %d %s %d %s\n", taken, protocol, host.c_str(), port, path.c_str());
    Place file(offset);
    FILE* const out = fopen(file.holding("unaligned.ini"), "w");
    if (out) {
        fputs("[a]\nk=v w\n", out);
        fclose(out);
    }
    kfl::IniFileParser read;
    CHECK(read.parseFile(file.bytes()));
    say("ini file: %s\n", read.getValue(key.holding("k"), section.holding("a")));
    remove(file.bytes());
}

void sayFile(const char* what, const char* name) {
    char bytes[128];
    FILE* const file = fopen(name, "r");
    const size_t n = file ? fread(bytes, 1, sizeof bytes, file) : 0;
    if (file) fclose(file);
    sayBytes(what, bytes, n);
}

void cipher(int offset) {
    Place key(offset);
    Place chain(offset);
    Place from(offset);
    Place to(offset);
    kfl::AES::Rijndael aes;
    key.pattern(32);
    chain.pattern(40);
    from.pattern(192);
    for (int keySize : {16, 24, 32}) {
        for (int blockSize : {16, 24, 32}) {
            for (int mode : {0, 1, 2}) {
                const unsigned n = static_cast<unsigned>(blockSize) * 3;
                aes.makeKey(key.bytes(), chain.bytes(), keySize, blockSize);
                aes.encrypt(from.bytes(), to.bytes(), n, mode);
                say("%d %d %d", keySize, blockSize, mode);
                sayBytes(" encrypt", to.bytes(), n);
                aes.makeKey(key.bytes(), chain.bytes(), keySize, blockSize);
                aes.decrypt(from.bytes(), to.bytes(), n, mode);
                say("%d %d %d", keySize, blockSize, mode);
                sayBytes(" decrypt", to.bytes(), n);
            }
            aes.encryptBlock(from.bytes(), to.bytes());
            sayBytes("encryptBlock", to.bytes(), static_cast<size_t>(blockSize));
            aes.decryptBlock(from.bytes(), to.bytes());
            sayBytes("decryptBlock", to.bytes(), static_cast<size_t>(blockSize));
        }
    }
    Place plain(offset);
    Place enciphered(offset);
    if (FILE* const file = fopen(plain.holding("unaligned.plain"), "w")) {
        fwrite(from.bytes(), 1, 45, file);
        fclose(file);
    }
    aes.makeKey(key.bytes(), chain.bytes(), 16, 24);
    aes.encryptFile(plain.bytes(), enciphered.holding("unaligned.enc"), 1);
    sayFile("encryptFile", enciphered.bytes());
    aes.makeKey(key.bytes(), chain.bytes(), 16, 24);
    aes.decryptFile(enciphered.bytes(), plain.bytes(), 1);
    sayFile("decryptFile", plain.bytes());
    remove(plain.bytes());
    remove(enciphered.bytes());
}

void sockets(int offset) {
    Place path(offset);
    Place from(offset);
    Place to(offset);
    int code = -1;
    unlink(path.holding("unaligned.socket"));
    IPCSocket receiver(path.bytes());
    const bool ready = receiver.initialize(code) && receiver.bind();
    const int sender = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, path.bytes());
    const bool connected =
        connect(sender, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    const int sent = sendToSocket(sender, from.pattern(21), 21, &code);
    timeval limit = {5, 0};
    int got = recvFromSocket(receiver.descriptor(), to.bytes(), 64, &limit, &code);
    say("datagram: %d %d %d", ready, connected, sent == -1 ? -1 : 1);
    sayBytes("", to.bytes(), static_cast<size_t>(got));
    sendToSocket(sender, from.pattern(13), 13, &code);
    got = receiver.receive(to.bytes(), 64, limit, code);
    sayBytes("datagram", to.bytes(), static_cast<size_t>(got));
    close(sender);
    unlink(path.bytes());
}

void process(int offset) {
    Place from(offset);
    Place to(offset);
    if (FILE* const file = fopen(from.holding("unaligned.from"), "w")) {
        fputs("copied", file);
        fclose(file);
    }
    say("copy: %d", kfl::osCopyFile(from.bytes(), to.holding("unaligned.to"), false));
    sayFile("", to.bytes());
    remove(from.bytes());
    say("process: %d",
        kfl::osCreateProcess(from.holding("/bin/echo words of a line"), true, to.bytes()));
    sayFile("", to.bytes());
    remove(to.bytes());
}

void sayAll(int offset) {
    used = 0;
    strings(offset);
    formats(offset);
    streams(offset);
    containers(offset);
    buffers(offset);
    blocks(offset);
    configuration(offset);
    cipher(offset);
    sockets(offset);
    process(offset);
}

// Says the first line that differs.
void compare(int offset, const char* expected, size_t length) {
    size_t line = 1;
    size_t i = 0;
    size_t start = 0;
    for (; i < length && i < used && lines[i] == expected[i]; ++i) {
        if (lines[i] == '\n') {
            ++line;
            start = i + 1;
        }
    }
    const bool equal = i == length && i == used;
    if (!equal) {
        printf("offset %d, line %d: %.*s\n  expected: %.*s\n", offset, static_cast<int>(line),
               static_cast<int>(strcspn(lines + start, "\n")), lines + start,
               static_cast<int>(strcspn(expected + start, "\n")), expected + start);
    }
    CHECK(equal);
}

}  // namespace

int main(int count, char** words) {
    if (count < 2) {
        sayAll(0);
        fwrite(lines, 1, used, stdout);
        return 0;
    }
    static char expected[sizeof lines];
    FILE* const file = fopen(words[1], "r");
    CHECK(file != nullptr);
    if (!file) return checksEnd();
    const size_t length = fread(expected, 1, sizeof expected - 1, file);
    fclose(file);
    CHECK(length > 0);
    for (int offset = 0; offset < offsets; ++offset) {
        sayAll(offset);
        compare(offset, expected, length);
    }
    return checksEnd();
}
