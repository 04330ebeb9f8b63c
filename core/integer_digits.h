// The digits of an unsigned number.
#ifndef KFL_CORE_INTEGER_DIGITS_H
#define KFL_CORE_INTEGER_DIGITS_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kfl::detail {

constexpr char smallDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
constexpr char largeDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr char digitPairs[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546"
    "4748495051525354555657585960616263646566676869707172737475767778798081828384858687888990919293"
    "949596979899";

// Bits in base 10, rounded down: their number by the logarithm of 10 to base 2.
constexpr unsigned int digitsOfBits(unsigned int bits) { return bits * 1233 / 4096; }

// Of a power, all smaller numbers have as many digits as its exponent says. 0 stands in for the
// first one, as 0 has a digit.
struct PowersOfTen {
    static constexpr unsigned int count = digitsOfBits(sizeof(unsigned long) * CHAR_BIT) + 1;

    constexpr PowersOfTen() {
        for (unsigned int i = 1; i < count; ++i) values[i] = i == 1 ? 10 : values[i - 1] * 10;
    }

    unsigned long values[count] = {};
};

constexpr PowersOfTen powersOfTen;

// How many digits a number has, and how they are put in front of a place, two at a time for
// base 10. The usual bases have constant divisors, which need no division.
class IntegerDigits {
  public:
    // Digits in base 2, at most.
    static constexpr std::size_t maxCount = sizeof(unsigned long) * CHAR_BIT;

    IntegerDigits(unsigned long value, unsigned int base)
        : value_(value), base_(base), count_(countIn(base)) {}

    // 1 for zero.
    unsigned int count() const { return count_; }

    // Writes the digits to the places from `to` on; returns where they end.
    char* writeTo(char* to, bool large) const {
        char* const end = to + count_;
        const char* const digits = large ? largeDigits : smallDigits;
        switch (base_) {
            case 10: writeDecimal(end); break;
            case 16: writeBits<4>(end, digits); break;
            case 8: writeBits<3>(end, digits); break;
            default: writeAny(end, digits);
        }
        return end;
    }

  private:
    unsigned int countIn(unsigned int base) const {
        switch (base) {
            case 10: return countDecimal();
            case 16: return (bitCount() + 3) / 4;
            case 8: return (bitCount() + 2) / 3;
            default: return countAny();
        }
    }

    unsigned int bitCount() const {
        return static_cast<unsigned int>(maxCount) -
               static_cast<unsigned int>(__builtin_clzl(value_ | 1));
    }

    unsigned int countDecimal() const {
        const unsigned int least = digitsOfBits(bitCount());
        return least + (value_ >= powersOfTen.values[least] ? 1 : 0);
    }

    unsigned int countAny() const {
        unsigned int count = 1;
        for (unsigned long rest = value_ / base_; rest != 0; rest /= base_) ++count;
        return count;
    }

    void writeDecimal(char* end) const {
        unsigned long wide = value_;
        while (wide > UINT32_MAX) {
            std::memcpy(end -= 2, digitPairs + 2 * (wide % 100), 2);
            wide /= 100;
        }
        // Half the width is a good deal faster to divide.
        std::uint32_t rest = static_cast<std::uint32_t>(wide);
        while (rest >= 100) {
            std::memcpy(end -= 2, digitPairs + std::size_t{2} * (rest % 100), 2);
            rest /= 100;
        }
        if (rest >= 10) {
            std::memcpy(end - 2, digitPairs + std::size_t{2} * rest, 2);
        } else {
            *(end - 1) = static_cast<char>('0' + rest);
        }
    }

    template <unsigned int bits>
    void writeBits(char* end, const char* digits) const {
        unsigned long rest = value_;
        do {
            *--end = digits[rest % (1U << bits)];
            rest >>= bits;
        } while (rest != 0);
    }

    void writeAny(char* end, const char* digits) const {
        unsigned long rest = value_;
        do {
            *--end = digits[rest % base_];
            rest /= base_;
        } while (rest != 0);
    }

    unsigned long value_;
    unsigned int base_;
    unsigned int count_;
};

}  // namespace kfl::detail

#endif
