#include "crypto/transform_block.h"

#include <cstring>

namespace kfl::detail {

#ifdef __OPTIMIZE_SIZE__

namespace {

// A state of any width. The columns stand there twice, one set behind the other: so the row shifts
// need not begin again behind the last column.
struct WideState {
    unsigned word[2 * 8];

    void put(int column, int columns, unsigned value) {
        word[column] = word[column + columns] = value;
    }
};

// A direction that is known at run time alone, for a number of columns.
struct WideWay {
    template <class Way>
    static WideWay of(Way, int columns) {
        const auto& shifts = Rijndael::_shifts[columns / 2 - 2];
        return {Way::row0(),
                Way::row1(),
                Way::row2(),
                Way::row3(),
                Way::last(),
                shifts[1][Way::direction],
                shifts[2][Way::direction],
                shifts[3][Way::direction]};
    }

    const unsigned* row0;
    const unsigned* row1;
    const unsigned* row2;
    const unsigned* row3;
    const unsigned char* last;
    // How far on the bytes of a column come from, by row.
    int shift1;
    int shift2;
    int shift3;
};

void transformWide(unsigned* block, int columns, RoundKeys keys, const WideWay& way) {
    WideState t;
    WideState next;
    const unsigned(*row)[8] = keys.row;
    for (int i = 0; i < columns; ++i) t.put(i, columns, block[i] ^ (*row)[i]);
    for (int r = keys.rounds - 1; r > 0; --r) {
        ++row;
        const unsigned* from = t.word;
        for (int i = 0; i < columns; ++i, ++from) {
            next.put(i, columns,
                     way.row0[from[0] >> 24] ^ way.row1[(from[way.shift1] >> 16) & 0xFF] ^
                         way.row2[(from[way.shift2] >> 8) & 0xFF] ^
                         way.row3[from[way.shift3] & 0xFF] ^ (*row)[i]);
        }
        t = next;
    }
    ++row;
    const unsigned char* const s = way.last;
    const unsigned* from = t.word;
    for (int i = 0; i < columns; ++i, ++from) {
        block[i] = unsigned{s[from[0] >> 24]} << 24 ^
                   unsigned { s[(from[way.shift1] >> 16) & 0xFF] } << 16 ^
                   unsigned { s[(from[way.shift2] >> 8) & 0xFF] } << 8 ^
                   unsigned { s[from[way.shift3] & 0xFF] } ^ (*row)[i];
    }
}

}  // namespace

template <class Way>
void transformBlock(CountedBlock& t, RoundKeys keys) {
    if (t.columns != 4) {
        return transformWide(t.word, t.columns, keys, WideWay::of(Way(), t.columns));
    }
    Block<4> inRegisters;
    std::memcpy(inRegisters.word, t.word, sizeof inRegisters.word);
    transform<Way>(inRegisters, keys);
    std::memcpy(t.word, inRegisters.word, sizeof inRegisters.word);
}

template void transformBlock<Enciphering>(CountedBlock&, RoundKeys);
template void transformBlock<Deciphering>(CountedBlock&, RoundKeys);

#else

template <class Way, int Columns>
void transformBlock(Block<Columns>& t, RoundKeys keys) {
    Block<Columns> inRegisters = t;
    transform<Way>(inRegisters, keys);
    t = inRegisters;
}

template <class Way>
void transformDefault(const char* in, char* result, RoundKeys keys) {
    Block<4> t;
    t.load(in);
    transform<Way>(t, keys);
    t.store(result);
}

template void transformDefault<Enciphering>(const char*, char*, RoundKeys);
template void transformDefault<Deciphering>(const char*, char*, RoundKeys);
template void transformBlock<Enciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Enciphering, 8>(Block<8>&, RoundKeys);
template void transformBlock<Deciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Deciphering, 8>(Block<8>&, RoundKeys);

#endif

}  // namespace kfl::detail
