// How bash completes the words behind kfl.
#include <algorithm>
#include <sstream>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::outputOfKfl;
using kfl_test::ProgramResult;
using kfl_test::runProgram;
using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

class KflCompletionTest : public testing::Test {
  protected:
    // What is offered for the last of these words, in order; the completion must say nothing else.
    Words offered(const Words& words) const {
        const std::string script =
            "cd \"$1\" && source \"$2\" && shift 2 && COMP_WORDS=(\"$@\") && "
            "COMP_CWORD=$(($# - 1)) && _kfl && [ ${#COMPREPLY[@]} = 0 ] || "
            "printf '%s\\n' \"${COMPREPLY[@]}\"";
        const ProgramResult result = runProgram(
            Words{"bash", "--norc", "-c", script, "bash", folder.path(), KFL_COMPLETION} +
            wordsOf(KFL_PROGRAM) + words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        Words lines;
        std::istringstream stream(result.output);
        for (std::string line; std::getline(stream, line);) lines.push_back(line);
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    const TemporaryFolder folder;
    const std::string ini = folder.write("device.ini",
                                         "top=1\n"
                                         "tool: 2\n"
                                         "[net]\n"
                                         "mode=a b\n"
                                         "mtu=1500\n"
                                         "[new one]\n"
                                         "it's=x\n");
    const std::string other = folder.write("other file", "");
};

TEST_F(KflCompletionTest, CommandsAreThoseOfTheHelp) {
    EXPECT_EQ(offered({""}), (Words{"alarm", "decrypt", "encrypt", "event", "help", "ini",
                                    "keyvalue", "listen", "run", "send", "uri"}));
    EXPECT_EQ(offered({"e"}), (Words{"encrypt", "event"}));
    EXPECT_EQ(offered({"x"}), Words{});
    EXPECT_EQ(offered({"-"}), (Words{"--help", "--version", "-V", "-h"}));
    EXPECT_EQ(offered({"help", "i"}), Words{"ini"});
    EXPECT_EQ(offered({"help", "help"}), Words{});
}

// Every command's page names its options in one form.
TEST_F(KflCompletionTest, OptionsAreThoseOfTheCommand) {
    EXPECT_EQ(offered({"ini", "-"}),
              (Words{"--bool", "--check", "--float", "--help", "--int", "--set", "-h"}));
    EXPECT_EQ(offered({"encrypt", "--k"}), (Words{"--key", "--key-env", "--key-file"}));
    EXPECT_EQ(offered({"listen", "unix", "--"}), (Words{"--count", "--help", "--timeout"}));
    EXPECT_EQ(offered({"run", "--"}), (Words{"--help", "--output", "--wait"}));
    for (const char* const command :
         {"alarm", "decrypt", "event", "keyvalue", "listen", "send", "uri"}) {
        const Words options = offered({command, "-"});
        EXPECT_EQ(std::count(options.begin(), options.end(), "--help"), 1) << command;
        EXPECT_EQ(std::count(options.begin(), options.end(), "-h"), 1) << command;
    }
}

TEST_F(KflCompletionTest, ValuesOfOptions) {
    EXPECT_EQ(offered({"encrypt", "--mode", ""}), (Words{"cbc", "cfb", "ecb"}));
    EXPECT_EQ(offered({"encrypt", "--mode", "=", "e"}), Words{"ecb"});
    EXPECT_EQ(offered({"encrypt", "--mode", "="}), (Words{"cbc", "cfb", "ecb"}));
    EXPECT_EQ(offered({"decrypt", "--block", ""}), (Words{"16", "24", "32"}));
    EXPECT_EQ(offered({"decrypt", "--key-file", "dev"}), Words{"device.ini"});
    EXPECT_EQ(offered({"decrypt", "--key-env", "PAT"}), Words{"PATH"});
    EXPECT_EQ(offered({"event", "--priority", "local3.w"}), Words{"local3.warning"});
    EXPECT_EQ(offered({"run", "--output", "o"}), Words{"other file"});
    EXPECT_EQ(offered({"event", "--name", ""}), Words{});
}

TEST_F(KflCompletionTest, Files) {
    const Words files = {"device.ini", "other file"};
    EXPECT_EQ(offered({"ini", ""}), files);
    EXPECT_EQ(offered({"ini", "--check", "d"}), Words{"device.ini"});
    EXPECT_EQ(offered({"keyvalue", ""}), files);
    EXPECT_EQ(offered({"encrypt", "--mode", "ecb", "--key", "00", "in", "o"}), Words{"other file"});
    EXPECT_EQ(offered({"listen", "unix", ""}), files);
    EXPECT_EQ(offered({"run", "ls", "-l", "d"}), Words{"device.ini"});
}

TEST_F(KflCompletionTest, SectionsAndKeysOfAFile) {
    EXPECT_EQ(offered({"ini", "device.ini", ""}), (Words{"''", "net", "new\\ one"}));
    EXPECT_EQ(offered({"ini", ini, "ne"}), (Words{"net", "new\\ one"}));
    EXPECT_EQ(offered({"ini", ini, "new\\ "}), Words{"new\\ one"});
    EXPECT_EQ(offered({"ini", ini, "\"new"}), Words{"new one"});
    EXPECT_EQ(offered({"ini", ini, "net", ""}), (Words{"mode", "mtu"}));
    EXPECT_EQ(offered({"ini", "--int", ini, "net", "mt"}), Words{"mtu"});
    EXPECT_EQ(offered({"ini", ini, "new\\ one", ""}), Words{"it\\'s"});
    EXPECT_EQ(offered({"ini", ini, "''", "t"}), (Words{"tool", "top"}));
    EXPECT_EQ(offered({"ini", "--", ini, "net", "mt"}), Words{"mtu"});
    EXPECT_EQ(offered({"keyvalue", ini, "to"}), (Words{"tool", "top"}));
    EXPECT_EQ(offered({"keyvalue", ini, "tool", "top"}), Words{"top"});
    // Nothing more is taken.
    EXPECT_EQ(offered({"ini", ini, "net", "mode", ""}), Words{});
    EXPECT_EQ(offered({"ini", "--check", ini, ""}), Words{});
    EXPECT_EQ(offered({"ini", "missing.ini", ""}), Words{"''"});
}

TEST_F(KflCompletionTest, SettingOffersTheValueThereIs) {
    EXPECT_EQ(offered({"ini", "--set", ini, "net", "mode", ""}), Words{"a\\ b"});
    EXPECT_EQ(offered({"ini", ini, "--set", "net", "none", ""}), Words{});
}

TEST_F(KflCompletionTest, WordsThatTheCommandsKnow) {
    EXPECT_EQ(offered({"alarm", "o"}), (Words{"off", "on"}));
    EXPECT_EQ(offered({"alarm", "--name", "agent", ""}), (Words{"off", "on"}));
    EXPECT_EQ(offered({"send", "u"}), (Words{"udp", "unix"}));
    EXPECT_EQ(offered({"uri", ""}), Words{});
    const Words programs = offered({"run", "bas"});
    EXPECT_NE(std::count(programs.begin(), programs.end(), "bash"), 0);
}

}  // namespace
