// The kfl command itself: help, version, and what it does with wrong usage.
#include "tests/tools/kfl_tool.h"
#include <algorithm>
#include <sstream>
#include <vector>

#include "kfl/version.h"

namespace {

using kfl_test::expectWrongUsage;
using kfl_test::kfl;
using kfl_test::outputOfKfl;
using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

const std::string usageLine =
    "usage: kfl COMMAND [ARGUMENT]... (\"kfl --help\" lists the commands)";

// The commands that the help lists, in its order.
Words listedCommands() {
    const std::string help = outputOfKfl({"--help"});
    const std::string title = "\nCommands:\n";
    const std::size_t begin = help.find(title) + title.size();
    std::istringstream list(help.substr(begin, help.find("\n\n", begin) - begin));
    Words commands;
    for (std::string line; std::getline(list, line);) {
        EXPECT_EQ(line.rfind("  ", 0), 0U) << line;
        commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return commands;
}

TEST(KflToolTest, HelpListsTheCommandsInOrder) {
    EXPECT_EQ(outputOfKfl({"--help"}).rfind("usage: kfl COMMAND", 0), 0U);
    const Words commands = listedCommands();
    EXPECT_TRUE(std::is_sorted(commands.begin(), commands.end()));
    EXPECT_EQ(std::count(commands.begin(), commands.end(), "ini"), 1);
}

TEST(KflToolTest, EveryLineOfHelpFitsATerminal) {
    Words pages = {outputOfKfl({"--help"})};
    for (const std::string& command : listedCommands())
        pages.push_back(outputOfKfl({"help", command}));
    for (const std::string& page : pages) {
        for (std::size_t begin = 0, end = 0; begin < page.size(); begin = end + 1) {
            end = page.find('\n', begin);
            ASSERT_NE(end, std::string::npos) << "the last line has no end";
            EXPECT_LE(end - begin, 80U) << page.substr(begin, end - begin);
        }
    }
}

TEST(KflToolTest, HelpGoesByThreeNames) {
    const std::string help = outputOfKfl({"--help"});
    EXPECT_EQ(outputOfKfl({"-h"}), help);
    EXPECT_EQ(outputOfKfl({"help"}), help);
    EXPECT_EQ(outputOfKfl({"help", "--help"}), help);
    EXPECT_EQ(outputOfKfl({"help", "-h"}), help);
}

TEST(KflToolTest, EveryCommandHasAPageByThreeNames) {
    for (const std::string& command : listedCommands()) {
        const std::string page = outputOfKfl({"help", command});
        EXPECT_EQ(page.rfind("usage: kfl " + command + " ", 0), 0U);
        EXPECT_NE(page.find("\n  -h, --help"), std::string::npos);
        EXPECT_NE(page.find("\nExit status: 0 "), std::string::npos);
        EXPECT_EQ(outputOfKfl({command, "--help"}), page);
        EXPECT_EQ(outputOfKfl({command, "-h"}), page);
    }
}

// An option as a help page lists it, and whether a value belongs to it.
struct ListedOption {
    std::string name;
    bool takesValue;
};

std::vector<ListedOption> optionsOn(const std::string& page) {
    std::vector<ListedOption> options;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find("--");
        if (line.rfind("  ", 0) != 0 || line.find_first_not_of(' ') > 6) continue;
        if (begin == std::string::npos || line.find_first_not_of(' ') + 4 < begin) continue;
        const std::size_t end = line.find(' ', begin);
        const bool takesValue = line[end + 1] >= 'A' && line[end + 1] <= 'Z';
        options.push_back({line.substr(begin, end - begin), takesValue});
    }
    return options;
}

// Expects a line that begins with the command's name, and then the usage as on its page.
// `name` stands in the first.
void expectCommandsOwnRefusal(const std::string& command, const Words& arguments,
                              const std::string& name = "") {
    const std::string page = outputOfKfl({"help", command});
    const ProgramResult result = kfl(Words{command} + arguments);
    EXPECT_EQ(result.status, 2) << command;
    EXPECT_EQ(result.output, "") << command;
    EXPECT_EQ(result.errors.rfind("kfl " + command + ": ", 0), 0U) << result.errors;
    EXPECT_NE(result.errors.substr(0, result.errors.find('\n')).find(name), std::string::npos)
        << command << ' ' << name << ": " << result.errors;
    EXPECT_EQ(result.errors.substr(result.errors.find('\n') + 1),
              page.substr(0, page.find("\n\n") + 1));
}

TEST(KflToolTest, EveryCommandRefusesWhatItDoesNotKnow) {
    for (const std::string& command : listedCommands()) {
        expectCommandsOwnRefusal(command, {"--no-such-option"});
        expectCommandsOwnRefusal(command, {"-z"});
        expectCommandsOwnRefusal(command, {});
    }
}

TEST(KflToolTest, EveryOptionTakesAValueWhereThePageSaysSoAndNowhereElse) {
    std::size_t count = 0;
    for (const std::string& command : listedCommands()) {
        for (const ListedOption& option : optionsOn(outputOfKfl({"help", command}))) {
            const std::string word = option.takesValue ? option.name : option.name + "=7";
            expectCommandsOwnRefusal(command, {word}, option.name.substr(2));
            ++count;
        }
    }
    EXPECT_GE(count, 30U);
}

TEST(KflToolTest, EveryPageTellsTheExitStatusOfWrongUsage) {
    for (const std::string& command : listedCommands()) {
        const std::string page = outputOfKfl({"help", command});
        std::string end = page.substr(page.find("\nExit status: 0 "));
        std::replace(end.begin(), end.end(), '\n', ' ');
        EXPECT_NE(end.find("2 for wrong usage"), std::string::npos) << command << end;
    }
}

TEST(KflToolTest, VersionIsTheLibrarys) {
    EXPECT_EQ(outputOfKfl({"--version"}), "kfl " KFL_VERSION_STRING "\n");
    EXPECT_EQ(outputOfKfl({"-V"}), "kfl " KFL_VERSION_STRING "\n");
}

TEST(KflToolTest, NoCommandShowsTheUsageLineOnly) {
    const ProgramResult result = kfl({});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, usageLine + "\n");
}

