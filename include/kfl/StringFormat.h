// A printf-style text, made in one place to be copied from there at once.
//
//     kfl::AString line(StringFormat("%s: %d", name, value));
#ifndef KFL_STRINGFORMAT_H
#define KFL_STRINGFORMAT_H

#include "kfl/export.h"

// Kept on purpose: all objects share one text area of 500 bytes in the library. A text is valid
// until the next StringFormat is built, on any thread, and hosts that use it from several threads
// must lock.
class KFL_EXPORT StringFormat {
  public:
    // Formats as vsnprintf does, into the shared area; cut after 499 characters. What cannot be
    // formatted (a character that the locale lacks, a text longer than INT_MAX) is what vsnprintf
    // left there before it failed. A null format gives an empty text.
    StringFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual ~StringFormat();

    // The text in the shared area.
    const char* getString() const;
};

#endif
