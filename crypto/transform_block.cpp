#include "crypto/transform_block.h"

#include <cstring>

namespace kfl::detail {

template <class Way, int Columns>
void transformBlock(Block<Columns>& t, RoundKeys keys) {
    Block<Columns> inRegisters = t;
    transform<Way>(inRegisters, keys);
    t = inRegisters;
}

namespace {

// A state of any width. The columns stand there twice, one set behind the other: so the row shifts
// need not begin again behind the last column.
struct WideState {
    unsigned word[2 * 8];

    void put(int column, int columns, unsigned value) {
        word[column] = word[column + columns] = value;
    }
};

// Where the bytes of a column come from: how far on, by row.
struct Shifts {
    template <class Way>
    static Shifts of(Way, int columns) {
        const auto& shifts = Rijndael::_shifts[columns / 2 - 2];
        return {shifts[1][Way::direction], shifts[2][Way::direction], shifts[3][Way::direction]};
    }

    int row1;
    int row2;
    int row3;
};

template <class Way>
[[gnu::noinline]] void transformWide(unsigned* block, int columns, RoundKeys keys) {
    const Shifts shifts = Shifts::of(Way(), columns);
    WideState t;
    WideState next;
    const unsigned(*row)[8] = keys.row;
    for (int i = 0; i < columns; ++i) t.put(i, columns, block[i] ^ (*row)[i]);
    for (int r = keys.rounds - 1; r > 0; --r) {
        ++row;
        const unsigned* from = t.word;
        for (int i = 0; i < columns; ++i, ++from) {
            next.put(i, columns,
                     Way::row0()[from[0] >> 24] ^ Way::row1()[(from[shifts.row1] >> 16) & 0xFF] ^
                         Way::row2()[(from[shifts.row2] >> 8) & 0xFF] ^
                         Way::row3()[from[shifts.row3] & 0xFF] ^ (*row)[i]);
        }
        t = next;
    }
    ++row;
    const unsigned char* const s = Way::last();
    const unsigned* from = t.word;
    for (int i = 0; i < columns; ++i, ++from) {
        block[i] = unsigned{s[from[0] >> 24]} << 24 ^
                   unsigned { s[(from[shifts.row1] >> 16) & 0xFF] } << 16 ^
                   unsigned { s[(from[shifts.row2] >> 8) & 0xFF] } << 8 ^
                   unsigned { s[from[shifts.row3] & 0xFF] } ^ (*row)[i];
    }
}

}  // namespace

template <class Way>
void transformBlock(CountedBlock& t, RoundKeys keys) {
    if (t.columns != 4) return transformWide<Way>(t.word, t.columns, keys);
    Block<4> inRegisters;
    std::memcpy(inRegisters.word, t.word, sizeof inRegisters.word);
    transform<Way>(inRegisters, keys);
    std::memcpy(t.word, inRegisters.word, sizeof inRegisters.word);
}

#ifdef __OPTIMIZE_SIZE__
template void transformBlock<Enciphering>(CountedBlock&, RoundKeys);
template void transformBlock<Deciphering>(CountedBlock&, RoundKeys);
#else
template void transformBlock<Enciphering, 4>(Block<4>&, RoundKeys);
template void transformBlock<Enciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Enciphering, 8>(Block<8>&, RoundKeys);
template void transformBlock<Deciphering, 4>(Block<4>&, RoundKeys);
template void transformBlock<Deciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Deciphering, 8>(Block<8>&, RoundKeys);
#endif

}  // namespace kfl::detail
