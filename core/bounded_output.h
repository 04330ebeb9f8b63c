// Writing characters up to a bound.
#ifndef KFL_CORE_BOUNDED_OUTPUT_H
#define KFL_CORE_BOUNDED_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kfl::detail {

// A write position that moves `room` times and then stays: every further character overwrites the
// last place.
class BoundedOutput {
  public:
    BoundedOutput(char* position, std::size_t room) : position_(position), room_(room) {}

    void put(char c) {
        *position_ = c;
        if (room_ > 0) advance(1);
    }

    // Writes `c` `count` times; not at all for a negative count.
    void fill(char c, std::int64_t count) {
        if (count <= 0) return;
        const std::uint64_t wanted = static_cast<std::uint64_t>(count);
        const std::size_t n = wanted < room_ ? static_cast<std::size_t>(wanted) : room_;
        std::memset(position_, c, n);
        advance(n);
        if (n < wanted) *position_ = c;
    }

    void copy(const char* text, std::size_t count) {
        const std::size_t n = count < room_ ? count : room_;
        std::memcpy(position_, text, n);
        advance(n);
        if (n < count) *position_ = text[count - 1];
    }

    char* position() const { return position_; }

  private:
    void advance(std::size_t n) {
        position_ += n;
        room_ -= n;
    }

    char* position_;
    std::size_t room_;
};

}  // namespace kfl::detail

#endif
