#include "tests/support/recording_host.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <ostream>

#include "kfl/Host.h"

namespace kfl_test {
namespace {

std::mutex& lock() {
    static std::mutex mutex;
    return mutex;
}

std::vector<Event>& recorded() {
    static std::vector<Event> events;
    return events;
}

std::atomic<int> eventResult{0};
std::atomic<void (*)(const Event&)> eventHook{nullptr};

}  // namespace

bool operator==(const Event& a, const Event& b) {
    return a.priority == b.priority && a.group == b.group && a.index == b.index &&
           a.code == b.code && a.text == b.text;
}

void PrintTo(const Event& event, std::ostream* out) {
    *out << event.priority << " (" << event.group << ", " << event.index << ", " << event.code
         << ") \"" << event.text << '"';
}

std::vector<Event> events() {
    const std::lock_guard<std::mutex> guard(lock());
    return recorded();
}

void clearEvents() {
    const std::lock_guard<std::mutex> guard(lock());
    recorded().clear();
}

void setEventResult(int result) { eventResult = result; }

void setEventHook(void (*hook)(const Event&)) { eventHook = hook; }

}  // namespace kfl_test

const char* applicationName = "test";

int genSyslogEvent(int priority, int group, int index, int code, const char* text) {
    const kfl_test::Event event{priority, group, index, code, text};
    if (auto* const hook = kfl_test::eventHook.load()) hook(event);
    const std::lock_guard<std::mutex> guard(kfl_test::lock());
    kfl_test::recorded().push_back(event);
    return kfl_test::eventResult;
}

char* Parms(const char* format, ...) {
    static thread_local char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}
