// The container beside a plain vector of bytes, in long random scripts.
#include <gtest/gtest.h>

#include <string>

#include "tests/collections/container_model.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::ContainerPair;
using kfl_test::Random;
using kfl_test::stepAgrees;

class ContainerModelTest : public testing::TestWithParam<unsigned int> {};

TEST_P(ContainerModelTest, LongScriptsAgree) {
    Random random(GetParam());
    for (int round = 0; round < 40; ++round) {
        ContainerPair pairs[2] = {{random.below(8), GetParam()}, {random.below(8), GetParam()}};
        for (int step = 0; step < 250; ++step) {
            ContainerPair& pair = pairs[random.below(2)];
            ContainerPair& other = &pair == pairs ? pairs[1] : pairs[0];
            ASSERT_TRUE(stepAgrees(random, pair, other)) << "round " << round << ", step " << step;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ElementSizes, ContainerModelTest, testing::Values(0U, 1U, 3U, 4U, 8U, 13U),
                         [](const auto& size) { return "Of" + std::to_string(size.param); });

}  // namespace
