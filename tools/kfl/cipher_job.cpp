#include "tools/kfl/cipher_job.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/kfl/parse.h"

namespace kfl_tool {
namespace {

using kfl::AES::Rijndael;

bool isCipherLength(std::size_t bytes) { return bytes == 16 || bytes == 24 || bytes == 32; }

// -1 for what is no hexadecimal digit.
int digitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The bytes of pairs of digits. The text itself is not shown: it may be a key.
std::string parseHex(const Arguments& arguments, const char* what, const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digitOf(text[i]);
        const int low = i + 1 < text.size() ? digitOf(text[i + 1]) : -1;
        if (high < 0 || low < 0) {
            arguments.usageError("the %s must be pairs of hexadecimal digits", what);
        }
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

std::string parseKey(const Arguments& arguments, const std::string& text) {
    std::string key = parseHex(arguments, "key", text);
    if (!isCipherLength(key.size())) {
        arguments.usageError("the key must have 16, 24 or 32 bytes, not %zu", key.size());
    }
    return key;
}

// The first line of a file.
std::string keyInFile(const char* path) {
    std::FILE* const file = std::fopen(path, "r");
    if (!file) fail("%s: %s", path, std::strerror(errno));
    char line[128] = {};
    // cppcheck-suppress nullPointerRedundantCheck ; fail does not return
    const bool isRead = std::fgets(line, sizeof line, file) != nullptr;
    // cppcheck-suppress nullPointerRedundantCheck ; the same
    std::fclose(file);
    if (!isRead) fail("%s: no key in it", path);
    line[std::strcspn(line, "\r\n")] = '\0';
    return line;
}

std::string keyInEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    if (!value) fail("no environment variable %s", name);
    return value;
}

int parseMode(const Arguments& arguments, const std::string& text) {
    if (text == "ecb") return Rijndael::modeECB;
    if (text == "cbc") return Rijndael::modeCBC;
    // cppcheck-suppress missingReturn ; usageError does not return
    if (text == "cfb") return Rijndael::modeCFB;
    arguments.usageError("'%s' is none of ecb, cbc and cfb", text.c_str());
}

enum Letter {
    keyHere = 'k',
    keyFile = 'f',
    keyEnvironment = 'e',
    chain = 'c',
    mode = 'm',
    block = 'b'
};

// The options as they were given.
struct Given {
    int keys = 0;
    std::string key;
    std::string chain;
    bool hasChain = false;
    int mode = -1;
    int blockSize = 16;
};

// Keeps what was on the command line from being seen in the list of processes any longer.
std::string takeFromCommandLine() {
    std::string text = optarg;
    std::memset(optarg, '*', text.size());
    return text;
}

void takeOption(const Arguments& arguments, int letter, Given& given) {
    switch (letter) {
        case keyHere: given.key = takeFromCommandLine(); break;
        case keyFile: given.key = keyInFile(arguments.optionValue()); break;
        case keyEnvironment: given.key = keyInEnvironment(arguments.optionValue()); break;
        case mode: given.mode = parseMode(arguments, arguments.optionValue()); return;
        case block:
            given.blockSize = parseNumber(arguments, "N", arguments.optionValue(), 16, 32);
            return;
        default:
            given.chain = arguments.optionValue();
            given.hasChain = true;
            return;
    }
    ++given.keys;
}

Given readOptions(Arguments& arguments) {
    static const option options[] = {{"key", required_argument, nullptr, keyHere},
                                     {"key-file", required_argument, nullptr, keyFile},
                                     {"key-env", required_argument, nullptr, keyEnvironment},
                                     {"chain", required_argument, nullptr, chain},
                                     {"mode", required_argument, nullptr, mode},
                                     {"block", required_argument, nullptr, block},
                                     helpOption,
                                     {}};
    Given given;
    while (const int letter = arguments.nextOption(options)) takeOption(arguments, letter, given);
    return given;
}

// ECB has no use for a chain block.
std::string chainOf(const Arguments& arguments, const Given& given) {
    const auto blockSize = static_cast<std::size_t>(given.blockSize);
    if (!isCipherLength(blockSize)) arguments.usageError("a block has 16, 24 or 32 bytes");
    if (!given.hasChain) {
        if (given.mode != Rijndael::modeECB) arguments.usageError("cbc and cfb need a --chain");
        return std::string(Rijndael::_nullchain, blockSize);
    }
    std::string bytes = parseHex(arguments, "chain block", given.chain);
    if (bytes.size() != blockSize) {
        arguments.usageError("the chain block must have %zu bytes, not %zu", blockSize,
                             bytes.size());
    }
    return bytes;
}

// The length of IN, which must be something of which the library can tell the length.
off_t lengthOf(const char* path) {
    requireFile(path);
    struct stat status = {};
    stat(path, &status);
    if (!S_ISREG(status.st_mode)) fail("%s: not a regular file", path);
    if (access(path, R_OK) != 0) fail("%s: %s", path, std::strerror(errno));
    if (status.st_size == 0) fail("%s: empty", path);
    return status.st_size;
}

// Whether OUT is, or will be, a regular file.
bool isRegular(const char* path) {
    struct stat status = {};
    return stat(path, &status) != 0 || S_ISREG(status.st_mode);
}

void requireOther(const char* in, const char* out) {
    struct stat a = {};
    struct stat b = {};
    if (stat(in, &a) != 0 || stat(out, &b) != 0) return;
    if (a.st_dev == b.st_dev && a.st_ino == b.st_ino) fail("%s and %s are one file", in, out);
}

// The library would say to the system log alone that it cannot create the file.
void requireWritable(const char* path) {
    if (!isRegular(path)) {
        requireFile(path);
        return;
    }
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) fail("%s: %s", path, std::strerror(errno));
    close(descriptor);
}

// The library does not look at the results of its writes.
void requireLength(const char* path, off_t length) {
    struct stat status = {};
    if (stat(path, &status) != 0) fail("%s: %s", path, std::strerror(errno));
    if (status.st_size != length) fail("%s: not written whole", path);
}

}  // namespace

