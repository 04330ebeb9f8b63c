#include "kfl/BoundedStringBase.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/core/format_model.h"
#include "tests/core/random_formats.h"
#include "tests/support/guarded_page.h"
#include "tests/support/seed.h"

namespace {

using B = BoundedStringBase;

constexpr char mark = '\x7E';

template <class AnyRow>
std::string nameOf(const testing::TestParamInfo<AnyRow>& info) {
    return info.param.name;
}

// ---- makeString, row by row

struct Row {
    const char* name;
    std::string expected;
    std::function<int(char* buf, unsigned int size)> make;
};

template <class... Arguments>
Row row(const char* name, std::string expected, const char* format, Arguments... arguments) {
    return {name, std::move(expected), [format, arguments...](char* buf, unsigned int size) {
                return B::format(buf, size, format, arguments...);
            }};
}

const char* const noText = nullptr;
// Texts that are not terminated.
const char abc[] = {'a', 'b', 'c'};

void* address(std::uintptr_t value) { return reinterpret_cast<void*>(value); }

// The same number in both widths of a long.
std::string byWordSize(const char* in32, const char* in64) {
    return sizeof(long) == 4 ? in32 : in64;
}

const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        // Plain text.
        row("EmptyFormat", "", ""),
        row("PlainText", "a plain text\n", "a plain text\n"),
        row("BytesAbove127AreCopied", "\xFF\x80\xE4", "\xFF\x80\xE4"),
        row("TextAroundADirective", "<7>", "<%d>", 7),
        row("DirectivesSideBySide", "123", "%d%d%d", 1, 2, 3),
        row("NullFormatIsEmpty", "", nullptr),

        // Conversions.
        row("SignedDecimal", "42", "%d", 42),
        row("SignedDecimalOfNegative", "-42", "%d", -42),
        row("SignedDecimalByI", "-42", "%i", -42),
        row("SignedDecimalOfZero", "0", "%d", 0),
        row("SignedDecimalOfTheLeast", "-2147483648", "%d", INT_MIN),
        row("SignedDecimalOfTheLargest", "2147483647", "%d", INT_MAX),
        row("UnsignedDecimal", "42", "%u", 42U),
        row("UnsignedDecimalOfMinusOne", "4294967295", "%u", -1),
        row("Octal", "777", "%o", 511),
        row("OctalOfMinusOne", "37777777777", "%o", -1),
        row("Hexadecimal", "ff", "%x", 255),
        row("HexadecimalOfMinusOne", "ffffffff", "%x", -1),
        row("LargeHexadecimal", "FF", "%X", 255),
        row("LargeHexadecimalDigits", "89ABCDEF", "%X", 0x89ABCDEFU),
        row("SmallHexadecimalDigits", "89abcdef", "%x", 0x89ABCDEFU),
        row("Character", "A", "%c", 'A'),
        row("CharacterIsOneByteOfTheInt", "A", "%c", 0x1241),
        row("CharacterNulIsStored", std::string("a\0b", 3), "a%cb", 0),
        row("Text", "abc", "%s", "abc"),
        row("TextEmpty", "", "%s", ""),
        row("TextNull", "<NULL>", "%s", noText),
        row("Percent", "%", "%%"),
        row("PercentIgnoresFlagsWidthAndPrecision", "%|%|%", "%5%|%-05.3%|%l%"),
        row("PercentTakesAWidthArgumentAlone", "%7", "%*%%d", 5, 7),

        // Pointers.
        row("PointerHasEightDigits", "0000beef", "%p", address(0xBEEF)),
        row("PointerOfAllEightDigits", "fedcba98", "%p", address(0xFEDCBA98U)),
        row("PointerNull", "00000000", "%p", address(0)),
        row("PointerWithAWidthIsNotPaddedWithZeros", "    beef", "%8p", address(0xBEEF)),
        row("PointerWithAWidthAndZeroFlag", "00beef", "%06p", address(0xBEEF)),
        row("PointerWithASmallWidth", "beef", "%1p", address(0xBEEF)),
        row("PointerWithAWidthOfZero", "beef", "%*p", 0, address(0xBEEF)),
        row("PointerLeftWithoutAWidth", "beef    |", "%-p|", address(0xBEEF)),
        row("PointerWithPrefix", "0x00beef", "%#p", address(0xBEEF)),
        row("PointerWithPrecision", "00000bee 0000000bee", "%.5p %.10p", address(0xBEE),
            address(0xBEE)),
        row("PointerIgnoresPlusAndSpace", "0000beef", "%+ p", address(0xBEEF)),
        row("PointerIgnoresQualifiers", "0000beef 0000beef", "%hp %lp", address(0xBEEF),
            address(0xBEEF)),
        row("PointerOfMinusOneShowsAllDigits", byWordSize("ffffffff", "ffffffffffffffff"), "%p",
            address(UINTPTR_MAX)),

