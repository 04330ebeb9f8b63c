// A script of calls of an INI parser, with files in between, beside the simple reader.
#include "fuzz/input.h"
#include "tests/config/ini_script.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kfl_test::MemoryFile file;
    kfl_fuzz::Input input(data, size);
    kfl_test::IniFileWriter writer(input);
    kfl::IniFileParser parser;
    kfl_test::SimpleIniReader model;
    while (!input.empty()) {
        kfl_test::takeIniStep(input, writer, file, parser, model);
        EXPECT_EQ(kfl_test::contentOf(parser), kfl_test::contentOf(model));
    }
    return 0;
}
