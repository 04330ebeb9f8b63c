// What others see of kfl encrypt in the list of processes. An emulator's own command line would be
// in the way: this is for programs of the machine itself.
#include <sys/stat.h>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::Words;
using kfl_test::operator+;

// The output is a pipe that nobody reads for a while, so that there is time to look.
TEST(KflCipherCommandLineTest, KeyIsWiped) {
    const kfl_test::TemporaryFolder folder;
    const std::string in = folder.write("in", std::string(16, 'x'));
    const std::string pipe = folder / "pipe";
    const std::string key = "2b7e151628aed2a6abf7158809cf4f3c";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string script =
        "\"$@\" & child=$!; sleep 0.5; tr '\\0' ' ' </proc/$child/cmdline; cat '" + pipe +
        "' >/dev/null; wait $child";
    const kfl_test::ProgramResult result =
        kfl_test::runProgram(Words{"sh", "-c", script, "sh"} + kfl_test::wordsOf(KFL_PROGRAM) +
                             Words{"encrypt", "--mode", "ecb", "--key", key, in, pipe});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("encrypt --mode ecb --key ****"), std::string::npos)
        << result.output;
    EXPECT_EQ(result.output.find(key), std::string::npos) << result.output;
}

}  // namespace
