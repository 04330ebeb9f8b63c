#include "tests/faults/resources.h"

#include <algorithm>

#include "tests/faults/injection.h"
#include "tests/os/children.h"
#include "tests/support/process_state.h"

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

}  // namespace

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
    if (!hasNoMoreThreads(threads_)) text += ' ' + std::to_string(threadCount()) + " threads;";
    return text;
}

}  // namespace kfl_test
