// Numbered events and alarms in the system log, one line each.
//
//     raiseSyslogEvent(LOG_USER | LOG_INFO, 7, 3, 12, "", 0, "link up");
//         // mgr/007-03-12|link up
//     raiseSyslogAlarm(LOG_USER | LOG_ERR, true, 123, 4, 5, "", 0, "fan");
//         // mgr/123-04-5|ALARM-ON|fan
//
// Each line begins with the host's applicationName as it is at the call. `first` is shown with at
// least 3 digits, `second` with at least 2. `priority`, facility and level, goes to syslog as it
// stands; the log is neither opened nor closed here, and nothing is filtered.
//
// Threads: as syslog itself.
#ifndef KFL_SYSLOG_EVENTS_H
#define KFL_SYSLOG_EVENTS_H

#include "kfl/export.h"

// Logs an event. Kept on purpose: `origin` and `originNumber` are accepted and not used.
KFL_EXPORT void raiseSyslogEvent(int priority, int first, int second, int third, const char* origin,
                                 int originNumber, const char* text);

// Logs an alarm that begins (`on`) or ends. Kept on purpose: `origin` and `originNumber` are
// accepted and not used.
KFL_EXPORT void raiseSyslogAlarm(int priority, bool on, int first, int second, int third,
                                 const char* origin, int originNumber, const char* text);

// Keeps a pointer, which stays the caller's. Kept on purpose: nothing reads it, and events and
// alarms are logged whatever it holds.
KFL_EXPORT void setExcludeFromDebugEventsFilter(int* filter);

#endif
