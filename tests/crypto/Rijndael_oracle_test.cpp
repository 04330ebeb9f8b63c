// Random messages against OpenSSL (16-byte blocks) and libmcrypt (24- and 32-byte blocks), each
// with random splits into consecutive calls. KFL_TEST_ROUNDS=100 makes a million messages of them.
#include <gtest/gtest.h>

#include "tests/crypto/cipher_support.h"
#include "tests/crypto/mcrypt_cipher.h"
#include "tests/crypto/monte_carlo.h"
#include "tests/crypto/openssl_cipher.h"

namespace {

using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::Keyed;
using kfl_test::lengths;
using kfl_test::McryptCipher;
using kfl_test::OpensslCipher;
using kfl_test::Random;
using kfl_test::Rijndael;
using kfl_test::toHex;

struct Message {
    Bytes key;
    Bytes chain;
    Bytes text;
    int mode;
    bool enciphering;
};

// Mostly a few blocks, sometimes many.
Message randomMessage(Random& random, std::size_t blockSize) {
    const std::size_t blocks = 1 + random.below(random.oneIn(20) ? 100 : 8);
    return Message{randomBytes(random, static_cast<std::size_t>(lengths()[random.below(3)])),
                   randomBytes(random, blockSize), randomBytes(random, blocks * blockSize),
                   static_cast<int>(random.below(3)), random.oneIn(2)};
}

// What the library gives in calls of random lengths.
Bytes resultInPieces(Random& random, const Message& message) {
    Keyed cipher(message.key, message.chain);
    Bytes result(message.text.size());
    const std::size_t blockSize = message.chain.size();
    for (std::size_t at = 0; at < result.size();) {
        const auto blocksLeft = static_cast<unsigned>((result.size() - at) / blockSize);
        const std::size_t n = (1 + random.below(blocksLeft)) * blockSize;
        const char* const in = chars(message.text) + at;
        if (message.enciphering) {
            cipher->encrypt(in, chars(result) + at, static_cast<unsigned>(n), message.mode);
        } else {
            cipher->decrypt(in, chars(result) + at, static_cast<unsigned>(n), message.mode);
        }
        at += n;
    }
    return result;
}

template <class Oracle>
void expectOraclesResult(Random& random, std::size_t blockSize) {
    const Message message = randomMessage(random, blockSize);
    Oracle oracle(message.key, message.chain, message.mode, message.enciphering);
    ASSERT_EQ(toHex(resultInPieces(random, message)), toHex(oracle.next(message.text)))
        << "key " << toHex(message.key) << ", chain " << toHex(message.chain) << ", text "
        << toHex(message.text) << ", mode " << message.mode << ", "
        << (message.enciphering ? "enciphering" : "deciphering");
}

TEST(RijndaelOracleTest, SixteenByteBlocksAreThoseOfOpenssl) {
    Random random;
    for (unsigned i = kfl_test::testRounds(6000); i > 0; --i)
        expectOraclesResult<OpensslCipher>(random, 16);
}

TEST(RijndaelOracleTest, WideBlocksAreThoseOfMcrypt) {
    Random random;
    for (unsigned i = kfl_test::testRounds(2000); i > 0; --i) {
        expectOraclesResult<McryptCipher>(random, 24);
        expectOraclesResult<McryptCipher>(random, 32);
    }
}

TEST(RijndaelOracleTest, MonteCarloProcedureAgreesWithOpenssl) {
    Random random;
    for (const int keyLength : lengths()) {
        for (const int mode : {Rijndael::modeECB, Rijndael::modeCBC, Rijndael::modeCFB}) {
            const bool enciphering = random.oneIn(2);
            const kfl_test::MonteCarloStart start{
                randomBytes(random, static_cast<std::size_t>(keyLength)), randomBytes(random, 16),
                randomBytes(random, 16)};
            EXPECT_EQ(monteCarlo(kfl_test::makeBlockByBlock, start, mode, enciphering),
                      monteCarlo(kfl_test::makeOpenssl, start, mode, enciphering))
                << keyLength << ' ' << mode;
        }
    }
}

}  // namespace
