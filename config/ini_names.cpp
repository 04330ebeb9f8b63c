#include "config/ini_names.h"

#include <strings.h>

#include <cstdint>
#include <cstring>

#include "core/equal_bytes.h"

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

// A name of two characters or more, looked for among many: most are told apart by their length,
// their last two characters and their first one.
class WantedName {
  public:
    explicit WantedName(TextPiece name)
        : text_(name.begin), length_(name.length()), lastTwo_(twoAt(name.end - 2)) {}

    // Another length is what the loop around this is laid out for: such a name is passed without a
    // jump.
    bool matches(const AString& name) const {
        return __builtin_expect(name.length() == length_, 0) != 0 && isText(name.c_str());
    }

  private:
    // Of a text of this length.
    bool isText(const char* text) const {
        return canBe(twoAt(text + length_ - 2), lastTwo_) && canBe(byte(*text), byte(*text_)) &&
               equals(text);
    }

    bool equals(const char* text) const {
        return equalBytes(text, text_, length_) || strncasecmp(text, text_, length_) == 0;
    }

    const char* text_;
    std::size_t length_;
    unsigned int lastTwo_;
};

// Any other name.
class WantedShortName {
  public:
    explicit WantedShortName(TextPiece name) : text_(name.begin), length_(name.length()) {}

    bool matches(const AString& name) const {
        if (name.length() != length_) return false;
        const char* const text = name.c_str();
        return length_ == 0 ||
               (canBe(byte(*text), byte(*text_)) && strncasecmp(text, text_, length_) == 0);
    }

  private:
    const char* text_;
    std::size_t length_;
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
    const unsigned int items = records.count();
    const unsigned int count = items < records.capacity() ? items : records.capacity();
    if (name.length() < 2) return findFirst(records.data(), count, WantedShortName(name));
    return findFirst(records.data(), count, WantedName(name));
}

}  // namespace kfl::detail
