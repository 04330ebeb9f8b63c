#include "kfl/StringFormat.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <string>
#include <type_traits>

#include "kfl/AString.h"

namespace {

TEST(StringFormatTest, FormatsAsTheCLibraryDoes) {
    const StringFormat text("%s: %05.2f, %#x, %lld", "load", 1.5, 255U, 1LL << 40);
    EXPECT_STREQ(text.getString(), "load: 01.50, 0xff, 1099511627776");
}

TEST(StringFormatTest, TakesAFormatWithoutDirectives) {
    const StringFormat text("plain 100%%");
    EXPECT_STREQ(text.getString(), "plain 100%");
}

TEST(StringFormatTest, MayBeEmpty) {
    const StringFormat text("%s", "");
    EXPECT_STREQ(text.getString(), "");
}

TEST(StringFormatTest, AllObjectsShowTheLastText) {
    const StringFormat first("first %d", 1);
    EXPECT_STREQ(first.getString(), "first 1");
    const StringFormat second("second, longer %d", 2);
    EXPECT_STREQ(first.getString(), "second, longer 2");
    EXPECT_STREQ(second.getString(), "second, longer 2");
    EXPECT_EQ(first.getString(), second.getString());
}

TEST(StringFormatTest, TheTextOutlivesItsObject) {
    const char* text = nullptr;
    {
        const StringFormat format("%d", 42);
        text = format.getString();
    }
    EXPECT_STREQ(text, "42");
}

TEST(StringFormatTest, ACopyShowsTheSharedTextToo) {
    const StringFormat first("one");
    const StringFormat copy(first);
    const StringFormat second("two");
    EXPECT_STREQ(copy.getString(), "two");
}

TEST(StringFormatTest, Keeps499Characters) {
    for (const std::size_t length : {498U, 499U, 500U, 501U, 5000U}) {
        const std::string whole(length, 'x');
        const StringFormat text("%s", whole.c_str());
        EXPECT_EQ(std::string(text.getString()), whole.substr(0, 499)) << length;
    }
}

TEST(StringFormatTest, ANullFormatIsEmpty) {
    const StringFormat before("something");
    // Through a variable: the compiler knows what a format must be.
    const char* volatile none = nullptr;
    const char* const format = none;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    const StringFormat text(format);
#pragma GCC diagnostic pop
    EXPECT_STREQ(text.getString(), "");
}

// No character set has this character.
constexpr auto noCharacter = static_cast<std::wint_t>(0x7FFFFFFF);

TEST(StringFormatTest, WhatCannotBeFormattedIsWhatVsnprintfLeft) {
    const StringFormat before("something");
    char expected[500] = "something";
    ASSERT_LT(std::snprintf(expected, sizeof expected, "ab%lc", noCharacter), 0);
    const StringFormat text("ab%lc", noCharacter);
    EXPECT_STREQ(text.getString(), expected);
}

TEST(StringFormatTest, AStringIsBuiltExactlyFull) {
    const kfl::AString text(StringFormat("%s-%d", "abc", 42));
    EXPECT_STREQ(text.c_str(), "abc-42");
    EXPECT_EQ(text.length(), 6U);
    EXPECT_EQ(text.capacity(), 6U);
    EXPECT_EQ(text.increment(), 100U);
}

TEST(StringFormatTest, AStringHasItsOwnCopy) {
    const kfl::AString first(StringFormat("first"));
    const kfl::AString second(StringFormat("second"));
    EXPECT_STREQ(first.c_str(), "first");
    EXPECT_STREQ(second.c_str(), "second");
}

TEST(StringFormatTest, AStringTakesTheTextAsItIsWhenBuilt) {
    const StringFormat format("first");
    const StringFormat later("later on");
    const kfl::AString text(format);
    EXPECT_STREQ(text.c_str(), "later on");
    EXPECT_EQ(text.length(), 8U);
}

TEST(StringFormatTest, AStringGrowsByItsIncrement) {
    kfl::AString text(StringFormat("%s", "abc"));
    text.append('d');
    EXPECT_STREQ(text.c_str(), "abcd");
    EXPECT_EQ(text.capacity(), 103U);
}

TEST(StringFormatTest, AStringOfAnEmptyTextIsEmpty) {
    const kfl::AString text(StringFormat("%s", ""));
    EXPECT_EQ(text.length(), 0U);
    EXPECT_EQ(text.capacity(), 0U);
    EXPECT_STREQ(text.c_str(), "");
}

TEST(StringFormatTest, HasNoFieldsAndAVirtualDestructor) {
    EXPECT_EQ(sizeof(StringFormat), sizeof(void*));
    EXPECT_TRUE(std::has_virtual_destructor<StringFormat>::value);
}

}  // namespace
