#include "kfl/syslog_events.h"

#include <syslog.h>

#include "events/debug_filter.h"
#include "kfl/Host.h"

int* kfl::detail::excludeFromDebugEventsFilter = nullptr;

void raiseSyslogEvent(int priority, int first, int second, int third, const char*, int,
                      const char* text) {
    syslog(priority, "%s/%03d-%02d-%d|%s", applicationName, first, second, third, text);
}

void raiseSyslogAlarm(int priority, bool on, int first, int second, int third, const char*, int,
                      const char* text) {
    syslog(priority, "%s/%03d-%02d-%d|ALARM-%s|%s", applicationName, first, second, third,
           on ? "ON" : "OFF", text);
}

void setExcludeFromDebugEventsFilter(int* filter) {
    kfl::detail::excludeFromDebugEventsFilter = filter;
}
