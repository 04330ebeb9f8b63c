#include "kfl/BoundedStringBase.h"

#include <climits>
#include <cstdint>
#include <cstring>

#include "core/argument_list.h"
#include "core/bounded_output.h"
#include "core/integer_digits.h"

namespace {

using kfl::detail::ArgumentList;
using kfl::detail::BoundedOutput;
using kfl::detail::IntegerDigits;

using B = BoundedStringBase;

constexpr int none = -1;

// A directive's parts between "%" and the conversion.
struct Directive {
    int flags = 0;
    int width = none;
    int precision = none;
    char qualifier = '\0';

    bool isLong() const { return qualifier == 'l' || qualifier == 'L' || qualifier == 'Z'; }
    bool has(int flag) const { return (flags & flag) != 0; }
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

int flagOf(char c) {
    switch (c) {
        case ' ': return B::SPACE;
        case '#': return B::SPECIAL;
        case '+': return B::PLUS;
        case '-': return B::LEFT;
        case '0': return B::ZEROPAD;
        default: return 0;
    }
}

char signOf(long num, const Directive& directive) {
    if (!directive.has(B::SIGN)) return '\0';
    if (num < 0) return '-';
    if (directive.has(B::PLUS)) return '+';
    return directive.has(B::SPACE) ? ' ' : '\0';
}

std::size_t prefixLength(int base, const Directive& directive) {
    if (!directive.has(B::SPECIAL)) return 0;
    if (base == 16) return 2;
    return base == 8 ? 1 : 0;
}

// Writes an integer; `base` is one of 2 to 36.
void writeNumber(BoundedOutput& out, long num, int base, Directive directive) {
    if (directive.has(B::LEFT)) directive.flags &= ~B::ZEROPAD;
    const bool large = directive.has(B::LARGE);
    const char sign = signOf(num, directive);
    const unsigned long bits = static_cast<unsigned long>(num);
    const IntegerDigits digits(sign == '-' ? 0UL - bits : bits, static_cast<unsigned int>(base),
                               large);
    const std::size_t prefix = prefixLength(base, directive);

    const std::int64_t count = static_cast<std::int64_t>(digits.length());
    const std::int64_t zeros = directive.precision > count ? directive.precision - count : 0;
    const std::int64_t pad = std::int64_t{directive.width} - (sign ? 1 : 0) -
                             static_cast<std::int64_t>(prefix) - zeros - count;
    if (!directive.has(B::ZEROPAD | B::LEFT)) out.fill(' ', pad);
    if (sign) out.put(sign);
    if (prefix > 0) out.copy(large ? "0X" : "0x", prefix);
    if (directive.has(B::ZEROPAD)) out.fill('0', pad);
    out.fill('0', zeros);
    out.copy(digits.text(), digits.length());
    if (directive.has(B::LEFT)) out.fill(' ', pad);
}

// Walks a format and writes what it says.
class Formatter {
  public:
    Formatter(char* buf, unsigned int size, const char* format, void* arguments)
        : start_(buf), out_(buf, size), next_(format), arguments_(arguments) {}

    int run() {
        for (;;) {
            copyPlain();
            if (*next_ == '\0') break;
            ++next_;
            const Directive directive = readDirective();
            convert(directive);
        }
        *out_.position() = '\0';
        return stored();
    }

  private:
    int stored() const { return static_cast<int>(out_.position() - start_); }

    // Copies all up to the next directive.
    void copyPlain() {
        const char* const plain = next_;
        while (*next_ != '\0' && *next_ != '%') ++next_;
        out_.copy(plain, static_cast<std::size_t>(next_ - plain));
    }

    Directive readDirective() {
        Directive directive;
        while (const int flag = flagOf(*next_)) {
            directive.flags |= flag;
            ++next_;
        }
        readWidth(directive);
        readPrecision(directive);
        if (*next_ == 'h' || *next_ == 'l' || *next_ == 'L' || *next_ == 'Z') {
            directive.qualifier = *next_++;
        }
        return directive;
    }

    void readWidth(Directive& directive) {
        if (isDigit(*next_)) {
            directive.width = B::skip_atoi(&next_);
        } else if (*next_ == '*') {
            ++next_;
            const int width = arguments_.next<int>();
            if (width < 0) directive.flags |= B::LEFT;
            directive.width = width >= 0 ? width : -(width + 1) + (width == INT_MIN ? 0 : 1);
        }
    }

