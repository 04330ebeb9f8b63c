// The file operations of kfl/Rijndael.h.
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "crypto/cipher_event.h"
#include "kfl/Host.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

// How much of a file is worked on at once: whole blocks of every size, and whole pages.
constexpr unsigned pieceSize = 96 * 512;

// What tells the two operations apart.
struct Operation {
    bool enciphers;
    const char* readMode;
    const char* writeMode;
    // What fills up the last block.
    int filler;
};

// Kept on purpose: the open modes differ, and so does the filler: enciphering takes the end of the
// file for bytes of 0xFF, deciphering leaves its zeroed area as it was.
constexpr Operation encipherFile{true, "r", "wb", 0xFF};
constexpr Operation decipherFile{false, "rb", "w", 0};

// Without a buffer: there is one already, which is as large as all that is read or written at once.
FILE* openFile(const char* name, const char* mode) {
    FILE* const file = name ? fopen(name, mode) : nullptr;
    if (file) setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

// A name as printf would show it.
const char* shown(const char* name) { return name ? name : "(null)"; }

// Both files of an operation; either may have failed to open. They end input first.
class Files {
  public:
    Files(const char* inName, const char* outName, const Operation& operation)
        : in_(openFile(inName, operation.readMode)), out_(nullptr), complete_(true) {
        if (!in_) {
            detail::reportCipherError(Parms("Unable to open %s", shown(inName)));
        } else if (out_ = openFile(outName, operation.writeMode); !out_) {
            detail::reportCipherError(Parms("Unable to create %s", shown(outName)));
        }
    }
    ~Files() {
        if (in_) fclose(in_);
        if (out_) fclose(out_);
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    bool areOpen() const { return out_ != nullptr; }

    // The input's length in bytes; 0 for what has none, or cannot be read from its beginning again.
    std::uint64_t inputLength() const {
        const int file = fileno(in_);
        struct stat status = {};
        fstat(file, &status);
        if (S_ISREG(status.st_mode)) return static_cast<std::uint64_t>(status.st_size);
        const off_t end = lseek(file, 0, SEEK_END);
        if (lseek(file, 0, SEEK_SET) != 0) return 0;
        // The end of a directory may be anywhere, up to the largest number there is.
        return end > 0 && !S_ISDIR(status.st_mode) ? static_cast<std::uint64_t>(end) : 0;
    }

    // Reads `n` bytes; what the file does not have is filled up.
    void read(char* bytes, unsigned n, int filler) {
        const std::size_t got = fread(bytes, 1, n, in_);
        std::memset(bytes + got, filler, n - got);
    }

    // Once a write has failed, nothing is written behind the gap.
    void write(const char* bytes, unsigned n) {
        if (complete_) complete_ = fwrite(bytes, 1, n, out_) == n;
    }

  private:
    FILE* in_;
    FILE* out_;
    bool complete_;
};

// A working area.
class Area {
  public:
    explicit Area(unsigned size) : bytes_(static_cast<char*>(operator new[](size))) {}
    ~Area() { operator delete[](bytes_); }
    Area(const Area&) = delete;
    Area& operator=(const Area&) = delete;

    char* bytes() { return bytes_; }

  private:
    char* bytes_;
};

unsigned pieceOf(std::uint64_t left) {
    return left < pieceSize ? static_cast<unsigned>(left) : pieceSize;
}

// Works on a file piece by piece, the chain carrying on. An empty one, and a cipher without a key,
// whose block size is 0, are left to the operation to report.
void runOnFile(Rijndael& cipher, const Operation& operation, Files& files, int mode) {
    const unsigned blockSize = static_cast<unsigned>(cipher.blockBytes());
    const std::uint64_t length = blockSize > 0 ? files.inputLength() : 0;
    std::uint64_t left = length > 0 ? (length + blockSize - 1) / blockSize * blockSize : 0;
    Area in(pieceOf(left));
    Area result(pieceOf(left));
    do {
        const unsigned n = pieceOf(left);
        files.read(in.bytes(), n, operation.filler);
        if (operation.enciphers) {
            cipher.encrypt(in.bytes(), result.bytes(), n, mode);
        } else {
            cipher.decrypt(in.bytes(), result.bytes(), n, mode);
        }
        files.write(result.bytes(), n);
        left -= n;
    } while (left > 0);
}

void runOnFiles(Rijndael& cipher, const Operation& operation, const char* inName,
                const char* outName, int mode) {
    Files files(inName, outName, operation);
    if (files.areOpen()) runOnFile(cipher, operation, files, mode);
}

}  // namespace

void Rijndael::encryptFile(const char* inName, const char* outName, int mode) {
    runOnFiles(*this, encipherFile, inName, outName, mode);
}

void Rijndael::decryptFile(const char* inName, const char* outName, int mode) {
    runOnFiles(*this, decipherFile, inName, outName, mode);
}

}  // namespace kfl::AES
