// Programs, and a handler that reaps them. Shows: why children are left alone while the library
// waits, a status handed over, raw wait statuses, and what a signal handler may do.
#include "children.h"

#include <sys/wait.h>
#include <csignal>
#include <cstdio>

#include <atomic>
#include <cerrno>

#include "kfl/process.h"

namespace agent {
namespace {

struct Ended {
    int pid;
    int status;
};

// Children that nobody waited for: filled by the handler, emptied by the main thread. A few places
// do, since the agent has few children; what finds no place is counted.
constexpr unsigned int places = 8;
Ended ended[places];
std::atomic<unsigned int> written{0};
std::atomic<unsigned int> printed{0};
static_assert(std::atomic<unsigned int>::is_always_lock_free, "used in a signal handler");

void remember(int pid, int status) {
    const unsigned int at = written;
    if (at - printed >= places) return;
    ended[at % places] = Ended{pid, status};
    written = at + 1;
}

// True while runAndWait is in the library.
volatile sig_atomic_t waiting = 0;

// Takes in the children that have ended. While the library waits, they are left to it: its wait
// finds its own child, and one that were taken in just before it goes to sleep would be missed.
void takeEndedChildren() {
    int status = 0;
    while (!waiting) {
        const int pid = waitpid(-1, &status, WNOHANG);
        if (pid <= 0) return;
        // True when the library was waiting for it, on a host that does not hold back as this one
        // does.
        if (!kfl::osStatusReceived(pid, status)) remember(pid, status);
    }
}

void onChildEnded(int /*signal*/) {
    const int error = errno;
    takeEndedChildren();
    errno = error;
}

// Keeps the handler away while a child is taken in by hand.
class ReapingPaused {
  public:
    ReapingPaused() {
        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &child, &before_);
    }
    ~ReapingPaused() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    ReapingPaused(const ReapingPaused&) = delete;
    ReapingPaused& operator=(const ReapingPaused&) = delete;

  private:
    sigset_t before_;
};

}  // namespace

void reapChildrenOnSignal() {
    struct sigaction action {};
    action.sa_handler = onChildEnded;
    // Without SA_RESTART: the interrupted wait is what makes osCreateProcess look for the status.
    action.sa_flags = SA_NOCLDSTOP;
    sigaction(SIGCHLD, &action, nullptr);
}

int runAndWait(const char* commandLine) {
    waiting = 1;
    const int status = kfl::osCreateProcess(commandLine, true, nullptr);
    waiting = 0;
    // What ended meanwhile and was left alone.
    const ReapingPaused paused;
    takeEndedChildren();
    return status;
}

int start(const char* commandLine, const char* outputFile) {
    return kfl::osCreateProcess(commandLine, false, outputFile);
}

void printEndedChildren() {
    for (; printed != written; ++printed) {
        const Ended& child = ended[printed % places];
        char what[32];
        std::snprintf(what, sizeof what, "process %d", child.pid);
        printStatus(what, child.status);
    }
}

void stop(int pid) {
    const ReapingPaused paused;
    int status = 0;
    // A child that has ended is not there any more, and its number may be somebody else's by now.
    if (waitpid(pid, &status, WNOHANG) == 0) kfl::osKillProcess(pid);
}

void printStatus(const char* what, int status) {
    if (status < 0) {
        std::printf("%s: could not be run or waited for\n", what);
    } else if (WIFSIGNALED(status)) {
        std::printf("%s: ended by signal %d\n", what, WTERMSIG(status));
    } else {
        std::printf("%s: ended with %d (raw status %d)\n", what, WEXITSTATUS(status), status);
    }
}

}  // namespace agent
