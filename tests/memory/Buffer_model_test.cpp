// Random operations on three buffers, beside plain models of them.
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "tests/memory/buffer_model.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::BufferPair;
using kfl_test::freshPair;
using kfl_test::pick;
using kfl_test::Random;
using kfl_test::takeBufferStep;

TEST(BufferModelTest, ThreeBuffersFollowTheirModels) {
    Random random;
    for (int round = 0; round < 200; ++round) {
        std::vector<BufferPair> pairs;
        for (int i = 0; i < 3; ++i) pairs.push_back(freshPair(random));
        for (int i = 0; i < 300; ++i) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", step " << i);
            takeBufferStep(random, pairs);
            for (BufferPair& pair : pairs) pair.check(i % 8 == 0);
            if (testing::Test::HasFailure()) return;
        }
    }
}

// Counts around the limits of 16 bits, on blocks that hold them.
TEST(BufferModelTest, LargeBuffersFollowTheirModels) {
    Random random;
    const auto size = [&] { return pick(random, {100, 32767, 32768, 40000, 65535, 65537, 70000}); };
    for (int round = 0; round < 10; ++round) {
        std::vector<BufferPair> pairs;
        for (int i = 0; i < 2; ++i)
            pairs.emplace_back(random, size(), pick(random, {0, 1, 100, 300}));
        for (int i = 0; i < 25; ++i) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", step " << i);
            BufferPair& pair = pairs[random.below(2)];
            switch (random.below(7)) {
                case 0: pair.setWriteCount(size()); break;
                case 1: pair.writeOneLocation(size()); break;
                case 2:
                case 3: pair.readOneLocation(size()); break;
                case 4: pair.unread(random.below(40000)); break;
                case 5: pair.unwrite(size()); break;
                default: pair.moveTo(pairs[0], pairs[1], size()); break;
            }
            for (BufferPair& each : pairs) each.check(i % 8 == 0);
            if (testing::Test::HasFailure()) return;
        }
    }
}

}  // namespace
