// The children that osCreateProcess waits for, so that a host's own reaper can hand over a status.
//
// A signal handler may run between any two accesses, on the waiting thread or on another one: each
// field is read and written whole, and a claimed entry shows its pid last.
#ifndef KFL_OS_WAIT_TABLE_H
#define KFL_OS_WAIT_TABLE_H

namespace kfl::detail {

struct WaitEntry {
    int waitPid;     // noPid while the entry is free
    int waitStatus;  // noStatus until the host delivered one
};

constexpr int noPid = -1;
constexpr int noStatus = -1;
constexpr int waitEntries = 5;

extern WaitEntry waitTable[waitEntries];

// Claims every free entry for a child, without a status.
// Kept on purpose: all of them, not only the first.
void claimWaitEntries(int pid);

// Frees every entry of a child.
void freeWaitEntries(int pid);

// Finds the first entry of a child that has a status, frees that entry only and tells the status.
bool takeDeliveredStatus(int pid, int& status);

}  // namespace kfl::detail

#endif
