// kfl ini, run as people and scripts run it.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::kfl;
using kfl_test::outputOfKfl;
using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

using kfl_test::iniUsage;

const std::string content =
    "; a device\n"
    "Port = 8080\n"
    "a==b:c\n"
    "[Net]\n"
    "Mode=a\n"
    "mode = b\n"
    "off: false\n"
    "ratio=0.1 of it\n"
    "big=4294967296000\n"
    "[ empty ]\n"
    "[net]\n"
    "lost=1\n"
    "[last";

class KflIniTest : public testing::Test {
  protected:
    const TemporaryFolder folder;
    const std::string path = folder.write("device.ini", content);
};

TEST_F(KflIniTest, ShowsAllSectionsAndKeys) {
    EXPECT_EQ(outputOfKfl({"ini", path}),
              "Port= 8080\n"
              "a==b:c\n"
              "[Net]\n"
              "Mode= b\n"
              "off= false\n"
              "ratio=0.1 of it\n"
              "big=4294967296000\n"
              "[ empty ]\n"
              "[last]\n");
}

TEST_F(KflIniTest, WhatItShowsReadsBackAsTheSame) {
    const std::string shown = outputOfKfl({"ini", path});
    EXPECT_EQ(outputOfKfl({"ini", folder.write("again.ini", shown)}), shown);
}

TEST_F(KflIniTest, AnEmptyFileHasNothingToShow) {
    EXPECT_EQ(outputOfKfl({"ini", folder.write("empty.ini", "")}), "");
    EXPECT_EQ(outputOfKfl({"ini", "/dev/null"}), "");
}

TEST_F(KflIniTest, ShowsTheKeysOfASection) {
    EXPECT_EQ(outputOfKfl({"ini", path, ""}), "Port= 8080\na==b:c\n");
    EXPECT_EQ(outputOfKfl({"ini", path, "nET"}),
              "Mode= b\noff= false\nratio=0.1 of it\nbig=4294967296000\n");
    EXPECT_EQ(outputOfKfl({"ini", path, " empty "}), "");
}

TEST_F(KflIniTest, ShowsAValueAsItIsStored) {
    EXPECT_EQ(outputOfKfl({"ini", path, "", "port"}), " 8080\n");
    EXPECT_EQ(outputOfKfl({"ini", path, "", "A"}), "=b:c\n");
    EXPECT_EQ(outputOfKfl({"ini", path, "Net", "mode"}), " b\n");
}

TEST_F(KflIniTest, ShowsAValueAsAnInteger) {
    EXPECT_EQ(outputOfKfl({"ini", "--int", path, "", "port"}), "8080\n");
    EXPECT_EQ(outputOfKfl({"ini", path, "net", "ratio", "--int"}), "0\n");
    EXPECT_EQ(outputOfKfl({"ini", path, "--int", "net", "mode"}), "0\n");
}

TEST_F(KflIniTest, ShowsAValueAsAFloatInFull) {
    EXPECT_EQ(outputOfKfl({"ini", "--float", path, "net", "ratio"}), "0.100000001\n");
    EXPECT_EQ(outputOfKfl({"ini", "--float", path, "", "port"}), "8080\n");
    EXPECT_EQ(outputOfKfl({"ini", "--float", path, "net", "mode"}), "0\n");
}

TEST_F(KflIniTest, EveryKeyThereIsCountsAsTrue) {
    EXPECT_EQ(outputOfKfl({"ini", "--bool", path, "net", "off"}), "true\n");
    EXPECT_EQ(outputOfKfl({"ini", "--bool", path, "net", "mode"}), "true\n");
}

TEST_F(KflIniTest, AnOptionMayBeRepeatedAndShortened) {
    EXPECT_EQ(outputOfKfl({"ini", "--int", "--int", path, "", "port"}), "8080\n");
    EXPECT_EQ(outputOfKfl({"ini", "--fl", path, "", "port"}), "8080\n");
}

TEST_F(KflIniTest, TwoDashesEndTheOptions) {
    const std::string file = folder.write("dashes.ini", "[--int]\n-k=v\n");
    EXPECT_EQ(outputOfKfl({"ini", "--", file, "--int", "-k"}), "v\n");
    EXPECT_EQ(outputOfKfl({"ini", "--int", "--", file, "--int", "-k"}), "0\n");
}

