// The chaining modes on areas of memory.
#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <string>
#include <vector>

#include "tests/crypto/cipher_support.h"

namespace {

using kfl_test::Byte;
using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::expectEvents;
using kfl_test::fromHex;
using kfl_test::Keyed;
using kfl_test::lengths;
using kfl_test::Random;
using kfl_test::ReferenceModes;
using kfl_test::Rijndael;

constexpr int ecb = Rijndael::modeECB;
constexpr int cbc = Rijndael::modeCBC;
constexpr int cfb = Rijndael::modeCFB;

class RijndaelModesTest : public testing::Test {
  protected:
    RijndaelModesTest() { kfl_test::clearEvents(); }
    ~RijndaelModesTest() override { EXPECT_TRUE(kfl_test::events().empty()); }
};

Bytes part(const Bytes& bytes, std::size_t from, std::size_t n) {
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(n));
}

Bytes joined(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// --- known answers ---------------------------------------------------------------------------

struct Vector {
    const char* name;
    int mode;
    const char* key;
    const char* result;
};

void PrintTo(const Vector& v, std::ostream* out) { *out << v.name; }

constexpr const char* key128 = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr const char* key192 = "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b";
constexpr const char* key256 = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4";
constexpr const char* plaintext =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";

class RijndaelModeVectorTest : public testing::TestWithParam<Vector> {};

TEST_P(RijndaelModeVectorTest, FourBlocksAreEncipheredAndDeciphered) {
    const Vector& v = GetParam();
    const Bytes chain = kfl_test::countingBytes(16);
    const Bytes coded = Keyed(fromHex(v.key), chain).encrypted(fromHex(plaintext), v.mode);
    EXPECT_EQ(kfl_test::toHex(coded), v.result);
    const Bytes text = Keyed(fromHex(v.key), chain).decrypted(coded, v.mode);
    EXPECT_EQ(kfl_test::toHex(text), plaintext);
}

INSTANTIATE_TEST_SUITE_P(
    Known, RijndaelModeVectorTest,
    testing::Values(Vector{"ECB128", ecb, key128,
                           "3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
                           "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4"},
                    Vector{"ECB192", ecb, key192,
                           "bd334f1d6e45f25ff712a214571fa5cc974104846d0ad3ad7734ecb3ecee4eef"
                           "ef7afd2270e2e60adce0ba2face6444e9a4b41ba738d6c72fb16691603c18e0e"},
                    Vector{"ECB256", ecb, key256,
                           "f3eed1bdb5d2a03c064b5a7e3db181f8591ccb10d410ed26dc5ba74a31362870"
                           "b6ed21b99ca6f4f9f153e7b1beafed1d23304b7a39f9f3ff067d8d8f9e24ecc7"},
                    Vector{"CBC128", cbc, key128,
                           "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                           "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
                    Vector{"CBC192", cbc, key192,
                           "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
                           "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
                    Vector{"CBC256", cbc, key256,
                           "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
                           "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
                    Vector{"CFB128", cfb, key128,
                           "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
                           "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6"},
                    Vector{"CFB192", cfb, key192,
                           "cdc80d6fddf18cab34c25909c99a417467ce7f7f81173621961a2b70171d3d7a"
                           "2e1e8a1dd59b88b1c8e60fed1efac4c9c05f9f9ca9834fa042ae8fba584b09ff"},
                    Vector{"CFB256", cfb, key256,
                           "dc7e84bfda79164b7ecd8486985d386039ffed143b28b1c832113c6331e5407b"
                           "df10132415e54b92a13ed0a8267ae2f975a385741ab9cef82031623d55b1e471"}));

// --- against the rules -----------------------------------------------------------------------

// Every pairing of lengths and modes.
template <class Check>
void forEachKind(Check check) {
    for (const int keyLength : lengths())
        for (const int blockSize : lengths())
            for (const int mode : {ecb, cbc, cfb})
                check(static_cast<std::size_t>(keyLength), static_cast<std::size_t>(blockSize),
                      mode);
}

TEST_F(RijndaelModesTest, AllLengthsAndModesFollowTheRules) {
    Random random;
    forEachKind([&](std::size_t keyLength, std::size_t blockSize, int mode) {
        for (std::size_t blocks = 1; blocks <= 6; ++blocks) {
            const Bytes key = randomBytes(random, keyLength);
            const Bytes chain = randomBytes(random, blockSize);
            const Bytes text = randomBytes(random, blocks * blockSize);
            Keyed cipher(key, chain);
            ReferenceModes reference(key, chain);
            ASSERT_EQ(cipher.encrypted(text, mode), reference.encrypted(text, mode));
            ASSERT_EQ(cipher.chain(), reference.chain());
            // The chain goes on from where enciphering left it.
            ASSERT_EQ(cipher.decrypted(text, mode), reference.decrypted(text, mode));
            ASSERT_EQ(cipher.chain(), reference.chain());
        }
    });
}

TEST_F(RijndaelModesTest, DecipheringInvertsEnciphering) {
    Random random;
    forEachKind([&](std::size_t keyLength, std::size_t blockSize, int mode) {
        const Bytes key = randomBytes(random, keyLength);
        const Bytes chain = randomBytes(random, blockSize);
        const Bytes text = randomBytes(random, 33 * blockSize);
        Keyed there(key, chain);
        Keyed back(key, chain);
        EXPECT_EQ(back.decrypted(there.encrypted(text, mode), mode), text);
        EXPECT_EQ(back.chain(), there.chain());
    });
}

TEST_F(RijndaelModesTest, ConsecutiveCallsContinueOneChain) {
    Random random;
    forEachKind([&](std::size_t keyLength, std::size_t blockSize, int mode) {
        const Bytes key = randomBytes(random, keyLength);
        const Bytes chain = randomBytes(random, blockSize);
        const Bytes text = randomBytes(random, 12 * blockSize);
        Keyed whole(key, chain);
        Keyed inParts(key, chain);
        const Bytes coded = whole.encrypted(text, mode);
        Bytes collected;
        Bytes decoded;
        Keyed back(key, chain);
        for (std::size_t done = 0; done < 12;) {
            const std::size_t blocks = 1 + random.below(static_cast<unsigned>(12 - done));
            collected =
                joined(collected,
                       inParts.encrypted(part(text, done * blockSize, blocks * blockSize), mode));
            decoded = joined(
                decoded, back.decrypted(part(coded, done * blockSize, blocks * blockSize), mode));
            done += blocks;
        }
        EXPECT_EQ(collected, coded);
        EXPECT_EQ(decoded, text);
        EXPECT_EQ(inParts.chain(), whole.chain());
    });
}

TEST_F(RijndaelModesTest, EcbLeavesTheChainAlone) {
    const Bytes chain = kfl_test::countingBytes(24);
    Keyed cipher(Bytes(16), chain);
    cipher.decrypted(cipher.encrypted(Bytes(240), ecb), ecb);
    EXPECT_EQ(cipher.chain(), chain);
}

TEST_F(RijndaelModesTest, FirstCbcBlockWithAChainOfZerosIsThatOfEcb) {
    for (const int blockSize : lengths()) {
        const auto size = static_cast<std::size_t>(blockSize);
        const Bytes text = kfl_test::countingBytes(blockSize);
        Rijndael cipher;
        cipher.makeKey(key128, Rijndael::_nullchain, 16, blockSize);
        Bytes chained(size);
        cipher.encrypt(chars(text), chars(chained), static_cast<unsigned>(size), cbc);
        Bytes alone(size);
        cipher.encrypt(chars(text), chars(alone), static_cast<unsigned>(size), ecb);
        EXPECT_EQ(chained, alone);
    }
}

TEST_F(RijndaelModesTest, AnyOtherModeIsEcb) {
    for (const int blockSize : lengths()) {
        const Bytes chain = kfl_test::countingBytes(blockSize);
        const Bytes text(static_cast<std::size_t>(5 * blockSize), 0x3C);
        for (const int mode : {3, 7, -1, 256, 257, 0x10001, INT_MAX, INT_MIN}) {
            Keyed cipher(kfl_test::countingBytes(32), chain);
            EXPECT_EQ(cipher.encrypted(text, mode), cipher.encrypted(text, ecb)) << mode;
            EXPECT_EQ(cipher.decrypted(text, mode), cipher.decrypted(text, ecb)) << mode;
            EXPECT_EQ(cipher.chain(), chain);
        }
    }
}

// --- overlapping input and output ------------------------------------------------------------

struct Area {
    std::size_t in;
    std::size_t out;
    std::size_t length;
};

// Runs both on a copy of the same memory; everything must be the same afterwards.
void expectSameEffect(Random& random, std::size_t blockSize, int mode, bool enciphering,
                      const Area& area) {
    const Bytes key = randomBytes(random, static_cast<std::size_t>(lengths()[random.below(3)]));
    const Bytes chain = randomBytes(random, blockSize);
    const Bytes memory = randomBytes(random, std::max(area.in, area.out) + area.length + 8);
    Bytes ours = memory;
    Bytes theirs = memory;
    Keyed cipher(key, chain);
    ReferenceModes reference(key, chain);
    const auto n = static_cast<unsigned>(area.length);
    if (enciphering) {
        cipher->encrypt(chars(ours) + area.in, chars(ours) + area.out, n, mode);
        reference.encrypt(&theirs[area.in], &theirs[area.out], n, mode);
    } else {
        cipher->decrypt(chars(ours) + area.in, chars(ours) + area.out, n, mode);
        reference.decrypt(&theirs[area.in], &theirs[area.out], n, mode);
    }
    ASSERT_EQ(ours, theirs) << "block size " << blockSize << ", mode " << mode << ", "
                            << (enciphering ? "enciphering" : "deciphering") << ' ' << n
                            << " bytes from " << area.in << " to " << area.out;
    ASSERT_EQ(cipher.chain(), reference.chain());
}

// Blocks of 16 bytes are worked on in ways that depend on the distance and the count.
void expectSameEffectAtAllDistances(std::size_t blockSize, bool enciphering) {
    Random random;
    constexpr std::size_t middle = 80;
    const std::vector<std::size_t> counts =
        blockSize == 16 ? std::vector<std::size_t>{1, 2, 3, 4, 7} : std::vector<std::size_t>{1, 3};
    for (const int mode : {ecb, cbc, cfb}) {
        for (std::size_t out = 0; out <= 2 * middle; ++out) {
            for (const std::size_t blocks : counts)
                expectSameEffect(random, blockSize, mode, enciphering,
                                 Area{middle, out, blocks * blockSize});
        }
    }
}

TEST_F(RijndaelModesTest, OverlapEnciphersAsIfBlockAfterBlock) {
    for (const std::size_t blockSize : {16U, 24U, 32U})
        expectSameEffectAtAllDistances(blockSize, true);
}

TEST_F(RijndaelModesTest, OverlapDeciphersAsIfBlockAfterBlock) {
    for (const std::size_t blockSize : {16U, 24U, 32U})
        expectSameEffectAtAllDistances(blockSize, false);
}

TEST_F(RijndaelModesTest, EncipheringInPlaceGivesTheSameCiphertext) {
    forEachKind([](std::size_t keyLength, std::size_t blockSize, int mode) {
        const Bytes key = kfl_test::countingBytes(static_cast<int>(keyLength));
        const Bytes chain = kfl_test::countingBytes(static_cast<int>(blockSize));
        Bytes memory(9 * blockSize, 0x77);
        const Bytes expected = Keyed(key, chain).encrypted(memory, mode);
        Keyed(key, chain)
            ->encrypt(chars(memory), chars(memory), static_cast<unsigned>(memory.size()), mode);
        EXPECT_EQ(memory, expected);
    });
}

// The second block is summed up with the first plaintext block instead of the first ciphertext
// block.
TEST_F(RijndaelModesTest, DecipheringInPlaceBreaksTheChainAfterTheFirstBlock) {
    for (const int mode : {cbc, cfb}) {
        for (const std::size_t blockSize : {16U, 24U, 32U}) {
            const Bytes key = kfl_test::countingBytes(16);
            const Bytes chain = kfl_test::countingBytes(static_cast<int>(blockSize));
            const Bytes text(4 * blockSize, 0x77);
            const Bytes coded = Keyed(key, chain).encrypted(text, mode);
            Bytes memory = coded;
            Keyed cipher(key, chain);
            cipher->decrypt(chars(memory), chars(memory), static_cast<unsigned>(memory.size()),
                            mode);
            EXPECT_EQ(part(memory, 0, blockSize), part(text, 0, blockSize));
            ReferenceModes second(key, part(text, 0, blockSize));
            EXPECT_EQ(part(memory, blockSize, blockSize),
                      second.decrypted(part(coded, blockSize, blockSize), mode));
            EXPECT_NE(part(memory, blockSize, blockSize), part(text, blockSize, blockSize));
            EXPECT_EQ(cipher.chain(), part(memory, 3 * blockSize, blockSize));
        }
    }
}

TEST_F(RijndaelModesTest, EcbIsInvertedInPlace) {
    for (const std::size_t blockSize : {16U, 24U, 32U}) {
        Bytes memory(7 * blockSize, 0x11);
        Keyed cipher(kfl_test::countingBytes(32), Bytes(blockSize));
        const auto n = static_cast<unsigned>(memory.size());
        cipher->encrypt(chars(memory), chars(memory), n, ecb);
        EXPECT_NE(memory, Bytes(7 * blockSize, 0x11));
        cipher->decrypt(chars(memory), chars(memory), n, ecb);
        EXPECT_EQ(memory, Bytes(7 * blockSize, 0x11));
    }
}

// --- refusals --------------------------------------------------------------------------------

using TextOperation = void (Rijndael::*)(const char*, char*, unsigned, int);
constexpr TextOperation bothOperations[] = {&Rijndael::encrypt, &Rijndael::decrypt};

TEST_F(RijndaelModesTest, LengthsThatAreNoWholeBlocksAreRefused) {
    for (const TextOperation operation : bothOperations) {
        for (const unsigned blockSize : {16U, 24U, 32U}) {
            const Bytes chain = kfl_test::countingBytes(static_cast<int>(blockSize));
            Keyed cipher(Bytes(16), chain);
            for (const unsigned n : {0U, 1U, blockSize - 1, blockSize + 1, blockSize + 8,
                                     2 * blockSize - 1, 3 * blockSize + 4}) {
                for (const int mode : {ecb, cbc, cfb, 7}) {
                    const Bytes in(128, 1);
                    Bytes result(128, 2);
                    ((*cipher).*operation)(chars(in), chars(result), n, mode);
                    expectEvents({"Data not multiple of Block Size"});
                    EXPECT_EQ(result, Bytes(128, 2));
                    EXPECT_EQ(cipher.chain(), chain);
                }
            }
        }
    }
}

// 4294967295 is a multiple of neither 16 nor 24; nothing may be computed in signed numbers.
TEST_F(RijndaelModesTest, LargestLengthIsRefusedLikeAnyOther) {
    Keyed cipher(Bytes(16), Bytes(16));
    char byte = 3;
    cipher->encrypt(&byte, &byte, UINT_MAX, cbc);
    cipher->decrypt(&byte, &byte, UINT_MAX - 7, cbc);
    expectEvents({"Data not multiple of Block Size", "Data not multiple of Block Size"});
    EXPECT_EQ(byte, 3);
}

TEST_F(RijndaelModesTest, NothingIsDoneWithoutAKey) {
    for (const TextOperation operation : bothOperations) {
        for (const unsigned n : {0U, 15U, 16U, 96U}) {
            Rijndael cipher;
            const Bytes in(96, 1);
            Bytes result(96, 2);
            (cipher.*operation)(chars(in), chars(result), n, cbc);
            // Also where the length would be refused: the key is asked for first.
            expectEvents({"Object not Initialized"});
            EXPECT_EQ(result, Bytes(96, 2));
        }
    }
}

TEST_F(RijndaelModesTest, RefusedLengthDoesNotInterruptAChain) {
    const Bytes text(64, 5);
    Keyed plain(Bytes(16), Bytes(16));
    const Bytes expected = plain.encrypted(text, cbc);
    Keyed cipher(Bytes(16), Bytes(16));
    const Bytes first = cipher.encrypted(part(text, 0, 32), cbc);
    cipher.encrypted(Bytes(17), cbc);
    expectEvents({"Data not multiple of Block Size"});
    EXPECT_EQ(joined(first, cipher.encrypted(part(text, 32, 32), cbc)), expected);
}

TEST_F(RijndaelModesTest, RefusedKeyDoesNotInterruptAChain) {
    const Bytes text(64, 5);
    Keyed plain(Bytes(16), Bytes(16));
    const Bytes expected = plain.encrypted(text, cfb);
    Keyed cipher(Bytes(16), Bytes(16));
    const Bytes first = cipher.encrypted(part(text, 0, 32), cfb);
    cipher->makeKey(key128, Rijndael::_nullchain, 16, 17);
    expectEvents({"Incorrect block length"});
    EXPECT_EQ(joined(first, cipher.encrypted(part(text, 32, 32), cfb)), expected);
}

TEST_F(RijndaelModesTest, NewKeyStartsTheChainAnew) {
    const Bytes key = kfl_test::countingBytes(16);
    const Bytes chain = kfl_test::countingBytes(16);
    const Bytes text(80, 9);
    Keyed cipher(key, chain);
    const Bytes first = cipher.encrypted(text, cbc);
    EXPECT_NE(cipher.encrypted(text, cbc), first);
    kfl_test::makeKey(*cipher, key, chain);
    EXPECT_EQ(cipher.encrypted(text, cbc), first);
}

}  // namespace
