// Random formats with arguments that fit them, and calls of a variadic function with them.
#ifndef KFL_TESTS_CORE_RANDOM_FORMATS_H
#define KFL_TESTS_CORE_RANDOM_FORMATS_H

#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "tests/core/format_model.h"
#include "tests/support/choices.h"

namespace kfl_test {

constexpr std::size_t maxArguments = 5;

// KFL_TEST_ROUNDS, or `usual`.
inline int rounds(int usual) {
    const char* const given = std::getenv("KFL_TEST_ROUNDS");
    return given && *given != '\0' ? std::atoi(given) : usual;
}

// Makes up arguments as the model asks for them, and keeps them for the real call.
class RandomArguments : public ArgumentSource {
  public:
    // With `tame` there is nothing that the C library's functions handle otherwise: no null text,
    // no negative precision, no huge width, and no 0 with `nonZero`.
    RandomArguments(Choices& random, bool tame, bool nonZero)
        : random_(random), tame_(tame), nonZero_(nonZero) {}

    int width() override {
        if (!tame_ && random_.oneIn(20)) return addInt(random_.oneIn(2) ? INT_MIN : INT_MAX);
        return addInt(random_.between(-60, 60));
    }
    int precision() override {
        if (!tame_ && random_.oneIn(20)) return addInt(random_.oneIn(2) ? INT_MIN : INT_MAX);
        return addInt(random_.between(tame_ ? 0 : -5, 30));
    }
    int integer() override { return addInt(static_cast<int>(number())); }
    long longInteger() override {
        const long value = number();
        arguments_.push_back({Argument::Long, 0, value, nullptr});
        return value;
    }
    const char* text(long long precision) override {
        if (!tame_ && random_.oneIn(10)) return static_cast<const char*>(addPointer(nullptr));
        const std::size_t length = random_.below(random_.oneIn(10) ? 200 : 20);
        std::string made;
        while (made.size() < length) made += static_cast<char>('!' + random_.below(90));
        // A text that is cut by its precision need not be terminated. For the C library it is: the
        // sanitizers' vsnprintf reads that far.
        const bool open = !tame_ && precision >= 0 && static_cast<std::size_t>(precision) <= length;
        std::vector<char> bytes(made.begin(), made.end());
        if (open) bytes.resize(static_cast<std::size_t>(precision));
        if (!open) bytes.push_back('\0');
        texts_.push_back(std::move(bytes));
        return static_cast<const char*>(addPointer(texts_.back().data()));
    }
    void* pointer() override {
        return addPointer(reinterpret_cast<void*>(static_cast<std::uintptr_t>(number())));
    }
    void count(bool isLong, long value) override {
        places_.push_back({});
        Place& place = places_.back();
        place.isLong = isLong;
        place.expected = value;
        std::memset(place.bytes, 0x5A, sizeof place.bytes);
        addPointer(place.bytes);
    }

    const std::vector<Argument>& all() const { return arguments_; }
    // Whether each "%n" stored what it should, and nothing behind it.
    bool countsAreRight() const {
        for (const Place& place : places_) {
            unsigned char wanted[sizeof place.bytes];
            std::memset(wanted, 0x5A, sizeof wanted);
            const int shortCount = static_cast<int>(place.expected);
            if (place.isLong) std::memcpy(wanted, &place.expected, sizeof place.expected);
            if (!place.isLong) std::memcpy(wanted, &shortCount, sizeof shortCount);
            if (std::memcmp(wanted, place.bytes, sizeof wanted) != 0) return false;
        }
        return true;
    }

  private:
    struct Place {
        alignas(long) unsigned char bytes[2 * sizeof(long)];
        bool isLong;
        long expected;
    };

    int addInt(int value) {
        arguments_.push_back({Argument::Int, value, 0, nullptr});
        return value;
    }
    void* addPointer(void* value) {
        arguments_.push_back({Argument::Pointer, 0, 0, value});
        return value;
    }
    // Numbers of all lengths, and the ends of the ranges.
    long number() {
        static constexpr long special[] = {0,        1,        -1,     9,      10,      255,
                                           32767,    32768,    65535,  65536,  INT_MAX, INT_MIN,
                                           LONG_MAX, LONG_MIN, -32768, 1000000};
        unsigned long value = 0;
        if (random_.oneIn(4)) {
            value = static_cast<unsigned long>(special[random_.below(std::size(special))]);
        } else {
            for (unsigned int i = 0; i < sizeof(long) / 4; ++i)
                value = value << 16 << 16 | random_();
            value >>= random_.below(CHAR_BIT * sizeof(long));
            if (random_.oneIn(2)) value = 0 - value;
        }
        if (nonZero_ && (value & 0xFFFF) == 0) value |= 1;
        return static_cast<long>(value);
    }

