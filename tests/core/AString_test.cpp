#include "kfl/AString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/halting_call.h"

using kfl::AString;

namespace {

// All characters in use, also those behind a NUL.
std::string contents(const AString& text) { return std::string(text.c_str(), text.length()); }

void expectText(const AString& text, const char* visible, unsigned int length,
                unsigned int capacity) {
    EXPECT_STREQ(text.c_str(), visible);
    EXPECT_EQ(text.length(), length);
    EXPECT_EQ(text.capacity(), capacity);
    EXPECT_EQ(text.c_str()[text.length()], '\0');
}

// --- Construction ---

TEST(AStringTest, BuiltWithACapacityIsEmpty) {
    for (const unsigned int capacity : {0U, 1U, 10U, 511U}) {
        const AString text(capacity, 7);
        expectText(text, "", 0, capacity);
        EXPECT_EQ(text.increment(), 7U);
        EXPECT_TRUE(text.empty());
    }
}

TEST(AStringTest, IncrementIsOneHundredUnlessGiven) {
    EXPECT_EQ(AString(10U).increment(), 100U);
    EXPECT_EQ(AString("abc").increment(), 100U);
    EXPECT_EQ(AString("abc", 3).increment(), 3U);
    EXPECT_EQ(AString(10U, 0).increment(), 0U);
}

TEST(AStringTest, BuiltFromATextIsExactlyFull) {
    const AString text("abc");
    expectText(text, "abc", 3, 3);
    EXPECT_FALSE(text.empty());
    expectText(AString(""), "", 0, 0);
}

TEST(AStringTest, BuiltFromATextHoldsACopy) {
    char source[] = "abc";
    const AString text(source);
    source[0] = 'x';
    EXPECT_STREQ(text.c_str(), "abc");
}

TEST(AStringTest, BuiltFromNullIsEmpty) {
    const AString text(static_cast<const char*>(nullptr), 5);
    expectText(text, "", 0, 0);
    EXPECT_EQ(text.increment(), 5U);
}

TEST(AStringTest, CopyHasTextLengthCapacityAndIncrement) {
    AString source(20U, 9);
    source.append("hello");
    const AString copy(source);
    expectText(copy, "hello", 5, 20);
    EXPECT_EQ(copy.increment(), 9U);
    EXPECT_NE(copy.c_str(), source.c_str());
}

TEST(AStringTest, CopyStartsUnshared) {
    auto* const source = new AString("shared");
    const ProtectionElement first(source);
    const ProtectionElement second(first);
    ASSERT_EQ(source->referenceCount(), 2U);
    const AString copy(*source);
    EXPECT_EQ(copy.referenceCount(), 0U);
    EXPECT_EQ(source->referenceCount(), 2U);
}

TEST(AStringTest, CopyKeepsALengthBeyondTheVisibleText) {
    AString source(30U);
    source.append("ab", 6);
    const AString copy(source);
    expectText(copy, "ab", 6, 30);
    EXPECT_TRUE(copy == source);
}

TEST(AStringTest, CopyAndOriginalAreIndependent) {
    AString source("abc");
    AString copy(source);
    copy.append("def");
    source.erase(0, 1);
    EXPECT_STREQ(source.c_str(), "bc");
    EXPECT_STREQ(copy.c_str(), "abcdef");
}

TEST(AStringTest, CannotBeAssigned) {
    EXPECT_FALSE(std::is_copy_assignable<AString>::value);
    EXPECT_TRUE(std::is_copy_constructible<AString>::value);
    EXPECT_TRUE((std::is_base_of<Protectable, AString>::value));
    EXPECT_TRUE((std::is_base_of<kfl::SObject, AString>::value));
}

TEST(AStringTest, IsDeletedByItsLastHandle) {
    auto* const text = new AString("shared");
    ProtectionElement handle(text);
    const ProtectionElement other(handle);
    handle = nullptr;
    EXPECT_EQ(text->referenceCount(), 1U);
    EXPECT_STREQ(text->c_str(), "shared");
}

// --- Growth ---

struct Growth {
    unsigned int capacity;
    unsigned int increment;
    unsigned int request;
    unsigned int grown;
};

void PrintTo(const Growth& row, std::ostream* out) {
    *out << row.capacity << " by " << row.increment << " for " << row.request;
}

class AStringGrowthTest : public testing::TestWithParam<Growth> {};

TEST_P(AStringGrowthTest, ExpandToFollowsTheRule) {
    const Growth& row = GetParam();
    AString text(row.capacity, row.increment);
    if (row.capacity > 0) text.append('x');
    const AString before(text);
    const unsigned int capacity = text.capacity();
    const char* const data = text.c_str();
    EXPECT_EQ(text.expandTo(row.request), 1);
    EXPECT_EQ(text.capacity(), row.grown);
    EXPECT_TRUE(text == before);
    EXPECT_EQ(text.increment(), row.increment);
    if (row.grown == capacity && row.request < capacity) {
        EXPECT_EQ(text.c_str(), data);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, AStringGrowthTest,
                         testing::Values(
                             // What fits with its terminator, and what would fit exactly.
                             Growth{10, 100, 0, 10}, Growth{10, 100, 9, 10},
                             Growth{10, 100, 10, 110}, Growth{10, 100, 11, 110},
                             // At least an increment; exactly the request where that is more.
                             Growth{10, 100, 109, 110}, Growth{10, 100, 110, 110},
                             Growth{10, 100, 111, 111}, Growth{10, 100, 500, 500},
                             Growth{10, 1, 10, 11}, Growth{10, 1, 11, 11}, Growth{10, 1, 12, 12},
                             Growth{0, 100, 0, 100}, Growth{0, 1, 0, 1}, Growth{0, 100, 99, 100},
                             Growth{0, 100, 100, 100}, Growth{0, 100, 101, 101},
                             // Without an increment a string grows to exactly what is asked for.
                             Growth{0, 0, 0, 0}, Growth{10, 0, 10, 10}, Growth{10, 0, 11, 11},
                             Growth{5, 7, 11, 12}, Growth{5, 7, 12, 12}, Growth{5, 7, 13, 13}));

TEST(AStringTest, FirstAppendToAFullStringGrowsByTheIncrement) {
    AString text("abc");
    EXPECT_EQ(text.append('d'), 1);
    expectText(text, "abcd", 4, 103);
}

TEST(AStringTest, AppendOfExactlyTheRestGrowsToo) {
    AString text(10U, 100);
    text.append("12345");
    EXPECT_EQ(text.capacity(), 10U);
    text.append("6789");
    EXPECT_EQ(text.capacity(), 10U);
    text.append("0");
    expectText(text, "1234567890", 10, 110);
}

TEST(AStringTest, GrowsWithoutAnIncrementToExactlyWhatIsNeeded) {
    AString text(0U, 0);
    std::string expected;
    for (unsigned int i = 1; i <= 50; ++i) {
        text.append("ab");
        expected += "ab";
        expectText(text, expected.c_str(), 2 * i, 2 * i);
    }
}

TEST(AStringTest, GrowthKeepsWhatStandsBehindANul) {
    AString text(4U, 2);
    text.append("a", 2);
    text.append("b");
    EXPECT_EQ(contents(text), std::string("a\0b", 3));
    text.expandTo(50);
    EXPECT_EQ(contents(text), std::string("a\0b", 3));
}

TEST(AStringTest, GrowthKeepsWhatWasPutBehindTheLengthByHand) {
    AString text(20U);
    text.append("ab");
    // As a host does that reads straight into the text and counts afterwards.
    std::strcpy(const_cast<char*>(text.c_str()) + 2, "cdef");
    text.expandTo(200);
    EXPECT_STREQ(text.c_str(), "abcdef");
    EXPECT_EQ(text.length(), 2U);
    const AString copy(text);
    EXPECT_STREQ(copy.c_str(), "abcdef");
}

// --- append ---

TEST(AStringTest, AppendAddsATextAtTheEnd) {
    AString text(50U);
    EXPECT_EQ(text.append("hello"), 1);
    EXPECT_EQ(text.append(" world"), 1);
    expectText(text, "hello world", 11, 50);
    EXPECT_EQ(text.append(""), 1);
    expectText(text, "hello world", 11, 50);
}

TEST(AStringTest, AppendOfAnEmptyTextToAFullStringGrowsIt) {
    AString text("abc");
    text.append("");
    expectText(text, "abc", 3, 103);
}

TEST(AStringTest, AppendOfNullAppendsNothing) {
    AString text("abc");
    EXPECT_EQ(text.append(static_cast<const char*>(nullptr)), 1);
    EXPECT_EQ(text.append(nullptr, 5), 1);
    EXPECT_EQ(text.append(static_cast<Buffer*>(nullptr)), 1);
    expectText(text, "abc", 3, 3);
}

TEST(AStringTest, AppendOfNCharactersCutsALongerText) {
    AString text(50U);
    EXPECT_EQ(text.append("abcdef", 3), 1);
    expectText(text, "abc", 3, 50);
    text.append("xyz", 0);
    expectText(text, "abc", 3, 50);
}

TEST(AStringTest, AppendOfNCharactersReadsNoFurther) {
    const char raw[3] = {'x', 'y', 'z'};
    AString text(50U);
    text.append(raw, 3);
    expectText(text, "xyz", 3, 50);
}

TEST(AStringTest, AppendOfNCharactersFillsAShorterTextWithNuls) {
    AString text(0U);
    EXPECT_EQ(text.append("ab", 4), 1);
    expectText(text, "ab", 4, 100);
    EXPECT_EQ(contents(text), std::string("ab\0\0", 4));
    text.append("c");
    EXPECT_EQ(contents(text), std::string("ab\0\0c", 5));
    EXPECT_STREQ(text.c_str(), "ab");
}

TEST(AStringTest, AppendOfNCharactersOverwritesWhatStoodBehindTheEnd) {
    AString text(50U);
    text.append("abcdefghij");
    text.trimRight(10);
    text.append("x", 5);
    EXPECT_EQ(contents(text), std::string("x\0\0\0\0", 5));
    EXPECT_EQ(text.c_str()[5], '\0');
}

TEST(AStringTest, AppendOfACharacterTakesEveryCode) {
    AString text(0U);
    std::string expected;
    for (int code = CHAR_MIN; code <= CHAR_MAX; ++code) {
        EXPECT_EQ(text.append(static_cast<char>(code)), 1);
        expected += static_cast<char>(code);
        EXPECT_EQ(text.c_str()[text.length()], '\0');
    }
    for (int code = 0; code <= UCHAR_MAX; ++code) {
        EXPECT_EQ(text.append(static_cast<unsigned char>(code)), 1);
        expected += static_cast<char>(code);
    }
    EXPECT_EQ(contents(text), expected);
}

TEST(AStringTest, AppendOfAStringCopiesUpToItsFirstNul) {
    AString other(30U);
    other.append("ab", 5);
    other.append("cd");
    AString text("x");
    EXPECT_EQ(text.append(other), 1);
    EXPECT_EQ(contents(text), "xab");
}

TEST(AStringTest, AppendOfItselfDoublesTheText) {
    AString text("abc");
    text.append(text);
    expectText(text, "abcabc", 6, 103);
    text.append(text);
    expectText(text, "abcabcabcabc", 12, 103);
}

TEST(AStringTest, AppendTakesAPieceOfItself) {
    for (const unsigned int room : {6U, 12U, 100U}) {
        SCOPED_TRACE(room);
        AString text(room, 1);
        text.append("abcde");
        text.append(text.c_str() + 2);
        EXPECT_STREQ(text.c_str(), "abcdecde");
        text.append(text.c_str() + 1, 3);
        EXPECT_STREQ(text.c_str(), "abcdecdebcd");
        // Its own end: nothing, then a piece that ends in front of the terminator.
        text.append(text.c_str() + text.length());
        EXPECT_STREQ(text.c_str(), "abcdecdebcd");
        text.append(text.c_str() + 9, 4);
        EXPECT_EQ(contents(text), std::string("abcdecdebcdcd\0\0", 15));
    }
}

// --- Virtual calls ---

// Notes which of its operations are called.
class Traced : public AString {
  public:
    Traced() : AString(50U) {}
    using AString::append;
    int append(const char* text) override {
        calls += "text(" + std::string(text) + ")";
        return AString::append(text);
    }
    int append(const char* text, unsigned int n) override {
        calls += "n";
        return AString::append(text, n);
    }
    int append(char c) override {
        calls += std::string("char(") + c + ")";
        return AString::append(c);
    }
    std::string calls;
};

TEST(AStringTest, AppendOfAnUnsignedCharacterGoesThroughAppendOfACharacter) {
    Traced text;
    AString& base = text;
    EXPECT_EQ(base.append(static_cast<unsigned char>('u')), 1);
    EXPECT_EQ(text.calls, "char(u)");
    EXPECT_STREQ(text.c_str(), "u");
}

TEST(AStringTest, AppendOfAStringGoesThroughAppendOfAText) {
    Traced text;
    AString& base = text;
    EXPECT_EQ(base.append(AString("other")), 1);
    EXPECT_EQ(text.calls, "text(other)");
    EXPECT_STREQ(text.c_str(), "other");
}

TEST(AStringTest, TheResultOfTheOverriddenAppendIsPassedOn) {
    class Refusing : public AString {
      public:
        Refusing() : AString(10U) {}
        using AString::append;
        int append(const char*) override { return 42; }
        int append(char) override { return 43; }
    };
    Refusing text;
    AString& base = text;
    EXPECT_EQ(base.append(AString("x")), 42);
    EXPECT_EQ(base.append(static_cast<unsigned char>('x')), 43);
    EXPECT_TRUE(text.empty());
}

TEST(AStringTest, OtherOperationsCallNoVirtualAppend) {
    Traced text;
    text.AString::append("abc");
    text.calls.clear();
    text.insert(1, "xyz");
    text.erase(0, 1);
    text.replace('x', 'w');
    text.expandTo(300);
    text.trimRight(1);
    EXPECT_EQ(text.calls, "");
    EXPECT_STREQ(text.c_str(), "wyzb");
}

// --- insert ---

TEST(AStringTest, InsertPutsATextInFront) {
    struct Row {
        unsigned int position;
        const char* result;
    };
    for (const Row& row : {Row{0, "XYhello"}, Row{1, "hXYello"}, Row{4, "hellXYo"},  //
                           Row{5, "helloXY"}}) {
        for (const unsigned int room : {5U, 7U, 8U, 50U}) {
            AString text(room, 1);
            text.append("hello");
            EXPECT_EQ(text.insert(row.position, "XY"), 1);
            EXPECT_STREQ(text.c_str(), row.result);
            EXPECT_EQ(text.length(), 7U);
        }
    }
}

TEST(AStringTest, InsertOfNullOrNothingKeepsTheText) {
    AString text("abc");
    EXPECT_EQ(text.insert(1, nullptr), 1);
    expectText(text, "abc", 3, 3);
    EXPECT_EQ(text.insert(1, ""), 1);
    expectText(text, "abc", 3, 103);
}

TEST(AStringTest, InsertGrowsByTheRule) {
    AString text("abc", 10);
    text.insert(0, "x");
    EXPECT_EQ(text.capacity(), 13U);
    text.insert(0, "0123456789");
    expectText(text, "0123456789xabc", 14, 23);
    text.insert(2, "a text of more than ten characters");
    EXPECT_EQ(text.capacity(), 48U);
}

TEST(AStringTest, InsertMovesWhatStandsBehindANul) {
    AString text(50U);
    text.append("ab", 4);
    text.append("cd");
    text.insert(1, "XY");
    EXPECT_EQ(contents(text), std::string("aXYb\0\0cd", 8));
}

TEST(AStringTest, InsertEndsTheTextWhereItsLengthSays) {
    AString text(50U);
    text.append("ab");
    std::strcpy(const_cast<char*>(text.c_str()) + 2, "cdef");
    text.insert(1, "XY");
    EXPECT_STREQ(text.c_str(), "aXYb");
    EXPECT_EQ(text.length(), 4U);
}

TEST(AStringTest, InsertTakesAPieceOfItselfAtAnyPlace) {
    const std::string start = "abcdefg";
    for (const unsigned int room : {7U, 8U, 14U, 100U}) {
        for (unsigned int position = 0; position <= 7; ++position) {
            for (unsigned int piece = 0; piece <= 7; ++piece) {
                AString text(room, 1);
                text.append(start.c_str());
                text.insert(position, text.c_str() + piece);
                EXPECT_EQ(contents(text), std::string(start).insert(position, start.substr(piece)))
                    << room << ", " << position << ", " << piece;
                EXPECT_EQ(text.c_str()[text.length()], '\0');
            }
        }
    }
}

// --- erase, trimRight, clear ---

struct Erasure {
    unsigned int position;
    int count;
    const char* result;
};

void PrintTo(const Erasure& row, std::ostream* out) { *out << row.position << ", " << row.count; }

class AStringEraseTest : public testing::TestWithParam<Erasure> {};

TEST_P(AStringEraseTest, RemovesFromThePosition) {
    const Erasure& row = GetParam();
    AString text(20U);
    text.append("abcdef");
    EXPECT_EQ(text.erase(row.position, row.count), 1);
    EXPECT_EQ(contents(text), row.result);
    expectText(text, row.result, static_cast<unsigned int>(std::strlen(row.result)), 20);
}

INSTANTIATE_TEST_SUITE_P(Rows, AStringEraseTest,
                         testing::Values(Erasure{2, -1, "ab"}, Erasure{2, 10, "ab"},
                                         Erasure{6, 1, "abcdef"}, Erasure{0, 0, "abcdef"},
                                         Erasure{3, 0, "abcdef"}, Erasure{7, 1, "abcdef"},
                                         Erasure{7, -1, "abcdef"}, Erasure{UINT_MAX, 1, "abcdef"},
                                         Erasure{UINT_MAX, -1, "abcdef"}, Erasure{0, 1, "bcdef"},
                                         Erasure{5, 1, "abcde"}, Erasure{0, 6, ""},
                                         Erasure{0, 7, ""}, Erasure{0, -1, ""}, Erasure{1, 4, "af"},
                                         Erasure{1, 5, "a"}, Erasure{1, 6, "a"},
                                         // Sums and counts that would wrap.
                                         Erasure{2, -2, "ab"}, Erasure{2, -3, "ab"},
                                         Erasure{5, -6, "abcde"}, Erasure{2, INT_MAX, "ab"},
                                         Erasure{2, INT_MIN, "ab"}, Erasure{1, INT_MIN, "a"}));

TEST(AStringTest, EraseOfAnEmptyStringChangesNothing) {
    AString text(5U);
    for (const int count : {-1, 0, 1, INT_MAX, INT_MIN}) EXPECT_EQ(text.erase(0, count), 1);
    expectText(text, "", 0, 5);
}

TEST(AStringTest, EraseMovesWhatStandsBehindANul) {
    AString text(50U);
    text.append("ab", 4);
    text.append("cd");
    text.erase(1, 2);
    EXPECT_EQ(contents(text), std::string("a\0cd", 4));
    text.erase(1, 1);
    EXPECT_EQ(contents(text), "acd");
}

TEST(AStringTest, TrimRightDropsTheLastCharacters) {
    AString text(20U);
    text.append("abcdef");
    EXPECT_EQ(text.trimRight(0), 1);
    expectText(text, "abcdef", 6, 20);
    EXPECT_EQ(text.trimRight(2), 1);
    expectText(text, "abcd", 4, 20);
    EXPECT_EQ(text.trimRight(4), 1);
    expectText(text, "", 0, 20);
}

TEST(AStringTest, ClearEmptiesAndKeepsTheRoom) {
    AString text("abc");
    const char* const data = text.c_str();
    text.clear();
    expectText(text, "", 0, 3);
    EXPECT_EQ(text.c_str(), data);
    EXPECT_TRUE(text.empty());
}

// --- replace ---

TEST(AStringTest, ReplaceChangesEveryOccurrence) {
    AString text("a.b..c.");
    EXPECT_EQ(text.replace('.', '/'), 1);
    EXPECT_STREQ(text.c_str(), "a/b//c/");
    EXPECT_EQ(text.replace('x', 'y'), 1);
    EXPECT_STREQ(text.c_str(), "a/b//c/");
    expectText(text, "a/b//c/", 7, 7);
}

TEST(AStringTest, ReplaceTakesCodesAbove127) {
    AString text("\xE4x\xE4");
    text.replace('\xE4', '\xF6');
    EXPECT_STREQ(text.c_str(), "\xF6x\xF6");
}

TEST(AStringTest, ReplaceByNulEndsTheVisibleText) {
    AString text("a.b.c");
    EXPECT_EQ(text.replace('.', '\0'), 1);
    EXPECT_EQ(contents(text), std::string("a\0b.c", 5));
    EXPECT_EQ(text.length(), 5U);
}

TEST(AStringTest, ReplaceStopsAtTheFirstNul) {
    AString text(20U);
    text.append("x", 2);
    text.append("x");
    text.replace('x', 'y');
    EXPECT_EQ(contents(text), std::string("y\0x", 3));
}

TEST(AStringTest, ReplaceOfAnAbsentCharacterByItselfReturns) {
    AString text("abc");
    EXPECT_EQ(text.replace('x', 'x'), 1);
    EXPECT_STREQ(text.c_str(), "abc");
    AString empty("");
    EXPECT_EQ(empty.replace('x', 'x'), 1);
}

TEST(AStringTest, ReplaceOfACharacterByItselfOrOfNulNeverReturns) {
    kfl_test::HaltingCall itself([] { AString("banana").replace('n', 'n'); });
    kfl_test::HaltingCall nul([] { AString("banana").replace('\0', 'x'); });
    kfl_test::HaltingCall nulInEmpty([] { AString("").replace('\0', 'x'); });
    kfl_test::HaltingCall nulByNul([] { AString("banana").replace('\0', '\0'); });
    for (auto* const call : {&itself, &nul, &nulInEmpty, &nulByNul}) {
        EXPECT_TRUE(call->stillRuns());
        EXPECT_LT(call->processorMilliseconds(), 200);
    }
}

TEST(AStringTest, TheWatchOverCallsThatNeverReturnSeesOneThatDoesAndOneThatSpins) {
    kfl_test::HaltingCall returns([] { AString("banana").replace('n', 'm'); });
    kfl_test::HaltingCall spins([] {
        for (volatile int turns = 0;; turns = turns + 1) {
        }
    });
    EXPECT_FALSE(returns.stillRuns());
    EXPECT_TRUE(spins.stillRuns());
    EXPECT_GT(spins.processorMilliseconds(), 0);
}

// --- Comparison and searches ---

TEST(AStringTest, EqualStringsHaveTheSameLengthAndVisibleText) {
    AString roomy(100U);
    roomy.append("abc");
    EXPECT_TRUE(roomy == AString("abc"));
    EXPECT_TRUE(AString("abc", 1) == AString("abc", 2));
    EXPECT_FALSE(AString("abc") == AString("abd"));
    EXPECT_FALSE(AString("abc") == AString("ab"));
    EXPECT_FALSE(AString("ABC") == AString("abc"));
    EXPECT_TRUE(AString("") == AString(10U));
    EXPECT_TRUE(roomy == roomy);
}

TEST(AStringTest, EqualityLooksAtEveryCharacter) {
    for (std::size_t length = 1; length <= 50; ++length) {
        const std::string text(length, 'a');
        const AString reference(text.c_str());
        EXPECT_TRUE(AString(text.c_str()) == reference);
        for (std::size_t i = 0; i < length; ++i) {
            std::string other = text;
            other[i] = 'b';
            EXPECT_FALSE(AString(other.c_str()) == reference) << length << ' ' << i;
            EXPECT_FALSE(reference == AString(other.c_str())) << length << ' ' << i;
        }
    }
}

TEST(AStringTest, EqualityLooksAtTheLengthsFirstAndAtNothingBehindANul) {
    AString longer(20U);
    longer.append("ab", 4);
    EXPECT_FALSE(longer == AString("ab"));
    AString other(20U);
    other.append("ab", 3);
    other.append("x");
    EXPECT_TRUE(longer == other);
}

TEST(AStringTest, EqualityLooksAtTextThatWasPutBehindTheLength) {
    AString text(20U);
    text.append("ab");
    AString other(text);
    std::strcpy(const_cast<char*>(text.c_str()) + 2, "cdef");
    EXPECT_FALSE(text == other);
    EXPECT_FALSE(other == text);
    std::strcpy(const_cast<char*>(other.c_str()) + 2, "cdef");
    EXPECT_TRUE(text == other);
    std::strcpy(const_cast<char*>(other.c_str()) + 2, "cdeg");
    EXPECT_FALSE(text == other);
}

TEST(AStringTest, FindGivesTheFirstPlaceAndIgnoresTheStart) {
    AString text("hello world");
    for (const int start : {0, 7, 100, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(text.find("world", start), 6);
        EXPECT_EQ(text.find("o", start), 4);
        EXPECT_EQ(text.find("", start), 0);
        EXPECT_EQ(text.find("hello world", start), 0);
        EXPECT_EQ(text.find("worlds", start), -1);
        EXPECT_EQ(text.find(nullptr, start), -1);
    }
}

TEST(AStringTest, FindGoesOnAfterManyFalseStarts) {
    AString text("abababababac");
    EXPECT_EQ(text.find("abac", 0), 8);
    EXPECT_EQ(text.find("ac", 0), 10);
    EXPECT_EQ(text.find("c", 0), 11);
    EXPECT_EQ(text.find("abad", 0), -1);
    EXPECT_EQ(text.find("abacus", 0), -1);
    EXPECT_EQ(text.find("x", 0), -1);
}

TEST(AStringTest, FindSeesTheVisibleTextOnly) {
    AString text(20U);
    text.append("ab", 3);
    text.append("cd");
    EXPECT_EQ(text.find("cd", 0), -1);
    EXPECT_EQ(text.find("b", 0), 1);
    EXPECT_EQ(AString("").find("a", 0), -1);
    EXPECT_EQ(AString("").find("", 0), 0);
}

struct ForwardSearch {
    const char* text;
    const char* set;
    int start;
    int firstOf;
    int firstNotOf;
};

void PrintTo(const ForwardSearch& row, std::ostream* out) {
    *out << '"' << row.text << "\", \"" << row.set << "\" from " << row.start;
}

class AStringForwardTest : public testing::TestWithParam<ForwardSearch> {};

TEST_P(AStringForwardTest, GivesTheOffsetFromTheStart) {
    const ForwardSearch& row = GetParam();
    AString text(row.text);
    EXPECT_EQ(text.findFirstOf(row.set, row.start), row.firstOf);
    EXPECT_EQ(text.findFirstNotOf(row.set, row.start), row.firstNotOf);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AStringForwardTest,
    testing::Values(
        ForwardSearch{"hello world", " ", 2, 3, 0}, ForwardSearch{"hello world", "z", 0, 11, 0},
        ForwardSearch{"hello world", "hel", 0, 0, 4}, ForwardSearch{"hello world", "x", 11, -1, -1},
        ForwardSearch{"hello world", "x", 10, 1, 0}, ForwardSearch{"hello world", "d", 10, 0, 1},
        ForwardSearch{"hello world", "helo wrd", 3, 0, 8},
        ForwardSearch{"hello world", "", 4, 7, 0}, ForwardSearch{"hello world", "x", 12, -1, -1},
        // Negative numbers are large ones.
        ForwardSearch{"hello world", "h", -1, -1, -1},
        ForwardSearch{"hello world", "h", INT_MIN, -1, -1}, ForwardSearch{"", "a", 0, -1, -1},
        ForwardSearch{"", "", 0, -1, -1}, ForwardSearch{"aaa", "a", 0, 0, 3},
        ForwardSearch{"aaa", "a", 1, 0, 2}, ForwardSearch{"aaa", "b", 1, 2, 0},
        ForwardSearch{"\xFF\xFE", "\xFE", 0, 1, 0}, ForwardSearch{"\xFF\xFE", "\xFF", 0, 0, 1}));

struct BackwardSearch {
    const char* text;
    const char* set;
    int lastOf;
    int lastNotOf;
};

void PrintTo(const BackwardSearch& row, std::ostream* out) {
    *out << '"' << row.text << "\", \"" << row.set << '"';
}

class AStringBackwardTest : public testing::TestWithParam<BackwardSearch> {};

TEST_P(AStringBackwardTest, GivesThePositionFromTheBeginning) {
    const BackwardSearch& row = GetParam();
    AString text(row.text);
    EXPECT_EQ(text.findLastOf(row.set), row.lastOf);
    EXPECT_EQ(text.findLastNotOf(row.set), row.lastNotOf);
}

INSTANTIATE_TEST_SUITE_P(Rows, AStringBackwardTest,
                         testing::Values(BackwardSearch{"hello world", "o", 7, 10},
                                         BackwardSearch{"hello world", "dl", 10, 8},
                                         BackwardSearch{"hello world", "h", 0, 10},
                                         BackwardSearch{"hello world", "z", -1, 10},
                                         BackwardSearch{"hello world", "", -1, 10},
                                         BackwardSearch{"hello world", "dehlorw ", 10, -1},
                                         BackwardSearch{"aaa", "a", 2, -1},
                                         BackwardSearch{"baa", "a", 2, 0},
                                         BackwardSearch{"", "a", -1, -1},
                                         BackwardSearch{"", "", -1, -1},
                                         BackwardSearch{"\xFFz", "\xFF", 0, 1}));

TEST(AStringTest, SearchesForNothingFindNothing) {
    AString text("abc");
    EXPECT_EQ(text.findFirstOf(nullptr, 0), -1);
    EXPECT_EQ(text.findFirstNotOf(nullptr, 0), -1);
    EXPECT_EQ(text.findLastOf(nullptr), -1);
    EXPECT_EQ(text.findLastNotOf(nullptr), -1);
}

TEST(AStringTest, ANulInsideTheTextIsAMemberOfEverySet) {
    AString text(20U);
    text.append("ab", 3);
    text.append("cd");  // ab NUL cd
    EXPECT_EQ(text.findFirstOf("d", 0), 2);
    EXPECT_EQ(text.findFirstOf("d", 3), 1);
    EXPECT_EQ(text.findFirstOf("d", 2), 0);
    EXPECT_EQ(text.findFirstNotOf("ab", 0), 3);
    EXPECT_EQ(text.findFirstNotOf("abcd", 0), 5);
    EXPECT_EQ(text.findLastOf("ab"), 2);
    EXPECT_EQ(text.findLastNotOf("cd"), 1);
    EXPECT_EQ(text.findLastNotOf("abcd"), -1);
}

TEST(AStringTest, FindFirstOfGivesNothingWhereTheTextRunsOnBehindItsLength) {
    AString text(20U);
    text.append("ab");
    std::strcpy(const_cast<char*>(text.c_str()) + 2, "cdef");
    EXPECT_EQ(text.findFirstOf("f", 0), -1);
    EXPECT_EQ(text.findFirstOf("d", 1), -1);
    EXPECT_EQ(text.findFirstOf("c", 0), 2);
}

TEST(AStringTest, EveryCodeIsFoundByItsOwnSetAlone) {
    AString text(300U);
    for (int code = 1; code <= UCHAR_MAX; ++code) text.append(static_cast<char>(code));
    for (int code = 1; code <= UCHAR_MAX; ++code) {
        const char set[2] = {static_cast<char>(code), '\0'};
        ASSERT_EQ(text.findFirstOf(set, 0), code - 1);
        ASSERT_EQ(text.findLastOf(set), code - 1);
        ASSERT_EQ(text.findFirstNotOf(set, code - 1), 1);
        ASSERT_EQ(text.findLastNotOf(set), code == UCHAR_MAX ? UCHAR_MAX - 2 : UCHAR_MAX - 1);
    }
}

// --- All together ---

TEST(AStringTest, ModifiersReturnOne) {
    AString text("abc");
    const std::vector<std::function<int()>> modifiers = {
        [&] { return text.append("x"); },
        [&] { return text.append("x", 1); },
        [&] { return text.append(AString("x")); },
        [&] { return text.append('x'); },
        [&] { return text.append(static_cast<unsigned char>('x')); },
        [&] { return text.insert(0, "x"); },
        [&] { return text.erase(0, 1); },
        [&] { return text.trimRight(1); },
        [&] { return text.replace('q', 'r'); },
        [&] { return text.expandTo(1); },
    };
    for (const auto& modifier : modifiers) EXPECT_EQ(modifier(), 1);
}

}  // namespace
