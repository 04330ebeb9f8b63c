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

void takeEndedChildren(int /*signal*/) {
    const int error = errno;
    int status = 0;
    for (int pid = waitpid(-1, &status, WNOHANG); pid > 0; pid = waitpid(-1, &status, WNOHANG)) {
        // True when a waiting osCreateProcess will find the status; it is its business then.
        if (!kfl::osStatusReceived(pid, status)) remember(pid, status);
    }
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
    action.sa_handler = takeEndedChildren;
    // Without SA_RESTART: the interrupted wait is what makes osCreateProcess look for the status.
    action.sa_flags = SA_NOCLDSTOP;
    sigaction(SIGCHLD, &action, nullptr);
}

int runAndWait(const char* commandLine) { return kfl::osCreateProcess(commandLine, true, nullptr); }

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
