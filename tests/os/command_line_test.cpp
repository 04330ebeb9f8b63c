// Command lines by themselves, against a plain model.
#include "os/command_line.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/os/command_line_model.h"
#include "tests/support/seed.h"

namespace {

using kfl::detail::CommandLine;
using kfl_test::wordsOf;
using Words = kfl_test::CommandWords;

TEST(CommandLineTest, HasNoProgramWithoutAWord) {
    EXPECT_EQ(CommandLine("").program(), nullptr);
    EXPECT_EQ(CommandLine("   ").program(), nullptr);
    EXPECT_EQ(CommandLine((std::string(200, ' ') + "word").c_str()).program(), nullptr);
}

TEST(CommandLineTest, CutsWordsAtBlanksOnly) {
    EXPECT_EQ(wordsOf("a"), Words{"a"});
    EXPECT_EQ(wordsOf("  a  b "), (Words{"a", "b"}));
    EXPECT_EQ(wordsOf("a\tb\nc\"d e\" 'f g'"), (Words{"a\tb\nc\"d", "e\"", "'f", "g'"}));
}

TEST(CommandLineTest, KeepsNineteenWords) {
    for (const unsigned count : {18U, 19U, 20U, 25U, 90U}) {
        std::string line;
        for (unsigned i = 0; i < count; ++i) line += "x ";
        EXPECT_EQ(wordsOf(line).size(), std::min(count, 19U));
    }
}

TEST(CommandLineTest, KeepsTwoHundredBytes) {
    for (const unsigned length : {199U, 200U, 201U, 1000U}) {
        EXPECT_EQ(wordsOf(std::string(length, 'x')),
                  Words{std::string(std::min(length, 200U), 'x')});
        EXPECT_EQ(wordsOf(std::string(length - 1, ' ') + 'x'), length > 200 ? Words{} : Words{"x"});
    }
}

TEST(CommandLineTest, KeepsACopy) {
    std::string line = "one two";
    const CommandLine command(line.c_str());
    line.assign(7, 'x');
    EXPECT_STREQ(command.words()[0], "one");
    EXPECT_STREQ(command.words()[1], "two");
}

TEST(CommandLineTest, AgreesWithAModel) {
    kfl_test::Random random;
    for (int round = 0; round < 5000; ++round) {
        std::string line(random.below(260), ' ');
        const unsigned blanks = 1 + random.below(12);
        for (char& c : line)
            c = random.oneIn(blanks) ? ' ' : static_cast<char>('a' + random.below(26));
        ASSERT_EQ(wordsOf(line), kfl_test::modelWordsOf(line)) << line;
    }
}

}  // namespace
