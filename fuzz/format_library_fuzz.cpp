// makeString() beside the C library's vsnprintf, with formats that both read in the same way.
#include <gtest/gtest.h>

#include <vector>

#include "fuzz/input.h"
#include "tests/core/format_model.h"
#include "tests/core/library_format.h"
#include "tests/core/random_formats.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    const unsigned int room = input.below(input.oneIn(4) ? 1000 : 40);
    bool nonZero = false;
    const std::string format = kfl_test::commonFormat(input, nonZero);
    kfl_test::RandomArguments arguments(input, true, nonZero);
    // The model asks for the arguments.
    const std::string model = kfl_test::ModelFormatter(room, format, arguments).run();
    const auto& list = arguments.all();
    const auto formatted = [&](kfl_test::Formatter formatter) {
        std::vector<char> buf(std::size_t{room} + 1);
        const int stored = kfl_test::callWith(formatter, buf.data(), room, format.c_str(),
                                              list.data(), list.data() + list.size());
        // A character of the text may be a NUL.
        EXPECT_EQ(buf[static_cast<std::size_t>(stored)], '\0') << format;
        return std::string(buf.data(), static_cast<std::size_t>(stored));
    };
    const std::string ours = formatted(&BoundedStringBase::format);
    EXPECT_EQ(ours, formatted(&kfl_test::libraryFormat)) << format;
    EXPECT_EQ(ours, model) << format;
    return 0;
}