    void readPrecision(Directive& directive) {
        if (*next_ != '.') return;
        ++next_;
        directive.precision = 0;
        if (isDigit(*next_)) {
            directive.precision = B::skip_atoi(&next_);
        } else if (*next_ == '*') {
            ++next_;
            const int precision = arguments_.next<int>();
            if (precision > 0) directive.precision = precision;
        }
    }

    void convert(Directive directive) {
        const char conversion = *next_;
        if (conversion == '\0') return out_.put('%');
        ++next_;
        switch (conversion) {
            case 'c': return writeCharacter(directive);
            case 's': return writeText(directive);
            case 'p': return writePointer(directive);
            case 'n': return storeCount(directive);
            case '%': return out_.put('%');
            case 'o': return writeInteger(directive, 8, 0);
            case 'x': return writeInteger(directive, 16, 0);
            case 'X': return writeInteger(directive, 16, B::LARGE);
            case 'd':
            case 'i': return writeInteger(directive, 10, B::SIGN);
            case 'u': return writeInteger(directive, 10, 0);
            default: out_.put('%'); out_.put(conversion);
        }
    }

    void writeJustified(const Directive& directive, const char* text, std::size_t length) {
        const std::int64_t pad = directive.width - static_cast<std::int64_t>(length);
        if (!directive.has(B::LEFT)) out_.fill(' ', pad);
        out_.copy(text, length);
        if (directive.has(B::LEFT)) out_.fill(' ', pad);
    }

    void writeCharacter(const Directive& directive) {
        const char c = static_cast<char>(arguments_.next<int>());
        writeJustified(directive, &c, 1);
    }

    void writeText(const Directive& directive) {
        const char* text = arguments_.next<const char*>();
        if (!text) text = "<NULL>";
        const std::size_t length =
            directive.precision < 0 ? std::strlen(text)
                                    : strnlen(text, static_cast<std::size_t>(directive.precision));
        writeJustified(directive, text, length);
    }

    void writePointer(Directive directive) {
        if (directive.width == none) {
            directive.width = 8;
            directive.flags |= B::ZEROPAD;
        }
        void* const pointer = arguments_.next<void*>();
        writeNumber(out_, static_cast<long>(reinterpret_cast<std::intptr_t>(pointer)), 16,
                    directive);
    }

    void storeCount(const Directive& directive) {
        void* const place = arguments_.next<void*>();
        if (!place) return;
        if (directive.isLong()) {
            *static_cast<long*>(place) = stored();
        } else {
            *static_cast<int*>(place) = stored();
        }
    }

    void writeInteger(Directive directive, int base, int flags) {
        directive.flags |= flags;
        writeNumber(out_, nextInteger(directive), base, directive);
    }

    // The next integer, brought to the width that the qualifier names.
    long nextInteger(const Directive& directive) {
        if (directive.isLong()) return arguments_.next<long>();
        const int value = arguments_.next<int>();
        if (directive.has(B::SIGN)) {
            return directive.qualifier == 'h' ? static_cast<short>(value) : value;
        }
        const unsigned int bits = static_cast<unsigned int>(value);
        return static_cast<long>(directive.qualifier == 'h' ? bits & 0xFFFFU : bits);
    }

    char* start_;
    BoundedOutput out_;
    const char* next_;
    ArgumentList arguments_;
};

}  // namespace

BoundedStringBase::BoundedStringBase() = default;

BoundedStringBase::~BoundedStringBase() = default;

int BoundedStringBase::makeString(char* buf, unsigned int size, const char* fmt, void* args) {
    return Formatter(buf, size, fmt ? fmt : "", args).run();
}

char* BoundedStringBase::number(char* out, char* end, long num, int base, int width, int precision,
                                int flags) {
    if (base < 2 || base > 36) return nullptr;
    if (out >= end) return out;
    BoundedOutput output(out, static_cast<std::size_t>(end - out) - 1);
    Directive directive;
    directive.flags = flags;
    directive.width = width;
    directive.precision = precision;
    writeNumber(output, num, base, directive);
    return output.position();
}

int BoundedStringBase::skip_atoi(const char** s) {
    std::int64_t value = 0;
    for (; isDigit(**s); ++*s) {
        value = value * 10 + (**s - '0');
        if (value > INT_MAX) value = INT_MAX;
    }
    return static_cast<int>(value);
}
