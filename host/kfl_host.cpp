// Ready definitions of the three names of kfl/Host.h: events go to syslog, message texts are kept
// per thread, and the process is called as its program file.
#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <syslog.h>

#include "kfl/Host.h"

namespace {

// Room for one message of a thread; longer ones are cut.
constexpr size_t messageSize = 1024;

}  // namespace

const char* applicationName = program_invocation_short_name;

int genSyslogEvent(int priority, int eventGroup, int eventIndex, int eventCode, const char* text) {
    syslog(priority, "%s/%03d-%02d-%d|%s", applicationName, eventGroup, eventIndex, eventCode,
           text);
    return 0;
}

char* Parms(const char* format, ...) {
    static thread_local char message[messageSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    if (length < 0) message[0] = '\0';  // not the text before
    return message;
}
