#include "config/ini_names.h"

#include <strings.h>

#include <cstdint>
#include <cstring>

namespace kfl::detail {
namespace {

// A name looked for among many: most are told apart by their length, their last two characters and
// their first one.
class WantedName {
  public:
    explicit WantedName(TextPiece name)
        : text_(name.begin),
          length_(name.length()),
          tail_(length_ > 2 ? length_ - 2 : 0),
          // A name of one character is followed by a NUL where it is kept.
          lastTwo_(twoAt(length_ > 1 ? text_ + tail_ : onlyOf(name).two)) {}

    bool matches(const AString& name) const {
        if (name.length() != length_) return false;
        const char* const text = name.c_str();
        return length_ == 0 || (canBe(twoAt(text + tail_), lastTwo_) &&
                                canBe(byte(*text), byte(*text_)) && equals(text));
    }

  private:
    struct Only {
        char two[2];
    };
    static Only onlyOf(TextPiece name) { return {{name.empty() ? '\0' : *name.begin, '\0'}}; }

    static unsigned int twoAt(const char* text) {
        std::uint16_t two;
        std::memcpy(&two, text, sizeof two);
        return two;
    }

    static unsigned int byte(char c) { return static_cast<unsigned char>(c); }

    // One or two characters: false when all are ASCII and differ by more than the bit that stands
    // for case. Any other may be a letter of the locale, and is left to strncasecmp.
    static bool canBe(unsigned int a, unsigned int b) {
        return ((a ^ b) & ~0x2020U) == 0 || ((a | b) & 0x8080U) != 0;
    }

    bool equals(const char* text) const {
        return std::memcmp(text, text_, length_) == 0 || strncasecmp(text, text_, length_) == 0;
    }

    const char* text_;
    std::size_t length_;
    std::size_t tail_;
    unsigned int lastTwo_;
};

}  // namespace

void* findNamed(const VoidPtrOrderedCollection& records, TextPiece name) {
    const WantedName wanted(name);
    void* const* const data = records.data();
    const unsigned int items = records.count();
    const unsigned int count = items < records.capacity() ? items : records.capacity();
    for (unsigned int i = 0; i < count; ++i) {
        if (!data[i] || wanted.matches(*static_cast<const AString*>(data[i]))) return data[i];
    }
    return nullptr;
}

}  // namespace kfl::detail
