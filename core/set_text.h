// Replacing the text of a string.
#ifndef KFL_CORE_SET_TEXT_H
#define KFL_CORE_SET_TEXT_H

#include "kfl/AString.h"

namespace kfl::detail {

// Leaves the string as if `n` characters were copied, the string cleared and the copy appended;
// there is no NUL among them, and they may be a piece of the string's own text. The old text stays
// where there is no memory for the new one.
void setText(AString& string, const char* text, unsigned int n);

}  // namespace kfl::detail

#endif
