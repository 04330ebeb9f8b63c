// Whole files, as they lie on the disk afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/crypto/cipher_support.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::countingBytes;
using kfl_test::expectEvents;
using kfl_test::Keyed;
using kfl_test::lengths;
using kfl_test::Random;
using kfl_test::ReferenceModes;
using kfl_test::Rijndael;

constexpr int ecb = Rijndael::modeECB;
constexpr int cbc = Rijndael::modeCBC;
constexpr int cfb = Rijndael::modeCFB;

using FileOperation = void (Rijndael::*)(const char*, const char*, int);
constexpr FileOperation bothOperations[] = {&Rijndael::encryptFile, &Rijndael::decryptFile};

constexpr const char* noKey = "Object not Initialized";
constexpr const char* notWhole = "Data not multiple of Block Size";

Bytes contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    Bytes content(static_cast<std::size_t>(std::filesystem::file_size(path)));
    file.read(chars(content), static_cast<std::streamsize>(content.size()));
    return content;
}

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        if (fcntl(descriptor, F_GETFD) >= 0) ++count;
    return count;
}

// Files of one test, and the check that all were closed.
class RijndaelFilesTest : public testing::Test {
  protected:
    RijndaelFilesTest() : descriptors_(openDescriptors()) { kfl_test::clearEvents(); }
    ~RijndaelFilesTest() override {
        EXPECT_TRUE(kfl_test::events().empty());
        EXPECT_EQ(openDescriptors(), descriptors_);
    }

    std::string write(const std::string& name, const Bytes& content) const {
        return folder_.write(name, std::string(content.begin(), content.end()));
    }
    std::string path(const std::string& name) const { return folder_ / name; }
    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

    // What an operation makes of a file.
    Bytes run(FileOperation operation, Rijndael& cipher, const Bytes& content, int mode) const {
        const std::string in = write("in", content);
        const std::string out = path("out");
        (cipher.*operation)(in.c_str(), out.c_str(), mode);
        EXPECT_EQ(contentOf(in), content);
        return contentOf(out);
    }
    Bytes enciphered(Rijndael& cipher, const Bytes& content, int mode) const {
        return run(&Rijndael::encryptFile, cipher, content, mode);
    }
    Bytes deciphered(Rijndael& cipher, const Bytes& content, int mode) const {
        return run(&Rijndael::decryptFile, cipher, content, mode);
    }

  private:
    kfl_test::TemporaryFolder folder_;
    int descriptors_;
};

Bytes filledUp(Bytes bytes, std::size_t blockSize, kfl_test::Byte filler) {
    while (bytes.size() % blockSize != 0) bytes.push_back(filler);
    return bytes;
}

TEST_F(RijndaelFilesTest, TenBytesComeBackWithSixBytesOfPadding) {
    const Bytes text = kfl_test::bytesOf("0123456789");
    const Bytes coded = enciphered(*Keyed(countingBytes(16), Bytes(16)), text, cbc);
    EXPECT_EQ(coded.size(), 16U);
    const Bytes back = deciphered(*Keyed(countingBytes(16), Bytes(16)), coded, cbc);
    EXPECT_EQ(back, filledUp(text, 16, 0xFF));
}

TEST_F(RijndaelFilesTest, WholeBlocksGetNoPadding) {
    const Bytes text(32, 'x');
    const Bytes coded = enciphered(*Keyed(countingBytes(16), Bytes(16)), text, ecb);
    EXPECT_EQ(coded.size(), 32U);
    EXPECT_EQ(deciphered(*Keyed(countingBytes(16), Bytes(16)), coded, ecb), text);
}

TEST_F(RijndaelFilesTest, EveryLengthIsFilledUpWithOnesAndEnciphered) {
    Random random;
    for (const int blockSize : lengths()) {
        const auto size = static_cast<std::size_t>(blockSize);
        for (std::size_t length = 1; length <= 2 * size + 1; ++length) {
            const int mode = static_cast<int>(random.below(3));
            const Bytes key =
                randomBytes(random, static_cast<std::size_t>(lengths()[random.below(3)]));
            const Bytes chain = randomBytes(random, size);
            const Bytes text = randomBytes(random, length);
            Keyed cipher(key, chain);
            ReferenceModes reference(key, chain);
            const Bytes padded = filledUp(text, size, 0xFF);
            ASSERT_EQ(enciphered(*cipher, text, mode), reference.encrypted(padded, mode)) << length;
            ASSERT_EQ(cipher.chain(), reference.chain());
        }
    }
}

