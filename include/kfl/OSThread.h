// Threads that can be asked to stop.
//
//     void work(void* argument) {
//         auto* const thread = static_cast<kfl::OSThread*>(argument);
//         thread->threadHasStarted();
//         do {
//             ...one piece of work...
//         } while (!thread->isRequestedToStop(100000000));  // up to 0.1 s
//         thread->threadIsStopping();
//         thread->leave();
//     }
//
//     kfl::OSThread thread;
//     if (thread.create(910, work, &thread, 0) != -1) {
//         ...
//         thread.destroy();  // asks it to stop and waits for its end
//     }
//
// Kept on purpose: the request to stop is a signal of a condition, not a flag. The worker holds the
// mutex from threadHasStarted to threadIsStopping, except while it waits in isRequestedToStop, so a
// request cannot fall into a piece of work; but one that falls into the moment when a wait has just
// timed out, or in before threadHasStarted, is lost, and destroy then waits until the worker ends
// of its own accord.
//
// A thread's id is good for osJoinThread from its creation to its join. It is the thread's handle
// (pthread_t) where a handle has 32 bits, and a small positive number where it is wider. A thread
// that is never joined keeps its id and what the system keeps of it.
//
// The free functions may be called on any thread.
#ifndef KFL_OSTHREAD_H
#define KFL_OSTHREAD_H

#include <pthread.h>

#include "kfl/export.h"

namespace kfl {

// Starts a thread with default attributes that runs entry(argument). Returns its id, or -1 when it
// could not be created (or `entry` is null), which is reported: "Can't create thread", priority 3,
// event `eventGroup`, 0, 0. The last argument is accepted and ignored.
KFL_EXPORT int osCreateThread(int eventGroup, void (*entry)(void*), void* argument,
                              int ignoredOption);

// Waits until the thread has ended. Returns 0, or an error number: ESRCH for an id that is unknown,
// was joined already or is -1; EINVAL while somebody else is joining the thread; EDEADLK for the
// caller itself. After an error the id is as good as before.
KFL_EXPORT int osJoinThread(int threadId);

// Ends the calling thread.
[[noreturn]] KFL_EXPORT void osExitThread();

// A worker thread with what its owner needs to stop it. The owner calls create, destroy and the
// destructor; the worker calls the rest. Several objects do not share anything.
class KFL_EXPORT OSThread {
  public:
    OSThread();
    // Requires: no worker, or one that destroy has waited for; it is neither stopped nor joined
    // here.
    ~OSThread();

    OSThread(const OSThread&) = delete;
    OSThread& operator=(const OSThread&) = delete;

    // Starts the worker; arguments and result as for osCreateThread. Call it once.
    int create(int eventGroup, void (*entry)(void*), void* argument, int ignoredOption);
    // Asks the worker to stop and waits for its end. Returns osJoinThread's result, which is ESRCH
    // after a create that failed. Requires: create was called; once only, and not by the worker.
    // A worker that never waits or never ends blocks the caller for good.
    int destroy();

    // Waits up to `timeoutNs` nanoseconds for the request to stop: true when it came, false when
    // the time was up. Requires: called by the worker, between threadHasStarted and
    // threadIsStopping. Kept on purpose: meant for less than a second. Up to one second always
    // waits; between one and two it waits, or returns false at once, depending on the clock's
    // microseconds; from two seconds on it returns false at once. A spurious wake-up counts as a
    // request.
    bool isRequestedToStop(unsigned int timeoutNs);
    // The worker's first call: takes the mutex. Returns pthread_mutex_lock's result.
    int threadHasStarted();
    // When the worker leaves its loop: releases the mutex. Returns pthread_mutex_unlock's result.
    int threadIsStopping();
    // The worker's last call: ends the thread.
    [[noreturn]] void leave();

  private:
    pthread_mutex_t stopMutex;
    pthread_cond_t stopCondition;
    int threadId;
};

}  // namespace kfl

#endif
