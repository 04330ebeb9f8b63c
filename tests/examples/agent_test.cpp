// The example agent, run as a user runs it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

ProgramResult agent(const Words& arguments) { return runProgram(wordsOf(KFL_PROGRAM) + arguments); }

std::string agentProgram() { return wordsOf(KFL_PROGRAM).back(); }

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// What the agent shows for one setting: kind, value and origin, single blanks between words.
std::string shown(const std::string& output, const std::string& section, const std::string& key) {
    bool inSection = false;
    for (const std::string& line : linesOf(output)) {
        if (line.rfind('[', 0) == 0) inSection = line == '[' + section + ']';
        std::istringstream words(line);
        std::string word;
        if (!inSection || !(words >> word) || word != key) continue;
        std::string rest;
        while (words >> word) rest += (rest.empty() ? "" : " ") + word;
        return rest;
    }
    return "not shown";
}

class AgentTest : public testing::Test {
  protected:
    // What the agent prints for a file of that content.
    std::string outputFor(const std::string& content) {
        const ProgramResult result = agent({folder.write("test.ini", content)});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    const TemporaryFolder folder;
};

TEST_F(AgentTest, ReadsTheFileBesideItself) {
    const std::string path =
        std::filesystem::path(agentProgram()).replace_filename("agent.ini").string();
    const ProgramResult result =
        runProgram(Words{"sh", "-c", "cd / && exec \"$@\"", "sh"} + wordsOf(KFL_PROGRAM));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(linesOf(result.output).front(), "agent: settings from " + path);
    EXPECT_EQ(shown(result.output, "interfaces", "wan-mtu"), "number 1492 file");
    EXPECT_EQ(shown(result.output, "peers", "login"), "text device=iad-0417:office file");
    EXPECT_EQ(agent({path}).output, result.output);
}

TEST_F(AgentTest, ItsOwnFileUsesNearlyEverythingThatCanBeSet) {
    const std::vector<std::string> lines = linesOf(agent({}).output);
    const auto count = [&](auto condition) {
        return std::count_if(lines.begin(), lines.end(), condition);
    };
    const auto endsWith = [](const std::string& ending) {
        return [ending](const std::string& line) {
            return line.size() >= ending.size() &&
                   line.compare(line.size() - ending.size(), ending.size(), ending) == 0;
        };
    };
    const auto startsWith = [](const std::string& start) {
        return [start](const std::string& line) { return line.rfind(start, 0) == 0; };
    };
    EXPECT_EQ(count(startsWith("[")), 8);
    EXPECT_EQ(count(endsWith(" file")), 50);
    // One of each kind is missing in the file and shows its mark.
    EXPECT_EQ(count(endsWith("built in (getInt: -2147483648)")), 1);
    EXPECT_EQ(count(endsWith("built in (getFloat: 1.17549435e-38)")), 1);
    EXPECT_EQ(count(endsWith("built in (getBool: false)")), 1);
    EXPECT_EQ(count(endsWith("(none)                       not set (getString: null)")), 1);
    EXPECT_EQ(count(startsWith("unknown: [backup] encoding")), 1);
    EXPECT_EQ(count(startsWith("report: ")), 1);
    EXPECT_EQ(lines.size(), 1U + 8U + 50U + 4U + 6U + 1U);
}

TEST_F(AgentTest, TakesTheFileNamedOnItsCommandLine) {
    const std::string output = outputFor(
        "Site=here\n"
        "[Timers]\nHello-Interval = 7\nretry-first: 0.125\n"
        "[peers]\nsecondary = \t::1\n");
    EXPECT_EQ(linesOf(output).front(), "agent: settings from " + (folder / "test.ini"));
    EXPECT_EQ(shown(output, "", "site"), "text here file");
    EXPECT_EQ(shown(output, "timers", "hello-interval"), "number 7 file");
    EXPECT_EQ(shown(output, "timers", "retry-first"), "decimal 0.125 file");
    EXPECT_EQ(shown(output, "peers", "secondary"), "text ::1 file");
    EXPECT_EQ(shown(output, "peers", "primary-port"), "number 7070 built in (getInt: -2147483648)");
    EXPECT_EQ(output.find("unknown"), std::string::npos);
}

TEST_F(AgentTest, WithoutAnythingInTheFileAllIsBuiltIn) {
    const std::string output = outputFor("");
    for (const std::string& line : linesOf(output)) {
        if (line.rfind("  ", 0) != 0) continue;
        EXPECT_TRUE(line.find(" built in (get") != std::string::npos ||
                    line.find(" not set (getString: null)") != std::string::npos)
            << line;
    }
    EXPECT_EQ(shown(output, "logging", "facility"), "text daemon built in (getString: null)");
    EXPECT_EQ(shown(output, "timers", "retry-factor"),
              "decimal 2 built in (getFloat: 1.17549435e-38)");
    EXPECT_EQ(shown(output, "interfaces", "wan-dhcp"), "on/off on built in (getBool: false)");
}

TEST_F(AgentTest, ReadsWordsForOnAndOff) {
    for (const char* word : {"yes", "on", "TRUE", " 1"}) {
        const std::string output = outputFor(std::string("[backup]\nenabled = ") + word + "\n");
        EXPECT_EQ(shown(output, "backup", "enabled"), "on/off on file") << word;
    }
    for (const char* word : {"no", "off", "false", "0", "yess"}) {
        const std::string output = outputFor(std::string("[peers]\nverify = ") + word + "\n");
        EXPECT_EQ(shown(output, "peers", "verify"), "on/off off file") << word;
    }
}

TEST_F(AgentTest, ShowsKeysThatItDoesNotKnow) {
    const std::string output = outputFor("wan=eth1\n[wan]\nmtu = 9\n[logging]\nlevle=3\n");
    const std::vector<std::string> lines = linesOf(output);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[lines.size() - 3], "unknown: [] wan");
    EXPECT_EQ(lines[lines.size() - 2], "unknown: [wan] mtu");
    EXPECT_EQ(lines[lines.size() - 1], "unknown: [logging] levle");
}

TEST_F(AgentTest, LongValuesAreCutInTheReportOnly) {
    const std::string output = outputFor("site=" + std::string(400, 's') + "\n");
    EXPECT_EQ(shown(output, "", "site"), "text " + std::string(63, 's') + " file");
}

TEST_F(AgentTest, FileThatCannotBeReadIsAFailure) {
    const std::string missing = folder / "missing.ini";
    const ProgramResult result = agent({missing});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "agent: cannot read " + missing + ": No such file or directory\n");
}

TEST_F(AgentTest, TwoFilesAreWrongUsage) {
    const ProgramResult result = agent({"a.ini", "b.ini"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "usage: agent [--serve] [FILE]\n");
}

}  // namespace