        // Width.
        row("WidthPadsOnTheLeft", "   42", "%5d", 42),
        row("WidthCountsTheSign", "  -42", "%5d", -42),
        row("WidthSmallerThanTheNumber", "12345", "%3d", 12345),
        row("WidthEqualToTheNumber", "123", "%3d", 123),
        row("WidthOfSeveralDigits", "           x", "%12s", "x"),
        row("WidthFromAnArgument", "   42", "%*d", 5, 42),
        row("WidthNegativeFromAnArgumentIsLeft", "42   |", "%*d|", -5, 42),
        row("WidthNegativeDropsZeroPadding", "42   |", "%0*d|", -5, 42),
        row("WidthZeroFromAnArgument", "42", "%*d", 0, 42),
        row("WidthOfACharacter", "  A", "%3c", 'A'),
        row("WidthOfACharacterLeft", "A  |", "%-3c|", 'A'),
        row("WidthOfACharacterIsNeverZeros", "  A", "%03c", 'A'),
        row("WidthOfAText", "  abc", "%5s", "abc"),
        row("WidthOfATextLeft", "abc  |", "%-5s|", "abc"),
        row("WidthOfATextIsNeverZeros", "  abc", "%05s", "abc"),
        row("WidthOfANullText", "  <NULL>", "%8s", noText),
        row("WidthDigitsAfterAStarAreNoConversion", "%5d", "%*5d", 1),

        // Precision.
        row("PrecisionPadsWithZeros", "00042", "%.5d", 42),
        row("PrecisionDoesNotCountTheSign", "-00042", "%.5d", -42),
        row("PrecisionSmallerThanTheNumber", "12345", "%.3d", 12345),
        row("PrecisionZeroShowsZero", "0", "%.0d", 0),
        row("PrecisionWithoutDigitsIsZero", "0", "%.d", 0),
        row("PrecisionAndWidth", "  00042", "%7.5d", 42),
        row("PrecisionAndWidthLeft", "00042  |", "%-7.5d|", 42),
        row("PrecisionAndZeroFlagPadWithZeros", "0000042", "%07.5d", 42),
        row("PrecisionFromAnArgument", "00042", "%.*d", 5, 42),
        row("PrecisionNegativeIsZero", "42 ", "%.*d %.*s", -5, 42, -1, "abc"),
        row("PrecisionNegativeInTheFormatIsNone", "%-5d", "%.-5d"),
        row("PrecisionCutsAText", "abc", "%.3s", "abcdef"),
        row("PrecisionLargerThanAText", "abc", "%.9s", "abc"),
        row("PrecisionZeroShowsNoText", "||", "|%.0s|", "abc"),
        row("PrecisionWithoutDigitsShowsNoText", "||", "|%.s|", "abc"),
        row("PrecisionAndWidthOfAText", "   ab|", "%5.2s|", "abc"),
        row("PrecisionAndWidthOfATextLeft", "ab   |", "%-5.2s|", "abc"),
        row("PrecisionCutsANullText", "<NU", "%.3s", noText),
        row("PrecisionZeroOfANullText", "", "%.0s", noText),
        row("PrecisionReadsNoFurther", "abc", "%.3s", abc),
        row("PrecisionFromAnArgumentReadsNoFurther", "abc", "%.*s", 3, abc),
        row("PrecisionOfACharacterIsIgnored", "A", "%.0c", 'A'),
        row("PrecisionOfHexadecimal", "00ff", "%.4x", 255),
        row("PrecisionWithPrefix", "0x00ff", "%#.4x", 255),
        row("PrecisionWithOctalPrefix", "00010", "%#.4o", 8),
        row("PrecisionTakesWidthAndPrecisionArgumentsInOrder", "  00042", "%*.*d", 7, 5, 42),

