// kfl ini --set, run as people and scripts run it.
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::iniUsage;
using kfl_test::kfl;
using kfl_test::outputOfKfl;
using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

class KflIniSetTest : public testing::Test {
  protected:
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static struct stat statusOf(const std::string& file) {
        struct stat status = {};
        EXPECT_EQ(stat(file.c_str(), &status), 0) << file;
        return status;
    }
    // The names in the folder: nothing may be left behind.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }
    // Sets a value in a file of these bytes, and returns what the file then holds.
    std::string after(const std::string& bytes, const Words& setting) const {
        folder.write("set.ini", bytes);
        EXPECT_EQ(outputOfKfl(Words{"ini", "--set", "--", path} + setting), "");
        EXPECT_EQ(names(), std::vector<std::string>{"set.ini"});
        return contentOf(path);
    }
    // Expects that a setting is refused, and the very file stays.
    void expectRefusal(const std::string& bytes, const Words& setting,
                       const std::string& message) const {
        folder.write("set.ini", bytes);
        const ino_t file = statusOf(path).st_ino;
        expectFailure(Words{"ini", "--set", "--", path} + setting, path + ": " + message);
        EXPECT_EQ(contentOf(path), bytes);
        EXPECT_EQ(statusOf(path).st_ino, file);
        EXPECT_EQ(names(), std::vector<std::string>{"set.ini"});
    }
    // The words for a shell that runs the tool behind some commands.
    static Words behind(const std::string& commands, const Words& arguments) {
        return Words{"sh", "-c", commands + " exec \"$@\"", "sh"} + wordsOf(KFL_PROGRAM) +
               arguments;
    }

    const TemporaryFolder folder;
    const std::string path = folder / "set.ini";
};

const std::string content =
    "; a device\n"
    "site=here\n"
    "\n"
    "[Net] ; note\n"
    "  mtu : 1500  \n"
    "mode=a\n"
    "Mode=b\n"
    "; port=1\n"
    "\n"
    "# the other\n"
    "[log]\r\n"
    "level=3\r\n"
    "\n"
    "[net]\n"
    "mtu=1\n";

std::string replaced(const std::string& from, const std::string& to) {
    std::string text = content;
    return text.replace(text.find(from), from.size(), to);
}

TEST_F(KflIniSetTest, ChangesTheValueInItsLine) {
    EXPECT_EQ(after(content, {"", "site", "there"}), replaced("here", "there"));
    EXPECT_EQ(after(content, {"net", "MTU", "1492"}), replaced(" 1500  \n", "1492\n"));
    EXPECT_EQ(after(content, {"log", "level", "4"}), replaced("level=3", "level=4"));
}

TEST_F(KflIniSetTest, OfSeveralLinesTheOneThatCountsIsChanged) {
    EXPECT_EQ(after(content, {"NET", "mode", "c"}), replaced("Mode=b", "Mode=c"));
}

TEST_F(KflIniSetTest, AMissingKeyIsAddedAtTheEndOfItsSection) {
    EXPECT_EQ(after(content, {"net", "port", "7"}), replaced("Mode=b\n", "Mode=b\nport=7\n"));
    EXPECT_EQ(after(content, {"", "name", "x"}), replaced("site=here\n", "site=here\nname=x\n"));
    EXPECT_EQ(after(content, {"log", "file", "f"}),
              replaced("level=3\r\n", "level=3\r\nfile=f\r\n"));
    EXPECT_EQ(after("[a]\n\n[b]\n", {"a", "k", "v"}), "[a]\nk=v\n\n[b]\n");
}

TEST_F(KflIniSetTest, AKeyBeforeAllHeadersMayBeginTheFile) {
    EXPECT_EQ(after("; c\n[a]\nk=1\n", {"", "k", "2"}), "k=2\n; c\n[a]\nk=1\n");
    EXPECT_EQ(after("", {"", "k", "2"}), "k=2\n");
}

TEST_F(KflIniSetTest, AMissingSectionIsAddedAtTheEnd) {
    EXPECT_EQ(after(content, {"new", "k", "v"}), content + "\n[new]\nk=v\n");
    EXPECT_EQ(after("", {"new", "k", "v"}), "[new]\nk=v\n");
    EXPECT_EQ(after("[a]\n\n", {"new", "k", "v"}), "[a]\n\n[new]\nk=v\n");
    EXPECT_EQ(after("[a]\r\nx=1\r\n", {" b]", "k", "v"}), "[a]\r\nx=1\r\n\r\n[ b]]\r\nk=v\r\n");
    EXPECT_EQ(after("[a]\r\nx=1\r\n\r\n", {"b", "k", "v"}), "[a]\r\nx=1\r\n\r\n[b]\r\nk=v\r\n");
}

