// Files exchanged with the command `openssl enc`, both ways.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>

#include "tests/crypto/cipher_support.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::Keyed;
using kfl_test::Random;
using kfl_test::Rijndael;
using kfl_test::toHex;

struct Kind {
    const char* name;
    std::size_t keyLength;
    int mode;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class RijndaelOpensslEncTest : public testing::TestWithParam<Kind> {
  protected:
    RijndaelOpensslEncTest()
        : key(randomBytes(random, GetParam().keyLength)),
          chain(randomBytes(random, 16)),
          text(randomBytes(random, 16 * 5000)),
          textFile(folder.write("text", std::string(text.begin(), text.end()))),
          codedFile(folder / "coded"),
          resultFile(folder / "result") {}

    // Runs the command without padding.
    void enc(const std::string& direction, const std::string& in, const std::string& out) const {
        std::string command = std::string("'") + KFL_OPENSSL + "' enc -" + GetParam().name + ' ' +
                              direction + " -nopad -K " + toHex(key) + " -in '" + in + "' -out '" +
                              out + '\'';
        if (GetParam().mode != Rijndael::modeECB) command += " -iv " + toHex(chain);
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
    Bytes result() const {
        std::ifstream file(resultFile, std::ios::binary);
        Bytes content(text.size() + 1);
        file.read(chars(content), static_cast<std::streamsize>(content.size()));
        content.resize(static_cast<std::size_t>(file.gcount()));
        return content;
    }

    Random random;
    kfl_test::TemporaryFolder folder;
    Bytes key;
    Bytes chain;
    Bytes text;
    std::string textFile;
    std::string codedFile;
    std::string resultFile;
};

TEST_P(RijndaelOpensslEncTest, CommandDeciphersWhatTheLibraryEnciphered) {
    Keyed(key, chain)->encryptFile(textFile.c_str(), codedFile.c_str(), GetParam().mode);
    enc("-d", codedFile, resultFile);
    EXPECT_TRUE(result() == text);
}

TEST_P(RijndaelOpensslEncTest, LibraryDeciphersWhatTheCommandEnciphered) {
    enc("-e", textFile, codedFile);
    Keyed(key, chain)->decryptFile(codedFile.c_str(), resultFile.c_str(), GetParam().mode);
    EXPECT_TRUE(result() == text);
}

INSTANTIATE_TEST_SUITE_P(All, RijndaelOpensslEncTest,
                         testing::Values(Kind{"aes-128-ecb", 16, Rijndael::modeECB},
                                         Kind{"aes-192-ecb", 24, Rijndael::modeECB},
                                         Kind{"aes-256-ecb", 32, Rijndael::modeECB},
                                         Kind{"aes-128-cbc", 16, Rijndael::modeCBC},
                                         Kind{"aes-192-cbc", 24, Rijndael::modeCBC},
                                         Kind{"aes-256-cbc", 32, Rijndael::modeCBC},
                                         Kind{"aes-128-cfb", 16, Rijndael::modeCFB},
                                         Kind{"aes-192-cfb", 24, Rijndael::modeCFB},
                                         Kind{"aes-256-cfb", 32, Rijndael::modeCFB}));

}  // namespace