        // Flags.
        row("FlagZero", "00042", "%05d", 42),
        row("FlagZeroOfNegative", "-0042", "%05d", -42),
        row("FlagZeroOfHexadecimal", "000000ff", "%08x", 255),
        row("FlagZeroWithoutWidth", "42", "%0d", 42),
        row("FlagMinus", "42   |", "%-5d|", 42),
        row("FlagMinusBeatsZero", "42   |", "%-05d|", 42),
        row("FlagMinusAfterZeroBeatsIt", "42   |", "%0-5d|", 42),
        row("FlagPlus", "+7", "%+d", 7),
        row("FlagPlusOfZero", "+0", "%+d", 0),
        row("FlagPlusOfNegative", "-7", "%+d", -7),
        row("FlagPlusByI", "+7", "%+i", 7),
        row("FlagSpace", " 7", "% d", 7),
        row("FlagSpaceOfNegative", "-7", "% d", -7),
        row("FlagPlusBeatsSpace", "+7 +7", "%+ d % +d", 7, 7),
        row("FlagPlusAndSpaceOfUnsigned", "7 7 7 7", "%+u % u %+x % o", 7, 7, 7, 7),
        row("FlagPlusTakesAColumn", "  +7", "%+4d", 7),
        row("FlagPlusWithZeros", "+007", "%+04d", 7),
        row("FlagSpaceWithZeros", " 007", "% 04d", 7),
        row("FlagSpaceLeft", " 7  |", "%- 4d|", 7),
        row("FlagSpecialHexadecimal", "0xff", "%#x", 255),
        row("FlagSpecialLargeHexadecimal", "0XFF", "%#X", 255),
        row("FlagSpecialOctal", "010", "%#o", 8),
        row("FlagSpecialOfZero", "0x0 00 0X0", "%#x %#o %#X", 0, 0, 0),
        row("FlagSpecialDecimalHasNoPrefix", "7 7 7", "%#d %#u %#i", 7, 7, 7),
        row("FlagSpecialTakesColumns", "  0xff", "%#6x", 255),
        row("FlagSpecialOctalTakesAColumn", "   010", "%#6o", 8),
        row("FlagSpecialWithZeros", "0x00ff", "%#06x", 255),
        row("FlagSpecialOctalWithZeros", "000010", "%#06o", 8),
        row("FlagSpecialLeft", "0xff  |", "%-#6x|", 255),
        row("FlagsInAnyOrderAndNumber", "+7  |", "%0-++ - 4d|", 7),
        row("FlagsOfTextAndCharacterAreIgnored", "abc A", "%+ #0s %+ #0c", "abc", 'A'),

        // Qualifiers.
        row("QualifierShortSigned", "-1", "%hd", 65535),
        row("QualifierShortSignedByI", "-32768", "%hi", 32768),
        row("QualifierShortOfNegative", "-2", "%hd", -2),
        row("QualifierShortCutsHighBits", "2", "%hd", 0x10002),
        row("QualifierShortUnsigned", "65535", "%hu", -1),
        row("QualifierShortHexadecimal", "ffff", "%hx", -1),
        row("QualifierShortLargeHexadecimal", "FFFF", "%hX", -1),
        row("QualifierShortOctal", "177777", "%ho", -1),
        row("QualifierShortPlus", "+1", "%+hd", 65537),
        row("QualifierLong", "2147483647 -2147483648", "%ld %li", 2147483647L, -2147483647L - 1),
        row("QualifierLongGreatest", byWordSize("2147483647", "9223372036854775807"), "%ld",
            LONG_MAX),
        row("QualifierLongLeast", byWordSize("-2147483648", "-9223372036854775808"), "%ld",
            LONG_MIN),
        row("QualifierLongUnsigned", byWordSize("4294967295", "18446744073709551615"), "%lu", -1L),
        row("QualifierLongHexadecimal", byWordSize("ffffffff", "ffffffffffffffff"), "%lx", -1L),
        row("QualifierLongOctal", byWordSize("37777777777", "1777777777777777777777"), "%lo", -1L),
        row("QualifierCapitalLIsALong", byWordSize("-2147483648 5", "-9223372036854775808 5"),
            "%Ld %d", LONG_MIN, 5),
        row("QualifierZIsALong", byWordSize("4294967295 5", "18446744073709551615 5"), "%Zu %d",
            -1L, 5),
        row("QualifierZTakesEveryInteger", "-1 ff FF 10", "%Zd %Zx %ZX %Zo", -1L, 255L, 255L, 8L),
        row("QualifierOfTextAndCharacterIsIgnored", "abc A abc A", "%ls %lc %hs %hc", "abc", 'A',
            "abc", 'A'),
        row("QualifierTwiceIsNoConversion", "%ld %hd %lu", "%lld %hhd %Zlu"),
        row("QualifierBeforeAWidthIsNoConversion", "%5d", "%l5d"),
        row("QualifiersOfOthersAreNone", "%qd %jd %td %zd", "%qd %jd %td %zd"),

        // Conversions that are none.
        row("UnknownConversion", "%q", "%q"),
        row("UnknownConversionDropsTheRest", "%q|", "%-+ #05.3lq|"),
        row("UnknownConversionTakesTheWidthArgument", "%q 7", "%*.*q %d", 1, 2, 7),
        row("UnknownFloatingPoint", "%f %e %g", "%f %5.2e %Lg"),
        row("UnknownByteAbove127", "%\xE4", "%\xE4"),
        row("UnknownLargeLetters", "%D %U %S %P", "%D %U %S %P"),
        row("FlagAfterTheWidthIsNoFlag", "%-d", "%5-d"),
        row("SecondPointIsNoConversion", "%.3d", "%.2.3d"),

