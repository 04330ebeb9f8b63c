// The chaining modes of kfl/Rijndael.h.
#include <cstdint>

#include "crypto/cipher_event.h"
#include "crypto/transform_block.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

using detail::Block;
using detail::CountedBlock;
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

// What fits into registers, a block of four columns, has a function of its own for each mode
// ([[gnu::noinline]]): what its callers hold in registers would leave too few for the rounds.

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

template <class Way>
[[gnu::noinline]] void transformText(Text text, RoundKeys keys) {
    if (pairsAreIndependent(text)) transformPairs<Way>(text, keys);
    for (; text.left > 0; text.skip(Block<4>::size)) {
        detail::transformDefault<Way>(text.in, text.result, keys);
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

template <class Mode>
[[gnu::noinline]] void encryptChained(Text text, RoundKeys keys, char* chainBytes) {
    Block<4> chain;
    chain.load(chainBytes);
    for (; text.left > 0; text.skip(Block<4>::size)) {
        if (!Mode::feedsChain) chain.addMemory(text.in);
        detail::transform<Enciphering>(chain, keys);
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

template <class Mode>
[[gnu::noinline]] void decryptChained(Text text, RoundKeys keys, char* chainBytes) {
    Block<4> chain;
    chain.load(chainBytes);
    if (chainedPairsAreIndependent(text)) decryptChainedPairs<Mode>(text, keys, chain);
    for (; text.left > 0; text.skip(Block<4>::size)) {
        Block<4> input;
        input.load(text.in);
        char bytes[Block<4>::size];
        (Mode::feedsChain ? chain : input).store(bytes);
        detail::transformDefault<typename Mode::Inverse>(bytes, bytes, keys);
        Block<4> t;
        t.load(bytes);
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

// The same for blocks that go through memory anyway: all modes in one function, block by block.

template <class AnyBlock>
void encryptBlocks(AnyBlock t, Text text, const State& state, int mode) {
    const bool chained = mode == Rijndael::modeCBC || mode == Rijndael::modeCFB;
    if (chained) t.load(state.chain);
    for (; text.left > 0; text.skip(t.size)) {
        if (!chained) t.load(text.in);
        if (mode == Rijndael::modeCBC) t.addMemory(text.in);
        detail::transformBlock<Enciphering>(t, state.encryptKeys);
        if (mode == Rijndael::modeCFB) t.addMemory(text.in);
        t.store(text.result);
    }
    if (chained) t.store(state.chain);
}

template <class AnyBlock>
void decryptBlocks(AnyBlock chain, Text text, const State& state, int mode) {
    const bool chained = mode == Rijndael::modeCBC || mode == Rijndael::modeCFB;
    if (chained) chain.load(state.chain);
    for (; text.left > 0; text.skip(chain.size)) {
        AnyBlock t(chain);
        t.load(text.in);
        if (mode == Rijndael::modeCFB) {
            detail::transformBlock<Enciphering>(chain, state.encryptKeys);
        } else {
            detail::transformBlock<Deciphering>(t, state.decryptKeys);
        }
        if (chained) t.add(chain);
        t.store(text.result);
        // Kept on purpose: from where the input stood, which the output may have overwritten.
        if (chained) chain.load(text.in);
    }
    if (chained) chain.store(state.chain);
}

void encryptDefault(const Text& text, const State& state, int mode) {
    switch (mode) {
        case Rijndael::modeCBC: return encryptChained<Cbc>(text, state.encryptKeys, state.chain);
        case Rijndael::modeCFB: return encryptChained<Cfb>(text, state.encryptKeys, state.chain);
        default: return transformText<Enciphering>(text, state.encryptKeys);
    }
}

void decryptDefault(const Text& text, const State& state, int mode) {
    switch (mode) {
        case Rijndael::modeCBC: return decryptChained<Cbc>(text, state.decryptKeys, state.chain);
        case Rijndael::modeCFB: return decryptChained<Cfb>(text, state.encryptKeys, state.chain);
        default: return transformText<Deciphering>(text, state.decryptKeys);
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
    if constexpr (detail::countsColumns) {
        encryptBlocks(CountedBlock(blockSize), text, state, mode);
    } else {
        if (blockSize == 16) return encryptDefault(text, state, mode);
        if (blockSize == 24) return encryptBlocks(Block<6>(), text, state, mode);
        encryptBlocks(Block<8>(), text, state, mode);
    }
}

void Rijndael::decrypt(const char* in, char* result, unsigned n, int mode) {
    if (!checkText(keyInitialized, n, blockSize)) return;
    const Text text{in, result, n};
    const State state{{encryptKeys, rounds}, {decryptKeys, rounds}, chain};
    if constexpr (detail::countsColumns) {
        decryptBlocks(CountedBlock(blockSize), text, state, mode);
    } else {
        if (blockSize == 16) return decryptDefault(text, state, mode);
        if (blockSize == 24) return decryptBlocks(Block<6>(), text, state, mode);
        decryptBlocks(Block<8>(), text, state, mode);
    }
}

}  // namespace kfl::AES
