#include "kfl/StringFormat.h"

#include <stdio.h>

#include <cstdarg>

#include "kfl/AString.h"

namespace {

char sharedText[500];

}  // namespace

StringFormat::StringFormat(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool isMade = format && vsnprintf(sharedText, sizeof sharedText, format, arguments) >= 0;
    va_end(arguments);
    if (!isMade) sharedText[0] = '\0';
}

StringFormat::~StringFormat() = default;

const char* StringFormat::getString() const { return sharedText; }

kfl::AString::AString(const StringFormat& format) : AString(format.getString(), defaultIncrement) {}
