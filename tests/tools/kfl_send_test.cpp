// kfl send, run as people and scripts run it.
#include "tests/tools/kfl_datagrams.h"

namespace {

using namespace kfl_test;

const std::string usageLine = "usage: kfl send unix PATH|udp HOST PORT [TEXT]...";

class KflSendTest : public testing::Test {
  protected:
    const TemporaryFolder folder;
    const std::string path = folder / "socket";
    const Descriptor local = localSocket(path);
    const Descriptor udp = loopbackSocket();
    const std::string port = std::to_string(ntohs(nameOf(udp).sin_port));
};

TEST_F(KflSendTest, SendsItsTextToALocalSocket) {
    EXPECT_EQ(outputOfKfl({"send", "unix", path, "hello"}), "");
    EXPECT_EQ(received(local), "hello");
}

TEST_F(KflSendTest, SendsItsTextToAPort) {
    EXPECT_EQ(outputOfKfl({"send", "udp", "127.0.0.1", port, "hello"}), "");
    EXPECT_EQ(received(udp), "hello");
}

TEST_F(KflSendTest, JoinsItsTextsWithBlanks) {
    outputOfKfl({"send", "udp", "127.0.0.1", port, "one", "two  three", "", "four"});
    EXPECT_EQ(received(udp), "one two  three  four");
    outputOfKfl({"send", "unix", path, "--", "--help", "-x"});
    EXPECT_EQ(received(local), "--help -x");
    outputOfKfl({"send", "unix", path, ""});
    EXPECT_EQ(received(local), "");
}

TEST_F(KflSendTest, SendsTheStandardInputAsItIs) {
    const std::string bytes("two\nlines\n\0\xff", 12);
    for (const std::string& text : {bytes, std::string(), std::string(60000, 'x')}) {
        outputOfKfl({"send", "unix", path}, text);
        EXPECT_EQ(received(local), text);
        outputOfKfl({"send", "udp", "127.0.0.1", port}, text);
        EXPECT_EQ(received(udp), text);
    }
}

TEST_F(KflSendTest, WhatNoDatagramHoldsIsAFailure) {
    const ProgramResult result = kfl({"send", "udp", "127.0.0.1", port}, std::string(65508, 'x'));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: 127.0.0.1: Message too long\n");
    const ProgramResult endless = runProgram(Words{"sh", "-c", "exec \"$@\" </dev/zero", "sh"} +
                                             wordsOf(KFL_PROGRAM) + Words{"send", "unix", path});
    EXPECT_EQ(endless.status, 1);
    EXPECT_EQ(endless.errors, "kfl: " + path + ": Message too long\n");
}

TEST_F(KflSendTest, InputThatCannotBeReadIsAFailure) {
    const ProgramResult result = runProgram(Words{"sh", "-c", "exec \"$@\" </", "sh"} +
                                            wordsOf(KFL_PROGRAM) + Words{"send", "unix", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: cannot read the input: Is a directory\n");
}

TEST_F(KflSendTest, NobodyAtThePathIsAFailure) {
    expectFailure({"send", "unix", path + "x", "hello"}, path + "x: No such file or directory");
    const std::string file = folder.write("file", "");
    expectFailure({"send", "unix", file, "hello"}, file + ": Connection refused");
    const std::string longest = pathOfLength(folder, 108);
    expectFailure({"send", "unix", longest, "hello"}, longest + ": File name too long");
}

TEST_F(KflSendTest, AHostThatIsNoneIsAFailure) {
    const ProgramResult result = kfl({"send", "udp", "no host", "80", "hello"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors.rfind("kfl: no host: ", 0), 0U) << result.errors;
}

TEST_F(KflSendTest, AnAddressThatMayNotBeUsedIsAFailure) {
    expectFailure({"send", "udp", "255.255.255.255", "80", "hello"},
                  "255.255.255.255: Permission denied");
}

TEST_F(KflSendTest, ListenHearsWhatIsSent) {
    const std::string other = folder / "other";
    const ProgramResult result = kflWhile({"listen", "unix", other, "--count", "2"}, [&](auto&) {
        sendLocally(other, "is there");
        outputOfKfl({"send", "unix", other, "hello", "you"});
    });
    EXPECT_EQ(result.output, "is there\nhello you\n");
}

TEST_F(KflSendTest, WrongArgumentsAreWrongUsage) {
    expectWrongUsage({"send"}, "kfl send: too few arguments", usageLine);
    expectWrongUsage({"send", "unix"}, "kfl send: too few arguments", usageLine);
    expectWrongUsage({"send", "udp", "127.0.0.1"}, "kfl send: too few arguments", usageLine);
    expectWrongUsage({"send", "tcp", "127.0.0.1", "80"}, "kfl send: 'tcp' is neither unix nor udp",
                     usageLine);
    for (const std::string number : {"0", "65536", "x", ""}) {
        expectWrongUsage({"send", "udp", "127.0.0.1", number, "hello"},
                         "kfl send: PORT must be a number from 1 to 65535", usageLine);
    }
    expectWrongUsage({"send", "--fast", "unix", path}, "--fast", usageLine);
}

}  // namespace
