// The tables, entry by entry, against arithmetic of the tests' own.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>

#include "tests/crypto/cipher_support.h"

namespace {

using kfl::AES::Rijndael;
using kfl_test::product;
using kfl_test::ReferenceTables;

static_assert(std::is_same<decltype(Rijndael::_alog), const int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_log), const int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_S), const unsigned char[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_Si), const unsigned char[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_T1), const unsigned int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_T8), const unsigned int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_U1), const unsigned int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_U4), const unsigned int[256]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_rcon), const unsigned char[30]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_shifts), const int[3][4][2]>::value, "");
static_assert(std::is_same<decltype(Rijndael::_ErrorMsg1), const char* const>::value, "");
static_assert(std::is_same<decltype(Rijndael::_ErrorMsg2), const char* const>::value, "");
static_assert(std::is_same<decltype(Rijndael::_nullchain), const char* const>::value, "");

// Four products as a word, the first most significant.
unsigned word(unsigned a, unsigned f0, unsigned f1, unsigned f2, unsigned f3) {
    return product(a, f0) << 24 | product(a, f1) << 16 | product(a, f2) << 8 | product(a, f3);
}

unsigned rotated(unsigned w, unsigned bits) {
    const std::uint64_t twice = std::uint64_t{w} << 32 | w;
    return static_cast<unsigned>(twice >> bits);
}

// A table of the first word's rule, and its three rotations.
void expectRotations(const unsigned (&first)[256], const unsigned (&second)[256],
                     const unsigned (&third)[256], const unsigned (&fourth)[256],
                     unsigned (*rule)(unsigned)) {
    for (unsigned a = 0; a < 256; ++a) {
        EXPECT_EQ(first[a], rule(a)) << a;
        EXPECT_EQ(second[a], rotated(rule(a), 8)) << a;
        EXPECT_EQ(third[a], rotated(rule(a), 16)) << a;
        EXPECT_EQ(fourth[a], rotated(rule(a), 24)) << a;
    }
}

TEST(RijndaelTablesTest, PowersAreThoseOfTheGenerator) {
    unsigned power = 1;
    for (const int entry : Rijndael::_alog) {
        EXPECT_EQ(static_cast<unsigned>(entry), power);
        power = product(power, 3);
    }
    EXPECT_EQ(Rijndael::_alog[0], 1);
    EXPECT_EQ(Rijndael::_alog[1], 3);
    EXPECT_EQ(Rijndael::_alog[2], 5);
    EXPECT_EQ(Rijndael::_alog[3], 15);
}

TEST(RijndaelTablesTest, LogarithmsInvertThePowers) {
    for (int i = 0; i < 255; ++i) EXPECT_EQ(Rijndael::_log[Rijndael::_alog[i]], i);
    EXPECT_EQ(Rijndael::_log[0], 0);
    EXPECT_EQ(Rijndael::_log[1], 0);
}

TEST(RijndaelTablesTest, SubstitutionIsReciprocalAndAffineMap) {
    for (unsigned a = 0; a < 256; ++a) {
        EXPECT_EQ(Rijndael::_S[a], kfl_test::substitution(a)) << a;
        EXPECT_EQ(Rijndael::_Si[Rijndael::_S[a]], a);
    }
    EXPECT_EQ(Rijndael::_S[0], 0x63);
    EXPECT_EQ(Rijndael::_S[0x53], 0xED);
    EXPECT_EQ(Rijndael::_Si[0], 0x52);
}

TEST(RijndaelTablesTest, EncipheringTablesMixSubstitutedBytes) {
    expectRotations(Rijndael::_T1, Rijndael::_T2, Rijndael::_T3, Rijndael::_T4,
                    [](unsigned a) { return word(ReferenceTables::get().s[a], 2, 1, 1, 3); });
    EXPECT_EQ(Rijndael::_T1[0], 0xC66363A5U);
}

TEST(RijndaelTablesTest, DecipheringTablesMixSubstitutedBytes) {
    expectRotations(Rijndael::_T5, Rijndael::_T6, Rijndael::_T7, Rijndael::_T8, [](unsigned a) {
        return word(ReferenceTables::get().inverse[a], 14, 9, 13, 11);
    });
    EXPECT_EQ(Rijndael::_T5[0], 0x51F4A750U);
}

TEST(RijndaelTablesTest, UnmixingTablesMixPlainBytes) {
    expectRotations(Rijndael::_U1, Rijndael::_U2, Rijndael::_U3, Rijndael::_U4,
                    [](unsigned a) { return word(a, 14, 9, 13, 11); });
    EXPECT_EQ(Rijndael::_U1[0], 0U);
    EXPECT_EQ(Rijndael::_U1[1], 0x0E090D0BU);
}

TEST(RijndaelTablesTest, RoundConstantsAreSuccessiveDoublings) {
    constexpr unsigned char expected[30] = {
        0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0x1B, 0x36, 0x6C, 0xD8, 0xAB, 0x4D, 0x9A,
        0x2F, 0x5E, 0xBC, 0x63, 0xC6, 0x97, 0x35, 0x6A, 0xD4, 0xB3, 0x7D, 0xFA, 0xEF, 0xC5, 0x91};
    for (int i = 0; i < 30; ++i) EXPECT_EQ(Rijndael::_rcon[i], expected[i]) << i;
}

TEST(RijndaelTablesTest, ShiftsAreThereAndBackByBlockSizeAndRow) {
    constexpr int expected[3][4][2] = {{{0, 0}, {1, 3}, {2, 2}, {3, 1}},
                                       {{0, 0}, {1, 5}, {2, 4}, {3, 3}},
                                       {{0, 0}, {1, 7}, {3, 5}, {4, 4}}};
    EXPECT_EQ(std::memcmp(Rijndael::_shifts, expected, sizeof expected), 0);
}

TEST(RijndaelTablesTest, TextsAndTheChainOfZeros) {
    EXPECT_STREQ(Rijndael::_ErrorMsg1, "Object not Initialized");
    EXPECT_STREQ(Rijndael::_ErrorMsg2, "Data not multiple of Block Size");
    EXPECT_EQ(std::string(Rijndael::_nullchain, 32), std::string(32, '\0'));
}

// Whether the page at an address may be written to.
bool isWritable(const void* address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::size_t used = 0;
        const std::uint64_t begin = std::stoull(line, &used, 16);
        const std::uint64_t end = std::stoull(line.substr(used + 1), &used, 16);
        const auto at = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(address));
        if (begin <= at && at < end) return line[line.find(' ') + 2] == 'w';
    }
    ADD_FAILURE() << "no such page";
    return true;
}

TEST(RijndaelTablesTest, TablesLieInReadOnlyMemory) {
    int here = 0;
    EXPECT_TRUE(isWritable(&here));
    for (const void* table :
         {static_cast<const void*>(Rijndael::_alog), static_cast<const void*>(Rijndael::_log),
          static_cast<const void*>(Rijndael::_S), static_cast<const void*>(Rijndael::_Si),
          static_cast<const void*>(Rijndael::_T1), static_cast<const void*>(Rijndael::_T8),
          static_cast<const void*>(Rijndael::_U1), static_cast<const void*>(Rijndael::_rcon),
          static_cast<const void*>(Rijndael::_shifts),
          static_cast<const void*>(Rijndael::_nullchain)})
        EXPECT_FALSE(isWritable(table));
}

}  // namespace