std::string cipherDetails(const char* purpose) {
    return std::string(purpose) +
           "\n"
           "Options:\n"
           "  --mode MODE      ecb, cbc or cfb (over whole blocks)\n"
           "  --chain HEX      the first chain block, as long as a block; ecb needs none\n"
           "  --block N        bytes of a block: 16 (AES, the default), 24 or 32\n"
           "  --key HEX        the key, 16, 24 or 32 bytes; others may see a command line\n"
           "  --key-file FILE  the key is the first line of FILE\n"
           "  --key-env NAME   the key is in the environment variable NAME\n"
           "  -h, --help       show this page\n"
           "\n"
           "The ciphertext does not show whether it was changed, and equal blocks stay\n"
           "equal in ecb. Take a new chain block for every file.\n"
           "\n"
           "Exit status: 0 when done, 1 when it cannot be done: a file cannot be read or\n"
           "written, IN is empty, no regular file, OUT itself or, for decrypt, no whole\n"
           "blocks, FILE is empty, or there is no variable NAME; 2 for wrong usage. OUT is\n"
           "not touched when anything is wrong with the arguments or IN.\n";
}

CipherJob readCipherJob(Arguments& arguments) {
    const Given given = readOptions(arguments);
    if (given.keys != 1) arguments.usageError("give one of --key, --key-file and --key-env");
    if (given.mode < 0) arguments.usageError("give a --mode");
    arguments.requireOperands(2, 2);
    return CipherJob{parseKey(arguments, given.key), chainOf(arguments, given), given.mode,
                     arguments[0], arguments[1]};
}

void runCipherJob(const CipherJob& job, bool wholeBlocks,
                  void (Rijndael::*work)(const char*, const char*, int)) {
    const auto blockSize = static_cast<off_t>(job.chain.size());
    const off_t length = lengthOf(job.in);
    const off_t blocks = (length + blockSize - 1) / blockSize;
    if (wholeBlocks && length % blockSize != 0) {
        fail("%s: no whole blocks of %d bytes", job.in, static_cast<int>(blockSize));
    }
    requireOther(job.in, job.out);
    requireWritable(job.out);
    Rijndael cipher;
    cipher.makeKey(job.key.data(), job.chain.data(), static_cast<int>(job.key.size()),
                   static_cast<int>(blockSize));
    (cipher.*work)(job.in, job.out, job.mode);
    if (isRegular(job.out)) requireLength(job.out, blocks * blockSize);
}

}  // namespace kfl_tool
