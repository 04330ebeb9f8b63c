// A printf-style engine that never writes past a bound and needs nothing of the C library's
// formatting.
//
//     char line[81];
//     BoundedStringBase::format(line, 80, "%-10s %5d", name, value);
//
// Reentrant; it keeps no state and allocates nothing.
#ifndef KFL_BOUNDEDSTRINGBASE_H
#define KFL_BOUNDEDSTRINGBASE_H

#include <stdarg.h>

#include "kfl/export.h"

namespace kfl {
namespace detail {

// A va_list as makeString takes it: an array or a pointer as a pointer, a structure by its address.
template <class Element>
void* asArgument(Element* list) {
    return list;
}
template <class Structure>
void* asArgument(Structure& list) {
    return &list;
}

}  // namespace detail
}  // namespace kfl

// A directive is "%", flags (any of " #+-0"), width (digits or "*"), precision ("." with digits or
// "*"), one qualifier (h, l, L or Z) and the conversion:
//
//     d i u    decimal; signed, signed, unsigned
//     o x X    octal, hexadecimal
//     c s %    a character; a text, at most `precision` bytes of it ("<NULL>" for null); a "%"
//     p        a pointer, in at least eight hexadecimal digits unless a width is given
//     n        stores the number of characters stored so far; prints nothing
//
// Kept on purpose: L and Z take a long, as l does. A second qualifier is no qualifier. "#" prefixes
// zero too. "0" pads with zeros also where a precision is given. Any other conversion is copied, as
// "%" and the character alone. A width or precision past INT_MAX counts as that.
class KFL_EXPORT BoundedStringBase {
  public:
    // The flags of number().
    enum : int {
        // Pad with "0" instead of blanks; without effect beside LEFT.
        ZEROPAD = 1,
        // The value is signed.
        SIGN = 2,
        // A signed value that is not negative gets "+".
        PLUS = 4,
        // The same with a blank, where there is no PLUS.
        SPACE = 8,
        // Left-justify.
        LEFT = 16,
        // Prefix "0" for base 8, "0x" or "0X" for base 16.
        SPECIAL = 32,
        // Upper-case digits.
        LARGE = 64
    };

    BoundedStringBase();
    ~BoundedStringBase();

    // Formats into `buf`, which holds size + 1 bytes. Returns the number of characters stored, the
    // terminator not counted: the first `size` characters of the whole, always terminated.
    // `args` is the argument list as a va_list is passed to a function: the va_list itself where
    // that type is an array or a pointer (x86, MIPS, PowerPC), its address where it is a structure
    // (ARM). It is not advanced for the caller.
    // Requires: the texts to be put in lie outside of `buf`.
    static int makeString(char* buf, unsigned int size, const char* fmt, void* args);

    // Writes one integer at `out`; returns the new write position. The position never moves to
    // `end`: once it stands on the last place, every further character overwrites that place.
    // Nothing is terminated. Returns null, and writes nothing, for a `base` outside 2 to 36.
    // Requires: out < end.
    static char* number(char* out, char* end, long num, int base, int width, int precision,
                        int flags);

    // Reads decimal digits at *s and moves *s past them; returns their value, at most INT_MAX.
    static int skip_atoi(const char** s);

    // makeString for arguments that stand in the call.
    static int format(char* buf, unsigned int size, const char* fmt, ...) {
        va_list args;
        va_start(args, fmt);
        const int n = makeString(buf, size, fmt, kfl::detail::asArgument(args));
        va_end(args);
        return n;
    }
};

#endif
