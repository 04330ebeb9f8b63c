// The free functions of kfl/IniFileParser.h.
#include <strings.h>

#include "config/text_piece.h"
#include "kfl/IniFileParser.h"

namespace kfl {

void trim(AString& s) {
    s.erase(static_cast<unsigned int>(s.findLastNotOf(detail::trimmedText) + 1), -1);
    s.erase(0, s.findFirstNotOf(detail::trimmedText, 0));
}

void getNextWord(AString& line, AString& word) {
    const int separator = line.findFirstOf(detail::separatorText, 0);
    const unsigned int length = separator < 0 ? 0 : static_cast<unsigned int>(separator);
    word.clear();
    word.append(line.c_str(), length);
    line.erase(0, length < line.length() ? static_cast<int>(length) + 1 : -1);
    trim(word);
}

int compareNoCase(const char* a, const char* b) { return strcasecmp(a, b); }

}  // namespace kfl
