#include "kfl/IniFileParser.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cstring>
#include <string>
#include <type_traits>

#include "tests/config/simple_ini_reader.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::contentOf;
using kfl_test::textOf;

// They own what they hold.
template <class T>
constexpr bool isCopied = std::is_copy_constructible<T>::value || std::is_copy_assignable<T>::value;
static_assert(!isCopied<kfl::IniFileParser>, "the parser is not to be copied");
static_assert(!isCopied<kfl::st_section>, "sections are not to be copied");
static_assert(!isCopied<st_key>, "keys are not to be copied");

class IniFileParserTest : public testing::Test {
  protected:
    // Parses a file of that content.
    void parse(const std::string& content) {
        EXPECT_TRUE(parser.parseFile(folder.write("test.ini", content).c_str()));
    }
    st_key& key(const char* name, const char* section) { return *parser.getKey(name, section); }

    const kfl_test::TemporaryFolder folder;
    kfl::IniFileParser parser;
};

unsigned int bitsOf(float value) {
    unsigned int bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// A parser at its start.

TEST_F(IniFileParserTest, StartsWithTheUnnamedSectionOnly) {
    EXPECT_EQ(contentOf(parser), "[]\n");
    ASSERT_NE(parser.getSection(""), nullptr);
    EXPECT_EQ(parser.sectionList().count(), 1U);
    EXPECT_EQ(parser.sectionList().idAt(0), parser.getSection(""));
    EXPECT_FALSE(parser.modified);
}

TEST_F(IniFileParserTest, StartsWithBothCreateBits) {
    EXPECT_EQ(parser.flags, 6U);
    EXPECT_EQ(kfl::IniFileParser::iniCreateSections, 2U);
    EXPECT_EQ(kfl::IniFileParser::iniCreateKeys, 4U);
}

// Look-ups.

TEST_F(IniFileParserTest, MissingKeysGiveTheirMarks) {
    parse("a=1\n[Net]\nb=2\n");
    const struct {
        const char* key;
        const char* section;
    } missing[] = {{"x", ""}, {"b", ""}, {"a", "Net"}, {"a", "missing"}, {"", ""}, {"", "x"}};
    for (const auto& row : missing) {
        EXPECT_EQ(parser.getKey(row.key, row.section), nullptr);
        EXPECT_EQ(parser.getValue(row.key, row.section), nullptr);
        EXPECT_EQ(parser.getString(row.key, row.section), nullptr);
        EXPECT_EQ(parser.getInt(row.key, row.section), INT_MIN);
        EXPECT_EQ(parser.getInt(row.key, row.section), static_cast<int>(0x80000000U));
        EXPECT_EQ(parser.getFloat(row.key, row.section), FLT_MIN);
        EXPECT_EQ(bitsOf(parser.getFloat(row.key, row.section)), 0x00800000U);
        EXPECT_FALSE(parser.getBool(row.key, row.section));
    }
    EXPECT_EQ(parser.getSection("missing"), nullptr);
}

TEST_F(IniFileParserTest, NamesAreFoundInAnyCase) {
    parse("[Net]\nMode=a\n");
    EXPECT_STREQ(parser.getValue("mODE", "nET"), "a");
    EXPECT_EQ(parser.getSection("NET"), parser.getSection("net"));
    EXPECT_EQ(parser.getValue("Mod", "Net"), nullptr);
    EXPECT_EQ(parser.getValue("Modes", "Net"), nullptr);
    EXPECT_EQ(parser.getSection("Ne"), nullptr);
    EXPECT_EQ(parser.getSection("Nets"), nullptr);
}

TEST_F(IniFileParserTest, EveryPairOfCharactersComparesAsCompareNoCaseSays) {
    for (int stored = 1; stored < 256; ++stored) {
        const char name[] = {static_cast<char>(stored), 'n', '\0'};
        kfl::IniFileParser one;
        ASSERT_TRUE(one.setValue(name, "v", name));
        for (int wanted = 1; wanted < 256; ++wanted) {
            const char other[] = {static_cast<char>(wanted), 'N', '\0'};
            const bool same = kfl::compareNoCase(name, other) == 0;
            ASSERT_EQ(one.getSection(other) != nullptr, same) << stored << ' ' << wanted;
            ASSERT_EQ(one.getKey(other, name) != nullptr, same) << stored << ' ' << wanted;
        }
    }
}

TEST_F(IniFileParserTest, SectionsAndKeysStandInOrderOfCreation) {
    parse("z=1\ny=2\n[b]\nk=1\n[a]\nm=1\nl=2\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\nz=1\ny=2\n[b]\nk=1\n[a]\nm=1\nl=2\n");
}

TEST_F(IniFileParserTest, ValueIsTheRecordsOwnText) {
    parse("a=1\n");
    EXPECT_EQ(parser.getValue("a", ""), key("a", "").value.c_str());
    EXPECT_EQ(parser.getString("a", ""), parser.getValue("a", ""));
}

TEST_F(IniFileParserTest, IntegersAreReadAsAtoiReadsThem) {
    const struct {
        const char* value;
        int expected;
    } rows[] = {{"8080", 8080},
                {" 8080", 8080},
                {"-17", -17},
                {"+5", 5},
                {"12 apples", 12},
                {"0x10", 0},
                {"text", 0},
                {"", 0},
                {"3.9", 3},
                {"2147483647", INT_MAX},
                {"-2147483648", INT_MIN}};
    ASSERT_TRUE(parser.setValue("k", "first", "s"));
    for (const auto& row : rows) {
        ASSERT_TRUE(parser.setValue("k", row.value, "s"));
        EXPECT_EQ(parser.getInt("k", "s"), row.expected) << row.value;
    }
}

TEST_F(IniFileParserTest, FloatsAreReadAsAtofReadsThemAndNarrowed) {
    const struct {
        const char* value;
        float expected;
    } rows[] = {{"1.5", 1.5F},     {" -0.25", -0.25F}, {"0.1", 0.1F}, {"16777217", 16777216.0F},
                {"1e3x", 1000.0F}, {"text", 0.0F},     {"", 0.0F}};
    ASSERT_TRUE(parser.setValue("k", "first", "s"));
    for (const auto& row : rows) {
        ASSERT_TRUE(parser.setValue("k", row.value, "s"));
        EXPECT_EQ(bitsOf(parser.getFloat("k", "s")), bitsOf(row.expected)) << row.value;
    }
}

TEST_F(IniFileParserTest, EveryValueIsTrue) {
    ASSERT_TRUE(parser.setValue("k", "first", "s"));
    for (const char* value : {"1", "true", "yes", "TRUE", "Yes", "0", "false", "no", "", "2"}) {
        ASSERT_TRUE(parser.setValue("k", value, "s"));
        EXPECT_TRUE(parser.getBool("k", "s")) << value;
    }
}

// The grammar: what a file of one or a few lines stores.

struct GrammarRow {
    const char* name;
    std::string file;
    // As contentOf shows it, without the first two lines.
    std::string stored;
};

void PrintTo(const GrammarRow& row, std::ostream* out) { *out << row.name; }

class IniGrammarTest : public testing::TestWithParam<GrammarRow> {};

std::string repeated(char c, std::size_t n) { return std::string(n, c); }

const GrammarRow grammarRows[] = {
    {"Nothing", "", ""},
    {"EmptyLines", "\n\r\n \n\t\n", ""},
    {"Key", "k=v\n", "k=v\n"},
    {"KeyWithColon", "k:v\n", "k=v\n"},
    {"BlankInFrontOfTheValueStays", "  Port = 8080  \n", "Port= 8080\n"},
    {"AllBlanksInFrontOfTheValueStay", "k=\t  v\n", "k=\\011  v\n"},
    {"FurtherSeparatorsBelongToTheValue", "a==b\nc=:d\ne=f=g:h\n", "a==b\nc=:d\ne=f=g:h\n"},
    {"SeparatorsAtTheEndAreDropped", "k=v=:=\n", "k=v\n"},
    {"SeparatorsAtTheStartAreDropped", ":a=1\n==b:2\n", "a=1\nb=2\n"},
    {"KeyIsTrimmed", "k \t=v\n", "k=v\n"},
    {"BlanksInsideAKeyStay", "a b=v\n", "a b=v\n"},
    {"LineWithoutSeparator", "key\nkey words\n", ""},
    {"LineWithoutValue", "key=\nkey:\nkey = \nkey=:\n", ""},
    {"LineOfSeparators", "=\n:\n=:=\n = \n", ""},
    {"Comments", "; x=1\n# x=1\n  ;y=1\n\t#y=1\n=;z=1\n", ""},
    {"NoCommentBehindAValue", "x=1 ; note\ny=2 # note\n", "x=1 ; note\ny=2 # note\n"},
    {"KeysMayHoldCommentCharacters", "a;b=1\na#=2\n", "a;b=1\na#=2\n"},
    {"NoQuotes", "k=\" v \"\n'q' = 'w'\n", "k=\" v \"\n'q'= 'w'\n"},
    {"NoEscapesAndNoContinuation", "k=a\\\nb\\=c\n", "k=a\\134\nb\\134=c\n"},
    {"CarriageReturnsAtTheEnd", "k=v\r\n[s]\r\nl=w\r\r\n", "k=v\n[s]\nl=w\n"},
    {"CarriageReturnsInside", "k=a\rl=b\n", "k=a\\015l=b\n"},
    {"LastLineWithoutLineFeed", "a=1\nb=2", "a=1\nb=2\n"},
    {"LastHeaderWithoutLineFeed", "a=1\n[s", "a=1\n[s]\n"},
    {"RepeatedKeyKeepsItsNameAndTakesTheLastValue", "[Net]\nMode=a\nmode=b\n", "[Net]\nMode=b\n"},
    {"SameKeyInTwoSections", "k=1\n[s]\nk=2\n", "k=1\n[s]\nk=2\n"},
    {"HeaderKeepsBlanks", "[ a ]\n", "[ a ]\n"},
    {"HeaderEndsAtTheLastBracket", "[A] trailing]\n", "[A] trailing]\n"},
    {"TextBehindAHeaderIsDropped", "[A] trailing\nk=v\n", "[A]\nk=v\n"},
    {"HeaderWithoutBracketNamesAllThatFollows", "[A b=c\nk=v\n", "[A b=c]\nk=v\n"},
    {"HeaderBehindBlanksAndSeparators", " \t:=[s]\nk=v\n", "[s]\nk=v\n"},
    {"HeaderKeepsSeparatorsInside", "[a=b:c]\n", "[a=b:c]\n"},
    {"BracketInsideALineIsNoHeader", "a[b]=c\n", "a[b]=c\n"},
    {"SecondBracketBelongsToTheName", "[[x]]\n", "[[x]]\n"},
    {"EmptyHeaderNamesTheUnnamedSectionAgain", "[]\nk=v\n[\nl=w\n", ""},
    {"RepeatedHeaderSkipsItsKeys", "[a]\nk=1\n[b]\nk=2\n[A]\nk=3\nl=4\n[c]\nk=5\n",
     "[a]\nk=1\n[b]\nk=2\n[c]\nk=5\n"},
    {"RepeatedHeaderTwice", "[a]\n[a]\n[a]\nk=1\n[b]\nk=2\n", "[a]\n[b]\nk=2\n"},
    {"NulEndsALine", std::string("k=v\0w\nl=x\n", 10), "k=v\nl=x\n"},
    {"NulAtTheStartHidesALine", std::string("\0k=v\nl=x\n", 9), "l=x\n"},
    {"NulBehindBlanksIsTrimmedBefore", std::string("k=v \0 \n", 7), "k=v\n"},
    {"CharactersAbove127", "k\xFC=\xE4\xA0\n", "k\\374=\\344\\240\n"},
    {"OtherControlCharactersStay", "\vk\f=\vv\f\n", "\\013k\\014=\\013v\\014\n"},
    {"LongestWholeLine", "a=" + repeated('x', 508) + "\n", "a=" + repeated('x', 508) + "\n"},
    {"LineFeedAlonePastTheLongestLine", "a=" + repeated('x', 509) + "\nb=1\n",
     "a=" + repeated('x', 509) + "\nb=1\n"},
    {"LongLineArrivesInPieces", "a=" + repeated('x', 597) + "\n", "a=" + repeated('x', 509) + "\n"},
    {"PieceOfALongLineCanBeAKey", "a=" + repeated('x', 509) + "b=1\n",
     "a=" + repeated('x', 509) + "\nb=1\n"},
    {"PieceOfALongLineCanBeAHeader", "a=" + repeated('x', 509) + "[s]\nk=v\n",
     "a=" + repeated('x', 509) + "\n[s]\nk=v\n"},
    {"PieceOfALongLineCanBeAComment", "a=" + repeated('x', 509) + ";b=1\n",
     "a=" + repeated('x', 509) + "\n"},
    {"ThirdPieceBegins1022BytesIn", "a=" + repeated('x', 509) + "b=" + repeated('y', 509) + "c=1\n",
     "a=" + repeated('x', 509) + "\nb=" + repeated('y', 509) + "\nc=1\n"},
    {"BlanksAtACutAreDropped", "a=" + repeated('x', 507) + "  " + "b=1\n",
     "a=" + repeated('x', 507) + "\nb=1\n"},
    {"LongHeaderIsCut", "[" + repeated('x', 510) + "]\nk=v\n",
     "[" + repeated('x', 510) + "]\nk=v\n"},
    {"LongCommentEndsAfterAPiece", ";" + repeated('x', 510) + "k=v\n", "k=v\n"},
};

TEST_P(IniGrammarTest, StoresWhatItShould) {
    const kfl_test::TemporaryFolder folder;
    kfl::IniFileParser parser;
    ASSERT_TRUE(parser.parseFile(folder.write("test.ini", GetParam().file).c_str()));
    const std::string& stored = GetParam().stored;
    EXPECT_EQ(contentOf(parser), (stored.empty() ? "" : "modified\n") + ("[]\n" + stored));
    EXPECT_EQ(parser.flags, 6U);
}

// The second reader, with which others of these tests compare, must pass them too.
TEST_P(IniGrammarTest, TheSimpleReaderAgrees) {
    kfl_test::SimpleIniReader reader;
    reader.read(GetParam().file);
    const std::string& stored = GetParam().stored;
    EXPECT_EQ(contentOf(reader), (stored.empty() ? "" : "modified\n") + ("[]\n" + stored));
}

INSTANTIATE_TEST_SUITE_P(Lines, IniGrammarTest, testing::ValuesIn(grammarRows),
                         [](const auto& row) { return row.param.name; });

// Parsing more than once, and flags.

TEST_F(IniFileParserTest, ParsingAgainAddsAndReplaces) {
    parse("a=1\nb=2\n[s]\nc=3\n");
    parse("B=two\nd=4\n[t]\ne=5\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\na=1\nb=two\nd=4\n[s]\nc=3\n[t]\ne=5\n");
}

TEST_F(IniFileParserTest, HeaderOfAnEarlierCallIsNotReopened) {
    parse("[s]\na=1\n");
    parse("[S]\na=2\nb=3\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\n[s]\na=1\n");
}

TEST_F(IniFileParserTest, HeaderOfAHostsSectionIsNotReopened) {
    ASSERT_NE(parser.createSection("Net"), nullptr);
    parse("[net]\na=1\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\n[Net]\n");
}

TEST_F(IniFileParserTest, EachFileBeginsInTheUnnamedSection) {
    parse("[s]\na=1\n");
    parse("b=2\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\nb=2\n[s]\na=1\n");
}

TEST_F(IniFileParserTest, ParsingCreatesWhateverTheFlagsSayAndKeepsThem) {
    for (const unsigned int flags : {0U, 2U, 4U, 6U, 1U, 0xFFFFFFF9U, 0xFFFFFFFFU}) {
        kfl::IniFileParser fresh;
        fresh.flags = flags;
        ASSERT_TRUE(fresh.parseFile(folder.write("f.ini", "a=1\n[s]\nb=2\n").c_str()));
        EXPECT_EQ(contentOf(fresh), "modified\n[]\na=1\n[s]\nb=2\n");
        EXPECT_EQ(fresh.flags, flags);
    }
}

TEST_F(IniFileParserTest, FileThatCannotBeOpenedChangesNothing) {
    parser.flags = 0;
    for (const std::string& path : {folder / "missing.ini", std::string(), folder / "a/b"}) {
        EXPECT_FALSE(parser.parseFile(path.c_str()));
        EXPECT_EQ(contentOf(parser), "[]\n");
        EXPECT_EQ(parser.flags, 0U);
    }
    EXPECT_FALSE(parser.parseFile(nullptr));
    EXPECT_FALSE(parser.modified);
}

TEST_F(IniFileParserTest, FileThatStoresNothingModifiesNothing) {
    parse("; only a comment\n\nkey\n[]\n");
    EXPECT_FALSE(parser.modified);
}

TEST_F(IniFileParserTest, NothingClearsTheModifiedMark) {
    parse("a=1\n");
    EXPECT_TRUE(parser.modified);
    parser.getValue("a", "");
    parse("; nothing\n");
    EXPECT_FALSE(parser.setValue("b", "", ""));
    EXPECT_TRUE(parser.modified);
}

TEST_F(IniFileParserTest, SameValueAgainModifies) {
    parse("a=1\n");
    parser.modified = false;
    parse("a=1\n");
    EXPECT_TRUE(parser.modified);
    parser.modified = false;
    parse("[s]\n");
    EXPECT_TRUE(parser.modified);
}

// createSection.

TEST_F(IniFileParserTest, CreateSectionAppendsAnEmptyOne) {
    kfl::st_section* const section = parser.createSection("Net");
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(textOf(section->name), "Net");
    EXPECT_EQ(section->name.increment(), 100U);
    EXPECT_EQ(section->keys.count(), 0U);
    EXPECT_EQ(parser.sectionList().count(), 2U);
    EXPECT_EQ(parser.sectionList().idAt(1), section);
    EXPECT_EQ(parser.getSection("net"), section);
    EXPECT_TRUE(parser.modified);
}

TEST_F(IniFileParserTest, CreateSectionRefusesANameThatIsThere) {
    ASSERT_NE(parser.createSection("Net"), nullptr);
    parser.modified = false;
    for (const char* name : {"net", "Net", "NET", ""})
        EXPECT_EQ(parser.createSection(name), nullptr) << name;
    EXPECT_FALSE(parser.modified);
    EXPECT_EQ(parser.sectionList().count(), 2U);
}

TEST_F(IniFileParserTest, CreateSectionAsksNoFlag) {
    parser.flags = 0;
    EXPECT_NE(parser.createSection("s"), nullptr);
    EXPECT_EQ(parser.flags, 0U);
}

// setValue, under every combination of the two bits.

struct SetRow {
    const char* key;
    const char* value;
    const char* section;
    unsigned int flags;
    bool stored;
    // Changes are seen against "[]", "[s]", "k=v".
    const char* content;
};

TEST_F(IniFileParserTest, SetValueCreatesWhatTheFlagsAllow) {
    const char* const before = "[]\n[s]\nk=v\n";
    const char* const replaced = "modified\n[]\n[s]\nk=w\n";
    const char* const emptied = "modified\n[]\n[s]\nk=\n";
    const char* const addedKey = "modified\n[]\n[s]\nk=v\nl=w\n";
    const char* const addedSection = "modified\n[]\n[s]\nk=v\n[t]\n";
    const char* const addedBoth = "modified\n[]\n[s]\nk=v\n[t]\nl=w\n";
    const SetRow rows[] = {
        {"K", "w", "S", 0, true, replaced},      {"k", "w", "s", 2, true, replaced},
        {"k", "w", "s", 4, true, replaced},      {"k", "w", "s", 6, true, replaced},
        {"k", "", "s", 0, true, emptied},        {"k", "", "s", 6, true, emptied},
        {"l", "w", "s", 0, false, before},       {"l", "w", "s", 2, false, before},
        {"l", "w", "s", 4, true, addedKey},      {"l", "w", "s", 6, true, addedKey},
        {"l", "", "s", 4, false, before},        {"l", "", "s", 6, false, before},
        {"l", "w", "t", 0, false, before},       {"l", "w", "t", 4, false, before},
        {"l", "w", "t", 2, false, addedSection}, {"l", "w", "t", 6, true, addedBoth},
        {"l", "", "t", 6, false, addedSection},  {"l", "", "t", 4, false, before},
        {"l", "w", "t", 1, false, before},       {"l", "w", "t", 0xFFFFFFF9U, false, before},
    };
    for (const SetRow& row : rows) {
        kfl::IniFileParser fresh;
        ASSERT_TRUE(fresh.setValue("k", "v", "s"));
        fresh.modified = false;
        fresh.flags = row.flags;
        SCOPED_TRACE(testing::Message() << row.key << '=' << row.value << " in " << row.section
                                        << " with " << row.flags);
        EXPECT_EQ(fresh.setValue(row.key, row.value, row.section), row.stored);
        EXPECT_EQ(contentOf(fresh), row.content);
        EXPECT_EQ(fresh.flags, row.flags);
    }
}

TEST_F(IniFileParserTest, SetValueKeepsTextAsItIs) {
    ASSERT_TRUE(parser.setValue(" [k]=: ", "  ;v=\n ", " [s] "));
    EXPECT_STREQ(parser.getValue(" [K]=: ", " [S] "), "  ;v=\n ");
    ASSERT_TRUE(parser.setValue("", "unnamed", ""));
    EXPECT_STREQ(parser.getValue("", ""), "unnamed");
}

TEST_F(IniFileParserTest, NewKeysHaveRoomForEightyCharacters) {
    ASSERT_TRUE(parser.setValue("k", "v", ""));
    EXPECT_EQ(key("k", "").name.capacity(), 80U);
    EXPECT_EQ(key("k", "").value.capacity(), 80U);
    EXPECT_EQ(key("k", "").name.increment(), 100U);
    EXPECT_EQ(key("k", "").value.increment(), 100U);
    const st_key empty;
    EXPECT_TRUE(empty.name.empty());
    EXPECT_TRUE(empty.value.empty());
    EXPECT_EQ(empty.name.capacity(), 80U);
    EXPECT_EQ(empty.value.capacity(), 80U);
}

TEST_F(IniFileParserTest, NewKeysGrowFromEightyCharactersInOneStep) {
    const struct {
        std::size_t length;
        unsigned int capacity;
    } rows[] = {{79, 80}, {80, 180}, {81, 180}, {180, 180}, {300, 300}};
    for (const auto& row : rows) {
        const std::string text(row.length, 't');
        kfl::AString model(80, 100);
        model.append(text.c_str());
        ASSERT_EQ(model.capacity(), row.capacity);

        kfl::IniFileParser set;
        ASSERT_TRUE(set.setValue(text.c_str(), text.c_str(), ""));
        kfl::IniFileParser read;
        const std::string lines = text + "=v\nk=" + text + "\n";
        ASSERT_TRUE(read.parseFile(folder.write("test.ini", lines).c_str()));
        const kfl::AString* const made[] = {
            &set.getKey(text.c_str(), "")->name, &set.getKey(text.c_str(), "")->value,
            &read.getKey(text.c_str(), "")->name, &read.getKey("k", "")->value};
        for (const kfl::AString* grown : made) {
            EXPECT_EQ(textOf(*grown), text);
            EXPECT_EQ(grown->capacity(), row.capacity) << row.length;
            EXPECT_EQ(grown->increment(), 100U);
        }
    }
}

TEST_F(IniFileParserTest, SectionsCopyTheirNames) {
    char name[] = "Net";
    const kfl::st_section section(name);
    name[0] = 'x';
    EXPECT_EQ(textOf(section.name), "Net");
    EXPECT_EQ(section.keys.count(), 0U);
}

TEST_F(IniFileParserTest, ValueThatFitsIsReplacedInPlace) {
    ASSERT_TRUE(parser.setValue("k", "a long first value", ""));
    const char* const text = parser.getValue("k", "");
    ASSERT_TRUE(parser.setValue("k", "short", ""));
    EXPECT_EQ(parser.getValue("k", ""), text);
    EXPECT_STREQ(text, "short");
}

TEST_F(IniFileParserTest, OtherValuesKeepTheirTextWhenOneIsSet) {
    ASSERT_TRUE(parser.setValue("k", "v", "s"));
    const char* const text = parser.getValue("k", "s");
    for (int i = 0; i < 200; ++i) {
        const std::string name = "n" + std::to_string(i);
        ASSERT_TRUE(parser.setValue(name.c_str(), "v", "s"));
        ASSERT_TRUE(parser.setValue("k", "v", name.c_str()));
    }
    EXPECT_EQ(parser.getValue("k", "s"), text);
    EXPECT_STREQ(text, "v");
}

TEST_F(IniFileParserTest, ValueMayBeAPieceOfTheKeysOwnText) {
    const std::string shortText = "0123456789";
    const std::string fullText(80, 'f');
    const std::string longText = std::string(150, 'a') + std::string(150, 'b');
    for (const std::string& text : {shortText, fullText, longText}) {
        for (const std::size_t from :
             {std::size_t{0}, std::size_t{1}, text.size() / 2, text.size() - 1, text.size()}) {
            ASSERT_TRUE(parser.setValue("k", text.c_str(), "s"));
            EXPECT_TRUE(parser.setValue("k", parser.getValue("k", "s") + from, "s"));
            EXPECT_EQ(textOf(key("k", "s").value), text.substr(from)) << from;
        }
    }
}

// A string that is cleared keeps its room, and grows by its rule when it is filled.
TEST_F(IniFileParserTest, ReplacedValueGrowsAsAStringThatIsClearedAndFilled) {
    ASSERT_TRUE(parser.setValue("k", "v", "s"));
    const kfl::AString& value = key("k", "s").value;
    kfl::AString model(value);
    const auto set = [&](const char* text) {
        const std::string copied = text;
        ASSERT_TRUE(parser.setValue("k", text, "s"));
        model.clear();
        model.append(copied.c_str());
        EXPECT_EQ(textOf(value), copied);
        EXPECT_EQ(value.capacity(), model.capacity()) << copied.size();
    };
    for (const unsigned int length : {50U, 79U, 80U, 81U, 170U, 180U, 180U, 20U, 181U, 280U, 1000U,
                                      999U, 1000U, 1101U, 3000U, 2999U, 0U, 3001U}) {
        set(std::string(length, 'v').c_str());
        set(value.c_str());
        set(value.c_str() + length / 3);
    }
}

TEST_F(IniFileParserTest, ArgumentsMayBeTextsOfTheParser) {
    ASSERT_TRUE(parser.setValue("k", "v", "s"));
    const st_key& record = key("k", "s");
    ASSERT_TRUE(parser.setValue(record.value.c_str(), record.name.c_str(), record.name.c_str()));
    ASSERT_TRUE(parser.setValue(record.name.c_str(), record.name.c_str(), "s"));
    const char* const section = parser.getSection("s")->name.c_str();
    ASSERT_TRUE(parser.setValue(section, section, section));
    EXPECT_EQ(contentOf(parser), "modified\n[]\n[s]\nk=k\ns=s\n[k]\nv=k\n");
    EXPECT_EQ(parser.createSection(section), nullptr);
}

TEST_F(IniFileParserTest, LongNamesAndValuesAreKeptWhole) {
    const std::string name(100000, 'n');
    const std::string upper(100000, 'N');
    const std::string value(1000000, 'v');
    ASSERT_TRUE(parser.setValue(name.c_str(), value.c_str(), name.c_str()));
    EXPECT_STREQ(parser.getValue(upper.c_str(), upper.c_str()), value.c_str());
    EXPECT_EQ(parser.getValue(upper.c_str() + 1, upper.c_str()), nullptr);
    EXPECT_EQ(textOf(key(name.c_str(), name.c_str()).name), name);
    ASSERT_TRUE(parser.setValue(name.c_str(), "", name.c_str()));
    EXPECT_STREQ(parser.getValue(name.c_str(), name.c_str()), "");
}

TEST_F(IniFileParserTest, NullArgumentsNameNothing) {
    ASSERT_TRUE(parser.setValue("k", "v", ""));
    parser.modified = false;
    EXPECT_FALSE(parser.setValue(nullptr, "v", ""));
    EXPECT_FALSE(parser.setValue("k", nullptr, ""));
    EXPECT_FALSE(parser.setValue("k", "v", nullptr));
    EXPECT_FALSE(parser.setValue("k", nullptr, "new"));
    EXPECT_EQ(parser.getValue(nullptr, ""), nullptr);
    EXPECT_EQ(parser.getString("k", nullptr), nullptr);
    EXPECT_EQ(parser.getInt(nullptr, nullptr), INT_MIN);
    EXPECT_EQ(parser.getFloat(nullptr, ""), FLT_MIN);
    EXPECT_FALSE(parser.getBool("k", nullptr));
    EXPECT_EQ(parser.getKey(nullptr, ""), nullptr);
    EXPECT_EQ(parser.getSection(nullptr), nullptr);
    EXPECT_EQ(parser.createSection(nullptr), nullptr);
    EXPECT_EQ(contentOf(parser), "[]\nk=v\n");
}

TEST_F(IniFileParserTest, NullSectionNameIsTheEmptyOne) {
    const kfl::st_section section(nullptr);
    EXPECT_EQ(textOf(section.name), "");
}

// Hosts reach the records.

TEST_F(IniFileParserTest, ValuesThatAHostChangedAreRead) {
    parse("[s]\nk=1\n");
    key("k", "s").value.append("2");
    EXPECT_EQ(parser.getInt("k", "s"), 12);
    key("k", "s").value.clear();
    EXPECT_STREQ(parser.getValue("k", "s"), "");
    EXPECT_TRUE(parser.getBool("k", "s"));
}

TEST_F(IniFileParserTest, NamesThatAHostChangedAreFound) {
    parse("[s]\nk=1\n");
    parser.getSection("s")->name.append("ection");
    EXPECT_EQ(parser.getSection("s"), nullptr);
    key("k", "Section").name.append("ey");
    EXPECT_EQ(parser.getInt("KEY", "SECTION"), 1);
    parse("[s]\nk=2\n");
    EXPECT_EQ(contentOf(parser), "modified\n[]\n[section]\nkey=1\n[s]\nk=2\n");
}

TEST_F(IniFileParserTest, OfEqualNamesThatAHostMadeTheFirstIsFound) {
    parse("[first]\nk=1\nl=2\nm=3\n[second]\nonly=4\n[third]\nk=5\n");
    kfl::st_section* const first = parser.getSection("first");
    for (const char* name : {"second", "third"}) {
        kfl::AString& renamed = parser.getSection(name)->name;
        renamed.clear();
        renamed.append("FIRST");
    }
    EXPECT_EQ(parser.getSection("first"), first);
    EXPECT_EQ(parser.getSection("FIRST"), first);
    EXPECT_EQ(parser.getKey("only", "FIRST"), nullptr);

    st_key& k = key("k", "first");
    for (const char* name : {"l", "m"}) {
        kfl::AString& renamed = key(name, "first").name;
        renamed.clear();
        renamed.append("K");
    }
    EXPECT_EQ(parser.getKey("k", "first"), &k);
    EXPECT_EQ(parser.getKey("K", "first"), &k);
    EXPECT_TRUE(parser.setValue("K", "new", "FIRST"));
    EXPECT_EQ(contentOf(parser),
              "modified\n[]\n[first]\nk=new\nK=2\nK=3\n[FIRST]\nonly=4\n[FIRST]\nk=5\n");
}

TEST_F(IniFileParserTest, KeysThatAHostAddedAreFoundAndDeleted) {
    kfl::st_section* const section = parser.createSection("s");
    auto* const added = new st_key;
    added->name.append("k");
    added->value.append("v");
    section->keys.add(added);
    EXPECT_STREQ(parser.getValue("K", "S"), "v");
    EXPECT_TRUE(parser.setValue("k", "w", "s"));
    EXPECT_STREQ(added->value.c_str(), "w");
}

TEST_F(IniFileParserTest, KeysThatAHostRemovedAreGone) {
    parse("[s]\nk=1\nl=2\n");
    kfl::st_section* const section = parser.getSection("s");
    const auto* const removed = static_cast<st_key*>(section->keys.removeAt(0));
    EXPECT_EQ(parser.getKey("k", "s"), nullptr);
    EXPECT_EQ(parser.getInt("l", "s"), 2);
    delete removed;
}

TEST_F(IniFileParserTest, EmptyEntryOfAHostEndsTheWalk) {
    parse("[s]\nk=1\nl=2\nm=3\n");
    kfl::st_section* const section = parser.getSection("s");
    const auto* const removed = static_cast<st_key*>(section->keys.replaceAt(1, nullptr));
    EXPECT_EQ(parser.getInt("k", "s"), 1);
    EXPECT_EQ(parser.getKey("l", "s"), nullptr);
    EXPECT_EQ(parser.getKey("m", "s"), nullptr);
    delete removed;
}

TEST_F(IniFileParserTest, UnnamedSectionThatAHostRenamedTakesNoKeys) {
    parser.getSection("")->name.append("renamed");
    parse("a=1\n[s]\nb=2\n");
    EXPECT_EQ(contentOf(parser), "modified\n[renamed]\n[s]\nb=2\n");
}

TEST_F(IniFileParserTest, DeletesThroughItsVirtualDestructor) {
    class Watched : public kfl::IniFileParser {
      public:
        explicit Watched(bool& gone) : gone_(gone) {}
        ~Watched() override { gone_ = true; }

      private:
        bool& gone_;
    };
    bool gone = false;
    kfl::IniFileParser* const watched = new Watched(gone);
    delete watched;
    EXPECT_TRUE(gone);
}

}  // namespace