TEST(KflToolTest, UnknownCommandIsWrongUsage) {
    expectWrongUsage({"inn"}, "kfl: no command 'inn'", usageLine);
    expectWrongUsage({""}, "kfl: no command ''", usageLine);
    expectWrongUsage({"help", "inn"}, "kfl: no command 'inn'", usageLine);
    expectWrongUsage({"help", "ini", "ini"}, "kfl help: too many arguments", usageLine);
}

TEST(KflToolTest, UnknownOptionIsWrongUsage) {
    expectWrongUsage({"--helpp"}, "kfl: ", usageLine);
    expectWrongUsage({"--helpp"}, "--helpp", usageLine);
    expectWrongUsage({"-x"}, "'x'", usageLine);
    expectWrongUsage({"--version=1"}, "--version", usageLine);
}

TEST(KflToolTest, WhatStandsBehindHelpOrVersionIsWrongUsage) {
    for (const std::string option : {"-h", "--help", "-V", "--version"})
        for (const std::string surplus : {"ini", "x", "", "--", "--version"})
            expectWrongUsage({option, surplus}, "kfl: too many arguments", usageLine);
    expectWrongUsage({"help", "--help", "ini"}, "kfl help: too many arguments", usageLine);
}

TEST(KflToolTest, OptionsBehindACommandAreTheCommands) {
    expectWrongUsage({"ini", "--version"}, "kfl ini: ", kfl_test::iniUsage);
}

TEST(KflToolTest, OutputThatCannotBeWrittenIsAFailure) {
    const ProgramResult result = runProgram(Words{"sh", "-c", "exec \"$@\" >/dev/full", "sh"} +
                                            wordsOf(KFL_PROGRAM) + Words{"--help"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: cannot write the output: No space left on device\n");
}

TEST(KflToolTest, OutputThatCannotBeWrittenLeavesAnotherFailureItsStatus) {
    const ProgramResult result = runProgram(Words{"sh", "-c", "exec \"$@\" >&-", "sh"} +
                                            wordsOf(KFL_PROGRAM) + Words{"inn"});
    EXPECT_EQ(result.status, 2);
}

}  // namespace