TEST_F(KflIniSetTest, ALastLineWithoutAnEndGetsOneWhereItMust) {
    EXPECT_EQ(after("[a]\nk=1", {"a", "k", "22"}), "[a]\nk=22");
    EXPECT_EQ(after("[a]\nk=1", {"a", "l", "2"}), "[a]\nk=1\nl=2\n");
    EXPECT_EQ(after("[a]\r\nk=1", {"b", "l", "2"}), "[a]\r\nk=1\r\n\r\n[b]\r\nl=2\r\n");
}

TEST_F(KflIniSetTest, TheValueIsReadAsItWasGiven) {
    for (const std::string value :
         {" 1", "=a:b", "; c", "\"q\"", "-5", "a\rb", "\xC3\xA4", "a\tb", "%s"}) {
        after(content, {"net", "mtu", value});
        EXPECT_EQ(outputOfKfl({"ini", path, "net", "mtu"}), value + "\n");
    }
}

TEST_F(KflIniSetTest, AValueThatIsThereAlreadyIsNotWritten) {
    folder.write("set.ini", content);
    const ino_t before = statusOf(path).st_ino;
    EXPECT_EQ(outputOfKfl({"ini", "--set", path, "net", "mode", "b"}), "");
    EXPECT_EQ(statusOf(path).st_ino, before);
    EXPECT_EQ(outputOfKfl({"ini", "--set", path, "net", "mode", "c"}), "");
    EXPECT_NE(statusOf(path).st_ino, before);
}

TEST_F(KflIniSetTest, ModeAndOwnerStay) {
    folder.write("set.ini", content);
    ASSERT_EQ(chmod(path.c_str(), 02751), 0);
    // Only root may give a file away.
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
        ASSERT_EQ(chmod(path.c_str(), 02751), 0);
    }
    outputOfKfl({"ini", "--set", path, "net", "mode", "c"});
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 02751U);
    EXPECT_EQ(statusOf(path).st_uid, isRoot ? 1234U : geteuid());
    EXPECT_EQ(statusOf(path).st_gid, isRoot ? 4321U : getegid());
}

TEST_F(KflIniSetTest, ALinkLeadsToTheFileAndStays) {
    folder.write("set.ini", content);
    const std::string link = folder / "link.ini";
    std::filesystem::create_symlink("set.ini", link);
    outputOfKfl({"ini", "--set", link, "net", "mode", "c"});
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(contentOf(path), replaced("Mode=b", "Mode=c"));
}

TEST_F(KflIniSetTest, WhatNoFileCanHoldIsRefused) {
    expectRefusal(content, {"net", "k", ""}, "a value cannot be empty");
    expectRefusal(content, {"net", "k", "a\nb"}, "a value cannot hold a line feed");
    expectRefusal(content, {"net", "k", "a "}, "a value cannot end with a blank, '=' or ':'");
    expectRefusal(content, {"net", "k", "=="}, "a value cannot end with a blank, '=' or ':'");
    expectRefusal(content, {"net", "", "v"}, "a key cannot be empty");
    expectRefusal(content, {"net", "a:b", "v"}, "a key cannot hold '=' or ':'");
    expectRefusal(content, {"net", "a\nb", "v"}, "a key cannot hold a line feed");
    expectRefusal(content, {"net", " k", "v"}, "a key can neither begin nor end with a blank");
    for (const char* const key : {"[k", ";k", "#k"}) {
        expectRefusal(content, {"net", key, "v"}, "a key cannot begin with '[', ';' or '#'");
    }
    expectRefusal(content, {"n\nt", "k", "v"}, "a section's name cannot hold a line feed");
}

TEST_F(KflIniSetTest, ALineThatWouldBeTooLongIsRefused) {
    const std::string whole = "k=" + std::string(509, 'x');
    EXPECT_EQ(after("[a]\r\n", {"a", "k", std::string(509, 'x')}), "[a]\r\n" + whole + "\r\n");
    expectRefusal("[a]\n", {"a", "k", std::string(510, 'x')},
                  "a line would have 512 bytes, and 511 are read");
    expectRefusal("[a]\n", {std::string(510, 's'), "k", "v"},
                  "a line would have 512 bytes, and 511 are read");
    // What stands in front of the key counts.
    expectRefusal("[a]\n   k=1\n", {"a", "k", std::string(509, 'x')},
                  "not changed: lines past 511 bytes would be read in another way");
}

