// The threads that osCreateThread started and nobody has joined yet, found by their ids.
//
// An id is the thread's handle itself where a handle has 32 bits. Where it is wider, ids are
// counted up from 1, and begin again when they run out, leaving out those still in use. All
// functions may be called on any thread.
#ifndef KFL_OS_THREAD_IDS_H
#define KFL_OS_THREAD_IDS_H

#include <pthread.h>

namespace kfl::detail {

// One thread, from before its creation to its join.
struct ThreadRecord {
    ThreadRecord* next;
    pthread_t handle;
    int id;
    bool joining;
};

// The number that was given last, where ids are counted.
extern int lastThreadId;

// Takes over a record from malloc whose handle is set; gives it an id, which it returns.
int enterThread(ThreadRecord* record);

// The right to join a thread, which only one caller has at a time.
class ThreadClaim {
  public:
    explicit ThreadClaim(int id);
    // Gives the right back; also when the calling thread is cancelled while it waits.
    ~ThreadClaim();
    ThreadClaim(const ThreadClaim&) = delete;
    ThreadClaim& operator=(const ThreadClaim&) = delete;

    // 0, or why there is no such right: ESRCH for an id without a thread, EINVAL for a thread that
    // somebody is joining already.
    int error() const { return error_; }
    // Waits for the thread's end; its id ends with it. Returns pthread_join's result, and where
    // that is an error the id stays. Requires: error() is 0.
    int join();

  private:
    ThreadRecord* record_;
    int error_;
};

}  // namespace kfl::detail

#endif
