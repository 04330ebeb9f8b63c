// kfl keyvalue, run as people and scripts run it.
#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::outputOfKfl;
using kfl_test::TemporaryFolder;

const std::string usageLine = "usage: kfl keyvalue FILE KEY[=DEFAULT]...";

const std::string content =
    "# an upload\n"
    "Host=uploads.example\n"
    "port = 8080\n"
    "query: a=b:c\n"
    "port=9090\n"
    "[more]\n"
    "hidden=1\n";

class KflKeyvalueTest : public testing::Test {
  protected:
    const TemporaryFolder folder;
    const std::string path = folder.write("upload.conf", content);
};

TEST_F(KflKeyvalueTest, ShowsTheKeysAskedForInTheirOrder) {
    EXPECT_EQ(outputOfKfl({"keyvalue", path, "port", "host"}), "port=9090\nhost=uploads.example\n");
    EXPECT_EQ(outputOfKfl({"keyvalue", path, "QUERY", "query"}), "QUERY= a=b:c\nquery= a=b:c\n");
}

TEST_F(KflKeyvalueTest, ADefaultHoldsForAKeyThatIsMissing) {
    EXPECT_EQ(outputOfKfl({"keyvalue", path, "user=nobody", "host=x", "path=/a=b", "empty="}),
              "user=nobody\nhost=uploads.example\npath=/a=b\nempty=\n");
    EXPECT_EQ(outputOfKfl({"keyvalue", "/dev/null", "a=1"}), "a=1\n");
}

TEST_F(KflKeyvalueTest, KeysBehindAHeaderAreMissing) {
    EXPECT_EQ(outputOfKfl({"keyvalue", path, "hidden=0"}), "hidden=0\n");
    expectFailure({"keyvalue", path, "hidden"}, path + ": no key 'hidden'");
}

TEST_F(KflKeyvalueTest, AMissingKeyWithoutDefaultIsAFailureThatShowsNothing) {
    expectFailure({"keyvalue", path, "host", "user", "none"}, path + ": no key 'user'");
    expectFailure({"keyvalue", path, "%s%n"}, path + ": no key '%s%n'");
}

TEST_F(KflKeyvalueTest, ReadsAPipe) {
    EXPECT_EQ(outputOfKfl({"keyvalue", "/dev/stdin", "k"}, "k=v\n"), "k=v\n");
}

TEST_F(KflKeyvalueTest, AFileThatCannotBeReadIsAFailureWhateverTheDefaults) {
    const std::string missing = folder / "missing.conf";
    expectFailure({"keyvalue", missing, "a=1"}, missing + ": No such file or directory");
    expectFailure({"keyvalue", folder.path(), "a=1"}, folder.path() + ": Is a directory");
}

TEST_F(KflKeyvalueTest, FileAndKeyMustBeGiven) {
    expectWrongUsage({"keyvalue"}, "kfl keyvalue: too few arguments", usageLine);
    expectWrongUsage({"keyvalue", path}, "kfl keyvalue: too few arguments", usageLine);
}

TEST_F(KflKeyvalueTest, AnEmptyKeyIsWrongUsage) {
    expectWrongUsage({"keyvalue", path, ""}, "kfl keyvalue: no KEY in ''", usageLine);
    expectWrongUsage({"keyvalue", path, "host", "=x"}, "kfl keyvalue: no KEY in '=x'", usageLine);
}

TEST_F(KflKeyvalueTest, UnknownOptionIsWrongUsage) {
    expectWrongUsage({"keyvalue", "--int", path, "port"}, "--int", usageLine);
}

TEST_F(KflKeyvalueTest, TwoDashesEndTheOptions) {
    EXPECT_EQ(outputOfKfl({"keyvalue", "--", path, "-k=v"}), "-k=v\n");
}

TEST_F(KflKeyvalueTest, HelpIsAnsweredBeforeAnythingElseIsChecked) {
    EXPECT_EQ(outputOfKfl({"keyvalue", "--help"}), outputOfKfl({"help", "keyvalue"}));
}

}  // namespace
