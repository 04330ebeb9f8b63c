// The ready definitions of what a host supplies, where formatting fails.
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/Host.h"
#include "tests/faults/exhaust.h"

namespace {

TEST(HostFaults, ATextThatCannotBeMade) {
    kfl_test::exhaust("kfl-host: a text made", [](kfl_test::Attempt& attempt) {
        const char* text = nullptr;
        attempt([&] { text = Parms("%d of %s", 7, "nine"); });
        ASSERT_NE(text, nullptr);
        EXPECT_STREQ(text, attempt.failed("vsnprintf") ? "" : "7 of nine");
        EXPECT_STREQ(Parms("%d of %s", 7, "nine"), "7 of nine");
    });
}

}  // namespace
