// The file operations' dealings with the C library and the allocator: this program stands between
// the library and both (the linker's --wrap), writes down what is called, and lets calls fail.
#include <gtest/gtest.h>
#include <stdio_ext.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "tests/crypto/cipher_support.h"
#include "tests/support/counted_new.h"
#include "tests/support/marked_parms.h"
#include "tests/support/temporary_folder.h"

namespace {

// What is called while isRecording. Room for all of it is there beforehand, and the texts are
// short, so that writing down allocates nothing.
std::vector<std::string> calls;
bool isRecording = false;
// The first file that was opened: the input.
std::FILE* firstFile = nullptr;
// How many blocks of memory there were at the start, and when the first file was closed.
unsigned long liveAtStart = 0;
unsigned long liveAtClose = 0;
// The largest buffer that the C library has had for one of the files.
size_t largestBuffer = 0;

void record(const std::string& call) {
    if (isRecording) calls.push_back(call);
}

std::string baseName(const char* path) { return std::strrchr(path, '/') + 1; }

unsigned long liveBlocks() { return kfl_test::allocations::made - kfl_test::allocations::released; }

}  // namespace

extern "C" {
std::FILE* __real_fopen64(const char* name, const char* mode);
std::FILE* __wrap_fopen64(const char* name, const char* mode);
int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file);
size_t __real_fread(void* to, size_t size, size_t count, std::FILE* file);
size_t __wrap_fread(void* to, size_t size, size_t count, std::FILE* file);
size_t __real_fwrite(const void* from, size_t size, size_t count, std::FILE* file);
size_t __wrap_fwrite(const void* from, size_t size, size_t count, std::FILE* file);
off64_t __real_lseek64(int file, off64_t offset, int whence);
off64_t __wrap_lseek64(int file, off64_t offset, int whence);
}

namespace {

// How many bytes fread still gives before it fails.
long readable = -1;
// How many times fwrite still writes before it fails once.
long writable = -1;
// Where the end of what is no regular file is said to be, and whether one can go back from there.
off64_t saidEnd = -1;
bool seeksBack = true;

}  // namespace

std::FILE* __wrap_fopen64(const char* name, const char* mode) {
    std::FILE* const file = __real_fopen64(name, mode);
    if (isRecording) {
        record("open " + baseName(name) + ' ' + mode);
        if (!firstFile) firstFile = file;
    }
    return file;
}

int __wrap_fclose(std::FILE* file) {
    if (isRecording) {
        largestBuffer = std::max(largestBuffer, __fbufsize(file));
        if (file == firstFile) liveAtClose = liveBlocks();
        record(file == firstFile ? "close input" : "close output");
    }
    return __real_fclose(file);
}

size_t __wrap_fread(void* to, size_t size, size_t count, std::FILE* file) {
    if (readable < 0 || !isRecording) return __real_fread(to, size, count, file);
    const size_t n = std::min(size * count, static_cast<size_t>(readable));
    readable -= static_cast<long>(n);
    return __real_fread(to, 1, n, file) / size;
}

size_t __wrap_fwrite(const void* from, size_t size, size_t count, std::FILE* file) {
    if (isRecording && writable >= 0 && writable-- == 0) return 0;
    return __real_fwrite(from, size, count, file);
}

off64_t __wrap_lseek64(int file, off64_t offset, int whence) {
    if (whence == SEEK_SET && !seeksBack) return -1;
    if (saidEnd < 0) return __real_lseek64(file, offset, whence);
    return whence == SEEK_END ? saidEnd + offset : offset;
}

namespace {

using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::Keyed;
using kfl_test::Rijndael;
using Calls = std::vector<std::string>;

using FileOperation = void (Rijndael::*)(const char*, const char*, int);

class RijndaelFileCallsTest : public testing::Test {
  protected:
    RijndaelFileCallsTest() {
        kfl_test::clearEvents();
        in = folder.write("in", std::string(100000, 'x'));
        out = folder / "out";
    }
    ~RijndaelFileCallsTest() override { kfl_test::clearEvents(); }

