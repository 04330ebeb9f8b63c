// One block as a function of its own, for every place where a call does not matter.
#ifndef KFL_CRYPTO_TRANSFORM_BLOCK_H
#define KFL_CRYPTO_TRANSFORM_BLOCK_H

#include "crypto/rounds.h"

namespace kfl::detail {

// All rounds of one block; Way is Enciphering or Deciphering.
template <class Way, int Columns>
void transformBlock(Block<Columns>& t, RoundKeys keys);

// The same for a block of four columns, from memory to memory; `in` may be `result`.
template <class Way>
void transformDefault(const char* in, char* result, RoundKeys keys);

// A block of as many columns as its size says at run time. It offers what Block does, in less code.
struct CountedBlock {
    // cppcheck-suppress uninitMemberVar ; load fills the words
    explicit CountedBlock(int blockSize)
        : size(static_cast<unsigned>(blockSize)), columns(blockSize / 4) {}

    void load(const char* from) {
        for (int i = 0; i < columns; ++i) word[i] = loadWord(from + i * wordSize);
    }
    void store(char* to) const {
        for (int i = 0; i < columns; ++i) storeWord(to + i * wordSize, word[i]);
    }
    void add(const CountedBlock& other) {
        for (int i = 0; i < columns; ++i) word[i] ^= other.word[i];
    }
    void addMemory(const char* from) {
        for (int i = 0; i < columns; ++i) word[i] ^= loadWord(from + i * wordSize);
    }

    unsigned size;
    int columns;
    unsigned word[8];
};

template <class Way>
void transformBlock(CountedBlock& t, RoundKeys keys);

}  // namespace kfl::detail

#endif
