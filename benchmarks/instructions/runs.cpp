// Small representative runs, whose instructions are counted: scripts/check-instructions. Each is
// enclosed in two marks, which the counting plugin sees; the names are printed in the same order.
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kfl/kfl.h"

const char* applicationName = "runs";
int genSyslogEvent(int, int, int, int, const char*) { return 0; }
char* Parms(const char*, ...) {
    static char text[] = "";
    return text;
}

namespace {

using kfl::AString;
using kfl::AES::Rijndael;

constexpr unsigned int many = 1000;

void mark() { static_cast<void>(getppid()); }

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s went wrong\n", what);
    std::exit(1);
}

// Where files go, which are removed at the end.
std::string folder;

std::string fileNamed(const char* name) { return folder + '/' + name; }

void writeFile(const char* name, const std::string& content) {
    std::FILE* const file = std::fopen(fileNamed(name).c_str(), "w");
    if (!file) fail("writing a file");
    std::fputs(content.c_str(), file);
    std::fclose(file);
}

void* item(unsigned int i) { return reinterpret_cast<void*>(std::uintptr_t{i} * 16 + 16); }

void appendCharacters() {
    AString s(1U);
    for (unsigned int i = 0; i < many; ++i) s.append('x');
    if (s.length() != many) fail("appending characters");
}

void appendTexts() {
    AString s(1U);
    for (unsigned int i = 0; i < many; ++i) s.append("0123456789");
    if (s.length() != 10 * many) fail("appending texts");
}

void makeAndCompare() {
    for (unsigned int i = 0; i < many; ++i) {
        const AString a("a text of some length");
        const AString b(a);
        if (!(a == b)) fail("comparing");
    }
}

void insertAndErase() {
    AString s("a text that is written over and over, over and over, over and over again");
    const unsigned int length = s.length();
    for (unsigned int i = 0; i < many; ++i) {
        s.insert(5, "0123456789");
        s.erase(5, 10);
    }
    if (s.length() != length) fail("inserting");
}

void searchText() {
    AString s(4000U);
    for (unsigned int i = 0; i < 500; ++i) s.append("tether ");
    s.append("tetris");
    for (unsigned int i = 0; i < 10; ++i) {
        if (s.find("tetris", 0) != 3500) fail("finding");
    }
}

void walkLines() {
    AString s(1U);
    for (unsigned int i = 0; i < many; ++i) s.append("a line\r\n");
    kfl::AStringIterator lines(s, 80);
    unsigned int count = 0;
    while (lines.Next()) ++count;
    if (count != many) fail("walking lines");
}

void format() {
    char text[100];
    for (unsigned int i = 0; i < many; ++i) {
        BoundedStringBase::format(text, 99, "%s[%d]: interface %-10s has %u errors, %08x", "agent",
                                  4711, "eth0", 12345U, 0xBEEFU);
    }
    if (std::strcmp(text, "agent[4711]: interface eth0       has 12345 errors, 0000beef") != 0) {
        fail("formatting");
    }
}

void formatAtOnce() {
    for (unsigned int i = 0; i < many; ++i) {
        const AString s(StringFormat("%s: %d", "interval", 30));
        if (s.length() != 12) fail("StringFormat");
    }
}

void fillCollection() {
    kfl::VoidPtrOrderedCollection list;
    for (unsigned int i = 0; i < many; ++i) list.add(item(i));
    kfl::VoidPtrIterator it(list);
    unsigned int count = 0;
    while (list.next(it)) ++count;
    for (unsigned int i = 0; i < many; ++i) {
        if (list.idAt(i) != item(i)) fail("indexing");
    }
    if (count != many) fail("walking");
}

void searchCollection() {
    kfl::VoidPtrOrderedCollection list(10 * many);
    for (unsigned int i = 0; i < 10 * many; ++i) list.add(item(i));
    for (unsigned int i = 0; i < 10; ++i) {
        if (list.indexOfSame(item(10 * many - 1)) != 10 * many - 1) fail("searching");
    }
}

void shiftCollection() {
    kfl::VoidPtrOrderedCollection list;
    for (unsigned int i = 0; i < many; ++i) list.insertAt(0, item(i));
    for (unsigned int i = 0; i < many; ++i) list.removeAt(0);
    if (list.count() != 0) fail("shifting");
}

void usePool() {
    LocalHeap heap(100, 64, LocalHeap::GrowOnDemand);
    void* blocks[many];
    for (void*& block : blocks) block = heap.allocateBlock(64);
    for (void* block : blocks) heap.deallocateBlock(block, 64);
    if (heap.inUse() != 0) fail("pool");
}

void useBuffer() {
    Buffer buffer(100, 100);
    unsigned char bytes[100] = {};
    for (unsigned int i = 0; i < many; ++i) buffer.Write(bytes, 10);
    for (unsigned int i = 0; i < many; ++i) {
        if (buffer.Read(bytes, 10) != 10) fail("buffer");
    }
}

void fillParser(kfl::IniFileParser& parser) {
    if (!parser.parseFile(fileNamed("ini").c_str())) fail("parsing");
}

