// A script of operations on three buffers, beside their models.
#include "fuzz/input.h"
#include "tests/memory/buffer_model.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    std::vector<kfl_test::BufferPair> pairs;
    for (int i = 0; i < 3; ++i) pairs.push_back(kfl_test::freshPair(input));
    while (!input.empty()) {
        kfl_test::takeBufferStep(input, pairs);
        for (kfl_test::BufferPair& pair : pairs) {
            pair.check(true);
            // A block never shrinks, and doubles when it is appended to itself.
            if (pair.maxSize() > 20000) pair.assign(kfl_test::freshPair(input));
        }
    }
    return 0;
}
