// Look-ups are linear walks, so what they do with each entry counts: the comparison function is
// called only for names of the same length, first letter and last two.
#include <gtest/gtest.h>
#include <strings.h>

#include <string>
#include <vector>

#include "kfl/IniFileParser.h"

namespace {

int comparisons = 0;

}  // namespace

extern "C" {
int __real_strncasecmp(const char* a, const char* b, std::size_t n);
int __wrap_strncasecmp(const char* a, const char* b, std::size_t n);
int __wrap_strcasecmp(const char* a, const char* b);
}

int __wrap_strncasecmp(const char* a, const char* b, std::size_t n) {
    ++comparisons;
    return __real_strncasecmp(a, b, n);
}

int __wrap_strcasecmp(const char* a, const char* b) {
    ++comparisons;
    return __real_strncasecmp(a, b, static_cast<std::size_t>(-1));
}

namespace {

class IniFileParserLookupTest : public testing::Test {
  protected:
    void SetUp() override {
        for (char c = 'a'; c <= 'z'; ++c) {
            const std::string name = std::string(1, c) + "-name";
            ASSERT_TRUE(parser.setValue(name.c_str(), "v", "s"));
            ASSERT_NE(parser.createSection(name.c_str()), nullptr);
        }
        comparisons = 0;
    }

    kfl::IniFileParser parser;
};

TEST_F(IniFileParserLookupTest, OnlyTheMatchIsCompared) {
    EXPECT_NE(parser.getSection("Z-NAME"), nullptr);
    EXPECT_EQ(comparisons, 1);
    comparisons = 0;
    EXPECT_NE(parser.getValue("Y-Name", "S"), nullptr);
    EXPECT_EQ(comparisons, 2);  // the section and the key
}

TEST_F(IniFileParserLookupTest, NamesOfAnotherStartOrLengthAreNotCompared) {
    EXPECT_EQ(parser.getSection("0-name"), nullptr);
    EXPECT_EQ(parser.getSection("a-names"), nullptr);
    EXPECT_EQ(parser.getSection("a"), nullptr);
    EXPECT_EQ(comparisons, 0);
}

TEST_F(IniFileParserLookupTest, NamesOfAnotherEndAreNotCompared) {
    EXPECT_EQ(parser.getSection("a-namf"), nullptr);
    EXPECT_EQ(parser.getSection("a-nane"), nullptr);
    EXPECT_EQ(comparisons, 0);
}

TEST_F(IniFileParserLookupTest, ShortNamesAreFound) {
    for (const char* const name : {"k", "kl", "klm"}) {
        ASSERT_TRUE(parser.setValue(name, name, "s"));
        EXPECT_STREQ(parser.getValue(name, "S"), name);
    }
    EXPECT_EQ(parser.getValue("m", "s"), nullptr);
    EXPECT_EQ(parser.getValue("km", "s"), nullptr);
    EXPECT_STREQ(parser.getValue("KL", "s"), "kl");
}

TEST_F(IniFileParserLookupTest, NamesThatDifferFurtherOnAreCompared) {
    EXPECT_EQ(parser.getSection("a-nome"), nullptr);
    EXPECT_EQ(comparisons, 1);
}

// Which of these are letters of one another is the locale's business.
TEST_F(IniFileParserLookupTest, StartsAbove127AreLeftToTheComparison) {
    kfl::IniFileParser other;
    ASSERT_NE(other.createSection("\xA1 name"), nullptr);
    comparisons = 0;
    other.getSection("\xB1 name");
    EXPECT_EQ(comparisons, 1);
    other.getSection("\xB1 names");
    EXPECT_EQ(comparisons, 1);
}

TEST_F(IniFileParserLookupTest, EndsAbove127AreLeftToTheComparison) {
    kfl::IniFileParser other;
    ASSERT_NE(other.createSection("name \xA1z"), nullptr);
    comparisons = 0;
    other.getSection("name \xB1z");
    EXPECT_EQ(comparisons, 1);
    other.getSection("name az");
    EXPECT_EQ(comparisons, 2);
}

TEST_F(IniFileParserLookupTest, EndsAbove127AreLeftToTheComparisonBesideAnything) {
    for (const char* const frame : {"*z", "z*", "*1", "1*"}) {
        for (const char c : {'\x80', '\x81', '\x82', '\xBE', '\xC2', '\xFE'}) {
            std::string name = std::string("name ") + frame;
            std::string wanted = name;
            name[name.find('*')] = c;
            wanted[wanted.find('*')] = static_cast<char>(c ^ 0x10);
            kfl::IniFileParser other;
            ASSERT_NE(other.createSection(name.c_str()), nullptr);
            comparisons = 0;
            other.getSection(wanted.c_str());
            EXPECT_EQ(comparisons, 1) << frame;
        }
    }
}

// What a host has done to the list of a section.
TEST_F(IniFileParserLookupTest, OnlyWhatIsInTheListIsFound) {
    kfl::VoidPtrOrderedCollection& keys = parser.getSection("s")->keys;
    const unsigned int count = keys.count();
    ASSERT_EQ(count, 26U);
    auto* const last = static_cast<kfl::st_key*>(keys.idAt(count - 1));
    keys.expandTo(count - 1);
    EXPECT_EQ(parser.getKey("z-name", "s"), nullptr);
    EXPECT_NE(parser.getKey("y-name", "s"), nullptr);
    keys.expandTo(count + 5);
    keys.removeAt(count - 1);
    keys.add(last);

    std::vector<void*> items(keys.data(), keys.data() + count);
    keys.clear();
    EXPECT_EQ(parser.getKey("a-name", "s"), nullptr);
    for (void* const item : items) keys.add(item);
    EXPECT_EQ(parser.getKey("z-name", "s"), last);
}

TEST_F(IniFileParserLookupTest, OtherDigitsAreNotCompared) {
    kfl::IniFileParser other;
    for (const char* const name : {"unit-11", "unit-12", "unit-21", "unit-1a", "unit-a1"}) {
        ASSERT_NE(other.createSection(name), nullptr);
    }
    comparisons = 0;
    EXPECT_EQ(other.getSection("unit-22"), nullptr);
    EXPECT_EQ(other.getSection("unit-2b"), nullptr);
    EXPECT_EQ(other.getSection("unit-b2"), nullptr);
    EXPECT_EQ(comparisons, 0);
    EXPECT_NE(other.getSection("UNIT-1A"), nullptr);
    EXPECT_NE(other.getSection("UNIT-A1"), nullptr);
    EXPECT_NE(other.getSection("UNIT-21"), nullptr);
}

// Every character beside every other, in the last two places and in front of them.
TEST_F(IniFileParserLookupTest, FindsWhatTheComparisonCallsEqual) {
    kfl::IniFileParser other;
    kfl::st_section* const section = other.createSection("name");
    ASSERT_NE(section, nullptr);
    for (const std::string frame :
         {"*1", "1*", "*a", "a*", "*\xE1", "\xE1*", "1*1", "*11", "a*a"}) {
        const std::size_t place = frame.find('*');
        std::string name = frame;
        std::string wanted = frame;
        for (int a = 1; a < 256; ++a) {
            name[place] = static_cast<char>(a);
            section->name.clear();
            section->name.append(name.c_str());
            for (int b = 1; b < 256; ++b) {
                wanted[place] = static_cast<char>(b);
                const bool isEqual = strncasecmp(name.c_str(), wanted.c_str(), 4) == 0;
                ASSERT_EQ(other.getSection(wanted.c_str()), isEqual ? section : nullptr)
                    << frame << ' ' << a << ' ' << b;
            }
        }
    }
}

}  // namespace
