// Blocks taken and given back in any order, beside a model that knows every address.
#include "fuzz/input.h"
#include "tests/memory/local_heap_model.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    const unsigned blocksPerPool = 1 + input.below(20);
    kfl_test::LocalHeapPair pair(blocksPerPool, input.below(40));
    while (!input.empty()) {
        const std::uint32_t what = input.byte();
        if (pair.used() == 0 || what % 2 == 0) {
            pair.take(static_cast<int>(what));
        } else {
            pair.give(input.below(static_cast<std::uint32_t>(pair.used())));
        }
    }
    pair.expectSamePools();
    return 0;
}
