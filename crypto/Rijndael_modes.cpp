// The chaining modes of kfl/Rijndael.h.
#include <cstdint>

#include "crypto/cipher_event.h"
#include "crypto/transform_block.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

using detail::Block;
using detail::Deciphering;
using detail::Enciphering;
using detail::RoundKeys;

// What a call has still to do.
struct Text {
    const char* in;
    char* result;
    unsigned left;

    void skip(unsigned bytes) {
        in += bytes;
        result += bytes;
        left -= bytes;
    }
    // How far behind `in` the result begins; a huge number when it begins before it.
    std::uintptr_t distance() const {
        return reinterpret_cast<std::uintptr_t>(result) - reinterpret_cast<std::uintptr_t>(in);
    }
};

constexpr unsigned pairSize = 2 * Block<4>::size;

// Two blocks at once give what one after the other gives, unless the first one's output is part of
// the second one's input.
bool pairsAreIndependent(const Text& text) { return text.distance() - 1 >= pairSize - 1; }

// Where the chain is read from the input after the output was written, unless, besides, a block's
// output is part of its own input.
bool chainedPairsAreIndependent(const Text& text) {
    constexpr unsigned blockSize = Block<4>::size;
    return text.distance() + (blockSize - 1) >= pairSize + (blockSize - 1);
}

// Each mode is a function of its own ([[gnu::noinline]]): what its callers hold in registers would
// leave too few for the rounds.

// Enciphers and deciphers in ECB.
template <class Way>
void transformPairs(Text& text, RoundKeys keys) {
    for (; text.left >= pairSize; text.skip(pairSize)) {
        Block<4> a;
        Block<4> b;
        a.load(text.in);
        b.load(text.in + Block<4>::size);
        detail::transformBoth<Way>(a, b, keys);
        a.store(text.result);
        b.store(text.result + Block<4>::size);
    }
}

template <class Way, int Columns>
[[gnu::noinline]] void transformText(Text text, RoundKeys keys) {
    if constexpr (Columns == 4) {
        if (pairsAreIndependent(text)) transformPairs<Way>(text, keys);
    }
    for (; text.left > 0; text.skip(Block<Columns>::size)) {
        Block<Columns> t;
        t.load(text.in);
        detail::transformBlock<Way>(t, keys);
        t.store(text.result);
    }
}

// The two modes that chain: which way the cipher runs in deciphering, and whether it is fed with
// the chain or with the text.
struct Cbc {
    using Inverse = Deciphering;
    static constexpr bool feedsChain = false;
};

struct Cfb {
    using Inverse = Enciphering;
    static constexpr bool feedsChain = true;
};

// Four columns stay in registers from block to block.
template <int Columns>
[[gnu::always_inline]] inline void encipher(Block<Columns>& t, RoundKeys keys) {
    if constexpr (Columns == 4) {
        detail::transform<Enciphering>(t, keys);
    } else {
        detail::transformBlock<Enciphering>(t, keys);
    }
}

template <class Mode, int Columns>
[[gnu::noinline]] void encryptChained(Text text, RoundKeys keys, char* chainBytes) {
    Block<Columns> chain;
    chain.load(chainBytes);
    for (; text.left > 0; text.skip(Block<Columns>::size)) {
        if (!Mode::feedsChain) chain.addMemory(text.in);
        encipher(chain, keys);
        if (Mode::feedsChain) chain.addMemory(text.in);
        chain.store(text.result);
    }
    chain.store(chainBytes);
}

template <class Mode>
void decryptChainedPairs(Text& text, RoundKeys keys, Block<4>& chain) {
    for (; text.left >= pairSize; text.skip(pairSize)) {
        const char* const second = text.in + Block<4>::size;
        Block<4> a;
        Block<4> b;
        if (Mode::feedsChain) {
            a = chain;
            b.load(text.in);
        } else {
            a.load(text.in);
            b.load(second);
        }
        detail::transformBoth<typename Mode::Inverse>(a, b, keys);
        if (Mode::feedsChain) {
            a.addMemory(text.in);
            b.addMemory(second);
        } else {
            a.add(chain);
            b.addMemory(text.in);
        }
        chain.load(second);
        a.store(text.result);
        b.store(text.result + Block<4>::size);
    }
}

template <class Mode, int Columns>
[[gnu::noinline]] void decryptChained(Text text, RoundKeys keys, char* chainBytes) {
    Block<Columns> chain;
    chain.load(chainBytes);
    if constexpr (Columns == 4) {
        if (chainedPairsAreIndependent(text)) decryptChainedPairs<Mode>(text, keys, chain);
    }
    for (; text.left > 0; text.skip(Block<Columns>::size)) {
        Block<Columns> input;
        input.load(text.in);
        Block<Columns> t = Mode::feedsChain ? chain : input;
        detail::transformBlock<typename Mode::Inverse>(t, keys);
        t.add(Mode::feedsChain ? input : chain);
        t.store(text.result);
        // Kept on purpose: from where the input stood, which the output may have overwritten.
        chain.load(text.in);
    }
    chain.store(chainBytes);
}

// Both directions' keys and the running chain.
struct State {
    RoundKeys encryptKeys;
    RoundKeys decryptKeys;
    char* chain;
};

template <int Columns>
void encryptText(const Text& text, const State& state, int mode) {
    switch (mode) {
        case Rijndael::modeCBC:
            return encryptChained<Cbc, Columns>(text, state.encryptKeys, state.chain);
        case Rijndael::modeCFB:
            return encryptChained<Cfb, Columns>(text, state.encryptKeys, state.chain);
        default: return transformText<Enciphering, Columns>(text, state.encryptKeys);
    }
}

template <int Columns>
void decryptText(const Text& text, const State& state, int mode) {
    switch (mode) {
        case Rijndael::modeCBC:
            return decryptChained<Cbc, Columns>(text, state.decryptKeys, state.chain);
        case Rijndael::modeCFB:
            return decryptChained<Cfb, Columns>(text, state.encryptKeys, state.chain);
        default: return transformText<Deciphering, Columns>(text, state.decryptKeys);
    }
}

// Whether the text can be worked on; else the reason is reported.
bool checkText(bool keyInitialized, unsigned n, int blockSize) {
    if (!keyInitialized) {
        detail::reportCipherError(Rijndael::_ErrorMsg1);
        return false;
    }
    if (n == 0 || n % static_cast<unsigned>(blockSize) != 0) {
        detail::reportCipherError(Rijndael::_ErrorMsg2);
        return false;
    }
    return true;
}

}  // namespace

void Rijndael::encrypt(const char* in, char* result, unsigned n, int mode) {
    if (!checkText(keyInitialized, n, blockSize)) return;
    const Text text{in, result, n};
    const State state{{encryptKeys, rounds}, {decryptKeys, rounds}, chain};
    if (blockSize == 16) return encryptText<4>(text, state, mode);
    if (blockSize == 24) return encryptText<6>(text, state, mode);
    encryptText<8>(text, state, mode);
}

void Rijndael::decrypt(const char* in, char* result, unsigned n, int mode) {
    if (!checkText(keyInitialized, n, blockSize)) return;
    const Text text{in, result, n};
    const State state{{encryptKeys, rounds}, {decryptKeys, rounds}, chain};
    if (blockSize == 16) return decryptText<4>(text, state, mode);
    if (blockSize == 24) return decryptText<6>(text, state, mode);
    decryptText<8>(text, state, mode);
}

}  // namespace kfl::AES
