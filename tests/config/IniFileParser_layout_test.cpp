// The INI parser and its records as an already compiled host knows them.
#include "kfl/IniFileParser.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <type_traits>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t flagsOffset = bits(4, 8);
constexpr std::size_t sectionsOffset = bits(8, 16);
constexpr std::size_t modifiedOffset = bits(32, 56);

// Inside a string: its text; inside a list: its storage and its count.
constexpr std::size_t textOffset = bits(12, 24);
constexpr std::size_t stringCapacityOffset = bits(16, 32);
constexpr std::size_t stringLengthOffset = bits(20, 36);
constexpr std::size_t incrementOffset = bits(24, 40);
constexpr std::size_t listDataOffset = bits(8, 16);
constexpr std::size_t listCountOffset = bits(20, 32);

constexpr std::size_t keysOffset = bits(28, 48);
constexpr std::size_t valueOffset = bits(28, 48);

const char* textAt(const void* string, std::size_t offset = 0) {
    return static_cast<const char*>(pointerAt(string, offset + textOffset));
}

// The `index`-th pointer of the list that stands at that offset.
void* itemAt(const void* owner, std::size_t listOffset, std::size_t index) {
    return pointerAt(pointerAt(owner, listOffset + listDataOffset), index * pointerSize);
}

void* tableOf(const char* name) {
    return static_cast<unsigned char*>(exported(name)) + 2 * pointerSize;
}

class HostParser : public Room<bits(36, 64)> {
  public:
    HostParser() { call<void, void*>("_ZN3kfl13IniFileParserC1Ev", *this); }
    ~HostParser() { callSlot<void>(0, *this); }
    HostParser(const HostParser&) = delete;
    HostParser& operator=(const HostParser&) = delete;

    bool set(const char* key, const char* value, const char* section) const {
        return call<bool, void*, const char*, const char*, const char*>(
            "_ZN3kfl13IniFileParser8setValueEPKcS2_S2_", *this, key, value, section);
    }
};

TEST(IniFileParserLayoutTest, Sizes) {
    EXPECT_EQ(sizeof(kfl::IniFileParser), bits(36, 64));
    EXPECT_EQ(sizeof(kfl::st_section), bits(52, 88));
    EXPECT_EQ(sizeof(st_key), bits(56, 96));
    EXPECT_FALSE(std::is_polymorphic<kfl::st_section>::value);
    EXPECT_FALSE(std::is_polymorphic<st_key>::value);
    EXPECT_TRUE((std::is_same<st_key, kfl::st_key>::value));
}

TEST(IniFileParserLayoutTest, KeyIsTwoStrings) {
    const Room<bits(56, 96)> key;
    call<void, void*>("_ZN6st_keyC1Ev", key);
    for (const std::size_t offset : {std::size_t{0}, valueOffset}) {
        EXPECT_EQ(key.pointer(offset), tableOf("_ZTVN3kfl7AStringE"));
        EXPECT_STREQ(textAt(key, offset), "");
        EXPECT_EQ(key.word(offset + stringCapacityOffset), 80U);
        EXPECT_EQ(key.word(offset + stringLengthOffset), 0U);
        EXPECT_EQ(key.word(offset + incrementOffset), 100U);
    }
    EXPECT_TRUE(key.intact());
    call<void, void*>("_ZN6st_keyD1Ev", key);
    call<void, void*>("_ZN6st_keyC1Ev", key);
    call<void, void*>("_ZN6st_keyD2Ev", key);
}

TEST(IniFileParserLayoutTest, SectionIsAStringAndAList) {
    const Room<bits(52, 88)> section;
    call<void, void*, const char*>("_ZN3kfl10st_sectionC1EPKc", section, "peer");
    EXPECT_EQ(section.pointer(0), tableOf("_ZTVN3kfl7AStringE"));
    EXPECT_STREQ(textAt(section), "peer");
    EXPECT_EQ(section.word(stringCapacityOffset), 4U);
    EXPECT_EQ(section.word(stringLengthOffset), 4U);
    EXPECT_EQ(section.word(incrementOffset), 100U);
    EXPECT_EQ(section.pointer(keysOffset), tableOf("_ZTVN3kfl24VoidPtrOrderedCollectionE"));
    EXPECT_EQ(section.word(keysOffset + listCountOffset), 0U);
    EXPECT_TRUE(section.intact());
    call<void, void*>("_ZN3kfl10st_sectionD1Ev", section);
    call<void, void*, const char*>("_ZN3kfl10st_sectionC1EPKc", section, "peer");
    call<void, void*>("_ZN3kfl10st_sectionD2Ev", section);
}

