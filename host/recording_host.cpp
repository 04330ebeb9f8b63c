// The three names of kfl/Host.h for tests: every event is kept.
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "kfl/Host.h"
#include "kfl/RecordingHost.h"

namespace kfl::recording {
namespace {

struct Record {
    std::mutex mutex;
    std::condition_variable grown;
    std::vector<Event> events;
};

// It is never destroyed: events may come as late as from exit handlers, those of forked children
// too.
Record& record();

// A child must not find the lock held by a thread that it does not have.
Record* makeRecord() {
    auto* const made = new Record;
    pthread_atfork([] { record().mutex.lock(); }, [] { record().mutex.unlock(); },
                   [] { record().mutex.unlock(); });
    return made;
}

Record& record() {
    static Record* const made = makeRecord();
    return *made;
}

std::atomic<int> eventResult{0};
std::atomic<void (*)(const Event&)> eventHook{nullptr};

void keep(const Event& event) {
    if (auto* const hook = eventHook.load()) hook(event);
    const std::lock_guard<std::mutex> guard(record().mutex);
    record().events.push_back(event);
    record().grown.notify_all();
}

}  // namespace

bool operator==(const Event& a, const Event& b) {
    return a.priority == b.priority && a.group == b.group && a.index == b.index &&
           a.code == b.code && a.text == b.text;
}

bool operator!=(const Event& a, const Event& b) { return !(a == b); }

std::vector<Event> events() {
    const std::lock_guard<std::mutex> guard(record().mutex);
    return record().events;
}

void clearEvents() {
    const std::lock_guard<std::mutex> guard(record().mutex);
    record().events.clear();
}

bool waitForEvents(std::size_t count, int milliseconds) {
    std::unique_lock<std::mutex> guard(record().mutex);
    return record().grown.wait_for(guard, std::chrono::milliseconds(milliseconds),
                                   [count] { return record().events.size() >= count; });
}

void setEventResult(int result) { eventResult = result; }

void setEventHook(void (*hook)(const Event&)) { eventHook = hook; }

}  // namespace kfl::recording

const char* applicationName = "test";

int genSyslogEvent(int priority, int group, int index, int code, const char* text) {
    kfl::recording::keep({priority, group, index, code, text ? text : ""});
    return kfl::recording::eventResult;
}

char* Parms(const char* format, ...) {
    static thread_local char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}
