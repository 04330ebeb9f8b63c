#include "tests/small_host/host.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

char lastEvent[256];
int eventCount = 0;
const char* applicationName = "small-host";

namespace {

int made = 0;
int failed = 0;

}  // namespace

int genSyslogEvent(int, int, int, int, const char* text) {
    snprintf(lastEvent, sizeof lastEvent, "%s", text);
    ++eventCount;
    return 0;
}

char* Parms(const char* format, ...) {
    static char text[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

void check(bool holds, const char* what, const char* file, int line) {
    ++made;
    if (holds) return;
    ++failed;
    printf("%s:%d: not so: %s\n", file, line, what);
}

int checksEnd() {
    printf("%d checks, %d failed\n", made, failed);
    return made > 0 && failed == 0 ? 0 : 1;
}
