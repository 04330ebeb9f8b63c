// A host that keeps errors and asks nobody for memory.
#include <cstdarg>

#include "kfl/BoundedStringBase.h"
#include "kfl/Host.h"
#include "tests/faults/reported_errors.h"

const char* applicationName = "faults";

int genSyslogEvent(int priority, int, int, int, const char* text) {
    if (priority == 3) kfl_test::keepError(text);
    return 0;
}

// What is reported goes through the library's own formatter, which asks nobody for anything: the C
// library's is among the calls that are made to fail.
char* Parms(const char* format, ...) {
    static thread_local char text[256];
    va_list arguments;
    va_start(arguments, format);
    BoundedStringBase::makeString(text, sizeof text - 1, format,
                                  kfl::detail::asArgument(arguments));
    va_end(arguments);
    return text;
}
