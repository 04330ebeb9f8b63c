// The cipher and its tables.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "tests/old_host/old_kfl.h"
#include "tests/support/recording_host.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::AES::Rijndael;

// FIPS-197, appendix C.1.
const unsigned char plain[] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                               0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
const unsigned char coded[] = {0x69, 0xC4, 0xE0, 0xD8, 0x6A, 0x7B, 0x04, 0x30,
                               0xD8, 0xCD, 0xB7, 0x80, 0x70, 0xB4, 0xC5, 0x5A};

const char* chars(const unsigned char* bytes) { return reinterpret_cast<const char*>(bytes); }

class Keyed : public Rijndael {
  public:
    Keyed() {
        char key[16];
        for (int i = 0; i < 16; ++i) key[i] = static_cast<char>(i);
        makeKey(key, _nullchain, 16, 16);
    }
};

TEST(OldHost, TheCipherGivesItsVectors) {
    Keyed cipher;
    EXPECT_TRUE(cipher.keyInitialized);
    EXPECT_EQ(cipher.keyLength, 16);
    EXPECT_EQ(cipher.blockSize, 16);
    EXPECT_EQ(cipher.rounds, 10);
    EXPECT_EQ(cipher.encryptKeys[0][0], 0x00010203U);
    EXPECT_EQ(cipher.decryptKeys[10][3], 0x0C0D0E0FU);
    char result[16];
    char back[16];
    cipher.encryptBlock(chars(plain), result);
    EXPECT_EQ(std::memcmp(result, coded, 16), 0);
    cipher.decryptBlock(result, back);
    EXPECT_EQ(std::memcmp(back, plain, 16), 0);
    cipher.DefEncryptBlock(chars(plain), result);
    cipher.DefDecryptBlock(result, back);
    EXPECT_EQ(std::memcmp(back, plain, 16), 0);
    // From a chain of zeros the first block of CBC is that of ECB, and stays in the chain.
    cipher.encrypt(chars(plain), result, 16, 1);
    EXPECT_EQ(std::memcmp(result, coded, 16), 0);
    EXPECT_EQ(std::memcmp(cipher.chain, coded, 16), 0);
    EXPECT_EQ(std::memcmp(cipher.initialChain, Rijndael::_nullchain, 16), 0);
    Keyed fresh;
    fresh.decrypt(result, back, 16, 1);
    EXPECT_EQ(std::memcmp(back, plain, 16), 0);
}

TEST(OldHost, FilesAreEnciphered) {
    const kfl_test::TemporaryFolder folder;
    const std::string in = folder.write("in", "sixteen bytes ..and two");
    const std::string out = folder / "out";
    const std::string back = folder / "back";
    Keyed cipher;
    cipher.encryptFile(in.c_str(), out.c_str(), 0);
    cipher.decryptFile(out.c_str(), back.c_str(), 0);
    std::ifstream file(back, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(text, "sixteen bytes ..and two" + std::string(9, '\xFF'));
}

TEST(OldHost, ACipherWithoutAKeyTellsTheHost) {
    kfl_test::clearEvents();
    Rijndael cipher;
    char block[16] = {};
    cipher.encryptBlock(block, block);
    ASSERT_EQ(kfl_test::events().size(), 1U);
    EXPECT_EQ(kfl_test::events().front().text, Rijndael::_ErrorMsg1);
    EXPECT_EQ(kfl_test::events().front().group, 950);
}

TEST(OldHost, TablesAreReadByHosts) {
    EXPECT_EQ(Rijndael::_S[0], 0x63);
    EXPECT_EQ(Rijndael::_alog[1], 3);
    EXPECT_EQ(Rijndael::_T1[0], 0xC66363A5U);
    EXPECT_EQ(Rijndael::_rcon[1], 2);
    EXPECT_EQ(Rijndael::_shifts[0][1][0], 1);
}

}  // namespace
