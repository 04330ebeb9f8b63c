#include "os/wait_table.h"

#include "kfl/process.h"

namespace kfl {
namespace detail {

WaitEntry waitTable[waitEntries] = {{noPid, 0}, {noPid, 0}, {noPid, 0}, {noPid, 0}, {noPid, 0}};

namespace {

int get(const int& field) { return __atomic_load_n(&field, __ATOMIC_ACQUIRE); }

void set(int& field, int value) { __atomic_store_n(&field, value, __ATOMIC_RELEASE); }

}  // namespace

void claimWaitEntries(int pid) {
    for (WaitEntry& entry : waitTable) {
        if (get(entry.waitPid) != noPid) continue;
        set(entry.waitStatus, noStatus);
        set(entry.waitPid, pid);
    }
}

void freeWaitEntries(int pid) {
    for (WaitEntry& entry : waitTable) {
        if (get(entry.waitPid) == pid) set(entry.waitPid, noPid);
    }
}

bool takeDeliveredStatus(int pid, int& status) {
    for (WaitEntry& entry : waitTable) {
        if (get(entry.waitPid) != pid || get(entry.waitStatus) == noStatus) continue;
        status = get(entry.waitStatus);
        set(entry.waitPid, noPid);
        return true;
    }
    return false;
}

}  // namespace detail

// Runs in signal handlers: it calls nothing and leaves errno alone. A pid that is not positive is
// nobody's; -1 would find the free entries.
bool osStatusReceived(int pid, int status) {
    if (pid <= 0) return false;
    for (detail::WaitEntry& entry : detail::waitTable) {
        if (detail::get(entry.waitPid) != pid) continue;
        detail::set(entry.waitStatus, status);
        return true;
    }
    return false;
}

}  // namespace kfl
