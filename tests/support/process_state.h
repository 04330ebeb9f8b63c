// What a process has of threads and children.
#ifndef KFL_TESTS_PROCESS_STATE_H
#define KFL_TESTS_PROCESS_STATE_H

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

namespace kfl_test {

inline unsigned int threadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<unsigned int>(std::distance(begin(tasks), end(tasks)));
}

// Whether there are no more threads than were counted before. A joined one may still be listed for
// a moment, now as well as then: hence the waiting, and hence fewer will do too.
inline bool hasNoMoreThreads(unsigned int count) {
    for (int i = 0; i < 2000; ++i) {
        if (threadCount() <= count) return true;
        usleep(1000);
    }
    return false;
}

// Whether there were children, running or ended, that nobody has waited for; ended ones are waited
// for now.
inline bool hasChildren() {
    bool any = false;
    int status = 0;
    pid_t pid = 0;
    while ((pid = waitpid(-1, &status, WNOHANG)) > 0) any = true;
    return any || pid == 0;
}

}  // namespace kfl_test

#endif
