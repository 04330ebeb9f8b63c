// The digits of an unsigned number.
#ifndef KFL_CORE_INTEGER_DIGITS_H
#define KFL_CORE_INTEGER_DIGITS_H

#include <climits>
#include <cstddef>

namespace kfl::detail {

constexpr char smallDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
constexpr char largeDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// "0" for zero; not terminated.
class IntegerDigits {
  public:
    // The usual bases have constant divisors, which need no division.
    IntegerDigits(unsigned long value, unsigned int base, bool large) : first_(text_ + size) {
        const char* const digits = large ? largeDigits : smallDigits;
        switch (base) {
            case 8: collect<8>(value, digits); break;
            case 10: collect<10>(value, digits); break;
            case 16: collect<16>(value, digits); break;
            default: collectAny(value, base, digits);
        }
    }
    IntegerDigits(const IntegerDigits&) = delete;
    IntegerDigits& operator=(const IntegerDigits&) = delete;

    const char* text() const { return first_; }
    std::size_t length() const { return static_cast<std::size_t>(text_ + size - first_); }

  private:
    template <unsigned int base>
    void collect(unsigned long value, const char* digits) {
        do {
            *--first_ = digits[value % base];
            value /= base;
        } while (value != 0);
    }

    void collectAny(unsigned long value, unsigned int base, const char* digits) {
        do {
            *--first_ = digits[value % base];
            value /= base;
        } while (value != 0);
    }

    // Enough for base 2.
    static constexpr std::size_t size = sizeof(unsigned long) * CHAR_BIT;

    char text_[size];
    char* first_;
};

}  // namespace kfl::detail

#endif
