// Files longer than 32 bits can say. They only have a length: this program stands between
// the file operations and both the C library and the cipher (the linker's --wrap), and counts their
// bytes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "kfl/Rijndael.h"
#include "tests/support/recording_host.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::AES::Rijndael;

// The input's length, and how many bytes went which way, while a file operation runs.
bool isRunning = false;
std::uint64_t length = 0;
std::uint64_t readBytes = 0;
std::uint64_t enciphered = 0;
std::uint64_t deciphered = 0;
std::uint64_t writtenBytes = 0;

}  // namespace

extern "C" {

int __real_fstat64(int file, struct stat64* status);
int __wrap_fstat64(int file, struct stat64* status) {
    const int result = __real_fstat64(file, status);
    if (isRunning) status->st_size = static_cast<off64_t>(length);
    return result;
}

size_t __real_fread(void* to, size_t size, size_t count, std::FILE* file);
size_t __wrap_fread(void* to, size_t size, size_t count, std::FILE* file) {
    if (!isRunning) return __real_fread(to, size, count, file);
    const std::uint64_t n = std::min<std::uint64_t>(count, (length - readBytes) / size);
    readBytes += n * size;
    return static_cast<size_t>(n);
}

size_t __real_fwrite(const void* from, size_t size, size_t count, std::FILE* file);
size_t __wrap_fwrite(const void* from, size_t size, size_t count, std::FILE* file) {
    if (!isRunning) return __real_fwrite(from, size, count, file);
    writtenBytes += std::uint64_t{size} * count;
    return count;
}

// Rijndael::encrypt and Rijndael::decrypt.
void __wrap__ZN3kfl3AES8Rijndael7encryptEPKcPcji(Rijndael*, const char*, char*, unsigned n, int) {
    enciphered += n;
}
void __wrap__ZN3kfl3AES8Rijndael7decryptEPKcPcji(Rijndael*, const char*, char*, unsigned n, int) {
    deciphered += n;
}

}  // extern "C"

namespace {

class RijndaelLongFilesTest : public testing::Test {
  protected:
    RijndaelLongFilesTest() {
        kfl_test::clearEvents();
        cipher.makeKey(Rijndael::_nullchain, Rijndael::_nullchain, 16, 16);
    }

    // Lets an operation work on a file of that length.
    void run(void (Rijndael::*operation)(const char*, const char*, int), std::uint64_t wanted) {
        length = wanted;
        readBytes = enciphered = deciphered = writtenBytes = 0;
        isRunning = true;
        (cipher.*operation)(in.c_str(), out.c_str(), Rijndael::modeECB);
        isRunning = false;
    }
    static std::uint64_t wholeBlocks() { return (length + 15) / 16 * 16; }

    const kfl_test::TemporaryFolder folder;
    const std::string in = folder.write("in", "");
    const std::string out = folder / "out";
    Rijndael cipher;
};

// Lengths that 32 bits would make negative, smaller, or none at all.
constexpr std::uint64_t bits31 = std::uint64_t{1} << 31U;
constexpr std::uint64_t bits32 = std::uint64_t{1} << 32U;
constexpr std::uint64_t lengths[] = {5, bits31 + 5, bits32 - 1, bits32, bits32 + 5};

TEST_F(RijndaelLongFilesTest, AreEncipheredWhole) {
    for (const std::uint64_t wanted : lengths) {
        SCOPED_TRACE(wanted);
        run(&Rijndael::encryptFile, wanted);
        EXPECT_EQ(readBytes, length);
        EXPECT_EQ(enciphered, wholeBlocks());
        EXPECT_EQ(deciphered, 0U);
        EXPECT_EQ(writtenBytes, wholeBlocks());
    }
}

TEST_F(RijndaelLongFilesTest, AreDecipheredWhole) {
    for (const std::uint64_t wanted : lengths) {
        SCOPED_TRACE(wanted);
        run(&Rijndael::decryptFile, wanted);
        EXPECT_EQ(readBytes, length);
        EXPECT_EQ(deciphered, wholeBlocks());
        EXPECT_EQ(enciphered, 0U);
        EXPECT_EQ(writtenBytes, wholeBlocks());
    }
}

}  // namespace
