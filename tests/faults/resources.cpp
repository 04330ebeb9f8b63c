#include "tests/faults/resources.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "tests/faults/injection.h"
#include "tests/os/children.h"

namespace kfl_test {
namespace {

std::vector<int> sortedDescriptors() {
    std::vector<int> descriptors = openDescriptors();
    std::sort(descriptors.begin(), descriptors.end());
    return descriptors;
}

std::string shown(const std::vector<int>& numbers) {
    std::string text;
    for (const int number : numbers) text += ' ' + std::to_string(number);
    return text;
}

// A joined thread may still be listed for a moment.
bool hasThreads(unsigned int count) {
    for (int i = 0; i < 2000; ++i) {
        if (threadCount() == count) return true;
        usleep(1000);
    }
    return false;
}

}  // namespace

unsigned int threadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<unsigned int>(std::distance(begin(tasks), end(tasks)));
}

bool hasChildren() {
    bool any = false;
    int status = 0;
    pid_t pid = 0;
    while ((pid = waitpid(-1, &status, WNOHANG)) > 0) any = true;
    return any || pid == 0;
}

Resources::Resources() : blocks_(0), descriptors_(sortedDescriptors()), threads_(threadCount()) {
    blocks_ = liveBlocks();
}

std::string Resources::difference() const {
    const long blocks = liveBlocks();
    std::string text;
    if (blocks != blocks_) text += std::to_string(blocks - blocks_) + " blocks of memory;";
    const std::vector<int> descriptors = sortedDescriptors();
    if (descriptors != descriptors_) text += " descriptors:" + shown(descriptors) + ';';
    if (hasChildren()) text += " a child;";
    if (!hasThreads(threads_)) text += ' ' + std::to_string(threadCount()) + " threads;";
    return text;
}

}  // namespace kfl_test
