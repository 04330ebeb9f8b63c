#include "kfl/StringFormat.h"

#include <cstdarg>
#include <cstdio>

#include "kfl/AString.h"

namespace {

char sharedText[500];

}  // namespace

StringFormat::StringFormat(const char* format, ...) {
    sharedText[0] = '\0';
    if (!format) return;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(sharedText, sizeof sharedText, format, arguments);
    va_end(arguments);
}

StringFormat::~StringFormat() = default;

const char* StringFormat::getString() const { return sharedText; }

kfl::AString::AString(const StringFormat& format) : AString(format.getString(), defaultIncrement) {}