    // The calls of one operation.
    const Calls& callsOf(FileOperation operation, Rijndael& worker, const std::string& from,
                         const std::string& to) {
        calls.clear();
        calls.reserve(16);
        firstFile = nullptr;
        liveAtStart = liveBlocks();
        isRecording = true;
        try {
            (worker.*operation)(from.c_str(), to.c_str(), Rijndael::modeCBC);
        } catch (const std::bad_alloc&) {
            record("bad_alloc");
        }
        isRecording = false;
        return calls;
    }

    std::string written() const {
        std::ifstream file(out, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    kfl_test::TemporaryFolder folder;
    std::string in;
    std::string out;
    Keyed cipher{Bytes(16), Bytes(16)};
};

// Kept on purpose: enciphering and deciphering open their files in different modes.
TEST_F(RijndaelFileCallsTest, FilesAreOpenedInGivenModesAndClosedInputFirst) {
    EXPECT_EQ(callsOf(&Rijndael::encryptFile, *cipher, in, out),
              (Calls{"open in r", "open out wb", "close input", "close output"}));
    EXPECT_EQ(callsOf(&Rijndael::decryptFile, *cipher, in, out),
              (Calls{"open in rb", "open out w", "close input", "close output"}));
}

TEST_F(RijndaelFileCallsTest, WithoutAKeyTheOrderIsTheSame) {
    Rijndael fresh;
    EXPECT_EQ(callsOf(&Rijndael::encryptFile, fresh, in, out),
              (Calls{"open in r", "open out wb", "close input", "close output"}));
}

// As a disk's would be.
TEST_F(RijndaelFileCallsTest, ADeviceIsReadUpToItsEnd) {
    const char zeros[32] = {};
    char expected[32];
    cipher->encrypt(zeros, expected, sizeof zeros, Rijndael::modeECB);
    for (const unsigned int end : {1U, 16U, 17U, 32U}) {
        saidEnd = end;
        cipher->encryptFile("/dev/zero", out.c_str(), Rijndael::modeECB);
        saidEnd = -1;
        EXPECT_EQ(written(), std::string(expected, end > 16 ? 32 : 16));
    }
}

TEST_F(RijndaelFileCallsTest, ADeviceThatDoesNotGoBackIsEmpty) {
    saidEnd = 32;
    seeksBack = false;
    cipher->encryptFile("/dev/zero", out.c_str(), Rijndael::modeECB);
    seeksBack = true;
    saidEnd = -1;
    EXPECT_EQ(written(), "");
}

TEST_F(RijndaelFileCallsTest, ADirectoryIsEmptyWhereverItsEndIs) {
    saidEnd = 32;
    cipher->encryptFile(folder.path().c_str(), out.c_str(), Rijndael::modeECB);
    saidEnd = -1;
    EXPECT_EQ(written(), "");
}

TEST_F(RijndaelFileCallsTest, MissingInputEndsTheOperation) {
    EXPECT_EQ(callsOf(&Rijndael::encryptFile, *cipher, folder / "no", out), (Calls{"open no r"}));
    EXPECT_EQ(callsOf(&Rijndael::decryptFile, *cipher, folder / "no", out), (Calls{"open no rb"}));
}

TEST_F(RijndaelFileCallsTest, InputIsClosedAfterTheReportOfAMissingOutput) {
    kfl_test::setEventHook([](const kfl_test::Event&) { record("report"); });
    EXPECT_EQ(callsOf(&Rijndael::encryptFile, *cipher, in, folder / "no/out"),
              (Calls{"open in r", "open out wb", "report", "close input"}));
    EXPECT_EQ(callsOf(&Rijndael::decryptFile, *cipher, in, folder / "no/out"),
              (Calls{"open in rb", "open out w", "report", "close input"}));
    kfl_test::setEventHook(nullptr);
}

TEST_F(RijndaelFileCallsTest, FailedAllocationPassesThroughWithBothFilesClosed) {
    const Bytes chain = cipher.chain();
    for (const FileOperation operation : {&Rijndael::encryptFile, &Rijndael::decryptFile}) {
        for (unsigned long n = 1; n <= 2; ++n) {
            const kfl_test::FailingNew failing(n);
            const Calls& seen = callsOf(operation, *cipher, in, out);
            ASSERT_EQ(seen.size(), 5U);
            EXPECT_EQ(seen[2], "close input");
            EXPECT_EQ(seen[3], "close output");
            EXPECT_EQ(seen[4], "bad_alloc");
            EXPECT_EQ(liveAtClose, liveAtStart);
            EXPECT_EQ(cipher.chain(), chain);
        }
        {
            // There is no third one.
            const kfl_test::FailingNew third(3);
            EXPECT_EQ(callsOf(operation, *cipher, in, out).size(), 4U);
        }
        kfl_test::makeKey(*cipher, Bytes(16), chain);
    }
}

TEST_F(RijndaelFileCallsTest, AreasAreReleasedBeforeTheFilesAreClosed) {
    for (const FileOperation operation : {&Rijndael::encryptFile, &Rijndael::decryptFile}) {
        const kfl_test::AllocationCount count;
        callsOf(operation, *cipher, in, out);
        EXPECT_EQ(liveAtClose, liveAtStart);
        EXPECT_GE(count.made(), 2U);
    }
}

// A read that fails ends the file for enciphering and deciphering alike; what is missing is filled
// up, as if the file had been cut after its length was taken.
TEST_F(RijndaelFileCallsTest, ShortReadIsFilledUp) {
    for (const long length : {0L, 5L, 49152L, 60001L}) {
        Bytes text(100000, 'x');
        std::fill(text.begin() + length, text.end(), static_cast<kfl_test::Byte>(0xFF));
        readable = length;
        callsOf(&Rijndael::encryptFile, *Keyed(Bytes(16), Bytes(16)), in, out);
        readable = -1;
        std::FILE* const coded = std::fopen(out.c_str(), "rb");
        Bytes found(100000);
        EXPECT_EQ(std::fread(found.data(), 1, found.size(), coded), found.size());
        std::fclose(coded);
        EXPECT_TRUE(found == Keyed(Bytes(16), Bytes(16)).encrypted(text, Rijndael::modeCBC));

        std::fill(text.begin() + length, text.end(), static_cast<kfl_test::Byte>(0));
        readable = length;
        callsOf(&Rijndael::decryptFile, *Keyed(Bytes(16), Bytes(16)), in, out);
        readable = -1;
        std::FILE* const decoded = std::fopen(out.c_str(), "rb");
        EXPECT_EQ(std::fread(found.data(), 1, found.size(), decoded), found.size());
        std::fclose(decoded);
        EXPECT_TRUE(found == Keyed(Bytes(16), Bytes(16)).decrypted(text, Rijndael::modeCBC));
    }
}

// Also when there is room again.
TEST_F(RijndaelFileCallsTest, NothingIsWrittenBehindAFailedWrite) {
    for (const FileOperation operation : {&Rijndael::encryptFile, &Rijndael::decryptFile}) {
        callsOf(operation, *Keyed(Bytes(16), Bytes(16)), in, out);
        const std::string whole = written();
        ASSERT_EQ(whole.size(), 100000U);
        writable = 1;
        callsOf(operation, *Keyed(Bytes(16), Bytes(16)), in, out);
        writable = -1;
        const std::string cut = written();
        EXPECT_GT(cut.size(), 0U);
        EXPECT_LT(cut.size(), whole.size());
        EXPECT_EQ(cut, whole.substr(0, cut.size()));
    }
}

TEST_F(RijndaelFileCallsTest, BytesAreNotCopiedThroughABuffer) {
    largestBuffer = 0;
    callsOf(&Rijndael::encryptFile, *cipher, in, out);
    callsOf(&Rijndael::decryptFile, *cipher, in, out);
    // A stream without a buffer has one of a character.
    EXPECT_EQ(largestBuffer, 1U);
}

TEST_F(RijndaelFileCallsTest, MemoryDoesNotGrowWithTheFile) {
    const std::string longFile = folder.write("long", std::string(4000000, 'y'));
    const kfl_test::AllocationCount count;
    cipher->encryptFile(longFile.c_str(), out.c_str(), Rijndael::modeECB);
    EXPECT_EQ(count.made(), 2U);
    EXPECT_EQ(count.live(), 0);
    EXPECT_LE(kfl_test::allocations::lastSize, 65536U);
}

// Reports. Only the two with a file's name are for the host to format.

TEST_F(RijndaelFileCallsTest, LetsTheHostMakeTheTextsWithNames) {
    const kfl_test::MarkedParms marked;
    const std::string missing = folder / "no";
    const std::string impossible = folder / "no/out";
    for (const FileOperation operation : {&Rijndael::encryptFile, &Rijndael::decryptFile}) {
        callsOf(operation, *cipher, missing, out);
        callsOf(operation, *cipher, in, impossible);
        kfl_test::expectEvents(
            {kfl_test::made("Unable to open %s", "Unable to open " + missing),
             kfl_test::made("Unable to create %s", "Unable to create " + impossible)});
    }
}

TEST_F(RijndaelFileCallsTest, ReportsItsOtherTextsAsTheyAre) {
    const kfl_test::MarkedParms marked;
    Bytes memory(48);
    cipher->makeKey(nullptr, Rijndael::_nullchain, 16, 16);
    cipher->makeKey(chars(memory), Rijndael::_nullchain, 20, 16);
    cipher->makeKey(chars(memory), Rijndael::_nullchain, 16, 20);
    kfl_test::expectEvents({"Empty key", "Incorrect key length", "Incorrect block length"});

    const std::string empty = folder.write("empty", "");
    cipher->encrypt(chars(memory), chars(memory), 17, Rijndael::modeECB);
    cipher->decrypt(chars(memory), chars(memory), 0, Rijndael::modeECB);
    cipher->encryptFile(empty.c_str(), out.c_str(), Rijndael::modeECB);
    cipher->decryptFile(empty.c_str(), out.c_str(), Rijndael::modeECB);
    kfl_test::expectEvents(std::vector<std::string>(4, "Data not multiple of Block Size"));

    Rijndael fresh;
    fresh.DefEncryptBlock(chars(memory), chars(memory));
    fresh.DefDecryptBlock(chars(memory), chars(memory));
    fresh.encryptBlock(chars(memory), chars(memory));
    fresh.decryptBlock(chars(memory), chars(memory));
    fresh.encrypt(chars(memory), chars(memory), 16, Rijndael::modeECB);
    fresh.decrypt(chars(memory), chars(memory), 16, Rijndael::modeECB);
    fresh.encryptFile(in.c_str(), out.c_str(), Rijndael::modeECB);
    fresh.decryptFile(in.c_str(), out.c_str(), Rijndael::modeECB);
    kfl_test::expectEvents(std::vector<std::string>(8, "Object not Initialized"));
}

TEST_F(RijndaelFileCallsTest, BlocksAndTextsTakeNoMemory) {
    Bytes memory(4096, 1);
    const kfl_test::AllocationCount count;
    cipher->encryptBlock(chars(memory), chars(memory));
    cipher->decryptBlock(chars(memory), chars(memory));
    cipher->makeKey(chars(memory), Rijndael::_nullchain, 32, 32);
    for (int mode = 0; mode < 3; ++mode) {
        cipher->encrypt(chars(memory), chars(memory), 4096, mode);
        cipher->decrypt(chars(memory), chars(memory), 4096, mode);
    }
    EXPECT_EQ(count.made(), 0U);
}

}  // namespace
