#include "kfl/OSThread.h"

#include <stdlib.h>
#include <sys/time.h>

#include "events/report.h"
#include "os/thread_ids.h"

namespace kfl {
namespace {

constexpr int nanosecondsPerSecond = 1000000000;

using StartRoutine = void* (*)(void*);

// The value that a thread ends with is never looked at, so an entry without one serves as it is.
StartRoutine startRoutine(void (*entry)(void*)) {
    return reinterpret_cast<StartRoutine>(reinterpret_cast<void (*)()>(entry));
}

// Kept on purpose: the sum has 32 bits and is put right once only. What is left of a second or
// more, or below zero, is a time that the wait refuses.
timespec deadlineAfter(unsigned int timeoutNs) {
    timeval now = {};
    gettimeofday(&now, nullptr);
    timespec deadline = {};
    deadline.tv_sec = now.tv_sec;
    int nanoseconds = static_cast<int>(static_cast<unsigned int>(now.tv_usec) * 1000U + timeoutNs);
    if (nanoseconds >= nanosecondsPerSecond) {
        deadline.tv_sec += 1;
        nanoseconds -= nanosecondsPerSecond;
    }
    deadline.tv_nsec = nanoseconds;
    return deadline;
}

}  // namespace

int osCreateThread(int eventGroup, void (*entry)(void*), void* argument, int) {
    auto* const record = static_cast<detail::ThreadRecord*>(malloc(sizeof(detail::ThreadRecord)));
    if (record && entry &&
        pthread_create(&record->handle, nullptr, startRoutine(entry), argument) == 0) {
        return detail::enterThread(record);
    }
    free(record);
    detail::report(detail::priorityError, {eventGroup, 0, 0}, Parms("Can't create thread"));
    return -1;
}

int osJoinThread(int threadId) {
    detail::ThreadClaim claim(threadId);
    return claim.error() != 0 ? claim.error() : claim.join();
}

void osExitThread() { pthread_exit(nullptr); }

// Kept on purpose: threadId is left to create.
// cppcheck-suppress uninitMemberVar
OSThread::OSThread() {
    pthread_mutex_init(&stopMutex, nullptr);
    pthread_cond_init(&stopCondition, nullptr);
}

OSThread::~OSThread() {
    pthread_cond_destroy(&stopCondition);
    pthread_mutex_destroy(&stopMutex);
}

int OSThread::create(int eventGroup, void (*entry)(void*), void* argument, int ignoredOption) {
    threadId = osCreateThread(eventGroup, entry, argument, ignoredOption);
    return threadId;
}

int OSThread::destroy() {
    pthread_mutex_lock(&stopMutex);
    pthread_cond_signal(&stopCondition);
    pthread_mutex_unlock(&stopMutex);
    return osJoinThread(threadId);
}

bool OSThread::isRequestedToStop(unsigned int timeoutNs) {
    const timespec deadline = deadlineAfter(timeoutNs);
    return pthread_cond_timedwait(&stopCondition, &stopMutex, &deadline) == 0;
}

int OSThread::threadHasStarted() { return pthread_mutex_lock(&stopMutex); }

int OSThread::threadIsStopping() { return pthread_mutex_unlock(&stopMutex); }

void OSThread::leave() { osExitThread(); }

}  // namespace kfl
