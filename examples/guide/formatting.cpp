// Formatted texts: within a bound, and as strings.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/BoundedStringBase.h"
#include "kfl/StringFormat.h"

int main() {
    // Room for 15 characters and the terminator; what does not fit is cut.
    char column[16];
    const int stored = BoundedStringBase::format(column, 15, "%-8s|%6d|", "eth0", 1492);
    std::printf("%s (%d stored)\n", column, stored);
    BoundedStringBase::format(column, 15, "%#x %05.1s %s", 255, "abc", "far too long");
    std::printf("%s\n", column);

    // Copied at once: the next StringFormat overwrites the text.
    const kfl::AString rate(StringFormat("%.1f Mbit/s", 98.5));
    const kfl::AString name(StringFormat("port %d", 3));
    std::printf("%s: %s\n", name.c_str(), rate.c_str());
    return 0;
}
