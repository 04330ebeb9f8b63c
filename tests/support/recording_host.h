// A host for tests: it keeps what the library reports, in order.
#ifndef KFL_TESTS_RECORDING_HOST_H
#define KFL_TESTS_RECORDING_HOST_H

#include <string>
#include <vector>

namespace kfl_test {

struct Event {
    int priority;
    int group;
    int index;
    int code;
    std::string text;
};

bool operator==(const Event& a, const Event& b);
// How GoogleTest shows an event.
void PrintTo(const Event& event, std::ostream* out);

// All events since the last clearEvents(); safe on several threads.
std::vector<Event> events();
void clearEvents();
// What genSyslogEvent returns from now on.
void setEventResult(int result);
// A function that is called with each event, in the process that raised it; null for none.
void setEventHook(void (*hook)(const Event& event));

}  // namespace kfl_test

#endif
