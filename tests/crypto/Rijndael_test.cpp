// Keys, single blocks, and what is refused.
#include "kfl/Rijndael.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "tests/crypto/cipher_support.h"

namespace {

using kfl_test::Bytes;
using kfl_test::bytesOf;
using kfl_test::chars;
using kfl_test::expectEvents;
using kfl_test::fromHex;
using kfl_test::Keyed;
using kfl_test::lengths;
using kfl_test::Random;
using kfl_test::ReferenceCipher;
using kfl_test::Rijndael;

using BlockOperation = void (Rijndael::*)(const char*, char*);

Bytes run(Rijndael& cipher, BlockOperation operation, const Bytes& in) {
    Bytes result(in.size());
    (cipher.*operation)(chars(in), chars(result));
    return result;
}

class RijndaelTest : public testing::Test {
  protected:
    RijndaelTest() { kfl_test::clearEvents(); }
    ~RijndaelTest() override { EXPECT_TRUE(kfl_test::events().empty()); }
};

struct Vector {
    int keyLength;
    int blockSize;
    const char* result;
};

void PrintTo(const Vector& v, std::ostream* out) { *out << v.keyLength << '/' << v.blockSize; }

// The key 00 01 02 ... and the text 00 11 22 ... FF 00 11 ...
class RijndaelVectorTest : public testing::TestWithParam<Vector> {};

TEST_P(RijndaelVectorTest, BlockIsEncipheredAndDeciphered) {
    const Vector& v = GetParam();
    Bytes text;
    for (int i = 0; i < v.blockSize; ++i)
        text.push_back(static_cast<kfl_test::Byte>(17 * (i % 16)));
    Keyed cipher(kfl_test::countingBytes(v.keyLength), Bytes(text.size()));
    const Bytes result = run(*cipher, &Rijndael::encryptBlock, text);
    EXPECT_EQ(kfl_test::toHex(result), v.result);
    EXPECT_EQ(run(*cipher, &Rijndael::decryptBlock, result), text);
}

INSTANTIATE_TEST_SUITE_P(
    Known, RijndaelVectorTest,
    testing::Values(
        Vector{16, 16, "69c4e0d86a7b0430d8cdb78070b4c55a"},
        Vector{24, 16, "dda97ca4864cdfe06eaf70a0ec0d7191"},
        Vector{32, 16, "8ea2b7ca516745bfeafc49904b496089"},
        Vector{16, 24, "281e1b9f0afbab002cc8d11c50208a5aa2309597dc5e68c6"},
        Vector{24, 24, "47a918cc621e0d6b9d603f872715d786ec1053a8d7083e45"},
        Vector{32, 24, "4995529beb2fa8cf286237bf0302cff446f8aeb8772425ec"},
        Vector{16, 32, "eb9b069f4395bb77bc033550eb43e012714f3da49dd026c3b30c4c585c49c1cd"},
        Vector{24, 32, "e4ac159fcbde846961862ba7274ea472ea9c0f0962721f41a53e89fc9e1e6f85"},
        Vector{32, 32, "86632a22a5f7f50f4f254acd6ea413dc1dbffa33cf7f0aa7f1a0c605464ab0bd"}));

TEST_F(RijndaelTest, RoundsFollowTheLongerOfKeyAndBlock) {
    for (const int key : lengths()) {
        for (const int block : lengths()) {
            Keyed cipher(kfl_test::countingBytes(key), Bytes(static_cast<std::size_t>(block)));
            EXPECT_EQ(cipher->roundCount(), std::max(key, block) / 4 + 6) << key << ' ' << block;
            EXPECT_EQ(cipher->keyBytes(), key);
            EXPECT_EQ(cipher->blockBytes(), block);
        }
    }
}

TEST_F(RijndaelTest, AllLengthsAgreeWithTheReference) {
    Random random;
    for (unsigned round = kfl_test::testRounds(40); round > 0; --round) {
        for (const int keyLength : lengths()) {
            for (const int blockSize : lengths()) {
                const auto size = static_cast<std::size_t>(blockSize);
                const Bytes key = randomBytes(random, static_cast<std::size_t>(keyLength));
                const Bytes text = randomBytes(random, size);
                Keyed cipher(key, Bytes(size));
                const ReferenceCipher reference(key, size);
                const Bytes result = run(*cipher, &Rijndael::encryptBlock, text);
                ASSERT_EQ(result, reference.encrypt(text)) << keyLength << ' ' << blockSize;
                ASSERT_EQ(run(*cipher, &Rijndael::decryptBlock, text), reference.decrypt(text));
                ASSERT_EQ(run(*cipher, &Rijndael::decryptBlock, result), text);
            }
        }
    }
}

TEST_F(RijndaelTest, DefaultBlockOperationsAreThoseOfSixteenBytes) {
    Random random;
    for (const int keyLength : lengths()) {
        const Bytes key = randomBytes(random, static_cast<std::size_t>(keyLength));
        const Bytes text = randomBytes(random, 16);
        Keyed cipher(key, Bytes(16));
        const ReferenceCipher reference(key, 16);
        EXPECT_EQ(run(*cipher, &Rijndael::DefEncryptBlock, text), reference.encrypt(text));
        EXPECT_EQ(run(*cipher, &Rijndael::DefDecryptBlock, text), reference.decrypt(text));
    }
}

// They take the first four words of each round key, and all rounds.
TEST_F(RijndaelTest, DefaultBlockOperationsDoNotLookAtTheBlockSize) {
    Random random;
    for (const int keyLength : lengths()) {
        for (const std::size_t blockSize : {24U, 32U}) {
            const Bytes key = randomBytes(random, static_cast<std::size_t>(keyLength));
            Keyed cipher(key, Bytes(blockSize));
            const ReferenceCipher reference(key, blockSize);
            Bytes text = randomBytes(random, 16);
            Bytes result(40, 0xA5);
            cipher->DefEncryptBlock(chars(text), chars(result));
            Bytes expected = reference.encrypt(text);
            expected.resize(40, 0xA5);
            EXPECT_EQ(result, expected);
            cipher->DefDecryptBlock(chars(result), chars(result));
            std::copy(text.begin(), text.end(), expected.begin());
            EXPECT_EQ(result, expected);
        }
    }
}

TEST_F(RijndaelTest, ExactlyOneBlockIsWrittenAnywhereInMemory) {
    Random random;
    for (const int blockSize : lengths()) {
        const auto size = static_cast<std::size_t>(blockSize);
        const Bytes key = randomBytes(random, 16);
        const ReferenceCipher reference(key, size);
        Keyed cipher(key, Bytes(size));
        for (std::size_t shift = 0; shift < 8; ++shift) {
            Bytes in = randomBytes(random, shift);
            const Bytes text = randomBytes(random, size);
            in.insert(in.end(), text.begin(), text.end());
            Bytes result(size + 16, 0x5A);
            cipher->encryptBlock(chars(in) + shift, chars(result) + 8 - shift);
            const Bytes coded = reference.encrypt(text);
            Bytes expected(size + 16, 0x5A);
            std::copy(coded.begin(), coded.end(), expected.begin() + 8 - static_cast<long>(shift));
            EXPECT_EQ(result, expected);
        }
    }
}

TEST_F(RijndaelTest, BlockIsWorkedOnInPlaceAndOverItself) {
    Random random;
    for (const int blockSize : lengths()) {
        const auto size = static_cast<std::size_t>(blockSize);
        const Bytes key = randomBytes(random, 32);
        const ReferenceCipher reference(key, size);
        Keyed cipher(key, Bytes(size));
        for (std::size_t to = 0; to <= 2 * size; ++to) {
            Bytes memory = randomBytes(random, 3 * size);
            const Bytes text = bytesOf(chars(memory) + size, blockSize);
            cipher->encryptBlock(chars(memory) + size, chars(memory) + to);
            EXPECT_EQ(bytesOf(chars(memory) + to, blockSize), reference.encrypt(text)) << to;
            cipher->decryptBlock(chars(memory) + to, chars(memory) + size);
            EXPECT_EQ(bytesOf(chars(memory) + size, blockSize), text) << to;
        }
    }
}

TEST_F(RijndaelTest, BlockOperationsLeaveTheChainAlone) {
    const Bytes chain = kfl_test::countingBytes(32);
    Keyed cipher(kfl_test::countingBytes(16), chain);
    run(*cipher, &Rijndael::encryptBlock, Bytes(32));
    run(*cipher, &Rijndael::decryptBlock, Bytes(32));
    run(*cipher, &Rijndael::DefEncryptBlock, Bytes(16));
    EXPECT_EQ(cipher.chain(), chain);
}

TEST_F(RijndaelTest, MakeKeyRecordsTheChainTwice) {
    for (const int blockSize : lengths()) {
        const Bytes chain = kfl_test::countingBytes(blockSize);
        Keyed cipher(Bytes(16), chain);
        EXPECT_EQ(bytesOf(cipher->firstChain(), blockSize), chain);
        EXPECT_EQ(bytesOf(cipher->currentChain(), blockSize), chain);
        cipher.encrypted(Bytes(static_cast<std::size_t>(blockSize)), Rijndael::modeCBC);
        EXPECT_EQ(bytesOf(cipher->firstChain(), blockSize), chain);
        EXPECT_NE(bytesOf(cipher->currentChain(), blockSize), chain);
    }
}

TEST_F(RijndaelTest, MakeKeyTakesTheObjectsOwnChain) {
    const Bytes key = kfl_test::countingBytes(24);
    Keyed cipher(Bytes(16), kfl_test::countingBytes(24));
    cipher.encrypted(Bytes(48), Rijndael::modeCBC);
    const Bytes moved = cipher.chain();
    cipher->makeKey(chars(key), cipher->currentChain(), 24, 24);
    EXPECT_EQ(bytesOf(cipher->firstChain(), 24), moved);
    cipher.encrypted(Bytes(48), Rijndael::modeCBC);
    cipher->makeKey(chars(key), cipher->firstChain(), 24, 24);
    EXPECT_EQ(bytesOf(cipher->firstChain(), 24), moved);
    EXPECT_EQ(cipher.chain(), moved);
}

TEST_F(RijndaelTest, MakeKeyChangesKeyAndBlockSizeAtAnyTime) {
    Random random;
    Rijndael cipher;
    for (int turn = 0; turn < 60; ++turn) {
        const auto keyLength = static_cast<std::size_t>(lengths()[random.below(3)]);
        const auto blockSize = static_cast<std::size_t>(lengths()[random.below(3)]);
        const Bytes key = randomBytes(random, keyLength);
        const Bytes text = randomBytes(random, blockSize);
        kfl_test::makeKey(cipher, key, randomBytes(random, blockSize));
        const ReferenceCipher reference(key, blockSize);
        EXPECT_EQ(run(cipher, &Rijndael::encryptBlock, text), reference.encrypt(text));
        EXPECT_EQ(run(cipher, &Rijndael::decryptBlock, text), reference.decrypt(text));
    }
}

TEST_F(RijndaelTest, KeyIsCopied) {
    Bytes key = kfl_test::countingBytes(16);
    Bytes chain = kfl_test::countingBytes(16);
    Keyed cipher(key, chain);
    const ReferenceCipher reference(key, 16);
    key.assign(16, 0xFF);
    chain.assign(16, 0xFF);
    EXPECT_EQ(run(*cipher, &Rijndael::encryptBlock, Bytes(16)), reference.encrypt(Bytes(16)));
    EXPECT_EQ(cipher.chain(), kfl_test::countingBytes(16));
}

TEST_F(RijndaelTest, CopiesGoTheirOwnWays) {
    Keyed cipher(kfl_test::countingBytes(16), Bytes(16));
    Rijndael copy(*cipher);
    cipher.encrypted(Bytes(16), Rijndael::modeCBC);
    EXPECT_EQ(bytesOf(copy.currentChain(), 16), Bytes(16));
    copy.makeKey(chars(Bytes(16, 1)), Rijndael::_nullchain, 16, 16);
    const ReferenceCipher reference(kfl_test::countingBytes(16), 16);
    EXPECT_EQ(run(*cipher, &Rijndael::encryptBlock, Bytes(16)), reference.encrypt(Bytes(16)));
}

struct Refusal {
    const char* name;
    bool hasKey;
    int keyLength;
    int blockSize;
    const char* report;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

class RijndaelRefusalTest : public testing::TestWithParam<Refusal> {};

constexpr const char* emptyKey = "Empty key";
constexpr const char* keyLengthFault = "Incorrect key length";
constexpr const char* blockLengthFault = "Incorrect block length";

// The key and the chain that a refused call brings along.
constexpr char offered[64] = {1, 2, 3};

TEST_P(RijndaelRefusalTest, FreshObjectStaysWithoutKey) {
    const Refusal& refusal = GetParam();
    Rijndael cipher;
    cipher.makeKey(refusal.hasKey ? offered : nullptr, offered, refusal.keyLength,
                   refusal.blockSize);
    expectEvents({refusal.report});
    EXPECT_FALSE(cipher.hasKey());
    char result[32] = {42};
    cipher.encryptBlock(offered, result);
    expectEvents({"Object not Initialized"});
    EXPECT_EQ(result[0], 42);
}

TEST_P(RijndaelRefusalTest, NothingOfTheObjectChanges) {
    const Refusal& refusal = GetParam();
    for (const int blockSize : lengths()) {
        Keyed cipher(kfl_test::countingBytes(24), kfl_test::countingBytes(blockSize));
        cipher.encrypted(Bytes(static_cast<std::size_t>(2 * blockSize)), Rijndael::modeCBC);
        unsigned char before[sizeof(Rijndael)];
        std::memcpy(before, static_cast<const void*>(&*cipher), sizeof before);
        cipher->makeKey(refusal.hasKey ? offered : nullptr, offered, refusal.keyLength,
                        refusal.blockSize);
        expectEvents({refusal.report});
        EXPECT_EQ(std::memcmp(before, static_cast<const void*>(&*cipher), sizeof before), 0);
        EXPECT_TRUE(cipher->hasKey());
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, RijndaelRefusalTest,
    testing::Values(Refusal{"null key", false, 16, 16, emptyKey},
                    Refusal{"null key before key length", false, 20, 16, emptyKey},
                    Refusal{"null key before both lengths", false, 0, -1, emptyKey},
                    Refusal{"key length 20", true, 20, 16, keyLengthFault},
                    Refusal{"key length before block length", true, 20, 20, keyLengthFault},
                    Refusal{"key length 0", true, 0, 16, keyLengthFault},
                    Refusal{"key length 15", true, 15, 16, keyLengthFault},
                    Refusal{"key length 17", true, 17, 32, keyLengthFault},
                    Refusal{"key length 28", true, 28, 24, keyLengthFault},
                    Refusal{"key length 33", true, 33, 16, keyLengthFault},
                    Refusal{"key length 64", true, 64, 16, keyLengthFault},
                    Refusal{"key length in bits", true, 128, 16, keyLengthFault},
                    Refusal{"negative key length", true, -16, 16, keyLengthFault},
                    Refusal{"block length 0", true, 16, 0, blockLengthFault},
                    Refusal{"block length 8", true, 24, 8, blockLengthFault},
                    Refusal{"block length 20", true, 32, 20, blockLengthFault},
                    Refusal{"block length 28", true, 16, 28, blockLengthFault},
                    Refusal{"block length 33", true, 16, 33, blockLengthFault},
                    Refusal{"block length 48", true, 16, 48, blockLengthFault},
                    Refusal{"negative block length", true, 16, -32, blockLengthFault}));

TEST_F(RijndaelTest, RefusedChainIsNotLookedAt) {
    Rijndael cipher;
    cipher.makeKey(offered, nullptr, 20, 16);
    cipher.makeKey(offered, nullptr, 16, 20);
    cipher.makeKey(nullptr, nullptr, 16, 16);
    expectEvents({keyLengthFault, blockLengthFault, emptyKey});
}

TEST_F(RijndaelTest, ConstructorOnlyClearsTheKeyFlag) {
    alignas(Rijndael) unsigned char memory[sizeof(Rijndael)];
    std::memset(memory, 0xA5, sizeof memory);
    const auto* const cipher = new (memory) Rijndael;
    EXPECT_FALSE(cipher->hasKey());
    EXPECT_EQ(cipher->keyBytes(), 0);
    EXPECT_EQ(cipher->blockBytes(), 0);
    EXPECT_EQ(cipher->roundCount(), 0);
    const Bytes after = bytesOf(reinterpret_cast<const char*>(memory), sizeof memory);
    cipher->~Rijndael();
    constexpr std::size_t flag = sizeof(void*);
    EXPECT_EQ(after[flag], 0);
    for (std::size_t i = flag + 1; i < after.size(); ++i) EXPECT_EQ(after[i], 0xA5) << i;
}

TEST_F(RijndaelTest, DestructorWipesNothing) {
    alignas(Rijndael) unsigned char memory[sizeof(Rijndael)] = {};
    auto* const cipher = new (memory) Rijndael;
    cipher->makeKey(offered, Rijndael::_nullchain, 16, 16);
    const Bytes before = bytesOf(reinterpret_cast<const char*>(memory), sizeof memory);
    cipher->~Rijndael();
    const auto* volatile still = memory;
    for (std::size_t i = sizeof(void*); i < before.size(); ++i) EXPECT_EQ(still[i], before[i]) << i;
}

TEST_F(RijndaelTest, BlockOperationsWithoutAKeyReportAndWriteNothing) {
    for (const BlockOperation operation :
         {&Rijndael::encryptBlock, &Rijndael::decryptBlock, &Rijndael::DefEncryptBlock,
          &Rijndael::DefDecryptBlock}) {
        Rijndael cipher;
        Bytes result(32, 7);
        (cipher.*operation)(offered, chars(result));
        expectEvents({"Object not Initialized"});
        EXPECT_EQ(result, Bytes(32, 7));
    }
}

// A host's class, deleted through the base.
class Derived : public Rijndael {
  public:
    explicit Derived(bool& ended) : ended_(ended) {}
    ~Derived() override { ended_ = true; }

  private:
    bool& ended_;
};

TEST_F(RijndaelTest, DestructorIsVirtual) {
    bool ended = false;
    Rijndael* const cipher = new Derived(ended);
    delete cipher;
    EXPECT_TRUE(ended);
}

}  // namespace
