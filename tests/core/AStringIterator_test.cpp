#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "kfl/AString.h"
#include "tests/core/lines_model.h"
#include "tests/support/seed.h"

using kfl::AString;
using kfl::AStringIterator;
using kfl_test::modelLines;

namespace {

// The lines that an iterator gives until null, and the promise that null stays.
std::vector<std::string> lines(AString& text, unsigned int lineSize) {
    AStringIterator walk(text, lineSize);
    std::vector<std::string> found;
    while (const char* const line = walk.Next()) found.emplace_back(line);
    EXPECT_EQ(walk.Next(), nullptr);
    EXPECT_EQ(walk.Next(), nullptr);
    return found;
}

std::vector<std::string> lines(const char* text, unsigned int lineSize = 100) {
    AString string(text);
    return lines(string, lineSize);
}

using Lines = std::vector<std::string>;

TEST(AStringIteratorTest, GivesLineAfterLineWithItsLineFeedThenNull) {
    EXPECT_EQ(lines("a\r\nb\n"), (Lines{"a\n", "b\n"}));
    EXPECT_EQ(lines("a\nb\n"), (Lines{"a\n", "b\n"}));
    EXPECT_EQ(lines("\n\n"), (Lines{"\n", "\n"}));
}

TEST(AStringIteratorTest, LastLineMayLackItsLineFeed) {
    EXPECT_EQ(lines("a\nb"), (Lines{"a\n", "b"}));
    EXPECT_EQ(lines("a"), (Lines{"a"}));
}

TEST(AStringIteratorTest, EmptyStringHasNoLine) { EXPECT_EQ(lines(""), Lines{}); }

TEST(AStringIteratorTest, EveryCarriageReturnIsLeftOut) {
    EXPECT_EQ(lines("\ra\r\rb\r\n\rc"), (Lines{"ab\n", "c"}));
    EXPECT_EQ(lines("\n\r\n"), (Lines{"\n", "\n"}));
    // Nothing but carriage returns is still a last line, an empty one.
    EXPECT_EQ(lines("\r"), (Lines{""}));
    EXPECT_EQ(lines("a\n\r\r"), (Lines{"a\n", ""}));
}

TEST(AStringIteratorTest, ANulInsideTheTextEndsALine) {
    AString text(50U);
    text.append("a", 2);
    text.append("b\n");  // a NUL b LF
    EXPECT_EQ(lines(text, 100), (Lines{"a", "b\n"}));
    AString stops(50U);
    stops.append("a", 3);
    stops.append("b\n");  // a NUL NUL b LF: it stands on a NUL after the first line
    EXPECT_EQ(lines(stops, 100), (Lines{"a"}));
}

TEST(AStringIteratorTest, ResultIsTheIteratorsOwnArray) {
    AString text("one\ntwo\n");
    AStringIterator walk(text, 10);
    char* const first = walk.Next();
    EXPECT_STREQ(first, "one\n");
    first[0] = 'X';
    EXPECT_STREQ(text.c_str(), "one\ntwo\n");
    char* const second = walk.Next();
    EXPECT_EQ(second, first);
    EXPECT_STREQ(second, "two\n");
}

TEST(AStringIteratorTest, LongerLinesArriveInPieces) {
    EXPECT_EQ(lines("abcdefg\nh\n", 3), (Lines{"abc", "def", "g\n", "h\n"}));
    EXPECT_EQ(lines("abcdef", 3), (Lines{"abc", "def"}));
    EXPECT_EQ(lines("abc", 3), (Lines{"abc"}));
    EXPECT_EQ(lines("abc\n", 4), (Lines{"abc\n"}));
    EXPECT_EQ(lines("abc\n", 3), (Lines{"abc", "\n"}));
    EXPECT_EQ(lines("abc\r\nd", 3), (Lines{"abc", "\n", "d"}));
    EXPECT_EQ(lines("abc\r", 3), (Lines{"abc"}));
    EXPECT_EQ(lines("a\rb\rc\rd\n", 3), (Lines{"abc", "d\n"}));
}

TEST(AStringIteratorTest, LineSizeOfZeroCountsAsOne) {
    EXPECT_EQ(lines("ab\n", 0), (Lines{"a", "b", "\n"}));
    EXPECT_EQ(lines("ab\n", 1), (Lines{"a", "b", "\n"}));
    EXPECT_EQ(lines("", 0), Lines{});
}

TEST(AStringIteratorTest, ResetGoesBackToTheFirstLine) {
    AString text("one\ntwo\n");
    AStringIterator walk(text, 20);
    walk.Next();
    walk.Next();
    EXPECT_EQ(walk.Next(), nullptr);
    walk.Reset();
    EXPECT_STREQ(walk.Next(), "one\n");
    walk.Reset();
    EXPECT_STREQ(walk.Next(), "one\n");
    EXPECT_STREQ(walk.Next(), "two\n");
}

TEST(AStringIteratorTest, ResetFollowsAStringThatHasGrown) {
    AString text("one\n");
    AStringIterator walk(text, 200);
    EXPECT_STREQ(walk.Next(), "one\n");
    const std::string more(150, 'x');
    text.append(more.c_str());
    ASSERT_EQ(text.length(), 154U);
    walk.Reset();
    EXPECT_STREQ(walk.Next(), "one\n");
    EXPECT_EQ(walk.Next(), more);
    EXPECT_EQ(walk.Next(), nullptr);
}

TEST(AStringIteratorTest, FollowsAppendsThatFit) {
    AString text(100U);
    text.append("one\n");
    AStringIterator walk(text, 20);
    EXPECT_STREQ(walk.Next(), "one\n");
    EXPECT_EQ(walk.Next(), nullptr);
    text.append("two\n");
    EXPECT_STREQ(walk.Next(), "two\n");
    EXPECT_EQ(walk.Next(), nullptr);
}

TEST(AStringIteratorTest, GivesNullWhereTheStringBecameShorterThanThePosition) {
    AString text(100U);
    text.append("one\ntwo\nthree\n");
    AStringIterator walk(text, 20);
    walk.Next();
    walk.Next();
    text.erase(2, -1);
    EXPECT_EQ(walk.Next(), nullptr);
    walk.Reset();
    EXPECT_STREQ(walk.Next(), "on");
}

TEST(AStringIteratorTest, SeveralIteratorsWalkOneString) {
    AString text("1\n2\n3\n");
    AStringIterator first(text, 5);
    AStringIterator second(text, 5);
    EXPECT_STREQ(first.Next(), "1\n");
    EXPECT_STREQ(first.Next(), "2\n");
    EXPECT_STREQ(second.Next(), "1\n");
    EXPECT_STREQ(first.Next(), "3\n");
    EXPECT_STREQ(second.Next(), "2\n");
}

TEST(AStringIteratorTest, TakesEveryOtherByteAsItIs) {
    AString text(300U);
    std::string expected;
    for (int code = 1; code < 256; ++code) {
        if (code == '\n' || code == '\r') continue;
        text.append(static_cast<char>(code));
        expected += static_cast<char>(code);
    }
    EXPECT_EQ(lines(text, 300), Lines{expected});
}

TEST(AStringIteratorTest, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible<AStringIterator>::value);
    EXPECT_FALSE(std::is_copy_assignable<AStringIterator>::value);
    EXPECT_FALSE(std::is_polymorphic<AStringIterator>::value);
}

