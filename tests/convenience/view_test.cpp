#include "kfl/convenience/view.h"
#include <gtest/gtest.h>

namespace {

TEST(ViewTest, IsAllOfTheText) {
    kfl::AString text("eth0");
    EXPECT_EQ(kfl::view(text), "eth0");
    EXPECT_EQ(kfl::view(text).data(), text.c_str());
    text.append('\0');
    text.append('x');
    EXPECT_EQ(kfl::view(text), std::string_view("eth0\0x", 6));
    text.clear();
    EXPECT_TRUE(kfl::view(text).empty());
}

}  // namespace
