// A plain second writing of what makeString() and number() promise, one character after the other,
// to compare them with.
#ifndef KFL_TESTS_CORE_FORMAT_MODEL_H
#define KFL_TESTS_CORE_FORMAT_MODEL_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "kfl/BoundedStringBase.h"

namespace kfl_test {

// Memory of a fixed size with a write position that never moves past the last place.
class ModelOutput {
  public:
    explicit ModelOutput(std::size_t places) : places_(places, '\0') {}

    void put(char c) {
        places_[position_] = c;
        if (position_ + 1 < places_.size()) ++position_;
    }
    // More characters than there are places change nothing any more.
    void repeat(char c, long long count) {
        const long long enough = static_cast<long long>(places_.size()) + 1;
        for (long long i = 0; i < count && i < enough; ++i) put(c);
    }

    std::size_t position() const { return position_; }
    // What stands before the write position.
    std::string text() const { return places_.substr(0, position_); }
    // All places.
    const std::string& places() const { return places_; }

  private:
    std::string places_;
    std::size_t position_ = 0;
};

struct ModelNumber {
    long num;
    unsigned int base;
    long long width;
    long long precision;
    int flags;
};

inline void modelNumber(ModelOutput& out, const ModelNumber& what) {
    using B = BoundedStringBase;
    const bool left = (what.flags & B::LEFT) != 0;
    const bool zeroPad = !left && (what.flags & B::ZEROPAD) != 0;
    const std::string table = (what.flags & B::LARGE) != 0 ? "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                           : "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string sign;
    unsigned long rest = static_cast<unsigned long>(what.num);
    if ((what.flags & B::SIGN) != 0) {
        if (what.num < 0) {
            sign = "-";
            rest = 0 - rest;
        } else if ((what.flags & B::PLUS) != 0) {
            sign = "+";
        } else if ((what.flags & B::SPACE) != 0) {
            sign = " ";
        }
    }
    std::string prefix;
    if ((what.flags & B::SPECIAL) != 0) {
        if (what.base == 16) prefix = std::string("0") + table[33];
        if (what.base == 8) prefix = "0";
    }
    std::string lowestFirst;
    do {
        lowestFirst += table[rest % what.base];
        rest /= what.base;
    } while (rest != 0);

    const long long digits = static_cast<long long>(lowestFirst.size());
    const long long precision = what.precision > digits ? what.precision : digits;
    const long long width =
        what.width - static_cast<long long>(sign.size() + prefix.size()) - precision;
    if (!zeroPad && !left) out.repeat(' ', width);
    for (const char c : sign) out.put(c);
    for (const char c : prefix) out.put(c);
    if (zeroPad) out.repeat('0', width);
    out.repeat('0', precision - digits);
    for (std::size_t i = lowestFirst.size(); i > 0; --i) out.put(lowestFirst[i - 1]);
    if (left) out.repeat(' ', width);
}

// One argument of a call.
struct Argument {
    enum Kind { Int, Long, Pointer };
    Kind kind;
    int integer;
    long longInteger;
    void* pointer;
};

// Where the model takes arguments from: a test makes them up as they are asked for.
class ArgumentSource {
  public:
    virtual ~ArgumentSource() = default;
    virtual int width() = 0;
    virtual int precision() = 0;
    virtual int integer() = 0;
    virtual long longInteger() = 0;
    virtual const char* text(long long precision) = 0;
    virtual void* pointer() = 0;
    // Room for a count, of which the model says what must come to stand there.
    virtual void count(bool isLong, long value) = 0;
};

// Walks a format as makeString() is promised to do.
class ModelFormatter {
  public:
    ModelFormatter(unsigned int size, const std::string& format, ArgumentSource& arguments)
        : out_(std::size_t{size} + 1), format_(format), arguments_(arguments) {}

    std::string run() {
        while (!atEnd()) {
            const char c = take();
            if (c == '%') {
                directive();
            } else {
                out_.put(c);
            }
        }
        return out_.text();
    }

  private:
    using B = BoundedStringBase;

