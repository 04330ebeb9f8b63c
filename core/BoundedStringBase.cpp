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

// Plain text of up to this length is copied one by one; a longer one goes on in one go.
constexpr std::size_t usualStretch = 8;

// A directive's parts between "%" and the conversion.
struct Directive {
    int flags = 0;
    int width = none;
    int precision = none;
    char qualifier = '\0';

    bool isLong() const { return qualifier == 'l' || qualifier == 'L' || qualifier == 'Z'; }
    bool has(int flag) const { return (flags & flag) != 0; }
    // Without anything that puts characters around a number.
    bool isPlain() const {
        return width <= 0 && precision <= 0 && !has(B::PLUS | B::SPACE | B::SPECIAL);
    }
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads decimal digits and moves past them; the value is at most INT_MAX.
int readDigits(const char*& s) {
    std::int64_t value = 0;
    for (; isDigit(*s); ++s) {
        value = value * 10 + (*s - '0');
        if (value > INT_MAX) value = INT_MAX;
    }
    return static_cast<int>(value);
}

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

int prefixLength(unsigned int base, const Directive& directive) {
    if (!directive.has(B::SPECIAL)) return 0;
    if (base == 16) return 2;
    return base == 8 ? 1 : 0;
}

// By how much `a` passes `b`.
int excess(int a, int b) { return a > b ? a - b : 0; }

void writeDigits(BoundedOutput& out, const IntegerDigits& digits, bool large) {
    if (char* const place = out.claim(digits.count())) return digits.writeTo(place, large);
    char text[IntegerDigits::maxCount];
    digits.writeTo(text, large);
    out.copy(text, digits.count());
}

unsigned long magnitudeOf(long num, bool isNegative) {
    const unsigned long bits = static_cast<unsigned long>(num);
    return isNegative ? 0UL - bits : bits;
}

// Writes an integer; `base` is one of 2 to 36. Returns where the output stands then.
char* writeNumber(BoundedOutput out, long num, unsigned int base, Directive directive) {
    const bool large = directive.has(B::LARGE);
    const char sign = signOf(num, directive);
    const IntegerDigits digits(magnitudeOf(num, sign == '-'), base);
    const int prefix = prefixLength(base, directive);
    const int count = static_cast<int>(digits.count());

    const int zeros = excess(directive.precision, count);
    const int pad = excess(excess(directive.width, prefix + (sign ? 1 : 0)), zeros + count);
    const bool left = directive.has(B::LEFT);
    const bool zeroPad = !left && directive.has(B::ZEROPAD);
    if (!left && !zeroPad) out.fill(' ', pad);
    if (sign) out.put(sign);
    if (prefix > 0) out.put('0');
    if (prefix > 1) out.put(large ? 'X' : 'x');
    out.fill('0', zeroPad ? zeros + pad : zeros);
    writeDigits(out, digits, large);
    if (left) out.fill(' ', pad);
    return out.position();
}

// The same where nothing stands around the digits but a "-".
char* writePlainNumber(BoundedOutput out, long num, unsigned int base, int flags) {
    const bool isNegative = num < 0 && (flags & B::SIGN) != 0;
    if (isNegative) out.put('-');
    writeDigits(out, IntegerDigits(magnitudeOf(num, isNegative), base), (flags & B::LARGE) != 0);
    return out.position();
}

char* writeJustified(BoundedOutput out, const Directive& directive, const char* text,
                     std::size_t length) {
    int pad = 0;
    if (directive.width > 0 && length < static_cast<unsigned int>(directive.width)) {
        pad = directive.width - static_cast<int>(length);
    }
    const bool left = directive.has(B::LEFT);
    if (!left) out.fill(' ', pad);
    out.copy(text, length);
    if (left) out.fill(' ', pad);
    return out.position();
}

// Walks a format and writes what it says.
class Formatter {
  public:
    Formatter(char* buf, unsigned int size, const char* format, ArgumentList& arguments)
        : start_(buf), out_(buf, lastPlace(buf, size)), next_(format), arguments_(arguments) {}

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
    // `size` places on, or the end of all memory where it comes before that.
    static char* lastPlace(char* buf, unsigned int size) {
        const std::uintptr_t left = UINTPTR_MAX - reinterpret_cast<std::uintptr_t>(buf);
        return buf + (size < left ? size : left);
    }

