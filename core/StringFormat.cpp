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
    // The last place is never written but with a NUL: whatever a failure leaves there is a text.
    if (format) {
        vsnprintf(sharedText, sizeof sharedText, format, arguments);
    } else {
        sharedText[0] = '\0';
    }
    va_end(arguments);
}

StringFormat::~StringFormat() = default;

const char* StringFormat::getString() const { return sharedText; }

kfl::AString::AString(const StringFormat& format) : AString(format.getString(), defaultIncrement) {}
