#include "kfl/BoundedStringBase.h"

#include <climits>
#include <cstdint>
#include <cstring>

#include "core/argument_list.h"
#include "core/bounded_output.h"
#include "core/integer_digits.h"
#include "core/small_code.h"

namespace {

using kfl::detail::ArgumentList;
using kfl::detail::BoundedOutput;
using kfl::detail::IntegerDigits;
using kfl::detail::pointerIn;
using kfl::detail::wantsSmallCode;

using B = BoundedStringBase;

constexpr int none = -1;

// Plain text of up to this length is copied one by one; a longer one goes on in one go.
constexpr std::size_t usualStretch = 8;

// What the longest number takes, 20 digits or a sign and 19.
constexpr std::size_t usualRoom = 20;

// A directive's parts between "%" and the conversion.
struct Directive {
    int flags = 0;
    int width = none;
    int precision = none;
    char qualifier = '\0';

    bool has(int flag) const { return (flags & flag) != 0; }
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

// What stands in front of a signed number; NUL for nothing.
char signOf(long num, const Directive& directive) {
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
    char text[IntegerDigits::maxCount];
    char* const place = out.claim(digits.count());
    digits.writeTo(place ? place : text, large);
    if (!place) out.copy(text, digits.count());
}

bool isLong(char qualifier) { return qualifier == 'l' || qualifier == 'L' || qualifier == 'Z'; }

// A whole argument, or its part that is an int.
long longOrInt(long word, bool isLong) {
    if (isLong) return word;
    return static_cast<int>(word);
}

unsigned long longOrUnsigned(long word, bool isLong) {
    if (isLong) return static_cast<unsigned long>(word);
    return static_cast<unsigned int>(word);
}

// The part of an argument that the qualifier names.
long signedPart(long word, char qualifier) {
    return qualifier == 'h' ? static_cast<short>(word) : longOrInt(word, isLong(qualifier));
}

unsigned long unsignedPart(long word, char qualifier) {
    return qualifier == 'h' ? static_cast<unsigned short>(word)
                            : longOrUnsigned(word, isLong(qualifier));
}

const char* textIn(long word) {
    const void* const text = pointerIn(word);
    return text ? static_cast<const char*>(text) : "<NULL>";
}

unsigned long magnitudeOf(long num) {
    const unsigned long bits = static_cast<unsigned long>(num);
    return num < 0 ? 0UL - bits : bits;
}

// Writes an integer; `sign` is NUL for none, `base` one of 2 to 36. Returns where the output stands
// then.
[[gnu::noinline]] char* writeNumber(BoundedOutput out, unsigned long magnitude, char sign,
                                    unsigned int base, Directive directive) {
    const bool large = directive.has(B::LARGE);
    const IntegerDigits digits(magnitude, base);
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

// Writes an integer behind up to nine places of padding, where there is room; returns where it
// ends.
template <unsigned int base>
[[gnu::noinline]] char* writeWithin(char* to, unsigned long magnitude, bool isNegative, int width,
                                    char padding) {
    const IntegerDigits digits(magnitude, base);
    const int pad = excess(width, static_cast<int>(digits.count()) + (isNegative ? 1 : 0));
    if (isNegative && padding == '0') *to++ = '-';
    kfl::detail::fillShort(to, padding, static_cast<std::size_t>(pad));
    to += pad;
    if (isNegative && padding != '0') *to++ = '-';
    return digits.writeTo(to, false);
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
        while (*next_ != '\0') {
            if (*next_ != '%') {
                copyPlain();
            } else {
                ++next_;
                if (!convertUsual()) convert(readDirective());
            }
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

    // Copies all up to the next directive, which is one character at least.
    void copyPlain() {
        if (out_.room() > usualStretch) {
            char* to = out_.position();
            char* const end = to + usualStretch;
            for (char c = *next_; to != end;) {
                *to++ = c;
                c = *++next_;
                if (c == '\0' || c == '%') return out_.moveTo(to);
            }
            out_.moveTo(to);
        }
        const std::size_t rest = std::strcspn(next_, "%");
        out_.copy(next_, rest);
        next_ += rest;
    }

    // Most directives are a text, a number behind at most a "0", a digit and an "l", or a
    // character, and there is room for any number. Returns false for all others, which are left to
    // convert().
    bool convertUsual() {
        if (wantsSmallCode || out_.room() < usualRoom) return false;
        return convertUsualText() || convertUsualNumber() || convertUsualCharacter();
    }

    bool convertUsualText() {
        if (*next_ != 's') return false;
        ++next_;
        const char* const text = textIn(arguments_.next());
        out_.copyWithin(text, std::strlen(text));
        return true;
    }

    bool convertUsualNumber() {
        const char* s = next_;
        char padding = ' ';
        int width = 0;
        // Both begin with what stands before the letters.
        if (*s <= '9') {
            if (*s == '0') padding = *s++;
            if (isDigit(*s)) width = *s++ - '0';
        }
        const bool isLong = *s == 'l';
        if (isLong) ++s;
        const char conversion = *s;
        if (conversion != 'd' && conversion != 'u' && conversion != 'x') return false;
        next_ = s + 1;

        writeUsual(conversion, arguments_.next(), isLong, width, padding);
        return true;
    }

    void writeUsual(char conversion, long word, bool isLong, int width, char padding) {
        char* const to = out_.position();
        if (conversion == 'd') {
            const long num = longOrInt(word, isLong);
            out_.moveTo(writeWithin<10>(to, magnitudeOf(num), num < 0, width, padding));
        } else if (conversion == 'u') {
            out_.moveTo(writeWithin<10>(to, longOrUnsigned(word, isLong), false, width, padding));
        } else {
            out_.moveTo(writeWithin<16>(to, longOrUnsigned(word, isLong), false, width, padding));
        }
    }

    bool convertUsualCharacter() {
        if (*next_ == '%') {
            out_.put('%');
        } else if (*next_ == 'c') {
            out_.put(static_cast<char>(arguments_.next()));
        } else {
            return false;
        }
        ++next_;
        return true;
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
            const int width = static_cast<int>(next(arguments_));
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
            const int precision = static_cast<int>(next(arguments_));
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
            case 'd':
            case 'i':
            case 'o':
            case 'u':
            case 'x':
            case 'X': return writeInteger(directive, conversion);
            default: out_.put('%'); out_.put(conversion);
        }
    }

    // Out of line, as it is asked for in several places.
    [[gnu::noinline]] static long next(ArgumentList& arguments) { return arguments.next(); }

    void writeCharacter(const Directive& directive) {
        const char c = static_cast<char>(next(arguments_));
        out_.moveTo(writeJustified(out_, directive, &c, 1));
    }

    void writeText(const Directive& directive) {
        const char* const text = textIn(next(arguments_));
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
        directive.qualifier = 'l';
        writeInteger(directive, 'x');
    }

    void storeCount(const Directive& directive) {
        void* const place = pointerIn(next(arguments_));
        if (!place) return;
        if (isLong(directive.qualifier)) {
            *static_cast<long*>(place) = stored();
        } else {
            *static_cast<int*>(place) = stored();
        }
    }

    void writeInteger(Directive directive, char conversion) {
        const long word = next(arguments_);
        unsigned int base = 10;
        if (conversion == 'o') base = 8;
        if (conversion == 'x' || conversion == 'X') base = 16;
        if (conversion == 'X') directive.flags |= B::LARGE;
        char sign = '\0';
        unsigned long magnitude;
        if (conversion == 'd' || conversion == 'i') {
            const long num = signedPart(word, directive.qualifier);
            sign = signOf(num, directive);
            magnitude = magnitudeOf(num);
        } else {
            magnitude = unsignedPart(word, directive.qualifier);
        }
        out_.moveTo(writeNumber(out_, magnitude, sign, base, directive));
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
    const bool isSigned = directive.has(SIGN);
    return writeNumber(
        {out, end - 1}, isSigned ? magnitudeOf(num) : static_cast<unsigned long>(num),
        isSigned ? signOf(num, directive) : '\0', static_cast<unsigned int>(base), directive);
}

int BoundedStringBase::skip_atoi(const char** s) { return readDigits(*s); }
