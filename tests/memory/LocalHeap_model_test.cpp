// Random allocation and release beside a model that knows every address.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::Random;

// The free blocks in the order in which they will be handed out, the next one last.
class Model {
  public:
    Model(unsigned blocksPerPool, unsigned blockSize)
        : blocksPerPool_(static_cast<int>(blocksPerPool)),
          stride_(static_cast<int>(blockSize) + kfl_test::wordSize) {}

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
            EXPECT_EQ(kfl_test::wordAtPlace(poolAt(i)),
                      i + 1 < pools_.size() ? poolAt(i + 1) : nullptr);
    }

  private:
    void* poolAt(std::size_t i) const { return pools_[i] - 2 * kfl_test::wordSize; }

    int blocksPerPool_;
    int stride_;
    std::vector<char*> free_;
    std::vector<char*> pools_;
};

class LocalHeapModelTest : public testing::Test {
  protected:
    void run(unsigned blocksPerPool, unsigned blockSize, int steps) {
        LocalHeap heap(blocksPerPool, blockSize, LocalHeap::GrowOnDemand);
        Model model(blocksPerPool, blockSize);
        std::vector<std::pair<char*, int>> used;
        std::size_t most = 0;
        for (int i = 0; i < steps; ++i) {
            // Phases in which the heap fills and empties.
            const bool filling = (i / 100) % 2 == 0;
            if (used.empty() || random.below(10) < (filling ? 7U : 3U)) {
                char* const block = static_cast<char*>(heap.allocateBlock(blockSize));
                if (model.needsPool()) model.addPool(block);
                ASSERT_EQ(block, model.take()) << "step " << i;
                const int mark = static_cast<int>(random.below(256));
                std::memset(block, mark, blockSize);
                used.emplace_back(block, mark);
            } else {
                const std::size_t at = random.below(static_cast<std::uint32_t>(used.size()));
                const auto [block, mark] = used[at];
                for (unsigned k = 0; k < blockSize; ++k)
                    ASSERT_EQ(block[k], static_cast<char>(mark)) << "step " << i;
                heap.deallocateBlock(block, blockSize);
                model.give(block);
                used[at] = used.back();
                used.pop_back();
            }
            most = std::max(most, used.size());
            ASSERT_EQ(heap.inUse(), used.size());
            ASSERT_EQ(heap.maxInUse(), most);
        }
        EXPECT_GE(model.pools() * blocksPerPool, most);
        model.expectChained();
    }

    Random random;
};

TEST_F(LocalHeapModelTest, EveryAddressIsTheExpectedOne) {
    for (const unsigned blocksPerPool : {1U, 2U, 3U, 10U, 50U}) {
        for (const unsigned blockSize : {0U, 1U, 3U, 4U, 7U, 8U, 13U, 32U}) {
            SCOPED_TRACE(testing::Message() << blocksPerPool << " blocks of " << blockSize);
            run(blocksPerPool, blockSize, 1000);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