TEST_F(RijndaelFilesTest, EveryLengthIsFilledUpWithZerosAndDeciphered) {
    Random random;
    for (const int blockSize : lengths()) {
        const auto size = static_cast<std::size_t>(blockSize);
        for (std::size_t length = 1; length <= 2 * size + 1; ++length) {
            const int mode = static_cast<int>(random.below(3));
            const Bytes key =
                randomBytes(random, static_cast<std::size_t>(lengths()[random.below(3)]));
            const Bytes chain = randomBytes(random, size);
            const Bytes text = randomBytes(random, length);
            Keyed cipher(key, chain);
            ReferenceModes reference(key, chain);
            const Bytes padded = filledUp(text, size, 0);
            ASSERT_EQ(deciphered(*cipher, text, mode), reference.decrypted(padded, mode)) << length;
            ASSERT_EQ(cipher.chain(), reference.chain());
        }
    }
}

// Lengths around what is worked on at once, and beyond.
TEST_F(RijndaelFilesTest, LongFilesAreOneChain) {
    Random random;
    constexpr std::size_t piece = 96 * 512;
    for (const std::size_t length : {piece - 1, piece, piece + 1, 2 * piece, 3 * piece + 12345}) {
        for (const std::size_t blockSize : {16U, 24U, 32U}) {
            for (const int mode : {cbc, cfb}) {
                const Bytes key = randomBytes(random, 16);
                const Bytes chain = randomBytes(random, blockSize);
                const Bytes text = randomBytes(random, length);
                const Bytes padded = filledUp(text, blockSize, 0xFF);
                // In memory, in one call, which other tests compare with the rules.
                Keyed inMemory(key, chain);
                const Bytes expected = inMemory.encrypted(padded, mode);
                Keyed cipher(key, chain);
                const Bytes coded = enciphered(*cipher, text, mode);
                ASSERT_TRUE(coded == expected) << length << ' ' << blockSize << ' ' << mode;
                EXPECT_EQ(cipher.chain(), inMemory.chain());
                ASSERT_TRUE(deciphered(*Keyed(key, chain), coded, mode) == padded);
            }
        }
    }
}

TEST_F(RijndaelFilesTest, ChainCarriesOnFromFileToFileAndToMemory) {
    for (const int mode : {cbc, cfb}) {
        const Bytes text(80, 0x42);
        Keyed whole(countingBytes(24), countingBytes(16));
        Bytes all = whole.encrypted(text, mode);
        Keyed cipher(countingBytes(24), countingBytes(16));
        Bytes parts = enciphered(*cipher, Bytes(32, 0x42), mode);
        const Bytes more = enciphered(*cipher, Bytes(16, 0x42), mode);
        parts.insert(parts.end(), more.begin(), more.end());
        const Bytes rest = cipher.encrypted(Bytes(32, 0x42), mode);
        parts.insert(parts.end(), rest.begin(), rest.end());
        EXPECT_EQ(parts, all);
        // The chain stands behind the ciphertext now: only a new key brings it back.
        EXPECT_NE(deciphered(*cipher, all, mode), text);
        kfl_test::makeKey(*cipher, countingBytes(24), countingBytes(16));
        EXPECT_EQ(deciphered(*cipher, all, mode), text);
    }
}

TEST_F(RijndaelFilesTest, AnyOtherModeIsEcb) {
    const Bytes text(40, 9);
    Keyed cipher(countingBytes(16), countingBytes(16));
    EXPECT_EQ(enciphered(*cipher, text, 7), enciphered(*cipher, text, ecb));
    EXPECT_EQ(cipher.chain(), countingBytes(16));
}

TEST_F(RijndaelFilesTest, BytesOfEveryValuePassThrough) {
    Bytes text;
    for (int i = 0; i < 1024; ++i) text.push_back(static_cast<kfl_test::Byte>(i));
    Keyed cipher(countingBytes(16), Bytes(32));
    const Bytes coded = enciphered(*cipher, text, ecb);
    EXPECT_EQ(deciphered(*cipher, coded, ecb), text);
}

TEST_F(RijndaelFilesTest, EmptyFileGivesAnEmptyFileAndAReport) {
    for (const FileOperation operation : bothOperations) {
        write("out", Bytes(100, 1));
        Keyed cipher(Bytes(16), countingBytes(16));
        EXPECT_EQ(run(operation, *cipher, Bytes(), cbc), Bytes());
        expectEvents({notWhole});
        EXPECT_EQ(cipher.chain(), countingBytes(16));
    }
}

