// makeString() with any format, beside the plain model, right in front of memory that nothing may
// touch.
#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "tests/core/format_model.h"
#include "tests/core/random_formats.h"
#include "tests/support/guarded_page.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kfl_test::GuardedPage page;
    kfl_fuzz::Input input(data, size);
    const std::string text = input.text();
    const std::string format = text.substr(0, text.find('\0'));
    const unsigned int room = input.below(input.oneIn(4) ? 1000 : 40);
    kfl_test::RandomArguments arguments(input, false, false);
    const std::string model = kfl_test::ModelFormatter(room, format, arguments).run();
    const auto& list = arguments.all();
    if (list.size() > kfl_test::maxArguments) return 0;

    char* const buf = page.last(std::size_t{room} + 1);
    constexpr char mark = '\x7E';
    buf[-1] = mark;
    const int stored =
        kfl_test::callWith(&BoundedStringBase::format, buf, room, kfl_fuzz::ExactText(format),
                           list.data(), list.data() + list.size());
    EXPECT_EQ(stored, static_cast<int>(model.size())) << format;
    EXPECT_EQ(std::string(buf, model.size() + 1), model + '\0') << format;
    EXPECT_TRUE(arguments.countsAreRight()) << format;
    EXPECT_EQ(buf[-1], mark) << format;
    return 0;
}
