// The lines of a text, beside the model: the first byte is the line size.
#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "kfl/AString.h"
#include "tests/core/lines_model.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    const unsigned int lineSize = input.byte();
    const std::string text = input.rest();
    kfl::AString string(static_cast<unsigned int>(text.size()));
    for (const char c : text) string.append(c);

    kfl::AStringIterator walk(string, lineSize);
    for (int round = 0; round < 2; ++round) {
        std::vector<std::string> lines;
        while (const char* const line = walk.Next()) lines.emplace_back(line);
        // A size of 0 counts as 1.
        EXPECT_EQ(lines, kfl_test::modelLines(text, lineSize == 0 ? 1 : lineSize));
        EXPECT_EQ(walk.Next(), nullptr);
        walk.Reset();
    }
    return 0;
}