// Every text of up to six characters of this alphabet, with every line size that matters.
TEST(AStringIteratorTest, AllSmallTextsFollowTheModel) {
    const char alphabet[] = {'a', '\n', '\r', '\0'};
    for (unsigned int length = 0; length <= 6; ++length) {
        const unsigned int texts = 1U << (2 * length);
        for (unsigned int number = 0; number < texts; ++number) {
            std::string text;
            for (unsigned int i = 0; i < length; ++i) text += alphabet[(number >> (2 * i)) % 4];
            AString string(10U);
            for (const char c : text) string.append(c);
            for (unsigned int lineSize = 1; lineSize <= 4; ++lineSize)
                ASSERT_EQ(lines(string, lineSize), modelLines(text, lineSize))
                    << testing::PrintToString(text) << ", " << lineSize;
        }
    }
}

TEST(AStringIteratorTest, RandomTextsFollowTheModel) {
    kfl_test::Random random;
    for (int round = 0; round < 300; ++round) {
        const unsigned int lineSize = 1 + random.below(40);
        std::string text;
        for (unsigned int n = random.below(300); n > 0; --n) {
            const std::uint32_t kind = random.below(20);
            text += kind == 0 ? '\n' : kind == 1 ? '\r' : static_cast<char>(1 + random.below(255));
        }
        AString string(text.c_str());
        ASSERT_EQ(lines(string, lineSize), modelLines(text, lineSize))
            << testing::PrintToString(text) << ", " << lineSize;
    }
}

}  // namespace
