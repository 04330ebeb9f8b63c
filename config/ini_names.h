// Finding sections and keys by name.
#ifndef KFL_CONFIG_INI_NAMES_H
#define KFL_CONFIG_INI_NAMES_H

#include <strings.h>

#include <cstring>

#include "config/text_piece.h"
#include "kfl/IniFileParser.h"

namespace kfl::detail {

// A name looked for among many: most are told apart by length and first character alone.
class WantedName {
  public:
    explicit WantedName(TextPiece name)
        : text_(name.begin), length_(name.length()), first_(length_ > 0 ? firstOf(text_) : 0) {}
    explicit WantedName(const char* name) : WantedName(TextPiece{name, name + std::strlen(name)}) {}

    bool matches(const AString& name) const {
        return name.length() == length_ && canStart(firstOf(name.c_str())) &&
               strncasecmp(name.c_str(), text_, length_) == 0;
    }

  private:
    static unsigned char firstOf(const char* text) { return static_cast<unsigned char>(*text); }

    // False when both are ASCII and differ by more than the bit that stands for case. Any other
    // character may be a letter of the locale, and is left to strncasecmp.
    bool canStart(unsigned char c) const {
        const unsigned int differing = c ^ first_;
        return (differing & ~0x20U) == 0 || ((c | first_) & 0x80U) != 0;
    }

    const char* text_;
    std::size_t length_;
    unsigned char first_;
};

// The first record of that name, or null. A null entry, which only a host can have made, ends the
// walk.
template <class Record>
Record* findRecord(const VoidPtrOrderedCollection& records, const WantedName& name) {
    void* const* const data = records.data();
    const unsigned int count = records.count();
    for (unsigned int i = 0; i < count && i < records.capacity(); ++i) {
        Record* const record = static_cast<Record*>(data[i]);
        if (!record || name.matches(record->name)) return record;
    }
    return nullptr;
}

}  // namespace kfl::detail

#endif
