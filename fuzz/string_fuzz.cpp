// A script of operations on a string, and searches in it, beside the model.
#include "fuzz/input.h"
#include "tests/core/AString_model.h"

namespace {

void shorten(kfl_test::AStringPair& pair) {
    if (pair.model.length() <= 600) return;
    pair.model.erase(20, -1);
    pair.real.erase(20, -1);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    kfl_test::AStringPair pair{input.below(20), input.oneIn(4) ? 100 : input.below(12)};
    const auto& steps = kfl_test::steps();
    while (!input.empty()) {
        steps[input.below(static_cast<std::uint32_t>(steps.size()))](pair, input);
        EXPECT_TRUE(kfl_test::same(pair.real, pair.model));
        const std::string set = kfl_test::randomText(input, 3);
        kfl_test::expectSameAnswers(pair.real, pair.model, set, input.between(-2, 30));
        shorten(pair);
    }
    const kfl::AString copy(pair.real);
    EXPECT_TRUE(kfl_test::same(copy, pair.model));
    EXPECT_TRUE(copy == pair.real);
    return 0;
}
