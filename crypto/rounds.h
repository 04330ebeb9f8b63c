// The rounds of the cipher, on blocks in registers. Columns, shifts and directions are known to the
// compiler, so nothing is left at run time but look-ups, shifts and sums.
//
// What is in this file is forced inline: a call would send the block through memory.
#ifndef KFL_CRYPTO_ROUNDS_H
#define KFL_CRYPTO_ROUNDS_H

#include "crypto/block.h"
#include "crypto/shifts.h"
#include "kfl/Rijndael.h"

namespace kfl::detail {

using AES::Rijndael;

// The round keys of one direction. A row is one round's.
struct RoundKeys {
    const unsigned (*row)[8];
    int rounds;
};

// A direction: its tables, by the row of the state in which the byte stood.
struct Enciphering {
    static constexpr int direction = enciphering;

    static const unsigned* row0() { return Rijndael::_T1; }
    static const unsigned* row1() { return Rijndael::_T2; }
    static const unsigned* row2() { return Rijndael::_T3; }
    static const unsigned* row3() { return Rijndael::_T4; }
    static const unsigned char* last() { return Rijndael::_S; }
};

struct Deciphering {
    static constexpr int direction = deciphering;

    static const unsigned* row0() { return Rijndael::_T5; }
    static const unsigned* row1() { return Rijndael::_T6; }
    static const unsigned* row2() { return Rijndael::_T7; }
    static const unsigned* row3() { return Rijndael::_T8; }
    static const unsigned char* last() { return Rijndael::_Si; }
};

// The four bytes that the row shift brings together in one column.
template <class Way, int Columns, int Column>
struct Gathered {
    template <int Row>
    static constexpr int from = (Column + shift(Columns, Row, Way::direction)) % Columns;

    [[gnu::always_inline]] explicit Gathered(const unsigned* t)
        : byte0(t[Column] >> 24),
          byte1((t[from<1>] >> 16) & 0xFF),
          byte2((t[from<2>] >> 8) & 0xFF),
          byte3(t[from<3>] & 0xFF) {}

    unsigned byte0;
    unsigned byte1;
    unsigned byte2;
    unsigned byte3;
};

// A column of the next state.
template <class Way, int Columns, int Column>
[[gnu::always_inline]] inline unsigned mixedColumn(const unsigned* t, unsigned key) {
    const Gathered<Way, Columns, Column> g(t);
    return Way::row0()[g.byte0] ^ Way::row1()[g.byte1] ^ Way::row2()[g.byte2] ^
           Way::row3()[g.byte3] ^ key;
}

// A column of the result.
template <class Way, int Columns, int Column>
[[gnu::always_inline]] inline unsigned lastColumn(const unsigned* t, unsigned key) {
    const Gathered<Way, Columns, Column> g(t);
    const unsigned char* const s = Way::last();
    return unsigned{s[g.byte0]} << 24 ^ unsigned { s[g.byte1] } << 16 ^
           unsigned { s[g.byte2] } << 8 ^ unsigned { s[g.byte3] } ^ key;
}

template <class Way, int Columns, int... I>
[[gnu::always_inline]] inline void middleRound(Block<Columns>& t, const unsigned* key,
                                               Indices<I...>) {
    const unsigned old[] = {t.word[I]...};
    ((t.word[I] = mixedColumn<Way, Columns, I>(old, key[I])), ...);
}

template <class Way, int Columns, int... I>
[[gnu::always_inline]] inline void lastRound(Block<Columns>& t, const unsigned* key,
                                             Indices<I...>) {
    const unsigned old[] = {t.word[I]...};
    ((t.word[I] = lastColumn<Way, Columns, I>(old, key[I])), ...);
}

// All rounds of one block.
template <class Way, int Columns>
[[gnu::always_inline]] inline void transform(Block<Columns>& t, RoundKeys keys) {
    using All = typename Block<Columns>::All;
    const unsigned(*row)[8] = keys.row;
    t.add(*row++);
    for (int r = keys.rounds - 1; r > 0; --r) middleRound<Way>(t, *row++, All());
    lastRound<Way>(t, *row, All());
}

// Keeps the compiler from mixing what stands before it with what stands after it, which costs more
// registers than there are. It makes no instruction.
[[gnu::always_inline]] inline void keepApart() { __atomic_signal_fence(__ATOMIC_SEQ_CST); }

// All rounds of two blocks that do not depend on one another. The look-ups of one fill the time in
// which the other waits for its own; the processor does the mixing.
template <class Way, int Columns>
[[gnu::always_inline]] inline void transformBoth(Block<Columns>& a, Block<Columns>& b,
                                                 RoundKeys keys) {
    using All = typename Block<Columns>::All;
    const unsigned(*row)[8] = keys.row;
    a.add(*row);
    b.add(*row++);
    for (int r = keys.rounds - 1; r > 0; --r) {
        middleRound<Way>(a, *row, All());
        keepApart();
        middleRound<Way>(b, *row++, All());
        keepApart();
    }
    lastRound<Way>(a, *row, All());
    keepApart();
    lastRound<Way>(b, *row, All());
}

}  // namespace kfl::detail

#endif
