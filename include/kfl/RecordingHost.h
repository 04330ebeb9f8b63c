// A host for the tests of hosts: it keeps what the library reports.
//
//     kfl::recording::clearEvents();
//     kfl::osKillProcess(0);
//     const std::vector<kfl::recording::Event> events = kfl::recording::events();
//     assert(events.back().priority == 3);
//
// The static library kfl-recording-host (CMake: kfl::recording-host) holds these functions and, in
// the place of a host's own or of kfl-host, the three names of kfl/Host.h: genSyslogEvent keeps the
// event, Parms formats into storage of its thread (at most 4,095 characters), and applicationName
// is "test" until a test sets it. Nothing goes to the system log.
//
// All functions may be called on any thread. A forked child has a copy of the events so far, and
// what it reports stays in its copy: a hook can carry it over. This header needs the C++ library;
// kfl/kfl.h does not include it.
#ifndef KFL_RECORDINGHOST_H
#define KFL_RECORDINGHOST_H

#include <cstddef>
#include <string>
#include <vector>

namespace kfl {
namespace recording {

// What genSyslogEvent was given.
struct Event {
    // The class: a syslog priority, 3 for errors, 7 for trace lines.
    int priority;
    // The first of the three numbers behind it, as it was given.
    int group;
    // The second of them.
    int index;
    // The third of them.
    int code;
    // Copied; null counts as "".
    std::string text;
};

// True when all five are equal.
bool operator==(const Event& a, const Event& b);
// True when one differs.
bool operator!=(const Event& a, const Event& b);

// A copy of the events since the start or the last clearEvents(), in the order in which they were
// reported; each thread's own are in its order.
std::vector<Event> events();
// Forgets them.
void clearEvents();
// Waits until there are at least `count` events. Returns false when `milliseconds` passed before;
// 0 or less does not wait.
bool waitForEvents(std::size_t count, int milliseconds);

// What genSyslogEvent returns from now on; 0 at the start.
void setEventResult(int result);
// A function that is called with each event before it is kept, on the thread and in the process
// that reported it; null for none. It may call everything here.
void setEventHook(void (*hook)(const Event& event));

}  // namespace recording
}  // namespace kfl

#endif