        // Formats that end early.
        row("EndsAfterPercent", "ab%", "ab%"),
        row("EndsAfterFlags", "%", "%-+ #0"),
        row("EndsAfterWidth", "%", "%12"),
        row("EndsAfterWidthArgument", "%", "%*", 5),
        row("EndsAfterPoint", "%", "%."),
        row("EndsAfterPrecision", "%", "%5.12"),
        row("EndsAfterPrecisionArgument", "%", "%.*", 5),
        row("EndsAfterShort", "%", "%h"),
        row("EndsAfterLong", "%", "%5.3l"),

        // The usual mixture.
        row("LineOfALog", "agent/003-07-1|link 2 is down", "%s/%03d-%02d-%d|%s", "agent", 3, 7, 1,
            "link 2 is down"),
    };
    return all;
}

class BoundedStringBaseRows : public testing::TestWithParam<Row> {};

TEST_P(BoundedStringBaseRows, GivesTheText) {
    const Row& row = GetParam();
    std::vector<char> buf(500, mark);
    const int stored = row.make(buf.data(), 400);
    ASSERT_EQ(stored, static_cast<int>(row.expected.size()));
    EXPECT_EQ(std::string(buf.data(), row.expected.size()), row.expected);
    EXPECT_EQ(buf[row.expected.size()], '\0');
    EXPECT_EQ(buf[row.expected.size() + 1], mark);
}

TEST_P(BoundedStringBaseRows, GivesItsFrontInEverySmallerRoom) {
    const Row& row = GetParam();
    for (unsigned int size = 0; size <= row.expected.size() + 1; ++size) {
        const std::string front = row.expected.substr(0, size);
        std::vector<char> buf(row.expected.size() + 8, mark);
        ASSERT_EQ(row.make(buf.data(), size), static_cast<int>(front.size()));
        ASSERT_EQ(std::string(buf.data(), front.size()), front);
        ASSERT_EQ(buf[front.size()], '\0');
        ASSERT_EQ(buf[size + 1], mark) << "size " << size;
    }
}

INSTANTIATE_TEST_SUITE_P(All, BoundedStringBaseRows, testing::ValuesIn(rows()), nameOf<Row>);

// What 64 bits hold above an int is not part of it.
TEST(BoundedStringBaseTest, AnIntIsTheLowPartOfItsWord) {
    const long wide = static_cast<long>(0x7654321080000001U);
    for (const unsigned int room : {255U, 12U}) {
        char buf[256];
        for (const char* format : {"%u", "%1u", "%-u"}) {
            B::format(buf, room, format, wide);
            EXPECT_STREQ(buf, "2147483649") << format;
        }
        for (const char* format : {"%d", "%1d", "%-d", "%i"}) {
            B::format(buf, room, format, wide);
            EXPECT_STREQ(buf, "-2147483647") << format;
        }
        for (const char* format : {"%x", "%1x", "%-x"}) {
            B::format(buf, room, format, wide);
            EXPECT_STREQ(buf, "80000001") << format;
        }
    }
}

// Whatever stands behind them.
TEST(BoundedStringBaseTest, OtherCharactersAreNoConversionAndNoQualifier) {
    const std::string known = " #+-0123456789*.hlLZdiouxXcspn%";
    for (int c = 1; c < 256; ++c) {
        if (known.find(static_cast<char>(c)) != std::string::npos) continue;
        for (const char* rest : {"d", "5u", "ld", "s", "c"}) {
            const std::string format = std::string("%") + static_cast<char>(c) + rest;
            char buf[256];
            EXPECT_EQ(B::format(buf, 255, format.c_str()), static_cast<int>(format.size()));
            EXPECT_EQ(buf, format);
        }
    }
}

// ---- makeString, the bound

TEST(BoundedStringBaseTest, KeepsTheFrontOfWhatDoesNotFit) {
    char buf[7] = {mark, mark, mark, mark, mark, mark, mark};
    EXPECT_EQ(B::format(buf, 5, "abcdefgh"), 5);
    EXPECT_STREQ(buf, "abcde");
    EXPECT_EQ(buf[6], mark);
}

TEST(BoundedStringBaseTest, ASizeOfZeroLeavesRoomForTheTerminator) {
    char buf[2] = {mark, mark};
    EXPECT_EQ(B::format(buf, 0, "%d%s", 42, "abc"), 0);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_EQ(buf[1], mark);
}

