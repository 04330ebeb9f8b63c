// kfl encrypt and kfl decrypt, run as people and scripts run them.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/temporary_folder.h"
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::outputOfKfl;
using kfl_test::Words;
using kfl_test::operator+;

const std::string options =
    "--mode MODE [--chain HEX] [--block N]\n"
    "                   (--key HEX | --key-file FILE | --key-env NAME) IN OUT";

const std::string key = "2b7e151628aed2a6abf7158809cf4f3c";
const std::string chain = "000102030405060708090a0b0c0d0e0f";
const std::string plain = "\x6b\xc1\xbe\xe2\x2e\x40\x9f\x96\xe9\x3d\x7e\x11\x73\x93\x17\x2a";

class KflCipherTest : public testing::Test {
  protected:
    std::string content(const std::string& name) const {
        std::ifstream file(folder / name, std::ios::binary);
        EXPECT_TRUE(file.is_open()) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string hex(const std::string& name) const {
        std::string text;
        for (const char c : content(name)) {
            text += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
            text += "0123456789abcdef"[c & 15];
        }
        return text;
    }
    Words files(const std::string& in, const std::string& out) const {
        return {folder / in, folder / out};
    }
    // Wrong usage with which nothing may have happened to the output.
    void expectRefusal(const std::string& command, const Words& given,
                       const std::string& complaint) const {
        folder.write("in", plain);
        folder.write("out", "as before");
        expectWrongUsage(Words{command} + given + files("in", "out"), complaint,
                         "usage: kfl " + command + " " + options);
        EXPECT_EQ(content("out"), "as before");
    }

    kfl_test::TemporaryFolder folder;
    const Words cbc = {"--mode", "cbc", "--key", key, "--chain", chain};
};

TEST_F(KflCipherTest, KnownAnswersInAllModes) {
    folder.write("in", plain);
    const std::string answers[][2] = {{"ecb", "3ad77bb40d7a3660a89ecaf32466ef97"},
                                      {"cbc", "7649abac8119b246cee98e9b12e9197d"},
                                      {"cfb", "3b3fd92eb72dad20333449f8e83cfb4a"}};
    for (const auto& [mode, answer] : answers) {
        const Words given = {"--mode", mode, "--key", key, "--chain", chain};
        EXPECT_EQ(outputOfKfl(Words{"encrypt"} + given + files("in", "coded")), "");
        EXPECT_EQ(hex("coded"), answer);
        EXPECT_EQ(outputOfKfl(Words{"decrypt"} + given + files("coded", "back")), "");
        EXPECT_EQ(content("back"), plain);
    }
}

TEST_F(KflCipherTest, EcbNeedsNoChain) {
    folder.write("in", plain);
    outputOfKfl(Words{"encrypt", "--mode=ecb", "--key=" + key} + files("in", "coded"));
    EXPECT_EQ(hex("coded"), "3ad77bb40d7a3660a89ecaf32466ef97");
}

TEST_F(KflCipherTest, WideBlocksAndLongKeys) {
    folder.write("in", std::string(100, 'x'));
    for (const std::size_t block : {16U, 24U, 32U}) {
        for (const std::size_t keyLength : {16U, 24U, 32U}) {
            const Words given = {"--mode",  "cfb",
                                 "--block", std::to_string(block),
                                 "--key",   std::string(2 * keyLength, 'A'),
                                 "--chain", std::string(2 * block, 'b')};
            outputOfKfl(Words{"encrypt"} + given + files("in", "coded"));
            const std::size_t whole = (100 + block - 1) / block * block;
            EXPECT_EQ(content("coded").size(), whole);
            outputOfKfl(Words{"decrypt"} + given + files("coded", "back"));
            EXPECT_EQ(content("back"), std::string(100, 'x') + std::string(whole - 100, '\xFF'));
        }
    }
}

TEST_F(KflCipherTest, PaddingStaysAtTheEnd) {
    folder.write("in", "0123456789");
    outputOfKfl(Words{"encrypt"} + cbc + files("in", "coded"));
    outputOfKfl(Words{"decrypt"} + cbc + files("coded", "back"));
    EXPECT_EQ(content("back"), "0123456789\xFF\xFF\xFF\xFF\xFF\xFF");
}

TEST_F(KflCipherTest, KeyComesFromAFileOrTheEnvironment) {
    folder.write("in", plain);
    for (const std::string& line : {key, key + "\n", key + "\r\nmore\n"}) {
        const std::string keyFile = folder.write("key", line);
        outputOfKfl(Words{"encrypt", "--mode", "ecb", "--key-file", keyFile} +
                    files("in", "coded"));
        EXPECT_EQ(hex("coded"), "3ad77bb40d7a3660a89ecaf32466ef97");
    }
    setenv("KFL_TEST_KEY", key.c_str(), 1);
    outputOfKfl(Words{"encrypt", "--mode", "ecb", "--key-env", "KFL_TEST_KEY"} +
                files("in", "other"));
    unsetenv("KFL_TEST_KEY");
    EXPECT_EQ(hex("other"), "3ad77bb40d7a3660a89ecaf32466ef97");
}

TEST_F(KflCipherTest, MissingKeyIsAFailure) {
    folder.write("in", plain);
    const std::string missing = folder / "no key";
    expectFailure(Words{"encrypt", "--mode", "ecb", "--key-file", missing} + files("in", "out"),
                  missing + ": No such file or directory");
    const std::string empty = folder.write("empty", "");
    expectFailure(Words{"encrypt", "--mode", "ecb", "--key-file", empty} + files("in", "out"),
                  empty + ": no key in it");
    expectFailure(Words{"encrypt", "--mode", "ecb", "--key-env", "KFL_NO_KEY"} + files("in", "out"),
                  "no environment variable KFL_NO_KEY");
    EXPECT_FALSE(std::filesystem::exists(folder / "out"));
}

TEST_F(KflCipherTest, WrongLengthsAreRefusedBeforeTheOutputIsTouched) {
    for (const std::string command : {"encrypt", "decrypt"}) {
        for (const std::size_t bytes : {0U, 8U, 15U, 17U, 20U, 33U, 64U}) {
            expectRefusal(command, {"--mode", "ecb", "--key", std::string(2 * bytes, '0')},
                          "the key must have 16, 24 or 32 bytes, not " + std::to_string(bytes));
        }
        for (const std::size_t bytes : {0U, 15U, 24U}) {
            expectRefusal(command,
                          {"--mode", "cbc", "--key", key, "--chain", std::string(2 * bytes, '0')},
                          "the chain block must have 16 bytes, not " + std::to_string(bytes));
        }
        expectRefusal(command, cbc + Words{"--block", "32"},
                      "the chain block must have 32 bytes, not 16");
        expectRefusal(command, cbc + Words{"--block", "20"}, "a block has 16, 24 or 32 bytes");
        expectRefusal(command, cbc + Words{"--block", "8"}, "N must be a number from 16 to 32");
    }
}

TEST_F(KflCipherTest, WhatIsNoHexadecimalTextIsRefusedAndNotShown) {
    for (const std::string& wrong :
         {key + "0", key.substr(1), "g" + key.substr(1), key.substr(1) + " ", "0x" + key}) {
        expectRefusal("encrypt", {"--mode", "ecb", "--key", wrong},
                      "kfl encrypt: the key must be pairs of hexadecimal digits");
        expectRefusal("encrypt", {"--mode", "cbc", "--key", key, "--chain", wrong},
                      "the chain block must be pairs of hexadecimal digits");
    }
}

TEST_F(KflCipherTest, MissingAndRepeatedOptionsAreRefused) {
    expectRefusal("encrypt", {"--key", key}, "give a --mode");
    expectRefusal("encrypt", {"--mode", "ecb"}, "give one of --key, --key-file and --key-env");
    expectRefusal("decrypt", {"--mode", "ecb", "--key", key, "--key", key}, "give one of --key");
    expectRefusal("decrypt", {"--mode", "cfb", "--key", key}, "cbc and cfb need a --chain");
    expectRefusal("decrypt", {"--mode", "ctr", "--key", key}, "'ctr' is none of ecb, cbc and cfb");
    expectRefusal("decrypt", cbc + Words{"third"}, "too many arguments");
}

TEST_F(KflCipherTest, InputThatCannotBeTakenLeavesTheOutputAlone) {
    folder.write("out", "as before");
    folder.write("empty", "");
    folder.write("part", "0123456789");
    for (const std::string command : {"encrypt", "decrypt"}) {
        expectFailure(Words{command} + cbc + files("missing", "out"),
                      (folder / "missing") + ": No such file or directory");
        expectFailure(Words{command} + cbc + files("", "out"), (folder / "") + ": Is a directory");
        expectFailure(Words{command} + cbc + files("empty", "out"), (folder / "empty") + ": empty");
        expectFailure(Words{command} + cbc + Words{"/dev/null", folder / "out"},
                      "/dev/null: not a regular file");
    }
    expectFailure(Words{"decrypt"} + cbc + files("part", "out"),
                  (folder / "part") + ": no whole blocks of 16 bytes");
    EXPECT_EQ(content("out"), "as before");
}

TEST_F(KflCipherTest, InputIsNotOverwritten) {
    folder.write("in", plain);
    std::filesystem::create_hard_link(folder / "in", folder / "link");
    for (const std::string out : {"in", "link"}) {
        expectFailure(Words{"encrypt"} + cbc + files("in", out),
                      (folder / "in") + " and " + (folder / out) + " are one file");
    }
    EXPECT_EQ(content("in"), plain);
}

TEST_F(KflCipherTest, OutputThatCannotBeWrittenIsAFailure) {
    folder.write("in", plain);
    expectFailure(Words{"encrypt"} + cbc + files("in", "no/out"),
                  (folder / "no/out") + ": No such file or directory");
    expectFailure(Words{"encrypt"} + cbc + files("in", ""), (folder / "") + ": Is a directory");
}

TEST_F(KflCipherTest, OutputThatIsCutIsAFailure) {
    folder.write("in", std::string(1 << 20, 'x'));
    const kfl_test::ProgramResult result = kfl_test::runProgram(
        Words{"sh", "-c", "trap '' XFSZ; ulimit -f 100; exec \"$@\"", "sh"} +
        kfl_test::wordsOf(KFL_PROGRAM) + Words{"encrypt"} + cbc + files("in", "out"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "kfl: " + (folder / "out") + ": not written whole\n");
}

TEST_F(KflCipherTest, ResultMayGoToAPipe) {
    folder.write("in", plain);
    const kfl_test::ProgramResult result = kfl_test::runProgram(
        Words{"sh", "-c", "\"$@\" | cat", "sh"} + kfl_test::wordsOf(KFL_PROGRAM) +
        Words{"encrypt", "--mode", "ecb", "--key", key, folder / "in", "/dev/stdout"});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "\x3a\xd7\x7b\xb4\x0d\x7a\x36\x60\xa8\x9e\xca\xf3\x24\x66\xef\x97");
}

}  // namespace