    Choices& random_;
    bool tame_;
    bool nonZero_;
    std::vector<Argument> arguments_;
    std::deque<std::vector<char>> texts_;
    std::deque<Place> places_;
};

using Formatter = int (*)(char* buf, unsigned int size, const char* format, ...);

// Calls `function` with the arguments of the list behind the fixed ones, each with its own type.
template <class... Given>
int callWith(Formatter function, char* buf, unsigned int size, const char* format,
             const Argument* next, const Argument* end, Given... given) {
    if (next == end) return function(buf, size, format, given...);
    if constexpr (sizeof...(given) < maxArguments) {
        switch (next->kind) {
            case Argument::Int:
                return callWith(function, buf, size, format, next + 1, end, given...,
                                next->integer);
            case Argument::Long:
                return callWith(function, buf, size, format, next + 1, end, given...,
                                next->longInteger);
            default:
                return callWith(function, buf, size, format, next + 1, end, given...,
                                next->pointer);
        }
    }
    std::abort();
}

inline char oneOf(Choices& random, const char* characters) {
    return characters[random.below(static_cast<std::uint32_t>(std::strlen(characters)))];
}

inline std::string plainText(Choices& random) {
    std::string text;
    const std::uint32_t length = random.below(random.oneIn(8) ? 60 : 6);
    while (text.size() < length) text += static_cast<char>('&' + random.below(80));
    return text;
}

// Anything at all between "%" and a conversion, and conversions that are none.
inline std::string anyFormat(Choices& random) {
    std::string format = plainText(random);
    const std::uint32_t directives = 1 + random.below(4);
    for (std::uint32_t i = 0; i < directives; ++i) {
        format += '%';
        while (random.oneIn(2)) format += oneOf(random, " #+-0");
        if (random.oneIn(3)) format += std::to_string(random.below(random.oneIn(9) ? 500 : 20));
        if (random.oneIn(40)) format += "99999999999";
        if (random.oneIn(6)) format += '*';
        if (random.oneIn(3)) format += '.';
        if (random.oneIn(4)) format += std::to_string(random.below(25));
        if (random.oneIn(8)) format += '*';
        if (random.oneIn(3)) format += oneOf(random, "hlLZ");
        if (random.oneIn(20)) format += oneOf(random, "hlLZqjtz");
        if (!random.oneIn(20)) {
            format += random.oneIn(8) ? static_cast<char>(1 + random.below(255))
                                      : oneOf(random, "ddiiuoxXccsssspn%");
        }
        format += plainText(random);
    }
    return format;
}

// A format that the C library's functions read in the same way. `nonZero` is set where they agree
// only for numbers other than 0.
inline std::string commonFormat(Choices& random, bool& nonZero) {
    std::string format = plainText(random);
    std::size_t arguments = 0;
    nonZero = false;
    while (random.oneIn(4) ? format.empty() : arguments + 3 <= maxArguments) {
        const char conversion = oneOf(random, "ddiuoxXcss%");
        format += '%';
        if (conversion == '%') {
            format += "%";
            ++arguments;
            continue;
        }
        const bool isNumber = conversion != 'c' && conversion != 's';
        const bool precision = random.oneIn(3);
        while (random.oneIn(2)) {
            char flag = oneOf(random, " #+-0");
            // Zeros for a text, zeros beside a precision, and "#" for octal with a precision are
            // where the two differ.
            if (flag == '0' && (!isNumber || precision)) flag = '-';
            if (flag == '#' && conversion == 'o' && precision) flag = '+';
            if (!isNumber) flag = '-';
            nonZero = nonZero || flag == '#';
            format += flag;
        }
        if (random.oneIn(3)) {
            format += std::to_string(1 + random.below(random.oneIn(9) ? 300 : 20));
        } else if (random.oneIn(6)) {
            format += '*';
            ++arguments;
        }
        if (precision) {
            nonZero = true;
            format += '.';
            if (random.oneIn(3)) {
                format += '*';
                ++arguments;
            } else if (!random.oneIn(4)) {
                format += std::to_string(random.below(25));
            }
        }
        if (isNumber && random.oneIn(3)) format += oneOf(random, "hl");
        format += conversion;
        ++arguments;
        format += plainText(random);
    }
    return format;
}

}  // namespace kfl_test

#endif
