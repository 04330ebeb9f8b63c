// The text of an AString where a std::string_view is asked for. There is nothing here before C++17.
#ifndef KFL_CONVENIENCE_VIEW_H
#define KFL_CONVENIENCE_VIEW_H

#include "kfl/AString.h"

#if __cplusplus >= 201703L

#include <string_view>

namespace kfl {

// All length() characters, NULs among them: the visible text, c_str(), can be shorter.
// Invalidated by what invalidates c_str(): every growth, and the end of `text`.
inline std::string_view view(const AString& text) {
    return std::string_view(text.c_str(), text.length());
}

}  // namespace kfl

#endif

#endif