TEST_F(KflIniSetTest, WhatWouldChangeOtherValuesIsRefused) {
    expectRefusal("[a]\nk=" + std::string(600, 'x') + "\n", {"a", "k", "short"},
                  "not changed: lines past 511 bytes would be read in another way");
    // The end of a line that is cut opens a section.
    expectRefusal("[a]\nk=" + std::string(509, 'x') + "[b]\nl=1\n", {"a", "m", "1"},
                  "not changed: lines past 511 bytes would be read in another way");
}

TEST_F(KflIniSetTest, AFolderThatCannotBeWrittenIsAFailure) {
    folder.write("set.ini", content);
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    const Words unprivileged =
        geteuid() == 0 ? Words{"setpriv", "--bounding-set", "-dac_override,-dac_read_search"}
                       : Words{"env"};
    const ProgramResult result = runProgram(unprivileged + wordsOf(KFL_PROGRAM) +
                                            Words{"ini", "--set", path, "net", "mode", "c"});
    chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: " + std::filesystem::canonical(folder.path()).string() +
                                 ": Permission denied\n");
    EXPECT_EQ(contentOf(path), content);
}

TEST_F(KflIniSetTest, AFileThatMayNotBeWrittenIsAFailure) {
    folder.write("set.ini", content);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    const Words unprivileged =
        geteuid() == 0 ? Words{"setpriv", "--bounding-set", "-dac_override,-dac_read_search"}
                       : Words{"env"};
    const ProgramResult result = runProgram(unprivileged + wordsOf(KFL_PROGRAM) +
                                            Words{"ini", "--set", path, "net", "mode", "c"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: " + path + ": Permission denied\n");
    EXPECT_EQ(contentOf(path), content);
}

// The limit stands for a disk that is full: the shell's unit is 512 bytes.
TEST_F(KflIniSetTest, ADiskThatIsFullIsAFailureAndTheFileStays) {
    const std::string large = content + "; " + std::string(4000, '-') + "\n";
    folder.write("set.ini", large);
    const ProgramResult result =
        runProgram(behind("ulimit -f 4;", {"ini", "--set", path, "net", "mode", "c"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: " + path + ": not written: File too large\n");
    EXPECT_EQ(contentOf(path), large);
    EXPECT_EQ(names(), std::vector<std::string>{"set.ini"});
}

TEST_F(KflIniSetTest, AFileWithSeveralNamesIsRefused) {
    folder.write("set.ini", content);
    std::filesystem::create_hard_link(path, folder / "other.ini");
    expectFailure({"ini", "--set", path, "net", "mode", "c"},
                  path + ": has more than one name (hard links)");
    EXPECT_EQ(contentOf(path), content);
}

TEST_F(KflIniSetTest, WhatIsNoRegularFileIsRefused) {
    const std::string missing = folder / "missing.ini";
    expectFailure({"ini", "--set", missing, "a", "k", "v"},
                  missing + ": No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(missing));
    expectFailure({"ini", "--set", folder.path(), "a", "k", "v"},
                  folder.path() + ": Is a directory");
    expectFailure({"ini", "--set", "/dev/null", "a", "k", "v"}, "/dev/null: not a regular file");
}

// Each changes the file that the one before it left.
TEST_F(KflIniSetTest, SeveralAtOnceAllHaveTheirEffect) {
    folder.write("set.ini", "[a]\n");
    const ProgramResult result = runProgram(
        Words{"sh", "-c", "for i in 1 2 3 4 5 6 7 8 9 10 11 12; do \"$@\" a k$i v$i & done; wait",
              "sh"} +
        wordsOf(KFL_PROGRAM) + Words{"ini", "--set", path});
    EXPECT_EQ(result.errors, "");
    for (int i = 1; i <= 12; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(outputOfKfl({"ini", path, "a", "k" + number}), "v" + number + "\n");
    }
    EXPECT_EQ(names(), std::vector<std::string>{"set.ini"});
}

TEST_F(KflIniSetTest, TooFewOrTooManyArgumentsAreWrongUsage) {
    expectWrongUsage({"ini", "--set", path, "a", "k"}, "kfl ini: too few arguments", iniUsage);
    expectWrongUsage({"ini", "--set", path, "a", "k", "v", "w"}, "kfl ini: too many arguments",
                     iniUsage);
    expectWrongUsage({"ini", "--set", path, "a", "k", "-5"}, "'5'", iniUsage);
    expectWrongUsage({"ini", "--set", "--check", path}, "kfl ini: only one of", iniUsage);
}

}  // namespace
