// The library's objects linked with nothing but libc, the C++ language support and the three names
// that a host supplies: that this program links is the proof that the library needs no more.
#include "kfl/kfl.h"

const char* applicationName = "closed";

int genSyslogEvent(int, int, int, int, const char*) { return 0; }

char* Parms(const char*, ...) {
    static char text[] = "";
    return text;
}

int main() {
    kfl::IniFileParser parser;
    parser.setValue("key", "1", "section");
    return parser.getInt("KEY", "Section") == 1 ? 0 : 1;
}
