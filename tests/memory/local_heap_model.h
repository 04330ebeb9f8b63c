// A heap beside a model that knows every address.
#ifndef KFL_TESTS_MEMORY_LOCAL_HEAP_MODEL_H
#define KFL_TESTS_MEMORY_LOCAL_HEAP_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"

namespace kfl_test {

// The free blocks in the order in which they will be handed out, the next one last.
class LocalHeapModel {
  public:
    LocalHeapModel(unsigned blocksPerPool, unsigned blockSize)
        : blocksPerPool_(static_cast<int>(blocksPerPool)),
          stride_(static_cast<int>(blockSize) + wordSize) {}

    bool needsPool() const { return free_.empty(); }
    // A pool has been made; its first block is known by now.
    void addPool(char* first) {
        pools_.push_back(first);
        for (int i = blocksPerPool_; i-- > 0;) free_.push_back(first + i * stride_);
    }
    char* take() {
        char* const block = free_.back();
        free_.pop_back();
        return block;
    }
    void give(char* block) { free_.push_back(block); }
    std::size_t pools() const { return pools_.size(); }
    // Whether each pool begins with a word that leads to the next one.
    void expectChained() const {
        for (std::size_t i = 0; i < pools_.size(); ++i)
            EXPECT_EQ(wordAtPlace(poolAt(i)), i + 1 < pools_.size() ? poolAt(i + 1) : nullptr);
    }

  private:
    void* poolAt(std::size_t i) const { return pools_[i] - 2 * wordSize; }

    int blocksPerPool_;
    int stride_;
    std::vector<char*> free_;
    std::vector<char*> pools_;
};

// A heap beside its model, and the blocks that are in use with the byte that fills each.
class LocalHeapPair {
  public:
    LocalHeapPair(unsigned blocksPerPool, unsigned blockSize)
        : blocksPerPool_(blocksPerPool),
          blockSize_(blockSize),
          heap_(blocksPerPool, blockSize, LocalHeap::GrowOnDemand),
          model_(blocksPerPool, blockSize) {}

    std::size_t used() const { return used_.size(); }

    void take(int mark) {
        char* const block = static_cast<char*>(heap_.allocateBlock(blockSize_));
        if (model_.needsPool()) model_.addPool(block);
        ASSERT_EQ(block, model_.take());
        std::memset(block, mark, blockSize_);
        used_.emplace_back(block, mark);
        most_ = std::max(most_, used_.size());
        expectSameCounts();
    }
    void give(std::size_t at) {
        const auto [block, mark] = used_[at];
        for (unsigned k = 0; k < blockSize_; ++k) ASSERT_EQ(block[k], static_cast<char>(mark));
        heap_.deallocateBlock(block, blockSize_);
        model_.give(block);
        used_[at] = used_.back();
        used_.pop_back();
        expectSameCounts();
    }
    void expectSamePools() const {
        EXPECT_GE(model_.pools() * blocksPerPool_, most_);
        model_.expectChained();
    }

  private:
    void expectSameCounts() const {
        ASSERT_EQ(heap_.inUse(), used_.size());
        ASSERT_EQ(heap_.maxInUse(), most_);
    }

    unsigned blocksPerPool_;
    unsigned blockSize_;
    LocalHeap heap_;
    LocalHeapModel model_;
    std::vector<std::pair<char*, int>> used_;
    std::size_t most_ = 0;
};

}  // namespace kfl_test

#endif
