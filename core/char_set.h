// A set of characters, asked once for each character of a text.
#ifndef KFL_CORE_CHAR_SET_H
#define KFL_CORE_CHAR_SET_H

#include <cstdint>

namespace kfl::detail {

// The characters of a text, its terminating NUL included.
class CharSet {
  public:
    explicit constexpr CharSet(const char* members) : bits_{1} {
        for (; *members; ++members) bits_[index(*members)] |= bit(*members);
    }

    constexpr bool contains(char c) const { return (bits_[index(c)] & bit(c)) != 0; }

  private:
    static constexpr unsigned int index(char c) { return static_cast<unsigned char>(c) / 32U; }
    static constexpr std::uint32_t bit(char c) {
        return std::uint32_t{1} << (static_cast<unsigned char>(c) % 32U);
    }

    std::uint32_t bits_[8];
};

}  // namespace kfl::detail

#endif
