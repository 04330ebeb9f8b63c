// Cipher files; events, which ask nobody for anything that could fail.
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/Rijndael.h"
#include "kfl/syslog_events.h"
#include "tests/faults/exhaust.h"
#include "tests/faults/reported_errors.h"
#include "tests/os/children.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::AES::Rijndael;
using kfl_test::Attempt;
using kfl_test::beginsWith;
using kfl_test::contentOf;
using kfl_test::exhaust;
using kfl_test::lastError;

const char key[17] = "0123456789abcdef";

void makeKey(Rijndael& cipher) { cipher.makeKey(key, Rijndael::_nullchain, 16, 16); }

using Operation = void (Rijndael::*)(const char*, const char*, int);

class CipherFaults : public testing::Test {
  protected:
    std::string run(Operation operation, const std::string& from) {
        Rijndael cipher;
        makeKey(cipher);
        (cipher.*operation)(from.c_str(), out_.c_str(), Rijndael::modeCBC);
        return contentOf(out_);
    }

    void tryAll(const char* name, Operation operation, const std::string& from) {
        const std::string whole = run(operation, from);
        exhaust(name, [&](Attempt& attempt) {
            folder_.write("out", "before");
            Rijndael cipher;
            makeKey(cipher);
            attempt([&] { (cipher.*operation)(from.c_str(), out_.c_str(), Rijndael::modeCBC); });
            check(attempt, whole);
            EXPECT_TRUE(run(operation, from) == whole) << "a second try";
        });
    }

    // What a failure leaves in the output, and what is told of it.
    void check(const Attempt& attempt, const std::string& whole) const {
        const std::string written = contentOf(out_);
        const std::string told = lastError();
        if (attempt.failed("fopen")) {
            EXPECT_TRUE(beginsWith(told, "Unable to ")) << told;
            EXPECT_EQ(written, "before");
        } else if (attempt.threw()) {
            EXPECT_EQ(written, "");
        } else if (attempt.failed("fread") || attempt.didPart("fread")) {
            EXPECT_EQ(written.size(), whole.size()) << "what was not read is filled up";
            EXPECT_EQ(told, "");
        } else if (attempt.failed("fwrite") || attempt.didPart("fwrite")) {
            EXPECT_TRUE(written.size() < whole.size() && beginsWith(whole, written))
                << "nothing is written behind a gap";
        } else {
            EXPECT_TRUE(written == whole);
            EXPECT_EQ(told, "");
        }
    }

    kfl_test::TemporaryFolder folder_;
    std::string out_ = folder_ / "out";
};

TEST_F(CipherFaults, Files) {
    std::string text;
    while (text.size() < 60000) text += std::to_string(text.size());
    const std::string small = folder_.write("small", text.substr(0, 10));
    const std::string large = folder_.write("large", text);
    tryAll("cipher: a small file enciphered", &Rijndael::encryptFile, small);
    tryAll("cipher: a large file enciphered", &Rijndael::encryptFile, large);
    tryAll("cipher: a large file deciphered", &Rijndael::decryptFile, large);
}

// It has no length, which is told as an empty file is; so it is where that is not to be had.
TEST_F(CipherFaults, ADeviceForAFile) {
    run(&Rijndael::encryptFile, "/dev/null");
    exhaust("cipher: a device enciphered", [&](Attempt& attempt) {
        folder_.write("out", "before");
        Rijndael cipher;
        makeKey(cipher);
        attempt([&] { cipher.encryptFile("/dev/null", out_.c_str(), Rijndael::modeCBC); });
        if (attempt.failed("fopen")) {
            EXPECT_TRUE(beginsWith(lastError(), "Unable to ")) << lastError();
            EXPECT_EQ(contentOf(out_), "before");
        } else {
            EXPECT_STREQ(lastError(), attempt.threw() ? "" : "Data not multiple of Block Size");
            EXPECT_EQ(contentOf(out_), "");
        }
    });
}

TEST(EventFaults, EventsAndBlocksAskNobodyForAnything) {
    Rijndael cipher;
    char block[16] = {};
    const kfl_test::Injection watched(kfl_test::Fault{});
    raiseSyslogEvent(7, 1, 2, 3, "", 0, "faults test");
    raiseSyslogAlarm(7, true, 1, 2, 3, "", 0, "faults test");
    makeKey(cipher);
    cipher.encrypt(block, block, 16, Rijndael::modeCFB);
    cipher.decrypt(block, block, 16, Rijndael::modeECB);
    EXPECT_EQ(kfl_test::Injection::result().calls, 0U);
}

}  // namespace
