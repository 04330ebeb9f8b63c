// Writing characters up to a bound.
#ifndef KFL_CORE_BOUNDED_OUTPUT_H
#define KFL_CORE_BOUNDED_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/small_code.h"

namespace kfl::detail {

// Up to here a few stores are faster than a call; where small code is asked for, a call is better.
constexpr std::size_t shortLength = wantsSmallCode ? 0 : 16;

// Fills up to 16 places with as few stores as there may be: they overlap in the middle.
inline void fillShort(char* to, char c, std::size_t count) {
    const std::uint64_t pattern = 0x0101010101010101U * static_cast<unsigned char>(c);
    if (count >= 8) {
        std::memcpy(to, &pattern, 8);
        std::memcpy(to + count - 8, &pattern, 8);
    } else if (count >= 4) {
        std::memcpy(to, &pattern, 4);
        std::memcpy(to + count - 4, &pattern, 4);
    } else if (count > 0) {
        to[0] = c;
        to[count / 2] = c;
        to[count - 1] = c;
    }
}

// Copies up to 16 characters in the same way; the places may overlap.
inline void copyShort(char* to, const char* from, std::size_t count) {
    if (count >= 8) {
        std::uint64_t words[2];
        std::memcpy(&words[0], from, 8);
        std::memcpy(&words[1], from + count - 8, 8);
        std::memcpy(to, &words[0], 8);
        std::memcpy(to + count - 8, &words[1], 8);
    } else if (count >= 4) {
        std::uint32_t words[2];
        std::memcpy(&words[0], from, 4);
        std::memcpy(&words[1], from + count - 4, 4);
        std::memcpy(to, &words[0], 4);
        std::memcpy(to + count - 4, &words[1], 4);
    } else if (count > 0) {
        const char first = from[0];
        const char middle = from[count / 2];
        const char last = from[count - 1];
        to[0] = first;
        to[count / 2] = middle;
        to[count - 1] = last;
    }
}

// A write position that moves up to the last place and then stays: every further character
// overwrites that place.
class BoundedOutput {
  public:
    BoundedOutput(char* position, char* last) : position_(position), last_(last) {}

    void put(char c) {
        *position_ = c;
        if (position_ != last_) ++position_;
    }

    // Writes `c` `count` times; not at all for a negative count.
    void fill(char c, int count) {
        if (count > 0) moveTo(filled(*this, c, static_cast<std::size_t>(count)));
    }

    void copy(const char* text, std::size_t count) { moveTo(copied(*this, text, count)); }

    // The same where there is room for a short text at least.
    void copyWithin(const char* text, std::size_t count) {
        if (count > shortLength) return copy(text, count);
        copyShort(position_, text, count);
        position_ += count;
    }

    // Moves on by `count` places and returns the first of them, to be written by the caller; null,
    // and no move, where there are not that many before the last place.
    char* claim(std::size_t count) {
        if (count > room()) return nullptr;
        char* const first = position_;
        position_ += count;
        return first;
    }

    char* position() const { return position_; }
    // Not beyond the last place.
    void moveTo(char* position) { position_ = position; }
    std::size_t room() const { return static_cast<std::size_t>(last_ - position_); }

  private:
    // Kept out of line, as they are called from many places. They take a copy and give the new
    // position, so that the callers' outputs can stay in registers.
    [[gnu::noinline]] static char* filled(BoundedOutput out, char c, std::size_t count) {
        const std::size_t n = count < out.room() ? count : out.room();
        if (n <= shortLength) {
            fillShort(out.position_, c, n);
        } else {
            std::memset(out.position_, c, n);
        }
        out.position_ += n;
        if (n < count) *out.position_ = c;
        return out.position_;
    }

    [[gnu::noinline]] static char* copied(BoundedOutput out, const char* text, std::size_t count) {
        const std::size_t n = count < out.room() ? count : out.room();
        if (n <= shortLength) {
            copyShort(out.position_, text, n);
        } else {
            std::memcpy(out.position_, text, n);
        }
        out.position_ += n;
        if (n < count) *out.position_ = text[count - 1];
        return out.position_;
    }

    char* position_;
    char* last_;
};

}  // namespace kfl::detail

#endif
