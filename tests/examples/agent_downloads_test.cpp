// The example agent's downloads, seen as a user sees them.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

// The lines of the report, from its first one to the sum that ends it.
std::string reportIn(const std::string& output) {
    const std::size_t begin = output.find("\ndefaults: ");
    const std::size_t end = output.find('\n', output.find("\nreport: ") + 1);
    if (begin == std::string::npos || end == std::string::npos) return "no report:\n" + output;
    return output.substr(begin + 1, end - begin);
}

class AgentDownloadsTest : public testing::Test {
  protected:
    // What the agent reports for settings whose section "downloads" has this content.
    std::string reportFor(const std::string& downloads) {
        const std::string path = folder.write("test.ini", "[downloads]\n" + downloads);
        const ProgramResult result = runProgram(wordsOf(KFL_PROGRAM) + Words{path});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return reportIn(result.output);
    }
    // The one line about the firmware, whose location is given.
    std::string firmwareLine(const std::string& location) {
        return lineAbout("firmware", reportFor("firmware = " + location + "\n"));
    }
    static std::string lineAbout(const std::string& name, const std::string& report) {
        const std::string title = "download " + name + ": ";
        const std::size_t begin = report.find(title);
        if (begin == std::string::npos) return report;
        const std::size_t from = begin + title.size();
        return report.substr(from, report.find('\n', from) - from);
    }

    const TemporaryFolder folder;
    const std::string defaultsPath = folder / "defaults.conf";
};

TEST_F(AgentDownloadsTest, ItsOwnFilesMakeThisReport) {
    const std::string program = wordsOf(KFL_PROGRAM).back();
    const std::string path =
        std::filesystem::path(program).replace_filename("defaults.conf").string();
    const std::string lines =
        "defaults: " + path +
        ": read\n"
        "defaults: HTTP, 5 attempts, to /var/lib/agent/incoming\n"
        "download firmware: TFTP from 10.64.0.9, port 6969, file images/iad-24.bin\n"
        "download prompts: HTTPS from files.example, its usual port, file voice/prompts.tar\n"
        "download phonebook: HTTP from 10.64.0.9, its usual port, file phonebook.xml\n";
    EXPECT_EQ(reportIn(runProgram(wordsOf(KFL_PROGRAM)).output),
              lines + "report: 5 lines, " + std::to_string(lines.size()) + " bytes\n");
}

TEST_F(AgentDownloadsTest, WithoutAFileOfDefaultsAllAreBuiltIn) {
    const std::string lines = "defaults: " + defaultsPath +
                              ": cannot be read\n"
                              "defaults: TFTP, 3 attempts, to /tmp\n"
                              "download firmware: no location\n"
                              "download prompts: no location\n"
                              "download phonebook: no location\n";
    EXPECT_EQ(reportFor(""),
              lines + "report: 5 lines, " + std::to_string(lines.size()) + " bytes\n");
}

TEST_F(AgentDownloadsTest, TheFileOfDefaultsReplacesWhatItHolds) {
    folder.write("defaults.conf", "ATTEMPTS = 7\nsomething: else\n[section]\nfolder = /hidden\n");
    const std::string report = reportFor("");
    EXPECT_NE(report.find("defaults: " + defaultsPath + ": read\n"), std::string::npos) << report;
    EXPECT_NE(report.find("\ndefaults: TFTP, 7 attempts, to /tmp\n"), std::string::npos) << report;
}

TEST_F(AgentDownloadsTest, AFileWithoutAnyOfThemIsTold) {
    folder.write("defaults.conf", "[section]\nfolder = /hidden\n");
    const std::string report = reportFor("");
    EXPECT_NE(report.find("defaults: " + defaultsPath + ": holds none\n"), std::string::npos)
        << report;
    EXPECT_NE(report.find("\ndefaults: TFTP, 3 attempts, to /tmp\n"), std::string::npos) << report;
}

TEST_F(AgentDownloadsTest, TheFileOfDefaultsCanBeElsewhere) {
    const TemporaryFolder other;
    const std::string path = other.write("there.conf", "folder=/there\n");
    const std::string report = reportFor("defaults = " + path + "\n");
    EXPECT_NE(report.find("defaults: " + path + ": read\n"), std::string::npos) << report;
    EXPECT_NE(report.find(", to /there\n"), std::string::npos) << report;
}

TEST_F(AgentDownloadsTest, ALocationWithoutSchemeTakesTheDefaultProtocol) {
    EXPECT_EQ(firmwareLine("h/x"), "TFTP from h, its usual port, file x");
    folder.write("defaults.conf", "protocol = https\n");
    EXPECT_EQ(firmwareLine("h/x"), "HTTPS from h, its usual port, file x");
    EXPECT_EQ(firmwareLine("ftp://h/x"), "FTP from h, its usual port, file x");
    folder.write("defaults.conf", "protocol = gopher\n");
    EXPECT_EQ(firmwareLine("h/x"), "TFTP from h, its usual port, file x");
}

TEST_F(AgentDownloadsTest, LocationsAreSplit) {
    EXPECT_EQ(firmwareLine("MMDDF://h:1/a/b:2"), "MMDDF from h, port 1, file a/b:2");
    EXPECT_EQ(firmwareLine("http://h:70000/x"), "HTTP from h, port 4464, file x");
}

TEST_F(AgentDownloadsTest, WhatIsNoLocationIsTold) {
    for (const std::string text : {"sftp://h/x", "/x", "h", "h/", "http:///x", "%s%n"}) {
        EXPECT_EQ(firmwareLine(text), "not a location: " + text);
    }
}

TEST_F(AgentDownloadsTest, LongLinesAreCutAndTheReportGrowsForAll) {
    const std::string path(450, 'p');
    const std::string report = reportFor("firmware=h/" + path + "\nprompts=h/" + path +
                                         "\nphonebook=" + std::string(490, 'q') + "\n");
    const std::string start = "TFTP from h, its usual port, file ";
    const std::size_t room = 499 - std::string("download firmware: ").size();
    EXPECT_EQ(lineAbout("firmware", report), (start + path).substr(0, room));
    EXPECT_EQ(lineAbout("prompts", report), (start + path).substr(0, room + 1));
    EXPECT_EQ(lineAbout("phonebook", report),
              ("not a location: " + std::string(490, 'q')).substr(0, room - 1));
    const std::size_t size = report.find("report: ");
    EXPECT_EQ(report.substr(size), "report: 5 lines, " + std::to_string(size) + " bytes\n");
}

}  // namespace
