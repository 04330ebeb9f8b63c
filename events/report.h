// How the library reports to its host: format with Parms, file with genSyslogEvent.
#ifndef KFL_EVENTS_REPORT_H
#define KFL_EVENTS_REPORT_H

#include "kfl/Host.h"

namespace kfl::detail {

// syslog's numbers of the two priorities that the library uses.
enum Priority : int { priorityError = 3, priorityTrace = 7 };

// The three numbers that identify an event to the host.
struct EventNumber {
    int group;
    int index;
    int code;
};

// Files a text: a ready one, or one that Parms has just formatted.
inline int report(Priority priority, const EventNumber& event, const char* text) {
    return genSyslogEvent(priority, event.group, event.index, event.code, text);
}

}  // namespace kfl::detail

#endif
