// The Monte Carlo procedure with answers that another implementation gave.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/crypto/monte_carlo.h"

namespace {

using kfl_test::Rijndael;
using kfl_test::toHex;

struct Answer {
    const char* name;
    int keyLength;
    int mode;
    const char* enciphered;
    const char* deciphered;
};

void PrintTo(const Answer& answer, std::ostream* out) { *out << answer.name; }

class RijndaelMonteCarloTest : public testing::TestWithParam<Answer> {
  protected:
    static std::string last(bool enciphering) {
        const Answer& answer = GetParam();
        return toHex(kfl_test::monteCarlo(kfl_test::makeBlockByBlock,
                                          kfl_test::monteCarloStart(answer.keyLength), answer.mode,
                                          enciphering));
    }
};

TEST_P(RijndaelMonteCarloTest, EnciphersToTheKnownAnswer) {
    EXPECT_EQ(last(true), GetParam().enciphered);
}

TEST_P(RijndaelMonteCarloTest, DeciphersToTheKnownAnswer) {
    EXPECT_EQ(last(false), GetParam().deciphered);
}

constexpr int ecb = Rijndael::modeECB;
constexpr int cbc = Rijndael::modeCBC;
constexpr int cfb = Rijndael::modeCFB;

INSTANTIATE_TEST_SUITE_P(
    Known, RijndaelMonteCarloTest,
    testing::Values(Answer{"ECB128", 16, ecb, "0ad6044744b88dfed2938f3fcfa41520",
                           "5cfbddd28e4a783ff36b548f988635d9"},
                    Answer{"ECB192", 24, ecb, "bf202f4bb6b7bfb150cc437d5a3e519f",
                           "b9e7f8474accafe6e9a20b69546f8d45"},
                    Answer{"ECB256", 32, ecb, "a9b33b7b049d2b7bddebeec5b7064a05",
                           "6430436599d083285be8327527634ac8"},
                    Answer{"CBC128", 16, cbc, "952a4e8cb928524093b2b838dfdbb783",
                           "9f4e25a5db4e6d6dbae2704fa880fd18"},
                    Answer{"CBC192", 24, cbc, "3671e19a5465c97630d8eae6e109f800",
                           "0f3c69f4b7248adcfeea622f0535daa3"},
                    Answer{"CBC256", 32, cbc, "f1c2fe24b0e434d3b518d9555a2ce286",
                           "bd0c809643b746739becae22bd32398f"},
                    Answer{"CFB128", 16, cfb, "37939f85f67aa480f1b24567e8a47153",
                           "6df166ced42777370fa6d276327b6ffd"},
                    Answer{"CFB192", 24, cfb, "0530b4f629834633529383bb04028165",
                           "8485f60cb874873963b0e3bfb7039e91"},
                    Answer{"CFB256", 32, cfb, "b67b766573de139c38cb0cc55c35b888",
                           "6c0845780f6b508abb102e3884334dfc"}));

}  // namespace
