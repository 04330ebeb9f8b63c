// A script of puts and gets of two containers, beside their models.
#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "tests/collections/container_model.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    const unsigned int elementSize = input.below(14);
    kfl_test::ContainerPair pairs[2] = {{input.below(8), elementSize},
                                        {input.below(8), elementSize}};
    while (!input.empty()) {
        const std::uint32_t which = input.below(2);
        EXPECT_TRUE(kfl_test::stepAgrees(input, pairs[which], pairs[1 - which]));
    }
    return 0;
}
