// The free functions beside the INI parser: trim, getNextWord, compareNoCase.
#include <gtest/gtest.h>
#include <strings.h>

#include <cstring>
#include <string>

#include "kfl/IniFileParser.h"

namespace {

const std::string trimmedSet = " \t\n\r=:";

std::string textOf(const kfl::AString& text) { return {text.c_str(), text.length()}; }

std::string trimmed(const std::string& text) {
    kfl::AString s(text.c_str());
    kfl::trim(s);
    EXPECT_EQ(std::strlen(s.c_str()), s.length());
    return textOf(s);
}

// What getNextWord makes of a line: the word, then the rest.
struct Split {
    std::string word;
    std::string rest;
};

Split split(const std::string& text) {
    kfl::AString line(text.c_str());
    kfl::AString word("what was there before");
    kfl::getNextWord(line, word);
    return {textOf(word), textOf(line)};
}

TEST(TrimTest, RemovesFromBothEndsAndKeepsWhatIsInside) {
    struct Row {
        const char* text;
        const char* expected;
    };
    const Row rows[] = {
        {"", ""},
        {"a", "a"},
        {" a", "a"},
        {"a ", "a"},
        {" \t\n\r=:a b\t=:c:= \r\n", "a b\t=:c"},
        {"a = b", "a = b"},
        {"key=", "key"},
        {":a=1", "a=1"},
        {"  Port = 8080  ", "Port = 8080"},
        {"\va\f", "\va\f"},
        {"[ x ]", "[ x ]"},
    };
    for (const Row& row : rows) EXPECT_EQ(trimmed(row.text), row.expected) << row.text;
}

TEST(TrimTest, TextOfNothingElseBecomesEmpty) {
    for (const char c : trimmedSet) EXPECT_EQ(trimmed(std::string(3, c)), "");
    EXPECT_EQ(trimmed(trimmedSet), "");
    EXPECT_EQ(trimmed(trimmedSet + trimmedSet), "");
}

TEST(TrimTest, DropsExactlySixOfAllCharacters) {
    for (int code = 1; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const bool dropped = trimmedSet.find(c) != std::string::npos;
        const std::string around = std::string(2, c) + "x" + std::string(2, c);
        EXPECT_EQ(trimmed(around), dropped ? "x" : around) << code;
        EXPECT_EQ(trimmed(std::string(2, c)), dropped ? "" : std::string(2, c)) << code;
        const std::string inside = std::string("x") + c + "x";
        EXPECT_EQ(trimmed(inside), inside) << code;
    }
}

// A NUL inside a string's length belongs to every set of characters.
TEST(TrimTest, PaddingBehindTheTextIsDropped) {
    kfl::AString s(20U);
    s.append("ab ", 10);
    ASSERT_EQ(s.length(), 10U);
    kfl::trim(s);
    EXPECT_EQ(textOf(s), "ab");
}

TEST(TrimTest, LeavesRoomAsItWas) {
    kfl::AString s(50U);
    s.append("  ab  ");
    kfl::trim(s);
    EXPECT_EQ(textOf(s), "ab");
    EXPECT_EQ(s.capacity(), 50U);
}

TEST(GetNextWordTest, SplitsAtTheFirstSeparator) {
    struct Row {
        const char* text;
        const char* word;
        const char* rest;
    };
    const Row rows[] = {
        {"key=value", "key", "value"},
        {"key:value", "key", "value"},
        {"key = value", "key", " value"},
        {"\tkey\t:\tvalue\t", "key", "\tvalue\t"},
        {"a==b", "a", "=b"},
        {"a:=b", "a", "=b"},
        {"a=b:c=d", "a", "b:c=d"},
        {"a:b=c", "a", "b=c"},
        {"=a", "", "a"},
        {"=", "", ""},
        {":", "", ""},
        {"a=", "a", ""},
        {" = ", "", " "},
        {"two words = 2", "two words", " 2"},
    };
    for (const Row& row : rows) {
        const Split result = split(row.text);
        EXPECT_EQ(result.word, row.word) << row.text;
        EXPECT_EQ(result.rest, row.rest) << row.text;
    }
}

TEST(GetNextWordTest, WithoutSeparatorTheWordIsTheWholeLineTrimmed) {
    for (const char* text : {"key", " key ", "two words", ""}) {
        const Split result = split(text);
        EXPECT_EQ(result.word, trimmed(text));
        EXPECT_EQ(result.rest, "");
    }
}

TEST(GetNextWordTest, SeparatesAtExactlyTwoOfAllCharacters) {
    for (int code = 1; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const bool separates = c == '=' || c == ':';
        const std::string text = std::string("x") + c + "y";
        const Split result = split(text);
        EXPECT_EQ(result.word, separates ? "x" : text) << code;
        EXPECT_EQ(result.rest, separates ? "y" : "") << code;
    }
}

TEST(GetNextWordTest, LongLinesAreSplitWhole) {
    const std::string word(5000, 'w');
    const std::string rest(7000, 'r');
    const Split result = split(word + "=" + rest);
    EXPECT_EQ(result.word, word);
    EXPECT_EQ(result.rest, rest);
}

TEST(CompareNoCaseTest, IsZeroForTextsThatDifferInCaseOnly) {
    EXPECT_EQ(kfl::compareNoCase("", ""), 0);
    EXPECT_EQ(kfl::compareNoCase("Mode", "mODE"), 0);
    EXPECT_EQ(kfl::compareNoCase("a-1_[", "A-1_["), 0);
    EXPECT_NE(kfl::compareNoCase("mode", "mode "), 0);
    EXPECT_NE(kfl::compareNoCase("", "a"), 0);
}

TEST(CompareNoCaseTest, OrdersAsThePlatformDoesForAllPairsOfCharacters) {
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const char left[] = {'k', static_cast<char>(a), '\0'};
            const char right[] = {'K', static_cast<char>(b), '\0'};
            ASSERT_EQ(kfl::compareNoCase(left, right), strcasecmp(left, right)) << a << ' ' << b;
        }
    }
}

TEST(CompareNoCaseTest, SignTellsTheOrder) {
    EXPECT_LT(kfl::compareNoCase("a", "B"), 0);
    EXPECT_GT(kfl::compareNoCase("b", "A"), 0);
    EXPECT_LT(kfl::compareNoCase("ab", "abc"), 0);
    EXPECT_GT(kfl::compareNoCase("abc", "AB"), 0);
}

}  // namespace