    int stored() const { return static_cast<int>(out_.position() - start_); }

    // Copies all up to the next directive.
    void copyPlain() {
        const std::size_t room = out_.room();
        char* to = out_.position();
        char* const end = to + (room < usualStretch ? room : usualStretch);
        while (to != end && *next_ != '\0' && *next_ != '%') *to++ = *next_++;
        out_.moveTo(to);
        if (*next_ == '\0' || *next_ == '%') return;
        const std::size_t rest = std::strcspn(next_, "%");
        out_.copy(next_, rest);
        next_ += rest;
    }

    Directive readDirective() {
        Directive directive;
        // Flags, widths and precisions begin with what stands before the letters.
        if (*next_ <= '9') {
            readFlags(directive);
            readWidth(directive);
            readPrecision(directive);
        }
        if (*next_ == 'h' || *next_ == 'l' || *next_ == 'L' || *next_ == 'Z') {
            directive.qualifier = *next_++;
        }
        return directive;
    }

    void readFlags(Directive& directive) {
        while (const int flag = flagOf(*next_)) {
            directive.flags |= flag;
            ++next_;
        }
    }

    void readWidth(Directive& directive) {
        if (isDigit(*next_)) {
            directive.width = readDigits(next_);
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
            directive.precision = readDigits(next_);
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
            case 'o':
            case 'x':
            case 'X':
            case 'd':
            case 'i':
            case 'u': return writeInteger(directive, conversion);
            default: out_.put('%'); out_.put(conversion);
        }
    }

    void writeCharacter(const Directive& directive) {
        const char c = static_cast<char>(arguments_.next<int>());
        out_.moveTo(writeJustified(out_, directive, &c, 1));
    }

    void writeText(const Directive& directive) {
        const char* text = arguments_.next<const char*>();
        if (!text) text = "<NULL>";
        const std::size_t length =
            directive.precision < 0 ? std::strlen(text)
                                    : strnlen(text, static_cast<std::size_t>(directive.precision));
        out_.moveTo(writeJustified(out_, directive, text, length));
    }

    void writePointer(Directive directive) {
        if (directive.width == none) {
            directive.width = 8;
            directive.flags |= B::ZEROPAD;
        }
        void* const pointer = arguments_.next<void*>();
        out_.moveTo(writeNumber(out_, static_cast<long>(reinterpret_cast<std::intptr_t>(pointer)),
                                16, directive));
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

    void writeInteger(Directive directive, char conversion) {
        unsigned int base = 10;
        if (conversion == 'd' || conversion == 'i') directive.flags |= B::SIGN;
        if (conversion == 'X') directive.flags |= B::LARGE;
        if (conversion == 'X' || conversion == 'x') base = 16;
        if (conversion == 'o') base = 8;
        const long num = nextInteger(directive);
        out_.moveTo(directive.isPlain() ? writePlainNumber(out_, num, base, directive.flags)
                                        : writeNumber(out_, num, base, directive));
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
    ArgumentList& arguments_;
};

}  // namespace

BoundedStringBase::BoundedStringBase() = default;

BoundedStringBase::~BoundedStringBase() = default;

int BoundedStringBase::makeString(char* buf, unsigned int size, const char* fmt, void* args) {
    ArgumentList arguments(args);
    return Formatter(buf, size, fmt ? fmt : "", arguments).run();
}

char* BoundedStringBase::number(char* out, char* end, long num, int base, int width, int precision,
                                int flags) {
    if (base < 2 || base > 36) return nullptr;
    if (!out || out >= end) return out;
    Directive directive;
    directive.flags = flags;
    directive.width = width;
    directive.precision = precision;
    return writeNumber({out, end - 1}, num, static_cast<unsigned int>(base), directive);
}

int BoundedStringBase::skip_atoi(const char** s) { return readDigits(*s); }
