// The words of a command line, beside the model.
#include "fuzz/input.h"
#include "tests/os/command_line_model.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = kfl_fuzz::Input(data, size).rest();
    const std::string line = bytes.substr(0, bytes.find('\0'));
    EXPECT_EQ(kfl_test::wordsOf(kfl_fuzz::ExactText(line)), kfl_test::modelWordsOf(line));
    return 0;
}