TEST(BoundedStringBaseTest, TheLargestSizeIsNoTrouble) {
    char buf[16];
    EXPECT_EQ(B::format(buf, UINT_MAX, "%s-%d", "abc", 42), 6);
    EXPECT_STREQ(buf, "abc-42");
}

struct HugeRow {
    const char* name;
    const char* format;
    int width;
    char fill;
};

class BoundedStringBaseHuge : public testing::TestWithParam<HugeRow> {};

TEST_P(BoundedStringBaseHuge, FillsTheRoomAndNoMore) {
    const HugeRow& row = GetParam();
    char buf[22];
    std::memset(buf, mark, sizeof buf);
    EXPECT_EQ(B::format(buf, 20, row.format, row.width, 7), 20);
    EXPECT_EQ(std::string(buf), std::string(20, row.fill));
    EXPECT_EQ(buf[21], mark);
}

INSTANTIATE_TEST_SUITE_P(All, BoundedStringBaseHuge,
                         testing::Values(HugeRow{"Width", "%*d", INT_MAX, ' '},
                                         HugeRow{"ZeroWidth", "%0*d", INT_MAX, '0'},
                                         HugeRow{"Precision", "%.*d", INT_MAX, '0'},
                                         HugeRow{"CharacterWidth", "%*c", INT_MAX, ' '},
                                         HugeRow{"PointerWidth", "%*p", INT_MAX, ' '}),
                         nameOf<HugeRow>);

TEST(BoundedStringBaseTest, AHugeWidthInTheFormatCountsAsTheLargest) {
    char buf[11];
    EXPECT_EQ(B::format(buf, 10, "%99999999999999999999d", 7), 10);
    EXPECT_STREQ(buf, "          ");
    EXPECT_EQ(B::format(buf, 10, "%.4294967297d", 7), 10);
    EXPECT_STREQ(buf, "0000000000");
}

TEST(BoundedStringBaseTest, AHugeLeftWidthFillsBehindTheNumber) {
    char buf[11];
    for (const int width : {INT_MIN, INT_MIN + 1, -INT_MAX}) {
        EXPECT_EQ(B::format(buf, 10, "%*d|", width, 7), 10);
        EXPECT_STREQ(buf, "7         ");
    }
}

TEST(BoundedStringBaseTest, AHugePrecisionOfATextIsNoBound) {
    char buf[11];
    EXPECT_EQ(B::format(buf, 10, "%.2147483647s", "abc"), 3);
    EXPECT_STREQ(buf, "abc");
}

TEST(BoundedStringBaseTest, NeverTouchesWhatLiesBehindItsBytes) {
    const kfl_test::GuardedPage page;
    ASSERT_TRUE(page.isReady());
    kfl_test::Random random;
    const int count = kfl_test::rounds(20000);
    for (int i = 0; i < count; ++i) {
        const std::string format = kfl_test::anyFormat(random);
        const unsigned int size = random.below(random.oneIn(4) ? 300 : 24);
        kfl_test::RandomArguments arguments(random, false, false);
        const std::string model = kfl_test::ModelFormatter(size, format, arguments).run();
        const auto& list = arguments.all();
        if (list.size() > kfl_test::maxArguments) continue;
        char* const buf = page.last(std::size_t{size} + 1);
        *(buf - 1) = mark;
        const int stored = kfl_test::callWith(&B::format, buf, size, format.c_str(), list.data(),
                                              list.data() + list.size());
        ASSERT_EQ(std::string(buf, static_cast<std::size_t>(stored) + 1), model + '\0') << format;
        ASSERT_EQ(*(buf - 1), mark) << format;
    }
}

// Where they just fit, and where they just do not.
TEST(BoundedStringBaseTest, TheLongestNumbersTouchNothingBehindTheirBytes) {
    const kfl_test::GuardedPage page;
    ASSERT_TRUE(page.isReady());
    const auto expect = [&page](const char* format, long num, const std::string& whole) {
        for (unsigned int size = 0; size < 26; ++size) {
            char* const buf = page.last(std::size_t{size} + 1);
            B::format(buf, size, format, num);
            if (size >= whole.size()) {
                EXPECT_EQ(buf, whole);
            } else {
                EXPECT_EQ(std::string(buf, size), whole.substr(0, size)) << size;
                EXPECT_EQ(buf[size], '\0');
            }
        }
    };
    expect("%ld", LONG_MIN, std::to_string(LONG_MIN));
    expect("%lu", -1, std::to_string(ULONG_MAX));
    expect("%lx", -1, std::string(sizeof(long) * 2, 'f'));
    expect("%9ld", -1, "       -1");
    expect("%09ld", -12345678, "-12345678");
    expect("%09lx", 0, "000000000");
}

