// The row shifts: how many columns a row of the state moves.
#ifndef KFL_CRYPTO_SHIFTS_H
#define KFL_CRYPTO_SHIFTS_H

namespace kfl::detail {

constexpr int enciphering = 0;
constexpr int deciphering = 1;

constexpr int shift(int columns, int row, int direction) {
    const int forward = columns == 8 && row >= 2 ? row + 1 : row;
    return direction == enciphering ? forward : (columns - forward) % columns;
}

}  // namespace kfl::detail

#endif