TEST(IniFileParserLayoutTest, ParserHasFlagsSectionsAndModified) {
    EXPECT_EQ(unsigned{kfl::IniFileParser::iniCreateSections}, 2U);
    EXPECT_EQ(unsigned{kfl::IniFileParser::iniCreateKeys}, 4U);
    const HostParser parser;
    EXPECT_EQ(parser.word(flagsOffset), 6U);
    EXPECT_EQ(parser.pointer(sectionsOffset), tableOf("_ZTVN3kfl24VoidPtrOrderedCollectionE"));
    EXPECT_EQ(parser.word(sectionsOffset + listCountOffset), 1U);
    EXPECT_FALSE(fieldAt<bool>(parser, modifiedOffset));
    EXPECT_STREQ(textAt(itemAt(parser, sectionsOffset, 0)), "");
    EXPECT_TRUE(parser.intact());
}

TEST(IniFileParserLayoutTest, TableHasTwoSlots) {
    const HostParser parser;
    expectTable(parser, 0, "_ZTIN3kfl13IniFileParserE",
                {"_ZN3kfl13IniFileParserD1Ev", "_ZN3kfl13IniFileParserD0Ev"});
    expectTableWords("_ZTVN3kfl13IniFileParserE", 4);
    callSlot<void>(1, new kfl::IniFileParser);
    const Room<bits(36, 64)> other;
    call<void, void*>("_ZN3kfl13IniFileParserC1Ev", other);
    call<void, void*>("_ZN3kfl13IniFileParserD2Ev", other);
}

TEST(IniFileParserLayoutTest, StoredValuesAreFoundInTheRecords) {
    const HostParser parser;
    EXPECT_TRUE(parser.set("address", "10.0.0.1", "peer"));
    EXPECT_TRUE(fieldAt<bool>(parser, modifiedOffset));
    EXPECT_EQ(parser.word(sectionsOffset + listCountOffset), 2U);
    const void* const section = itemAt(parser, sectionsOffset, 1);
    EXPECT_STREQ(textAt(section), "peer");
    EXPECT_EQ(wordAt(section, keysOffset + listCountOffset), 1U);
    const void* const key = itemAt(section, keysOffset, 0);
    EXPECT_STREQ(textAt(key), "address");
    EXPECT_STREQ(textAt(key, valueOffset), "10.0.0.1");
    EXPECT_EQ(
        (call<void*, void*, const char*>("_ZN3kfl13IniFileParser10getSectionEPKc", parser, "PEER")),
        section);
    EXPECT_EQ((call<void*, void*, const char*, const char*>("_ZN3kfl13IniFileParser6getKeyEPKcS2_",
                                                            parser, "ADDRESS", "PEER")),
              key);
}

TEST(IniFileParserLayoutTest, TheFlagBitsAreReadWhereTheyStand) {
    const HostParser parser;
    setFieldAt<unsigned int>(parser, flagsOffset, 4);
    EXPECT_FALSE(parser.set("key", "1", "missing"));
    EXPECT_TRUE(parser.set("key", "1", ""));
    setFieldAt<unsigned int>(parser, flagsOffset, 2);
    EXPECT_FALSE(parser.set("other", "1", ""));
    EXPECT_TRUE(parser.set("key", "2", ""));
}

TEST(IniFileParserLayoutTest, OtherOperationsAreFoundByTheirNames) {
    const HostParser parser;
    EXPECT_TRUE(parser.set("rate", "2.5", "line"));
    const auto text = [&](const char* name) {
        return call<const char*, void*, const char*, const char*>(name, parser, "rate", "line");
    };
    EXPECT_STREQ(text("_ZN3kfl13IniFileParser8getValueEPKcS2_"), "2.5");
    EXPECT_STREQ(text("_ZN3kfl13IniFileParser9getStringEPKcS2_"), "2.5");
    EXPECT_EQ((call<int, void*, const char*, const char*>("_ZN3kfl13IniFileParser6getIntEPKcS2_",
                                                          parser, "rate", "line")),
              2);
    EXPECT_EQ((call<float, void*, const char*, const char*>(
                  "_ZN3kfl13IniFileParser8getFloatEPKcS2_", parser, "rate", "line")),
              2.5F);
    EXPECT_TRUE((call<bool, void*, const char*, const char*>(
        "_ZN3kfl13IniFileParser7getBoolEPKcS2_", parser, "rate", "line")));
    EXPECT_NE((call<void*, void*, const char*>("_ZN3kfl13IniFileParser13createSectionEPKc", parser,
                                               "new")),
              nullptr);
    EXPECT_FALSE((call<bool, void*, const char*>("_ZN3kfl13IniFileParser9parseFileEPKc", parser,
                                                 "/nonexistent/file")));
    EXPECT_EQ((call<int, const char*, const char*>("_ZN3kfl13compareNoCaseEPKcS1_", "Abc", "aBC")),
              0);
    kfl::AString line("key = value");
    kfl::AString word(10U);
    call<void, void*, void*>("_ZN3kfl11getNextWordERNS_7AStringES1_", &line, &word);
    EXPECT_STREQ(word.c_str(), "key");
    EXPECT_STREQ(line.c_str(), " value");
    call<void, void*>("_ZN3kfl4trimERNS_7AStringE", &line);
    EXPECT_STREQ(line.c_str(), "value");
}

}  // namespace
