// A source of its own: the calls cannot be seen through.
#include "benchmarks/bare_pool.h"

#include <cstring>

namespace kfl_benchmark {

BarePool::BarePool(unsigned int blocks, unsigned int blockSize)
    : all_(new char[blocks * std::size_t{blockSize}]), free_(nullptr), inUse_(0), maxInUse_(0) {
    for (unsigned int i = blocks; i > 0; --i) {
        char* const block = all_ + (i - 1) * std::size_t{blockSize};
        std::memcpy(block, &free_, sizeof free_);
        free_ = block;
    }
}

BarePool::~BarePool() { delete[] all_; }

void* BarePool::take() {
    if (++inUse_ > maxInUse_) maxInUse_ = inUse_;
    void* const block = free_;
    std::memcpy(&free_, block, sizeof free_);
    return block;
}

void BarePool::giveBack(void* block) {
    std::memcpy(block, &free_, sizeof free_);
    free_ = block;
    --inUse_;
}

}  // namespace kfl_benchmark