TEST_F(KflIniTest, ReadsAPipe) {
    EXPECT_EQ(outputOfKfl({"ini", "/dev/stdin", "", "k"}, "k=v\n"), "v\n");
    const ProgramResult result =
        runProgram(Words{"sh", "-c", "printf 'k=%s\\n' piped | \"$@\"", "sh"} +
                   wordsOf(KFL_PROGRAM) + Words{"ini", "/dev/stdin"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "k=piped\n");
}

TEST_F(KflIniTest, MissingFileIsAFailure) {
    const std::string missing = folder / "missing.ini";
    expectFailure({"ini", missing}, missing + ": No such file or directory");
    expectFailure({"ini", missing, "a", "b", "--int"}, missing + ": No such file or directory");
    expectFailure({"ini", path + "/x"}, path + "/x: Not a directory");
    expectFailure({"ini", ""}, ": No such file or directory");
}

TEST_F(KflIniTest, ADirectoryIsAFailure) {
    expectFailure({"ini", folder.path()}, folder.path() + ": Is a directory");
    expectFailure({"ini", "/"}, "/: Is a directory");
}

TEST_F(KflIniTest, AFileThatMayNotBeReadIsAFailure) {
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    // Root may read any file unless these two rights are taken from it.
    const Words unprivileged =
        geteuid() == 0 ? Words{"setpriv", "--bounding-set", "-dac_override,-dac_read_search"}
                       : Words{"env"};
    const ProgramResult result =
        runProgram(unprivileged + wordsOf(KFL_PROGRAM) + Words{"ini", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "kfl: " + path + ": Permission denied\n");
}

TEST_F(KflIniTest, AFileThatCannotBeOpenedIsAFailure) {
    const std::string socketPath = folder / "socket";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
    expectFailure({"ini", socketPath}, socketPath + ": No such device or address");
}

TEST_F(KflIniTest, MissingSectionIsAFailure) {
    expectFailure({"ini", path, "Wan"}, path + ": no section 'Wan'");
    expectFailure({"ini", path, "Wan", "mode"}, path + ": no section 'Wan'");
    expectFailure({"ini", path, "empty"}, path + ": no section 'empty'");
}

TEST_F(KflIniTest, MissingKeyIsAFailureInEveryForm) {
    const std::string message = path + ": no key 'lost' in section 'net'";
    expectFailure({"ini", path, "net", "lost"}, message);
    expectFailure({"ini", "--int", path, "net", "lost"}, message);
    expectFailure({"ini", "--float", path, "net", "lost"}, message);
    expectFailure({"ini", "--bool", path, "net", "lost"}, message);
    expectFailure({"ini", path, "", ""}, path + ": no key '' in section ''");
}

TEST_F(KflIniTest, TooFewOrTooManyArgumentsAreWrongUsage) {
    expectWrongUsage({"ini"}, "kfl ini: too few arguments", iniUsage);
    expectWrongUsage({"ini", "--int"}, "kfl ini: too few arguments", iniUsage);
    expectWrongUsage({"ini", path, "a", "b", "c"}, "kfl ini: too many arguments", iniUsage);
}

TEST_F(KflIniTest, AFormWithoutAKeyIsWrongUsage) {
    const std::string complaint = "kfl ini: --int, --float and --bool need a KEY";
    expectWrongUsage({"ini", "--int", path}, complaint, iniUsage);
    expectWrongUsage({"ini", "--float", path, "net"}, complaint, iniUsage);
    expectWrongUsage({"ini", "--bool", path, "net"}, complaint, iniUsage);
}

TEST_F(KflIniTest, TwoFormsAreWrongUsage) {
    expectWrongUsage({"ini", "--int", "--bool", path, "net", "mode"},
                     "kfl ini: only one of --int, --float, --bool, --check and --set can be given",
                     iniUsage);
}

TEST_F(KflIniTest, UnknownOptionIsWrongUsage) {
    expectWrongUsage({"ini", "--nit", path}, "kfl ini: ", iniUsage);
    expectWrongUsage({"ini", "--nit", path}, "--nit", iniUsage);
    expectWrongUsage({"ini", path, "-i"}, "'i'", iniUsage);
    expectWrongUsage({"ini", "--int=3", path}, "--int", iniUsage);
}

TEST_F(KflIniTest, HelpIsAnsweredBeforeAnythingElseIsChecked) {
    EXPECT_EQ(outputOfKfl({"ini", "a", "b", "c", "d", "--help"}), outputOfKfl({"help", "ini"}));
}

}  // namespace