void parseIni() {
    kfl::IniFileParser parser;
    fillParser(parser);
}

void lookUpIni() {
    kfl::IniFileParser parser;
    fillParser(parser);
    mark();
    char section[] = "unit-0";
    char key[] = "key-00";
    for (section[5] = '0'; section[5] <= '9'; ++section[5]) {
        for (key[4] = '0'; key[4] <= '1'; ++key[4]) {
            for (key[5] = '0'; key[5] <= '9'; ++key[5]) {
                if (!parser.getValue(key, section)) fail("looking up");
            }
        }
    }
    mark();
}

void parseUri() {
    for (unsigned int i = 0; i < 100; ++i) {
        AString host(100U);
        unsigned short port = 0;
        if (!kfl::URIParser::parseHost("server.example.net:8021", host, port)) fail("URI");
    }
}

// A multiple of all block sizes.
constexpr unsigned int wholeBlocks = 96 * 160;

char block[wholeBlocks];

void setKeys() {
    Rijndael cipher;
    for (unsigned int i = 0; i < 100; ++i) {
        cipher.makeKey("0123456789abcdef0123456789abcdef", Rijndael::_nullchain, 32, 16);
    }
}

void cipherBlocks(int keyLength, int blockSize, int mode) {
    Rijndael cipher;
    cipher.makeKey("0123456789abcdef0123456789abcdef", Rijndael::_nullchain, keyLength, blockSize);
    char out[sizeof block];
    cipher.encrypt(block, out, wholeBlocks, mode);
    cipher.decrypt(out, block, wholeBlocks, mode);
}

void encipherFile() {
    Rijndael cipher;
    cipher.makeKey("0123456789abcdef", Rijndael::_nullchain, 16, 16);
    cipher.encryptFile(fileNamed("ini").c_str(), fileNamed("coded").c_str(), Rijndael::modeCBC);
}

void copyFile() {
    for (unsigned int i = 0; i < 10; ++i) {
        if (kfl::osCopyFile(fileNamed("ini").c_str(), fileNamed("copy").c_str(), false) != 0) {
            fail("copying");
        }
    }
}

void exchangeDatagrams() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) != 0) fail("socketpair");
    char bytes[100] = {};
    for (unsigned int i = 0; i < 100; ++i) {
        timeval limit = {1, 0};
        int code = 0;
        if (send(ends[0], bytes, sizeof bytes, 0) != sizeof bytes) fail("sending");
        if (recvFromSocket(ends[1], bytes, sizeof bytes, &limit, &code) != sizeof bytes) {
            fail("receiving");
        }
    }
    close(ends[0]);
    close(ends[1]);
}

struct Run {
    const char* name;
    void (*work)();
    // The run sets its marks itself.
    bool marks = false;
};

const Run runs[] = {
    {"string-append-character", appendCharacters},
    {"string-append-text", appendTexts},
    {"string-make-and-compare", makeAndCompare},
    {"string-insert-and-erase", insertAndErase},
    {"string-find", searchText},
    {"string-lines", walkLines},
    {"format", format},
    {"format-at-once", formatAtOnce},
    {"collection-fill-and-walk", fillCollection},
    {"collection-search", searchCollection},
    {"collection-shift", shiftCollection},
    {"pool", usePool},
    {"buffer", useBuffer},
    {"ini-parse", parseIni},
    {"ini-look-up", lookUpIni, true},
    {"uri-parse", parseUri},
    {"cipher-set-key", setKeys},
    {"cipher-ecb-128", [] { cipherBlocks(16, 16, Rijndael::modeECB); }},
    {"cipher-cbc-128", [] { cipherBlocks(16, 16, Rijndael::modeCBC); }},
    {"cipher-cfb-256", [] { cipherBlocks(32, 16, Rijndael::modeCFB); }},
    {"cipher-block-24", [] { cipherBlocks(24, 24, Rijndael::modeECB); }},
    {"cipher-block-32", [] { cipherBlocks(32, 32, Rijndael::modeECB); }},
    {"cipher-file", encipherFile},
    {"copy-file", copyFile},
    {"datagrams", exchangeDatagrams},
};

// A first time before the marks: then all functions are bound and all memory has been touched.
void count(const Run& run) {
    if (run.marks) return run.work();
    run.work();
    mark();
    run.work();
    mark();
}

std::string iniText() {
    std::string text;
    for (int section = 0; section < 10; ++section) {
        text += "[unit-" + std::to_string(section) + "]\n";
        for (int key = 0; key < 20; ++key) {
            text += key < 10 ? "key-0" : "key-";
            text += std::to_string(key) + " = the value of a key\n";
        }
    }
    return text;
}

}  // namespace

int main() {
    char name[] = "/tmp/kfl-instructions-XXXXXX";
    if (!mkdtemp(name)) return 1;
    folder = name;
    writeFile("ini", iniText());
    for (const Run& run : runs) {
        count(run);
        std::puts(run.name);
    }
    for (const char* file : {"ini", "copy", "coded"}) unlink(fileNamed(file).c_str());
    rmdir(name);
    return 0;
}