TEST(BoundedStringBaseTest, NumberNeverTouchesItsEnd) {
    const kfl_test::GuardedPage page;
    ASSERT_TRUE(page.isReady());
    kfl_test::Random random;
    for (int i = 0; i < 20000; ++i) {
        char* const out = page.last(1 + random.below(40));
        const long num = static_cast<long>(random());
        char* const after =
            B::number(out, page.last(0), num, random.between(2, 36), random.between(-1, 50),
                      random.between(-1, 50), static_cast<int>(random.below(128)));
        ASSERT_GE(after, out);
        ASSERT_LT(after, page.last(0));
    }
}

// ---- "%n"

TEST(BoundedStringBaseTest, CountIsOfWhatIsStoredSoFar) {
    char buf[40];
    int first = -1;
    int second = -1;
    EXPECT_EQ(B::format(buf, 39, "%nab%5d%n|", &first, 7, &second), 8);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 7);
    EXPECT_STREQ(buf, "ab    7|");
}

TEST(BoundedStringBaseTest, CountIsBounded) {
    char buf[6];
    int count = -1;
    EXPECT_EQ(B::format(buf, 5, "%s%n", "abcdefgh", &count), 5);
    EXPECT_EQ(count, 5);
}

TEST(BoundedStringBaseTest, CountIsAnIntAlsoWithH) {
    for (const char* const format : {"abc%n", "abc%hn"}) {
        char buf[8];
        int counts[2] = {-1, -1};
        EXPECT_EQ(B::format(buf, 7, format, &counts[0]), 3);
        EXPECT_EQ(counts[0], 3) << format;
        EXPECT_EQ(counts[1], -1) << format;
    }
}

TEST(BoundedStringBaseTest, CountIsALongWithTheLongQualifiers) {
    for (const char* const format : {"abc%ln", "abc%Ln", "abc%Zn"}) {
        char buf[8];
        long counts[2] = {-1, -1};
        EXPECT_EQ(B::format(buf, 7, format, &counts[0]), 3);
        EXPECT_EQ(counts[0], 3) << format;
        EXPECT_EQ(counts[1], -1) << format;
    }
}

TEST(BoundedStringBaseTest, CountTakesItsArgumentInTurn) {
    char buf[20];
    int count = -1;
    EXPECT_EQ(B::format(buf, 19, "%d%-5.2n%d", 1, &count, 2), 2);
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(buf, "12");
}

TEST(BoundedStringBaseTest, CountThroughANullPointerIsNotStored) {
    char buf[20];
    EXPECT_EQ(B::format(buf, 19, "a%nb%lnc", address(0), address(0)), 3);
    EXPECT_STREQ(buf, "abc");
}

// ---- number()

struct NumberRow {
    const char* name;
    const char* expected;
    long num;
    int base;
    int width;
    int precision;
    int flags;
};

const NumberRow numberRows[] = {
    {"Decimal", "42", 42, 10, -1, -1, B::SIGN},
    {"Negative", "-42", -42, 10, -1, -1, B::SIGN},
    {"ZeroHasOneDigit", "0", 0, 10, -1, -1, B::SIGN},
    {"ZeroWithPrecisionZeroHasOneDigit", "0", 0, 10, -1, 0, B::SIGN},
    {"Width", "   42", 42, 10, 5, -1, B::SIGN},
    {"WidthNegativeIsNone", "42", 42, 10, -5, -1, B::SIGN},
    {"WidthTheLeastIsNone", "-42", -42, 10, INT_MIN, INT_MIN, B::SIGN},
    {"Precision", "00042", 42, 10, -1, 5, B::SIGN},
    {"WidthAndPrecision", "   00042", 42, 10, 8, 5, B::SIGN},
    {"ZeroPad", "-0042", -42, 10, 5, -1, B::SIGN | B::ZEROPAD},
    {"ZeroPadWithPrecision", "-0000042", -42, 10, 8, 3, B::SIGN | B::ZEROPAD},
    {"LeftClearsZeroPad", "-42  ", -42, 10, 5, -1, B::SIGN | B::ZEROPAD | B::LEFT},
    {"Plus", "+7", 7, 10, -1, -1, B::SIGN | B::PLUS},
    {"Space", " 7", 7, 10, -1, -1, B::SIGN | B::SPACE},
    {"PlusBeatsSpace", "+7", 7, 10, -1, -1, B::SIGN | B::PLUS | B::SPACE},
    {"PlusWithoutSignIsNothing", "7", 7, 10, -1, -1, B::PLUS | B::SPACE},
    {"SignInEveryBase", "-ff", -255, 16, -1, -1, B::SIGN},
    {"SignAndPrefix", "-0xff", -255, 16, -1, -1, B::SIGN | B::SPECIAL},
    {"SignPrefixAndZeros", "+0x00ff", 255, 16, 7, -1, B::SIGN | B::PLUS | B::SPECIAL | B::ZEROPAD},
    {"SpecialOctal", "010", 8, 8, -1, -1, B::SPECIAL},
    {"SpecialOctalLarge", "010", 8, 8, -1, -1, B::SPECIAL | B::LARGE},
    {"SpecialLarge", "0XFF", 255, 16, -1, -1, B::SPECIAL | B::LARGE},
    {"SpecialIsNothingInOtherBases", "11", 3, 2, -1, -1, B::SPECIAL},
    {"Base2", "101010", 42, 2, -1, -1, 0},
    {"Base3", "1120", 42, 3, -1, -1, 0},
    {"Base7", "60", 42, 7, -1, -1, 0},
    {"Base36", "zz", 1295, 36, -1, -1, 0},
    {"Base36Large", "ZZ", 1295, 36, -1, -1, B::LARGE},
    {"Base36AllDigits", "abcxyz", 623741435, 36, -1, -1, 0},
    {"UnknownFlagsAreIgnored", "42", 42, 10, -1, -1, B::SIGN | 128 | 0x4000},
};

