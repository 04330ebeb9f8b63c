#include "os/thread_ids.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>

#include <cstring>

namespace kfl::detail {

int lastThreadId = 0;

namespace {

// Chains of records, a thread's being chosen by its id.
constexpr unsigned int chainBits = 6;
ThreadRecord* chains[1U << chainBits];
pthread_mutex_t chainsMutex = PTHREAD_MUTEX_INITIALIZER;

class Lock {
  public:
    Lock() { pthread_mutex_lock(&chainsMutex); }
    ~Lock() { pthread_mutex_unlock(&chainsMutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

// Spreads handles, which are addresses far apart, as well as numbers counted up.
ThreadRecord** chainOf(int id) {
    return &chains[static_cast<unsigned int>(id) * 2654435769U >> (32U - chainBits)];
}

// A handle that is its own id can belong to a new thread while the join of its former owner is just
// returning: a record that nobody is joining goes first.
ThreadRecord* find(int id) {
    ThreadRecord* joined = nullptr;
    for (ThreadRecord* record = *chainOf(id); record; record = record->next) {
        if (record->id != id) continue;
        if (!record->joining) return record;
        joined = record;
    }
    return joined;
}

int countedId() {
    do {
        lastThreadId = lastThreadId == INT_MAX ? 1 : lastThreadId + 1;
    } while (find(lastThreadId));
    return lastThreadId;
}

int idOf(const pthread_t& handle) {
    if constexpr (sizeof handle != sizeof(int)) {
        return countedId();
    } else {
        int id = 0;
        std::memcpy(&id, &handle, sizeof id);
        return id;
    }
}

void removeThread(ThreadRecord* record) {
    ThreadRecord** link = chainOf(record->id);
    while (*link != record) link = &(*link)->next;
    *link = record->next;
    free(record);
}

}  // namespace

int enterThread(ThreadRecord* record) {
    const Lock lock;
    record->id = idOf(record->handle);
    record->joining = false;
    ThreadRecord** const chain = chainOf(record->id);
    record->next = *chain;
    *chain = record;
    return record->id;
}

ThreadClaim::ThreadClaim(int id) : record_(nullptr), error_(ESRCH) {
    const Lock lock;
    ThreadRecord* const found = find(id);
    if (!found) return;
    error_ = found->joining ? EINVAL : 0;
    if (error_ != 0) return;
    found->joining = true;
    record_ = found;
}

ThreadClaim::~ThreadClaim() {
    if (!record_) return;
    const Lock lock;
    record_->joining = false;
}

int ThreadClaim::join() {
    const int result = pthread_join(record_->handle, nullptr);
    if (result == 0) {
        const Lock lock;
        removeThread(record_);
        record_ = nullptr;
    }
    return result;
}

}  // namespace kfl::detail
