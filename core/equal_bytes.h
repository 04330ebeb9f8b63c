// Whether two stretches of bytes are equal.
#ifndef KFL_CORE_EQUAL_BYTES_H
#define KFL_CORE_EQUAL_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/small_code.h"

namespace kfl::detail {

template <class Word>
bool equalWords(const char* a, const char* b) {
    Word words[2];
    std::memcpy(&words[0], a, sizeof(Word));
    std::memcpy(&words[1], b, sizeof(Word));
    return words[0] == words[1];
}

// Compares at least one word; the last one overlaps the one before it.
template <class Word>
bool equalByWords(const char* a, const char* b, std::size_t n) {
    const std::size_t last = n - sizeof(Word);
    for (std::size_t i = 0; i < last; i += sizeof(Word)) {
        if (!equalWords<Word>(a + i, b + i)) return false;
    }
    return equalWords<Word>(a + last, b + last);
}

// A few words of the machine are compared sooner than memcmp is called.
inline bool equalBytes(const char* a, const char* b, std::size_t n) {
    using Word = std::uintptr_t;
    if (wantsSmallCode || n < 4 || n > 4 * sizeof(Word)) return std::memcmp(a, b, n) == 0;
    if (n < sizeof(Word)) return equalByWords<std::uint32_t>(a, b, n);
    return equalByWords<Word>(a, b, n);
}

}  // namespace kfl::detail

#endif