    bool atEnd() const { return at_ == format_.size(); }
    char peek() const { return atEnd() ? '\0' : format_[at_]; }
    char take() { return format_[at_++]; }
    bool takeIf(char c) {
        if (peek() != c || atEnd()) return false;
        ++at_;
        return true;
    }
    bool digitNext() const { return peek() >= '0' && peek() <= '9'; }
    long long takeDigits() {
        long long value = 0;
        while (digitNext()) {
            value = value * 10 + (take() - '0');
            if (value > INT_MAX) value = INT_MAX;
        }
        return value;
    }

    void directive() {
        flags_ = 0;
        width_ = -1;
        precision_ = -1;
        for (bool more = true; more;) {
            more = true;
            if (takeIf(' ')) {
                flags_ |= B::SPACE;
            } else if (takeIf('#')) {
                flags_ |= B::SPECIAL;
            } else if (takeIf('+')) {
                flags_ |= B::PLUS;
            } else if (takeIf('-')) {
                flags_ |= B::LEFT;
            } else if (takeIf('0')) {
                flags_ |= B::ZEROPAD;
            } else {
                more = false;
            }
        }
        if (digitNext()) {
            width_ = takeDigits();
        } else if (takeIf('*')) {
            width_ = arguments_.width();
            if (width_ < 0) {
                flags_ |= B::LEFT;
                width_ = -width_;
                if (width_ > INT_MAX) width_ = INT_MAX;
            }
        }
        if (takeIf('.')) {
            precision_ = 0;
            if (digitNext()) {
                precision_ = takeDigits();
            } else if (takeIf('*')) {
                precision_ = arguments_.precision();
                if (precision_ < 0) precision_ = 0;
            }
        }
        qualifier_ = '\0';
        for (const char q : std::string("hlLZ")) {
            if (qualifier_ == '\0' && takeIf(q)) qualifier_ = q;
        }
        if (atEnd()) {
            out_.put('%');
            return;
        }
        conversion(take());
    }

    void conversion(char c) {
        switch (c) {
            case 'c': justified(std::string(1, static_cast<char>(arguments_.integer()))); break;
            case 's': text(); break;
            case 'p': pointer(); break;
            case 'n': arguments_.count(isLong(), static_cast<long>(out_.position())); break;
            case '%': out_.put('%'); break;
            case 'o': integer(8); break;
            case 'x': integer(16); break;
            case 'X':
                flags_ |= B::LARGE;
                integer(16);
                break;
            case 'd':
            case 'i':
                flags_ |= B::SIGN;
                integer(10);
                break;
            case 'u': integer(10); break;
            default: out_.put('%'); out_.put(c);
        }
    }

    bool isLong() const { return qualifier_ == 'l' || qualifier_ == 'L' || qualifier_ == 'Z'; }

    void justified(const std::string& what) {
        const long long blanks = width_ - static_cast<long long>(what.size());
        if ((flags_ & B::LEFT) == 0) out_.repeat(' ', blanks);
        for (const char c : what) out_.put(c);
        if ((flags_ & B::LEFT) != 0) out_.repeat(' ', blanks);
    }

    void text() {
        const char* const given = arguments_.text(precision_);
        const char* const shown = given ? given : "<NULL>";
        std::string what;
        for (long long i = 0; precision_ < 0 || i < precision_; ++i) {
            if (shown[i] == '\0') break;
            what += shown[i];
        }
        justified(what);
    }

    void pointer() {
        if (width_ == -1) {
            width_ = 8;
            flags_ |= B::ZEROPAD;
        }
        const auto address = reinterpret_cast<std::uintptr_t>(arguments_.pointer());
        modelNumber(out_, {static_cast<long>(address), 16, width_, precision_, flags_});
    }

    void integer(unsigned int base) {
        const bool isSigned = (flags_ & B::SIGN) != 0;
        long value = 0;
        if (isLong()) {
            value = arguments_.longInteger();
        } else {
            value = arguments_.integer();
            if (qualifier_ == 'h') value = static_cast<std::int16_t>(value);
            if (!isSigned) value &= qualifier_ == 'h' ? 0xFFFFL : static_cast<long>(0xFFFFFFFFUL);
        }
        modelNumber(out_, {value, base, width_, precision_, flags_});
    }

    ModelOutput out_;
    std::string format_;
    ArgumentSource& arguments_;
    std::size_t at_ = 0;
    int flags_ = 0;
    long long width_ = -1;
    long long precision_ = -1;
    char qualifier_ = '\0';
};

}  // namespace kfl_test

#endif
