// Lines in the system log, and a host that supplies its three names itself.
#include <syslog.h>
#include <cstdarg>
#include <cstdio>

#include "kfl/Host.h"
#include "kfl/process.h"
#include "kfl/syslog_events.h"

const char* applicationName = "mgr";

// Where the library's own reports go. Trace lines have priority 7.
int genSyslogEvent(int priority, int eventGroup, int eventIndex, int eventCode, const char* text) {
    std::fprintf(stderr, "priority %d, %d-%d-%d: %s\n", priority, eventGroup, eventIndex, eventCode,
                 text);
    return 0;
}

// Per thread, so that two threads can report at once.
char* Parms(const char* format, ...) {
    static thread_local char message[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    return message;
}

int main() {
    // The log is the host's to open; this one also shows each line.
    openlog("log", LOG_PERROR, LOG_USER);
    raiseSyslogEvent(LOG_USER | LOG_INFO, 7, 3, 12, "", 0, "link up");
    raiseSyslogAlarm(LOG_USER | LOG_ERR, true, 123, 4, 5, "", 0, "fan");
    raiseSyslogAlarm(LOG_USER | LOG_ERR, false, 123, 4, 5, "", 0, "fan");
    kfl::osKillProcess(0);
    closelog();
    return 0;
}