class BoundedStringBaseNumber : public testing::TestWithParam<NumberRow> {};

TEST_P(BoundedStringBaseNumber, WritesTheText) {
    const NumberRow& row = GetParam();
    char out[40];
    std::memset(out, mark, sizeof out);
    char* const end =
        B::number(out, out + sizeof out, row.num, row.base, row.width, row.precision, row.flags);
    EXPECT_EQ(std::string(out, end), row.expected);
    EXPECT_EQ(*end, mark);
}

INSTANTIATE_TEST_SUITE_P(All, BoundedStringBaseNumber, testing::ValuesIn(numberRows),
                         nameOf<NumberRow>);

std::string numberText(long num, int base, int flags) {
    char out[100];
    return {out, B::number(out, out + sizeof out, num, base, -1, -1, flags)};
}

TEST(BoundedStringBaseTest, NumberKnowsTheLeastLong) {
    EXPECT_EQ(numberText(LONG_MIN, 10, B::SIGN), std::to_string(LONG_MIN));
    EXPECT_EQ(numberText(LONG_MAX, 10, B::SIGN), std::to_string(LONG_MAX));
    const std::string zeros(sizeof(long) * CHAR_BIT - 1, '0');
    EXPECT_EQ(numberText(LONG_MIN, 2, B::SIGN), "-1" + zeros);
    EXPECT_EQ(numberText(LONG_MIN, 2, 0), "1" + zeros);
}

TEST(BoundedStringBaseTest, NumberWithoutSignReadsAllBits) {
    EXPECT_EQ(numberText(-1, 10, 0), std::to_string(ULONG_MAX));
    EXPECT_EQ(numberText(-1, 16, 0), std::string(2 * sizeof(long), 'f'));
    EXPECT_EQ(numberText(-1, 2, 0), std::string(CHAR_BIT * sizeof(long), '1'));
}

TEST(BoundedStringBaseTest, NumberWithoutAPlaceWritesNothing) {
    char out[] = "ab";
    EXPECT_EQ(B::number(out, out, 7, 10, -1, -1, 0), out);
    EXPECT_EQ(B::number(out + 1, out, 7, 10, -1, -1, 0), out + 1);
    EXPECT_STREQ(out, "ab");
    EXPECT_EQ(B::number(nullptr, out, 7, 10, -1, -1, 0), nullptr);
}

TEST(BoundedStringBaseTest, NumberRefusesOtherBases) {
    for (const int base : {INT_MIN, -10, -1, 0, 1, 37, 38, 100, INT_MAX}) {
        char out[4] = {mark, mark, mark, mark};
        EXPECT_EQ(B::number(out, out + sizeof out, 42, base, 3, 3, B::SIGN), nullptr) << base;
        EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, mark)) << base;
    }
}

TEST(BoundedStringBaseTest, NumberTakesEveryBaseFrom2To36) {
    for (int base = 2; base <= 36; ++base) {
        EXPECT_EQ(numberText(base, base, 0), "10") << base;
        EXPECT_EQ(numberText(base - 1, base, 0).size(), 1U) << base;
        EXPECT_EQ(std::stoull(numberText(LONG_MAX, base, 0), nullptr, base),
                  static_cast<unsigned long long>(LONG_MAX))
            << base;
    }
}

TEST(BoundedStringBaseTest, NumberOverwritesItsLastPlace) {
    char out[4] = {mark, mark, mark, mark};
    EXPECT_EQ(B::number(out, out + 3, 12345, 10, -1, -1, B::SIGN), out + 2);
    EXPECT_EQ(std::string(out, sizeof out), std::string("125") + mark);
}

