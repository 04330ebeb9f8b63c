// Pieces of a line, and how configuration text is cut into them.
#ifndef KFL_CONFIG_TEXT_PIECE_H
#define KFL_CONFIG_TEXT_PIECE_H

#include <cstddef>

#include "core/char_set.h"

namespace kfl::detail {

// A stretch of characters without a NUL; not terminated.
struct TextPiece {
    const char* begin;
    const char* end;

    std::size_t length() const { return static_cast<std::size_t>(end - begin); }
    bool empty() const { return begin == end; }
};

// What is dropped at both ends of a line and of a key.
constexpr char trimmedText[] = " \t\n\r=:";
constexpr char separatorText[] = "=:";
constexpr CharSet trimmedChars(trimmedText);

inline TextPiece trimmed(TextPiece text) {
    while (text.end > text.begin && trimmedChars.contains(text.end[-1])) --text.end;
    while (text.begin < text.end && trimmedChars.contains(*text.begin)) ++text.begin;
    return text;
}

// The first '=' or ':', or the end.
inline const char* findSeparator(TextPiece text) {
    while (text.begin < text.end && *text.begin != '=' && *text.begin != ':') ++text.begin;
    return text.begin;
}

// The last ']', or the end.
inline const char* findLastBracket(TextPiece text) {
    for (const char* c = text.end; c > text.begin; --c) {
        if (c[-1] == ']') return c - 1;
    }
    return text.end;
}

}  // namespace kfl::detail

#endif
