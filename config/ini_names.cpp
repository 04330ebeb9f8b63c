#include "config/ini_names.h"

#include <strings.h>

#include <cstdint>
#include <cstring>

#include "core/equal_bytes.h"
#include "core/small_code.h"

namespace kfl::detail {
namespace {

unsigned int twoAt(const char* text) {
    std::uint16_t two;
    std::memcpy(&two, text, sizeof two);
    return two;
}

unsigned int byte(char c) { return static_cast<unsigned char>(c); }

// One or two characters: false when all are ASCII and differ by more than the bit that stands for
// case. Any other may be a letter of the locale, and is left to strncasecmp.
bool canBe(unsigned int a, unsigned int b) {
    return ((a ^ b) & ~0x2020U) == 0 || ((a | b) & 0x8080U) != 0;
}

// The last two characters of a name, as far as they are digits or others below '@': no letter of
// any locale, and so equal to themselves alone. One test tells them, where letters take two.
class ExactEnd {
  public:
    explicit ExactEnd(const char* lastTwo) {
        const unsigned int two = twoAt(lastTwo);
        // All bits of each character of which the two highest are 0.
        exact_ = (~(two >> 6 | two >> 7) & 0x0101U) * 0xFFU;
        wanted_ = two & exact_;
    }

    bool isUseful() const { return exact_ != 0; }
    bool canBe(unsigned int two) const { return (two & exact_) == wanted_; }

  private:
    unsigned int exact_;
    unsigned int wanted_;
};

// Any last two characters.
class AnyEnd {
  public:
    explicit AnyEnd(const char* lastTwo) : wanted_(twoAt(lastTwo)) {}

    bool canBe(unsigned int two) const { return detail::canBe(two, wanted_); }

  private:
    unsigned int wanted_;
};

// A name of two characters or more, looked for among many: most are told apart by their length and
// their last two characters.
template <class End>
class WantedName {
  public:
    explicit WantedName(TextPiece name)
        : text_(name.begin),
          length_(static_cast<unsigned int>(name.length())),
          end_(name.end - 2) {}

    // Another length is what the loop around this is laid out for: such a name is passed without a
    // jump.
    bool matches(const AString& name) const {
        return __builtin_expect(name.length() == length_, 0) != 0 && isText(name.c_str());
    }

  private:
    // Of a text of this length.
    bool isText(const char* text) const {
        return end_.canBe(twoAt(text + length_ - 2)) &&
               (equalBytes(text, text_, length_) || equalsInOtherCase(text));
    }

    bool equalsInOtherCase(const char* text) const {
        return canBe(twoAt(text + length_ - 2), twoAt(text_ + length_ - 2)) &&
               canBe(byte(*text), byte(*text_)) && strncasecmp(text, text_, length_) == 0;
    }

    const char* text_;
    unsigned int length_;
    End end_;
};

// Any other name.
class WantedShortName {
  public:
    explicit WantedShortName(TextPiece name)
        : text_(name.begin), length_(static_cast<unsigned int>(name.length())) {}

    bool matches(const AString& name) const {
        if (name.length() != length_) return false;
        const char* const text = name.c_str();
        return length_ == 0 ||
               (canBe(byte(*text), byte(*text_)) && strncasecmp(text, text_, length_) == 0);
    }

  private:
    const char* text_;
    unsigned int length_;
};

template <class Wanted>
void* findFirst(void* const* slots, unsigned int count, const Wanted& wanted) {
    for (void* const* const end = slots + count; slots != end; ++slots) {
        if (!*slots || wanted.matches(*static_cast<const AString*>(*slots))) return *slots;
    }
    return nullptr;
}

}  // namespace

void* findNamed(const VoidPtrOrderedCollection& records, TextPiece name) {
    const unsigned int items = records.size();
    const unsigned int count = items < records.capacity() ? items : records.capacity();
    if (name.length() > UINT32_MAX) return nullptr;
    if (name.length() < 2) return findFirst(records.data(), count, WantedShortName(name));
    if (!wantsSmallCode && ExactEnd(name.end - 2).isUseful()) {
        return findFirst(records.data(), count, WantedName<ExactEnd>(name));
    }
    return findFirst(records.data(), count, WantedName<AnyEnd>(name));
}

}  // namespace kfl::detail
