// A block of the cipher in registers: its columns, each a word of four bytes, the first byte most
// significant.
#ifndef KFL_CRYPTO_BLOCK_H
#define KFL_CRYPTO_BLOCK_H

#include <cstddef>
#include <cstring>

namespace kfl::detail {

// The numbers 0 to N - 1, to write something once for each column.
template <int... I>
struct Indices {};
template <int N, int... I>
struct IndicesUpTo : IndicesUpTo<N - 1, N - 1, I...> {};
template <int... I>
struct IndicesUpTo<0, I...> {
    using Type = Indices<I...>;
};

constexpr std::ptrdiff_t wordSize = 4;

// Where the compiler is asked for small code, columns are counted at run time: one code serves for
// all sizes.
#ifdef __OPTIMIZE_SIZE__
constexpr bool countsColumns = true;
#else
constexpr bool countsColumns = false;
#endif

// The word's bytes in the order in which they stand in memory, and back.
inline unsigned inMemoryOrder(unsigned word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return __builtin_bswap32(word);
#else
    return word;
#endif
}

inline unsigned loadWord(const char* from) {
    unsigned word;
    std::memcpy(&word, from, sizeof word);
    return inMemoryOrder(word);
}

inline void storeWord(char* to, unsigned word) {
    word = inMemoryOrder(word);
    std::memcpy(to, &word, sizeof word);
}

// Blocks are handed on by reference alone: a small structure that is returned would travel in pairs
// of columns, and stay so.
template <int Columns>
struct Block {
    static constexpr unsigned size = 4 * Columns;
    using All = typename IndicesUpTo<Columns>::Type;

    unsigned word[size / 4];

    void load(const char* from) { load(from, All()); }
    void store(char* to) const { store(to, All()); }
    void add(const unsigned* words) { add(words, All()); }
    void add(const Block& other) { add(other.word); }
    void addMemory(const char* from) { addMemory(from, All()); }

  private:
    template <int... I>
    void load(const char* from, Indices<I...>) {
        ((word[I] = loadWord(from + I * wordSize)), ...);
    }
    template <int... I>
    void store(char* to, Indices<I...>) const {
        (storeWord(to + I * wordSize, word[I]), ...);
    }
    template <int... I>
    void add(const unsigned* words, Indices<I...>) {
        ((word[I] ^= words[I]), ...);
    }
    template <int... I>
    void addMemory(const char* from, Indices<I...>) {
        ((word[I] ^= loadWord(from + I * wordSize)), ...);
    }
};

}  // namespace kfl::detail

#endif
