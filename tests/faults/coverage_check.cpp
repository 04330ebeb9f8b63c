// That every call that can be made to fail was made to fail by some test of this program.
#include <gtest/gtest.h>

#include <cstdio>
#include <numeric>

#include "tests/faults/injection.h"

namespace {

class EveryCallFailed : public testing::Environment {
  public:
    void TearDown() override {
        const auto counts = kfl_test::injectedByCall();
        std::printf("calls that failed, later ones included: %lu\n",
                    std::accumulate(counts.begin(), counts.end(), 0UL));
        // Only a whole run tells.
        if (testing::GTEST_FLAG(filter) != "*") return;
        const auto& calls = kfl_test::fallibleCalls();
        for (std::size_t i = 0; i < calls.size(); ++i) {
            EXPECT_GT(counts[i], 0U) << "no test lets " << calls[i].name << " fail";
        }
    }
};

const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new EveryCallFailed);

}  // namespace