TEST(BoundedStringBaseTest, NumberOverwritesItsLastPlaceWithEachPart) {
    const struct {
        const char* what;
        const char* expected;
        long num;
        int base;
        int width;
        int precision;
        int flags;
    } cases[] = {
        {"blanks", "  2", 42, 10, 9, -1, 0},
        {"blanks behind", "42 ", 42, 10, 9, -1, B::LEFT},
        {"zeros", "002", 42, 10, -1, 9, 0},
        {"prefix and digits", "0xa", 0xA, 16, -1, -1, B::SPECIAL},
        {"prefix that does not fit", "-0a", -0xA, 16, -1, -1, B::SPECIAL | B::SIGN},
        {"sign behind blanks", "  7", -7, 10, 9, -1, B::SIGN},
    };
    for (const auto& c : cases) {
        char out[3];
        EXPECT_EQ(B::number(out, out + 3, c.num, c.base, c.width, c.precision, c.flags), out + 2)
            << c.what;
        EXPECT_EQ(std::string(out, 3), c.expected) << c.what;
    }
}

TEST(BoundedStringBaseTest, NumberInOnePlaceLeavesItsLastCharacter) {
    char out[2] = {mark, mark};
    EXPECT_EQ(B::number(out, out + 1, 123, 10, 5, -1, B::SIGN), out);
    EXPECT_EQ(out[0], '3');
    EXPECT_EQ(out[1], mark);
}

TEST(BoundedStringBaseTest, NumberThatJustFitsMovesToTheLastPlaceAlone) {
    char out[3] = {mark, mark, mark};
    EXPECT_EQ(B::number(out, out + 3, 42, 10, -1, -1, B::SIGN), out + 2);
    EXPECT_EQ(std::string(out, 3), std::string("42") + mark);
}

TEST(BoundedStringBaseTest, NumberWithoutAnyPlaceWritesNothing) {
    char out[2] = {mark, mark};
    EXPECT_EQ(B::number(out + 1, out + 1, 42, 10, -1, -1, 0), out + 1);
    EXPECT_EQ(B::number(out + 1, out, 42, 10, -1, -1, 0), out + 1);
    EXPECT_EQ(std::string(out, 2), std::string(2, mark));
}

TEST(BoundedStringBaseTest, FlagsHaveTheirValues) {
    EXPECT_EQ(B::ZEROPAD, 1);
    EXPECT_EQ(B::SIGN, 2);
    EXPECT_EQ(B::PLUS, 4);
    EXPECT_EQ(B::SPACE, 8);
    EXPECT_EQ(B::LEFT, 16);
    EXPECT_EQ(B::SPECIAL, 32);
    EXPECT_EQ(B::LARGE, 64);
}

// ---- skip_atoi

TEST(BoundedStringBaseTest, SkipAtoiReadsDigitsAndStopsBehindThem) {
    const struct {
        const char* text;
        int value;
        std::ptrdiff_t read;
    } cases[] = {
        {"", 0, 0},
        {"x", 0, 0},
        {"-5", 0, 0},
        {"+5", 0, 0},
        {" 5", 0, 0},
        {"/:", 0, 0},
        {"0", 0, 1},
        {"7", 7, 1},
        {"123abc", 123, 3},
        {"007.5", 7, 3},
        {"9876543210", INT_MAX, 10},
        {"2147483646", INT_MAX - 1, 10},
        {"2147483647", INT_MAX, 10},
        {"2147483648", INT_MAX, 10},
        {"99999999999999999999999999999999 ", INT_MAX, 32},
    };
    for (const auto& c : cases) {
        const char* at = c.text;
        EXPECT_EQ(B::skip_atoi(&at), c.value) << c.text;
        EXPECT_EQ(at - c.text, c.read) << c.text;
    }
}

// ---- the class

TEST(BoundedStringBaseTest, ItsObjectsCanStillBeMade) {
    BoundedStringBase object;
    char buf[8];
    EXPECT_EQ(object.format(buf, 7, "%d", 42), 2);
    EXPECT_STREQ(buf, "42");
}

TEST(BoundedStringBaseTest, IsReentrant) {
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &failures] {
            const std::string name(static_cast<std::size_t>(t) + 3, static_cast<char>('a' + t));
            for (int i = 0; i < 3000; ++i) {
                char buf[64];
                int count = 0;
                const int stored =
                    B::format(buf, 63, "%s %05d %#x%n", name.c_str(), i, t + 1, &count);
                const std::string digits = std::to_string(i);
                const std::string expected = name + " " + std::string(5 - digits.size(), '0') +
                                             digits + " 0x" + std::to_string(t + 1);
                if (buf != expected || stored != count) ++failures[static_cast<std::size_t>(t)];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
}

}  // namespace