TEST_F(RijndaelFilesTest, LongerOutputIsCut) {
    for (const FileOperation operation : bothOperations) {
        write("out", Bytes(100000, 1));
        EXPECT_EQ(run(operation, *Keyed(Bytes(16), Bytes(16)), Bytes(17), ecb).size(), 32U);
    }
}

TEST_F(RijndaelFilesTest, OutputIsANewFileWithTheUsualPermissions) {
    const mode_t old = umask(027);
    enciphered(*Keyed(Bytes(16), Bytes(16)), Bytes(16), ecb);
    umask(old);
    struct stat status {};
    ASSERT_EQ(stat(path("out").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(RijndaelFilesTest, MissingInputIsReportedAndNothingCreated) {
    for (const FileOperation operation : bothOperations) {
        Keyed cipher(Bytes(16), countingBytes(16));
        const std::string missing = path("no such file");
        ((*cipher).*operation)(missing.c_str(), path("out").c_str(), cbc);
        expectEvents({"Unable to open " + missing});
        EXPECT_FALSE(exists("out"));
        EXPECT_EQ(cipher.chain(), countingBytes(16));
    }
}

TEST_F(RijndaelFilesTest, MissingInputLeavesAnOldOutputAlone) {
    for (const FileOperation operation : bothOperations) {
        const std::string out = write("out", Bytes(5, 1));
        const std::string missing = path("no%such%sfile");
        ((*Keyed(Bytes(16), Bytes(16))).*operation)(missing.c_str(), out.c_str(), ecb);
        expectEvents({"Unable to open " + missing});
        EXPECT_EQ(contentOf(out), Bytes(5, 1));
    }
}

TEST_F(RijndaelFilesTest, OutputThatCannotBeCreatedIsReported) {
    for (const FileOperation operation : bothOperations) {
        const std::string in = write("in", Bytes(16, 1));
        for (const std::string& out : {path("no such folder/out"), path(""), std::string()}) {
            Keyed cipher(Bytes(16), countingBytes(16));
            ((*cipher).*operation)(in.c_str(), out.c_str(), cbc);
            expectEvents({"Unable to create " + out});
            EXPECT_EQ(cipher.chain(), countingBytes(16));
        }
        EXPECT_EQ(contentOf(in), Bytes(16, 1));
    }
}

TEST_F(RijndaelFilesTest, InputIsReportedBeforeTheOutput) {
    Keyed(Bytes(16), Bytes(16))->encryptFile(path("a").c_str(), path("b/c").c_str(), ecb);
    expectEvents({"Unable to open " + path("a")});
}

TEST_F(RijndaelFilesTest, NullNamesAreFilesThatDoNotExist) {
    for (const FileOperation operation : bothOperations) {
        const std::string in = write("in", Bytes(16, 1));
        Keyed cipher(Bytes(16), Bytes(16));
        ((*cipher).*operation)(nullptr, path("out").c_str(), ecb);
        ((*cipher).*operation)(in.c_str(), nullptr, ecb);
        expectEvents({"Unable to open (null)", "Unable to create (null)"});
        EXPECT_FALSE(exists("out"));
    }
}

// The output is cut before the input's length is taken.
TEST_F(RijndaelFilesTest, OutputEqualToTheInputEndsEmpty) {
    for (const FileOperation operation : bothOperations) {
        const std::string file = write("file", Bytes(64, 1));
        ((*Keyed(Bytes(16), Bytes(16))).*operation)(file.c_str(), file.c_str(), ecb);
        expectEvents({notWhole});
        EXPECT_EQ(contentOf(file), Bytes());

        const std::string target = write("target", Bytes(64, 1));
        std::filesystem::create_hard_link(target, path("link"));
        ((*Keyed(Bytes(16), Bytes(16))).*operation)(target.c_str(), path("link").c_str(), ecb);
        expectEvents({notWhole});
        EXPECT_EQ(contentOf(target), Bytes());
        std::filesystem::remove(path("link"));
    }
}

TEST_F(RijndaelFilesTest, WithoutAKeyTheOutputIsMadeAndStaysEmpty) {
    for (const FileOperation operation : bothOperations) {
        for (const std::size_t length : {0U, 10U, 16U, 100000U}) {
            write("out", Bytes(7, 1));
            Rijndael cipher;
            EXPECT_EQ(run(operation, cipher, Bytes(length, 1), cbc), Bytes());
            expectEvents({noKey});
        }
    }
}

TEST_F(RijndaelFilesTest, FilesAreLookedForAlsoWithoutAKey) {
    for (const FileOperation operation : bothOperations) {
        Rijndael cipher;
        (cipher.*operation)(path("missing").c_str(), path("out").c_str(), ecb);
        expectEvents({"Unable to open " + path("missing")});
        const std::string in = write("in", Bytes(16));
        (cipher.*operation)(in.c_str(), path("a/b").c_str(), ecb);
        expectEvents({"Unable to create " + path("a/b")});
    }
}

TEST_F(RijndaelFilesTest, DirectoryCountsAsEmpty) {
    for (const FileOperation operation : bothOperations) {
        ((*Keyed(Bytes(16), Bytes(16))).*operation)(path("").c_str(), path("out").c_str(), ecb);
        expectEvents({notWhole});
        EXPECT_EQ(contentOf(path("out")), Bytes());
    }
}

TEST_F(RijndaelFilesTest, DeviceWithoutALengthCountsAsEmpty) {
    for (const FileOperation operation : bothOperations) {
        ((*Keyed(Bytes(16), Bytes(16))).*operation)("/dev/null", path("out").c_str(), ecb);
        expectEvents({notWhole});
        EXPECT_EQ(contentOf(path("out")), Bytes());
    }
}

TEST_F(RijndaelFilesTest, WhatCannotBeMeasuredCountsAsEmpty) {
    for (const FileOperation operation : bothOperations) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(::write(ends[1], "0123456789012345", 16), 16);
        const std::string in = "/dev/fd/" + std::to_string(ends[0]);
        ((*Keyed(Bytes(16), Bytes(16))).*operation)(in.c_str(), path("out").c_str(), ecb);
        close(ends[0]);
        close(ends[1]);
        expectEvents({notWhole});
        EXPECT_EQ(contentOf(path("out")), Bytes());
    }
}

// The result is written to whatever stands under the name.
TEST_F(RijndaelFilesTest, OutputMayBeAPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string in = write("in", Bytes(10, 1));
    Keyed cipher(countingBytes(16), Bytes(16));
    cipher->encryptFile(in.c_str(), ("/dev/fd/" + std::to_string(ends[1])).c_str(), cbc);
    Bytes received(64);
    const ssize_t n = ::read(ends[0], received.data(), received.size());
    close(ends[0]);
    close(ends[1]);
    ASSERT_EQ(n, 16);
    received.resize(16);
    EXPECT_EQ(received,
              Keyed(countingBytes(16), Bytes(16)).encrypted(filledUp(Bytes(10, 1), 16, 0xFF), cbc));
}

// A write that fails is not reported; the chain goes to the end of the text all the same.
TEST_F(RijndaelFilesTest, FailedWritesAreNotReported) {
    const std::string in = write("in", Bytes(200000, 1));
    for (const int mode : {ecb, cbc, cfb}) {
        Keyed inMemory(countingBytes(16), Bytes(16));
        inMemory.encrypted(Bytes(200000, 1), mode);
        Keyed cipher(countingBytes(16), Bytes(16));
        cipher->encryptFile(in.c_str(), "/dev/full", mode);
        EXPECT_EQ(cipher.chain(), inMemory.chain());
    }
}

// What fitted is a piece of the right result.
TEST_F(RijndaelFilesTest, OutputIsCutWhereTheLimitOfItsSizeIs) {
    const std::string in = write("in", Bytes(200000, 1));
    const Bytes whole = enciphered(*Keyed(Bytes(16), Bytes(16)), Bytes(200000, 1), cbc);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldAction = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    Keyed(Bytes(16), Bytes(16))->encryptFile(in.c_str(), path("cut").c_str(), cbc);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, oldAction);
    const Bytes cut = contentOf(path("cut"));
    EXPECT_EQ(cut.size(), 100000U);
    EXPECT_TRUE(std::equal(cut.begin(), cut.end(), whole.begin()));
}

// Holes in a file are zeros; the padding is that of the whole length.
TEST_F(RijndaelFilesTest, HolesAreReadAsZeros) {
    const std::string in = write("in", Bytes());
    constexpr std::size_t length = 1U << 20;
    std::filesystem::resize_file(in, length + 3);
    Keyed cipher(Bytes(32), Bytes(16));
    cipher->encryptFile(in.c_str(), path("out").c_str(), ecb);
    const Bytes found = contentOf(path("out"));
    EXPECT_TRUE(found == cipher.encrypted(filledUp(Bytes(length + 3), 16, 0xFF), ecb));
}

}  // namespace
