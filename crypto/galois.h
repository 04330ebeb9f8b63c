// Arithmetic in GF(2^8) with the polynomial 0x11B, for the compiler: the tables are made of it.
#ifndef KFL_CRYPTO_GALOIS_H
#define KFL_CRYPTO_GALOIS_H

namespace kfl::detail {

constexpr unsigned doubled(unsigned a) { return (a << 1) ^ ((a >> 7) * 0x11B); }

constexpr unsigned product(unsigned a, unsigned b) {
    unsigned sum = 0;
    for (; b != 0; b >>= 1, a = doubled(a)) sum ^= (b & 1) * a;
    return sum;
}

// The generator 3 to the power of `exponent`.
constexpr unsigned power(unsigned exponent) {
    unsigned result = 1;
    for (; exponent > 0; --exponent) result ^= doubled(result);
    return result;
}

// The exponent of `a`, below 255; 0 for 0, which has none.
constexpr unsigned logarithm(unsigned a) {
    unsigned exponent = 0;
    for (unsigned b = 1; a != 0 && b != a; b ^= doubled(b)) ++exponent;
    return exponent;
}

// 1 / a, and 0 for 0.
constexpr unsigned reciprocal(unsigned a) { return a == 0 ? 0 : power(255 - logarithm(a)); }

constexpr unsigned rotatedByte(unsigned a, unsigned bits) {
    return ((a << bits) | (a >> (8 - bits))) & 0xFF;
}

// The substitution: the reciprocal, and an affine map of its bits.
constexpr unsigned substituted(unsigned a) {
    const unsigned b = reciprocal(a);
    return b ^ rotatedByte(b, 1) ^ rotatedByte(b, 2) ^ rotatedByte(b, 3) ^ rotatedByte(b, 4) ^ 0x63;
}

// Its inverse: the inverse map, and the reciprocal.
constexpr unsigned unsubstituted(unsigned a) {
    return reciprocal(rotatedByte(a, 1) ^ rotatedByte(a, 3) ^ rotatedByte(a, 6) ^ 0x05);
}

// `a` in the first row of a column, after the column mixing; rotated right by `bits` for a lower
// row.
constexpr unsigned rotatedRight(unsigned word, unsigned bits) {
    return bits == 0 ? word : (word >> bits) | (word << (32 - bits));
}

constexpr unsigned mixedColumn(unsigned a, unsigned row) {
    const unsigned word = product(a, 2) << 24 | a << 16 | a << 8 | product(a, 3);
    return rotatedRight(word, 8 * row);
}

// The same for the inverse mixing.
constexpr unsigned unmixedColumn(unsigned a, unsigned row) {
    const unsigned word =
        product(a, 14) << 24 | product(a, 9) << 16 | product(a, 13) << 8 | product(a, 11);
    return rotatedRight(word, 8 * row);
}

}  // namespace kfl::detail

#endif
