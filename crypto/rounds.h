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

// The column to which the row shift takes row `Row` of column `Column`.
template <class Way, int Columns, int Column, int Row>
constexpr int target = (Column + Columns - shift(Columns, Row, Way::direction)) % Columns;

// A column's share in the next state: its four bytes, substituted and mixed, go to four columns. So
// a column is done with before the next one is looked at, which needs the fewest registers.
template <class Way, int Columns, int Column>
[[gnu::always_inline]] inline void scatter(unsigned* next, unsigned word) {
    next[target<Way, Columns, Column, 3>] ^= Way::row3()[word & 0xFF];
    next[target<Way, Columns, Column, 2>] ^= Way::row2()[(word >> 8) & 0xFF];
    next[target<Way, Columns, Column, 1>] ^= Way::row1()[(word >> 16) & 0xFF];
    next[Column] ^= Way::row0()[word >> 24];
}

// The same in the last round, which does not mix.
template <class Way, int Columns, int Column>
[[gnu::always_inline]] inline void scatterLast(unsigned* next, unsigned word) {
    const unsigned char* const s = Way::last();
    next[target<Way, Columns, Column, 3>] ^= unsigned{s[word & 0xFF]};
    next[target<Way, Columns, Column, 2>] ^= unsigned{s[(word >> 8) & 0xFF]} << 8;
    next[target<Way, Columns, Column, 1>] ^= unsigned{s[(word >> 16) & 0xFF]} << 16;
    next[Column] ^= unsigned{s[word >> 24]} << 24;
}

template <class Way, int Columns, int... I>
[[gnu::always_inline]] inline void middleRound(Block<Columns>& t, const unsigned* key,
                                               Indices<I...>) {
    unsigned next[] = {key[I]...};
    (scatter<Way, Columns, I>(next, t.word[I]), ...);
    ((t.word[I] = next[I]), ...);
}

template <class Way, int Columns, int... I>
[[gnu::always_inline]] inline void lastRound(Block<Columns>& t, const unsigned* key,
                                             Indices<I...>) {
    unsigned next[] = {key[I]...};
    (scatterLast<Way, Columns, I>(next, t.word[I]), ...);
    ((t.word[I] = next[I]), ...);
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
