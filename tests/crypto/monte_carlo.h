// The Monte Carlo procedure of the AES validation suite: a hundred rounds of a thousand blocks,
// each fed with what came out before, each round with a key made of the last results.
//
//     const std::string last = kfl_test::monteCarlo(MyCipher::make, key, chain, text, cbc, true);
//
// `makeCipher(key, chain, mode, enciphering)` gives an object whose `next(block)` works on one
// block and keeps the chain.
#ifndef KFL_TESTS_MONTE_CARLO_H
#define KFL_TESTS_MONTE_CARLO_H

#include "tests/crypto/cipher_support.h"

namespace kfl_test {

struct MonteCarloStart {
    Bytes key;
    Bytes chain;
    Bytes text;
};

// The start from which the known answers of Rijndael_monte_carlo_test were made.
inline MonteCarloStart monteCarloStart(int keyLength) {
    MonteCarloStart start{countingBytes(keyLength), countingBytes(16), {}};
    for (const Byte b : start.chain) start.text.push_back(static_cast<Byte>(0xF0 ^ 3 * b));
    return start;
}

// The result of the last block of the last round.
template <class MakeCipher>
Bytes monteCarlo(MakeCipher makeCipher, MonteCarloStart now, int mode, bool enciphering) {
    Bytes result;
    for (int round = 0; round < 100; ++round) {
        auto cipher = makeCipher(now.key, now.chain, mode, enciphering);
        // The result before the one that is looked at; the chain stands in for what came before the
        // first.
        Bytes before = now.chain;
        Bytes input = now.text;
        for (int i = 0; i < 1000; ++i) {
            if (i > 0) {
                input = mode == Rijndael::modeECB ? result : before;
                before = result;
            }
            result = cipher.next(input);
        }
        Bytes tail = before;
        tail.insert(tail.end(), result.begin(), result.end());
        for (std::size_t i = 0; i < now.key.size(); ++i)
            now.key[i] = static_cast<Byte>(now.key[i] ^ tail[tail.size() - now.key.size() + i]);
        now.text = mode == Rijndael::modeECB ? result : before;
        now.chain = result;
    }
    return result;
}

// One block after the other through an object of the library, the chain carrying on.
class BlockByBlock {
  public:
    BlockByBlock(const Bytes& key, const Bytes& chain, int mode, bool enciphering)
        : keyed_(key, chain), mode_(mode), enciphering_(enciphering) {}

    Bytes next(const Bytes& block) {
        return enciphering_ ? keyed_.encrypted(block, mode_) : keyed_.decrypted(block, mode_);
    }

  private:
    Keyed keyed_;
    int mode_;
    bool enciphering_;
};

inline BlockByBlock makeBlockByBlock(const Bytes& key, const Bytes& chain, int mode,
                                     bool enciphering) {
    return BlockByBlock(key, chain, mode, enciphering);
}

}  // namespace kfl_test

#endif
