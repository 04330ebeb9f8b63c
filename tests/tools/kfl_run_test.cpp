// kfl run, run as people and scripts run it.
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using namespace kfl_test;

const std::string usageLine = "usage: kfl run [--wait] [--output FILE] -- COMMAND LINE";

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

class KflRunTest : public testing::Test {
  protected:
    // A script that takes the place of a program.
    std::string script(const std::string& content) const {
        std::string path = folder.write("script", "#!/bin/sh\n" + content);
        EXPECT_EQ(chmod(path.c_str(), 0700), 0);
        return path;
    }

    const TemporaryFolder folder;
    const std::string output = folder / "output";
};

TEST_F(KflRunTest, EndsWithTheStatusOfTheProgram) {
    for (const int status : {0, 1, 3, 255}) {
        const ProgramResult result =
            kfl({"run", "--wait", "--", script("exit $1"), std::to_string(status)});
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.output, "");
    }
}

TEST_F(KflRunTest, EndsWithMoreThan128AfterASignal) {
    EXPECT_EQ(kfl({"run", "--wait", "--", script("kill -TERM $$")}).status, 128 + SIGTERM);
}

TEST_F(KflRunTest, TheProgramHasItsOutputAndItsWords) {
    const ProgramResult result =
        kfl({"run", "--wait", "--", "/bin/echo", "one  two", "'three", "four'", "-n"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "one two 'three four' -n\n") << "blanks part words, quotes do nothing";
}

TEST_F(KflRunTest, OptionsBehindTheCommandAreTheCommands) {
    EXPECT_EQ(kfl({"run", "--wait", "/bin/echo", "--wait", "-h"}).output, "--wait -h\n");
}

TEST_F(KflRunTest, ShowsTheProcessNumberWithoutWaiting) {
    const std::string begun = folder / "begun";
    const ProgramResult result =
        kfl({"run", "--", script("echo $$ > " + begun + ".part; mv " + begun + ".part " + begun)});
    EXPECT_EQ(result.status, 0);
    for (int i = 0; i < 600 && contentOf(begun).empty(); ++i) usleep(100000);
    EXPECT_EQ(result.output, contentOf(begun));
}

TEST_F(KflRunTest, OutputGoesToTheFile) {
    folder.write("output", "something longer than what comes");
    const ProgramResult result =
        kfl({"run", "--wait", "--output", output, "--", script("echo out; echo err >&2")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(contentOf(output), "out\nerr\n");
}

TEST_F(KflRunTest, SearchesThePathWithAFileOnly) {
    EXPECT_EQ(kfl({"run", "--wait", "--output", output, "--", "echo", "found"}).status, 0);
    EXPECT_EQ(contentOf(output), "found\n");
    EXPECT_EQ(kfl({"run", "--wait", "--", "echo", "found"}).status, 127);
}

TEST_F(KflRunTest, WhatCannotBeExecutedEndsWith127) {
    EXPECT_EQ(kfl({"run", "--wait", "--", folder / "missing"}).status, 127);
    EXPECT_EQ(kfl({"run", "--wait", "--", folder.path()}).status, 127);
    EXPECT_EQ(kfl({"run", "--wait", "--", ""}).status, 127);
    EXPECT_EQ(kfl({"run", "--wait", "--output", folder.path(), "--", "echo"}).status, 127);
}

TEST_F(KflRunTest, WhatCannotBeExecutedIsStartedWithoutWaiting) {
    const ProgramResult result = kfl({"run", "--", folder / "missing"});
    EXPECT_EQ(result.status, 0);
    EXPECT_GT(std::atoi(result.output.c_str()), 0) << result.output;
    EXPECT_EQ(result.errors, "");
}

TEST_F(KflRunTest, TakesLinesOfUpTo199Bytes) {
    const std::string word(199 - std::string("/bin/echo ").size(), 'x');
    EXPECT_EQ(kfl({"run", "--wait", "--", "/bin/echo", word}).output, word + "\n");
    expectFailure({"run", "--wait", "--", "/bin/echo", word + "x"},
                  "the command line has more than 199 bytes");
}

TEST_F(KflRunTest, TakesUpTo19Words) {
    Words arguments = {"run", "--wait", "--", "/bin/echo", " x  x "};
    std::string expected = "x x";
    for (int i = 3; i < 19; ++i) {
        arguments.push_back("x");
        expected += " x";
    }
    EXPECT_EQ(kfl(arguments).output, expected + "\n");
    arguments.push_back("x");
    expectFailure(arguments, "the command line has more than 19 words");
}

TEST_F(KflRunTest, WrongArgumentsAreWrongUsage) {
    expectWrongUsage({"run"}, "kfl run: too few arguments", usageLine);
    expectWrongUsage({"run", "--wait", "--"}, "kfl run: too few arguments", usageLine);
    expectWrongUsage({"run", "--output"}, "--output", usageLine);
    expectWrongUsage({"run", "--now", "--", "/bin/true"}, "--now", usageLine);
}

}  // namespace
