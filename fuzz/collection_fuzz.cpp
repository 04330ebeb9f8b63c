// One script for both kinds of ordered collections, each beside its model.
#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "tests/collections/ordered_collection_pair.h"

namespace {

template <class Kind>
void run(kfl_fuzz::Input input) {
    kfl_test::CollectionPair<Kind> pair(input.below(14));
    while (!input.empty()) {
        const std::uint32_t kind = input.below(16);
        if (kind == 0) {
            // Below the count, at times.
            pair.expandTo(input.below(25));
        } else if (kind < 8) {
            kfl_test::change(input, pair);
        } else {
            kfl_test::look(input, pair);
        }
        ASSERT_TRUE(pair.agrees());
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    run<kfl_test::Untyped>({data, size});
    run<kfl_test::Objects>({data, size});
    return 0;
}
