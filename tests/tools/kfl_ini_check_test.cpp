// kfl ini --check, run as people and scripts run it.
#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::iniUsage;
using kfl_test::kfl;
using kfl_test::outputOfKfl;
using kfl_test::ProgramResult;
using kfl_test::TemporaryFolder;

class KflIniCheckTest : public testing::Test {
  protected:
    // Checks a file of these bytes, and expects these findings, each without its file name.
    void expectFindings(const std::string& bytes, const std::vector<std::string>& findings,
                        const std::string& summary) const {
        const std::string path = folder.write("checked.ini", bytes);
        const ProgramResult result = kfl({"ini", "--check", path});
        std::string output;
        for (const std::string& finding : findings) output += path + ':' + finding + '\n';
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, output);
        EXPECT_EQ(result.errors, "kfl: " + path + ": " + summary + '\n');
    }

    const TemporaryFolder folder;
};

TEST_F(KflIniCheckTest, AFileThatReadsAsItLooksIsSaidToBeFine) {
    const std::string path =
        folder.write("fine.ini", "; a=1\n[a]\nk=v\n  indented:yes\r\n\n# b\n[b]\nk=a=b:c\nlast=x");
    EXPECT_EQ(outputOfKfl({"ini", "--check", path}),
              path + ": nothing found; 2 section headers, 4 keys\n");
    EXPECT_EQ(outputOfKfl({"ini", "--check", "/dev/null"}),
              "/dev/null: nothing found; 0 section headers, 0 keys\n");
    EXPECT_EQ(outputOfKfl({"ini", "--check", "/dev/stdin"}, "[a]\nk=v\n"),
              "/dev/stdin: nothing found; 1 section header, 1 key\n");
}

TEST_F(KflIniCheckTest, RepeatedHeadersAndTheKeysBelowThem) {
    expectFindings("[net]\na=1\n[Net]\nb=1\nrest\n[]\nc=1\n[new]\nd=1\n",
                   {"3: section 'Net' again, first on line 1: the keys below it are dropped",
                    "4: key 'b' is dropped: its section header is a repeated one",
                    "5: neither '=' nor ':': 'rest' is dropped",
                    "6: a header without a name: the keys below it are dropped",
                    "7: key 'c' is dropped: its section header is a repeated one"},
                   "5 findings, 5 lines dropped");
}

TEST_F(KflIniCheckTest, LinesThatAreNoKeyWithAValue) {
    expectFindings("[a]\nword\nkey=\nkey :\t\r\n=value\n====\nk=v\n",
                   {"2: neither '=' nor ':': 'word' is dropped",
                    "3: no value: key 'key' is dropped", "4: no value: key 'key' is dropped",
                    "5: no key: 'value' is dropped", "6: nothing but separators: dropped"},
                   "5 findings, 5 lines dropped");
}

TEST_F(KflIniCheckTest, WhatStaysInAValueAndWhatIsDroppedFromIt) {
    expectFindings(
        "[a]\na= 1\nb=\t2\nc=x ; note\nd=\"q\"\ne=MTIz==\nf=1 \n:g=1\nh=a#b\n",
        {"2: the value of key 'a' keeps the blank in front of it",
         "3: the value of key 'b' keeps the blank in front of it",
         "4: the value of key 'c' includes '; note', which is no comment there",
         "5: the value of key 'd' keeps its quotes", "6: '==' at the end of the line is dropped",
         "7: ' ' at the end of the line is dropped", "8: ':' in front of the line is dropped"},
        "7 findings, 0 lines dropped");
}

TEST_F(KflIniCheckTest, KeysThatAreSetTwiceOrStandBeforeAnyHeader) {
    expectFindings("top=1\n[a]\nKey=1\nkey=2\n[b]\nkey=3\n",
                   {"1: key 'top' in front of the first section header",
                    "4: key 'key' again, first on line 3: this value replaces the one before"},
                   "2 findings, 0 lines dropped");
}

TEST_F(KflIniCheckTest, HeadersThatNameOtherSectionsThanTheySeemTo) {
    expectFindings("[open\nk=1\n[a] ; note\nk=1\n[b]c]\nk=1\n[ d ]\nk=1\n[e] \n",
                   {"1: no ']': the section's name is all of 'open'",
                    "3: ' ; note' behind the header is dropped",
                    "5: the name of section 'b]c' goes to the last ']'",
                    "7: blanks belong to the name of section ' d '",
                    "9: ' ' at the end of the line is dropped"},
                   "5 findings, 0 lines dropped");
}

TEST_F(KflIniCheckTest, LinesThatAreCut) {
    const std::string filling(509, 'x');
    // 511 bytes are read whole, and the line end then is an empty line.
    const std::string path = folder.write("whole.ini", "[a]\nk=" + filling + "\r\nl=1\n");
    EXPECT_EQ(outputOfKfl({"ini", "--check", path}),
              path + ": nothing found; 1 section header, 2 keys\n");
    expectFindings(
        "[a]\nk=" + filling + "y\n; " + filling + "b=1\nl=" + filling + "[n]\nm=1\n",
        {"2: longer than 511 bytes: 'y' is read as a line of its own, which is dropped",
         "2: neither '=' nor ':': 'y' is dropped",
         "3: longer than 511 bytes: 'b=1' is read as a line of its own, a key with its "
         "value",
         "4: longer than 511 bytes: '[n]' is read as a line of its own, a section header"},
        "4 findings, 1 line dropped");
}

TEST_F(KflIniCheckTest, BytesThatAreNoText) {
    using namespace std::string_literals;
    expectFindings("\xEF\xBB\xBF[a]\n[b]\nk=1\0002\nl=a\rb\nm=1\r\rn=2\r\n"s,
                   {"1: a byte order mark, which is read as text",
                    "1: neither '=' nor ':': '\xEF\xBB\xBF[a]' is dropped",
                    "3: a NUL byte: it and the rest of the line are dropped",
                    "4: a carriage return inside the line stays",
                    "5: a carriage return inside the line stays"},
                   "5 findings, 1 line dropped");
}

TEST_F(KflIniCheckTest, TextsAreCutAndShownByteByByte) {
    expectFindings(
        "[a]\n\x01\x7F" + std::string(50, 'z') + "\n",
        {"2: neither '=' nor ':': '\\x01\\x7f" + std::string(38, 'z') + "...' is dropped"},
        "1 finding, 1 line dropped");
}

TEST_F(KflIniCheckTest, AFileThatCannotBeReadIsAFailure) {
    const std::string missing = folder / "missing.ini";
    expectFailure({"ini", "--check", missing}, missing + ": No such file or directory");
    expectFailure({"ini", folder.path(), "--check"}, folder.path() + ": Is a directory");
}

TEST_F(KflIniCheckTest, OneFileIsAllItTakes) {
    expectWrongUsage({"ini", "--check"}, "kfl ini: too few arguments", iniUsage);
    expectWrongUsage({"ini", "--check", "a", "b"}, "kfl ini: too many arguments", iniUsage);
    expectWrongUsage({"ini", "--check", "--int", "a", "b", "c"},
                     "kfl ini: only one of --int, --float, --bool, --check and --set can be given",
                     iniUsage);
    expectWrongUsage({"ini", "--check=x", "a"}, "--check", iniUsage);
}

}  // namespace
