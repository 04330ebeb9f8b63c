// kfl listen, run as people and scripts run it.
#include <filesystem>

#include "tests/tools/kfl_datagrams.h"

namespace {

using namespace kfl_test;
using std::filesystem::exists;

const std::string usageLine = "usage: kfl listen unix PATH|udp PORT [--count N] [--timeout MS]";

class KflListenTest : public testing::Test {
  protected:
    const TemporaryFolder folder;
    const std::string path = folder / "socket";
};

TEST_F(KflListenTest, ShowsEachDatagramAsALine) {
    const ProgramResult result = kflWhile({"listen", "unix", path, "--count", "5"}, [this](auto&) {
        for (const char* text : {"hello", "", "two\nlines", "its own line feed\n", "last"})
            sendLocally(path, text);
    });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "hello\n\ntwo\nlines\nits own line feed\nlast\n");
    EXPECT_FALSE(exists(path)) << "the socket file is removed";
}

TEST_F(KflListenTest, ShowsBytesAsTheyAre) {
    const std::string bytes("a\0b\xff", 4);
    const ProgramResult result =
        kflWhile({"listen", "--count=1", "unix", path}, [&](auto&) { sendLocally(path, bytes); });
    EXPECT_EQ(result.output, bytes + "\n");
}

TEST_F(KflListenTest, ShowsLargeDatagramsWhole) {
    const std::string large(150000, 'L');
    const ProgramResult result = kflWhile({"listen", "unix", path, "--count", "1"},
                                          [&](auto&) { sendLocally(path, large); });
    EXPECT_EQ(result.output, large + "\n");
}

TEST_F(KflListenTest, ListensOnAPortOfEveryInterface) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        // Somebody else may take the port first: then with another one.
        const in_port_t port = freePort();
        const std::string number = std::to_string(ntohs(port));
        const ProgramResult result = kflWhile(
            {"listen", "udp", number, "--count", "1", "--timeout", "10000"}, [port](auto& running) {
                while (running.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready)
                    sendDatagram(loopback(port, 2), "hello");
            });
        if (result.status != 0) continue;
        EXPECT_EQ(result.output, "hello\n");
        EXPECT_EQ(result.errors, "");
        return;
    }
    ADD_FAILURE() << "nothing was heard on any port";
}

TEST_F(KflListenTest, EndsWhenNothingComes) {
    const StopWatch watch;
    const ProgramResult result = kfl({"listen", "unix", path, "--timeout", "1200"});
    EXPECT_GE(watch.passed(), std::chrono::milliseconds(1200));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "kfl: nothing came for 1200 milliseconds\n");
    EXPECT_FALSE(exists(path));
}

TEST_F(KflListenTest, TheTimeOutIsThatOfEachDatagram) {
    const ProgramResult result =
        kflWhile({"listen", "unix", path, "--count", "2", "--timeout", "3000"},
                 [this](auto&) { sendLocally(path, "only one"); });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "only one\n");
    EXPECT_EQ(result.errors, "kfl: nothing came for 3000 milliseconds\n");
}

TEST_F(KflListenTest, ASignalThatEndsItLeavesNoFile) {
    for (const auto& [name, status] : {std::pair{"TERM", 143}, std::pair{"HUP", 129}}) {
        const ProgramResult result =
            runProgram(Words{"sh", "-c",
                             "path=$1 signal=$2; shift 2; \"$@\" & "
                             "while [ ! -e \"$path\" ]; do sleep 0.05; done; "
                             "kill -$signal $!; wait $!",
                             "sh", path, name} +
                       wordsOf(KFL_PROGRAM) + Words{"listen", "unix", path});
        EXPECT_EQ(result.status, status);
        EXPECT_FALSE(exists(path)) << name;
    }
}

TEST_F(KflListenTest, APathThatExistsIsAFailureAndStays) {
    folder.write("socket", "mine");
    expectFailure({"listen", "unix", path}, path + ": Address already in use");
    EXPECT_TRUE(exists(path));
}

TEST_F(KflListenTest, APathThatCannotBeIsAFailure) {
    expectFailure({"listen", "unix", path + "/x/y"}, path + "/x/y: No such file or directory");
    const std::string longest = pathOfLength(folder, 108);
    expectFailure({"listen", "unix", longest}, longest + ": File name too long");
}

TEST_F(KflListenTest, APortInUseIsAFailure) {
    const Descriptor taken = loopbackSocket();
    const std::string port = std::to_string(ntohs(nameOf(taken).sin_port));
    expectFailure({"listen", "udp", port}, port + ": Address already in use");
}

TEST_F(KflListenTest, OutputThatCannotBeWrittenEndsIt) {
    std::future<ProgramResult> running = std::async(std::launch::async, [this] {
        return runProgram(Words{"sh", "-c", "exec \"$@\" >/dev/full", "sh"} + wordsOf(KFL_PROGRAM) +
                          Words{"listen", "unix", path});
    });
    sendLocally(path, "hello");
    const ProgramResult result = running.get();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("cannot write the output"), std::string::npos);
    EXPECT_FALSE(exists(path));
}

TEST_F(KflListenTest, WrongArgumentsAreWrongUsage) {
    expectWrongUsage({"listen"}, "kfl listen: too few arguments", usageLine);
    expectWrongUsage({"listen", "unix"}, "kfl listen: too few arguments", usageLine);
    expectWrongUsage({"listen", "unix", "a", "b"}, "kfl listen: too many arguments", usageLine);
    expectWrongUsage({"listen", "tcp", "80"}, "kfl listen: 'tcp' is neither unix nor udp",
                     usageLine);
    expectWrongUsage({"listen", "unix", ""}, "kfl listen: PATH must not be empty", usageLine);
    expectWrongUsage({"listen", "--nix", "unix", "a"}, "--nix", usageLine);
}

TEST_F(KflListenTest, WrongNumbersAreWrongUsage) {
    for (const std::string port : {"0", "65536", "-1", "", "x", "80x", "99999999999999999999"}) {
        expectWrongUsage({"listen", "udp", "--", port},
                         "kfl listen: PORT must be a number from 1 to 65535, not '" + port + "'",
                         usageLine);
    }
    for (const std::string number : {"0", "-1", "x", "2147483648"}) {
        expectWrongUsage({"listen", "unix", path, "--count=" + number}, "--count must be a number",
                         usageLine);
        expectWrongUsage({"listen", "unix", path, "--timeout=" + number},
                         "--timeout must be a number", usageLine);
    }
    EXPECT_FALSE(exists(path));
}

}  // namespace
