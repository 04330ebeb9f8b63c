// Random allocation and release beside a model that knows every address.
#include <gtest/gtest.h>

#include "tests/memory/local_heap_model.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::LocalHeapPair;
using kfl_test::Random;

class LocalHeapModelTest : public testing::Test {
  protected:
    void run(unsigned blocksPerPool, unsigned blockSize, int steps) {
        LocalHeapPair pair(blocksPerPool, blockSize);
        for (int i = 0; i < steps; ++i) {
            SCOPED_TRACE(i);
            // Phases in which the heap fills and empties.
            const bool filling = (i / 100) % 2 == 0;
            if (pair.used() == 0 || random.below(10) < (filling ? 7U : 3U)) {
                pair.take(static_cast<int>(random.below(256)));
            } else {
                pair.give(random.below(static_cast<std::uint32_t>(pair.used())));
            }
            if (HasFatalFailure()) return;
        }
        pair.expectSamePools();
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
