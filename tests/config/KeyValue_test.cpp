#include "kfl/KeyValue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/config/simple_ini_reader.h"
#include "tests/support/counted_new.h"
#include "tests/support/seed.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::KeyValuePair;
using kfl::KeyValueParser;
using kfl::NameValuePair;
using kfl_test::AllocationCount;
using kfl_test::FailingNew;
using kfl_test::TemporaryFolder;

struct Texts {
    std::string key, value;
};

// A pair of texts that the caller cannot change.
class Pair : public KeyValuePair {
  public:
    explicit Pair(Texts texts) : KeyValuePair(texts.key.data(), texts.value.data()) {}
};

// Pairs that live together, in the form in which parse takes them.
class Pairs {
  public:
    Pairs(std::initializer_list<Texts> texts) : Pairs(std::vector<Texts>(texts)) {}
    explicit Pairs(const std::vector<Texts>& texts) {
        for (const Texts& each : texts) add(each);
        pointers_.push_back(nullptr);
    }

    KeyValuePair** array() { return pointers_.data(); }
    std::string value(std::size_t i) const { return pairs_[i]->value.c_str(); }
    KeyValuePair& operator[](std::size_t i) { return *pairs_[i]; }
    std::size_t size() const { return pairs_.size(); }

  private:
    void add(const Texts& texts) {
        pairs_.push_back(std::make_unique<Pair>(texts));
        pointers_.push_back(pairs_.back().get());
    }

    std::vector<std::unique_ptr<Pair>> pairs_;
    std::vector<KeyValuePair*> pointers_;
};

// --- the pairs ---

TEST(KeyValuePairTest, CopiesBothTexts) {
    char key[] = "host";
    char value[] = "a value";
    const KeyValuePair pair(key, value);
    key[0] = value[0] = '?';
    EXPECT_STREQ(pair.key.c_str(), "host");
    EXPECT_STREQ(pair.value.c_str(), "a value");
    EXPECT_EQ(pair.key.length(), 4U);
    EXPECT_EQ(pair.key.capacity(), 4U);
    EXPECT_EQ(pair.key.increment(), 100U);
    EXPECT_EQ(pair.value.capacity(), 7U);
    EXPECT_EQ(pair.value.increment(), 100U);
}

TEST(KeyValuePairTest, NullCountsAsEmpty) {
    const KeyValuePair pair(nullptr, nullptr);
    EXPECT_STREQ(pair.key.c_str(), "");
    EXPECT_STREQ(pair.value.c_str(), "");
}

TEST(KeyValuePairTest, IsDeletedWholeThroughItsBase) {
    const AllocationCount count;
    char text[] = "text";
    const kfl::SObject* const base = new KeyValuePair(text, text);
    EXPECT_EQ(count.live(), 3);
    delete base;
    EXPECT_EQ(count.live(), 0);
}

TEST(KeyValuePairTest, ReleasesTheValueBeforeTheKey) {
    char text[] = "text";
    alignas(KeyValuePair) unsigned char room[sizeof(KeyValuePair)];
    auto* const pair = new (room) KeyValuePair(text, text);
    const void* const key = pair->key.c_str();
    const void* const value = pair->value.c_str();
    const kfl_test::AllocationCount count;
    pair->~KeyValuePair();
    ASSERT_EQ(count.released(), 2U);
    EXPECT_EQ(count.releasedBlock(0), value);
    EXPECT_EQ(count.releasedBlock(1), key);
}

TEST(KeyValuePairTest, AFailedConstructionLeavesNothing) {
    const AllocationCount count;
    char text[] = "text";
    for (unsigned long n = 1; n <= 3; ++n) {
        const FailingNew failing(n);
        EXPECT_THROW(delete new KeyValuePair(text, text), std::bad_alloc);
        EXPECT_TRUE(failing.happened());
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(NameValuePairTest, CopiesBothTexts) {
    char name[] = "host";
    char value[] = "";
    const NameValuePair pair(name, value);
    name[0] = '?';
    EXPECT_STREQ(pair.name.c_str(), "host");
    EXPECT_STREQ(pair.value.c_str(), "");
    EXPECT_EQ(pair.referenceCount(), 0U);
}

TEST(NameValuePairTest, BothStringsHaveRoomFor100MoreCharacters) {
    for (const std::string& text : {std::string(), std::string("h"), std::string(500, 'x')}) {
        const AllocationCount count;
        const NameValuePair pair(text.c_str(), text.c_str());
        EXPECT_EQ(count.made(), 2U) << "one for each string";
        // As a string that is built full, cleared and filled again.
        kfl::AString refilled(text.c_str());
        refilled.clear();
        refilled.append(text.c_str());
        for (const kfl::AString* string : {&pair.name, &pair.value}) {
            EXPECT_EQ(string->c_str(), text);
            EXPECT_EQ(string->length(), text.size());
            EXPECT_EQ(string->capacity(), text.size() + 100);
            EXPECT_EQ(string->capacity(), refilled.capacity());
            EXPECT_EQ(string->increment(), 100U);
        }
    }
}

TEST(NameValuePairTest, NullCountsAsEmpty) {
    const NameValuePair pair(nullptr, nullptr);
    EXPECT_STREQ(pair.name.c_str(), "");
    EXPECT_STREQ(pair.value.c_str(), "");
    EXPECT_EQ(pair.name.capacity(), 100U);
    EXPECT_EQ(pair.value.capacity(), 100U);
}

TEST(NameValuePairTest, IsSharedByHandles) {
    const AllocationCount count;
    {
        const ProtectionElement first(new NameValuePair("name", "value"));
        const ProtectionElement second(first);
        EXPECT_EQ(second.get()->referenceCount(), 2U);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(NameValuePairTest, ReleasesTheValueBeforeTheName) {
    alignas(NameValuePair) unsigned char room[sizeof(NameValuePair)];
    auto* const pair = new (room) NameValuePair("name", "value");
    const void* const name = pair->name.c_str();
    const void* const value = pair->value.c_str();
    const kfl_test::AllocationCount count;
    pair->~NameValuePair();
    ASSERT_EQ(count.released(), 2U);
    EXPECT_EQ(count.releasedBlock(0), value);
    EXPECT_EQ(count.releasedBlock(1), name);
}

TEST(NameValuePairTest, AFailedConstructionLeavesNothing) {
    const AllocationCount count;
    for (unsigned long n = 1; n <= 3; ++n) {
        const FailingNew failing(n);
        EXPECT_THROW(delete new NameValuePair("name", "value"), std::bad_alloc);
        EXPECT_TRUE(failing.happened());
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(KeyValuePairTest, PairsCannotBeCopied) {
    static_assert(!std::is_copy_constructible<KeyValuePair>::value, "");
    static_assert(!std::is_copy_assignable<KeyValuePair>::value, "");
    static_assert(!std::is_copy_constructible<NameValuePair>::value, "");
    static_assert(!std::is_copy_assignable<NameValuePair>::value, "");
    static_assert(std::is_base_of<kfl::SObject, KeyValuePair>::value, "");
    static_assert(std::is_base_of<Protectable, NameValuePair>::value, "");
}

// --- the parser ---

class KeyValueParserTest : public testing::Test {
  protected:
    int parse(const std::string& content, Pairs& pairs) {
        return KeyValueParser::parse(folder.write("pairs", content).c_str(), pairs.array());
    }

    const TemporaryFolder folder;
};

TEST_F(KeyValueParserTest, FillsAPairWhoseKeyIsFoundInAnyCase) {
    Pairs pairs{{"host", "x"}};
    EXPECT_EQ(parse("Host=a", pairs), 2);
    EXPECT_EQ(pairs.value(0), "a");
    EXPECT_STREQ(pairs[0].key.c_str(), "host");
}

TEST_F(KeyValueParserTest, KeysUnderAHeaderAreNotFound) {
    Pairs pairs{{"host", "x"}, {"port", "1"}};
    EXPECT_EQ(parse("[S]\nhost=a\nport=2\n", pairs), 1);
    EXPECT_EQ(pairs.value(0), "x");
    EXPECT_EQ(pairs.value(1), "1");
}

TEST_F(KeyValueParserTest, OnlyKeysInFrontOfTheFirstHeaderCount) {
    Pairs pairs{{"host", "x"}, {"port", "1"}, {"path", "/"}};
    EXPECT_EQ(parse("host=a\n[]\nport=2\n[S]\nhost=b\n[s]\npath=c\n", pairs), 2);
    EXPECT_EQ(pairs.value(0), "a");
    EXPECT_EQ(pairs.value(1), "1");
    EXPECT_EQ(pairs.value(2), "/");
}

TEST_F(KeyValueParserTest, AMissingKeyLeavesTheDefault) {
    Pairs pairs{{"none", "default"}, {"host", "x"}, {"nor this", ""}};
    EXPECT_EQ(parse("host=a\nhosts=b\nhos=c\n", pairs), 2);
    EXPECT_EQ(pairs.value(0), "default");
    EXPECT_EQ(pairs.value(1), "a");
    EXPECT_EQ(pairs.value(2), "");
}

TEST_F(KeyValueParserTest, EveryPairOfAKeyIsFilled) {
    Pairs pairs{{"host", "x"}, {"HOST", "y"}, {"host", ""}};
    EXPECT_EQ(parse("Host=a", pairs), 2);
    for (std::size_t i = 0; i < pairs.size(); ++i) EXPECT_EQ(pairs.value(i), "a") << i;
}

TEST_F(KeyValueParserTest, TheFilesRulesHold) {
    Pairs pairs{{"a", "-"}, {"b", "-"}, {"c", "-"}, {"d", "-"}, {"e", "-"}, {"f", "-"}, {"g", "-"}};
    EXPECT_EQ(parse("; a=1\n# b=1\r\n  c = 1 ; note \r\n:d: 1 = 2\ne\nf=\ng=1\nG==2", pairs), 2);
    EXPECT_EQ(pairs.value(0), "-");
    EXPECT_EQ(pairs.value(1), "-");
    EXPECT_EQ(pairs.value(2), " 1 ; note");
    EXPECT_EQ(pairs.value(3), " 1 = 2");
    EXPECT_EQ(pairs.value(4), "-");
    EXPECT_EQ(pairs.value(5), "-");
    EXPECT_EQ(pairs.value(6), "=2");
}

TEST_F(KeyValueParserTest, NoPairsGive1ForAFileThatCanBeRead) {
    Pairs none({});
    EXPECT_EQ(parse("host=a", none), 1);
    EXPECT_EQ(KeyValueParser::parse(folder.write("f", "a=1").c_str(), nullptr), 1);
}

TEST_F(KeyValueParserTest, AnEmptyFileHoldsNoKey) {
    Pairs pairs{{"host", "x"}, {"", "y"}};
    EXPECT_EQ(parse("", pairs), 1);
    EXPECT_EQ(parse("=\n: =x\n", pairs), 1);
    EXPECT_EQ(KeyValueParser::parse("/dev/null", pairs.array()), 1);
    EXPECT_EQ(pairs.value(1), "y");
}

TEST_F(KeyValueParserTest, AMissingFileGives0AndChangesNothing) {
    Pairs pairs{{"host", "x"}};
    EXPECT_EQ(KeyValueParser::parse((folder / "missing").c_str(), pairs.array()), 0);
    EXPECT_EQ(KeyValueParser::parse("", pairs.array()), 0);
    EXPECT_EQ(KeyValueParser::parse(nullptr, pairs.array()), 0);
    EXPECT_EQ(KeyValueParser::parse("/dev/null/x", nullptr), 0);
    EXPECT_EQ(pairs.value(0), "x");
}

TEST_F(KeyValueParserTest, ADirectoryReadsAsAnEmptyFile) {
    Pairs pairs{{"host", "x"}};
    EXPECT_EQ(KeyValueParser::parse(folder.path().c_str(), pairs.array()), 1);
    EXPECT_EQ(pairs.value(0), "x");
}

TEST_F(KeyValueParserTest, TheValueGrowsAsAStringThatIsClearedAndFilled) {
    for (const std::size_t defaultLength : {0U, 3U, 10U, 200U}) {
        for (const std::size_t length : {1U, 9U, 10U, 11U, 250U}) {
            const std::string value(length, 'v');
            Pairs pairs{{"k", std::string(defaultLength, 'd')}};
            kfl::AString expected(std::string(defaultLength, 'd').c_str());
            expected.clear();
            expected.append(value.c_str());
            EXPECT_EQ(parse("k=" + value, pairs), 2);
            EXPECT_EQ(pairs.value(0), value);
            EXPECT_EQ(pairs[0].value.length(), length);
            EXPECT_EQ(pairs[0].value.capacity(), expected.capacity());
        }
    }
}

TEST_F(KeyValueParserTest, CanBeConstructedAndLeavesNothingBehind) {
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const std::string path = folder.write("pairs", "host=a value\nport=1\n[S]\nx=y\n");
    Pairs pairs{{"host", std::string(200, 'd')}, {"port", "2"}};
    const auto before = openFiles();
    const AllocationCount count;
    const KeyValueParser parser;
    static_cast<void>(parser);
    EXPECT_EQ(KeyValueParser::parse(path.c_str(), pairs.array()), 2);
    EXPECT_EQ(count.live(), 0);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(KeyValueParserTest, AFailedAllocationReachesTheCallerAndLosesNothingElse) {
    const std::string value(300, 'v');
    const std::string path = folder.write("pairs", "a=" + value + "\nb=" + value + "\n");
    bool done = false;
    for (unsigned long n = 1; !done; ++n) {
        ASSERT_LT(n, 100U);
        Pairs pairs{{"a", "1"}, {"none", "0"}, {"b", "2"}};
        const AllocationCount count;
        int result = -1;
        {
            const FailingNew failing(n);
            try {
                result = KeyValueParser::parse(path.c_str(), pairs.array());
            } catch (const std::bad_alloc&) {
            }
            done = !failing.happened();
        }
        EXPECT_EQ(result, done ? 2 : -1) << n;
        EXPECT_EQ(count.live(), 0) << n;
        // Pair by pair: those before the failure are filled, the one that it struck is empty.
        const bool first = pairs.value(0) == value;
        EXPECT_TRUE(first || pairs.value(0) == "1" || pairs.value(0).empty()) << n;
        EXPECT_TRUE(pairs.value(2) == "2" || (first && pairs.value(2).empty()) || done) << n;
        EXPECT_EQ(pairs.value(1), "0") << n;
        EXPECT_EQ(KeyValueParser::parse(path.c_str(), pairs.array()), 2);
        EXPECT_EQ(pairs.value(0), value) << n;
        EXPECT_EQ(pairs.value(2), value) << n;
    }
}

// --- hostile files, beside a plain second reader ---

void expectAsReadPlainly(const TemporaryFolder& folder, const std::string& content) {
    kfl_test::SimpleIniReader reader;
    reader.read(content);
    const std::vector<kfl_test::SimpleKey>& keys = reader.sections[0].keys;
    std::vector<Texts> texts = {{"host", "default"}, {"a", ""}, {"never there", "kept"}};
    for (const kfl_test::SimpleKey& key : keys) texts.push_back({key.name, "default"});
    Pairs pairs(texts);
    const std::string path = folder.write("hostile", content);
    EXPECT_EQ(KeyValueParser::parse(path.c_str(), pairs.array()), keys.empty() ? 1 : 2);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        std::string expected = texts[i].value;
        for (const kfl_test::SimpleKey& key : keys)
            if (kfl_test::sameName(key.name, texts[i].key)) expected = key.value;
        EXPECT_EQ(pairs.value(i), expected) << texts[i].key;
    }
}

TEST_F(KeyValueParserTest, HostileFilesAreReadByTheRules) {
    std::string allBytes;
    for (int i = 0; i < 256; ++i) allBytes += static_cast<char>(i);
    std::string manyKeys;
    for (int i = 0; i < 300; ++i)
        manyKeys += "key" + std::to_string(i) + "=" + manyKeys.substr(0, 9);
    const std::string files[] = {
        std::string(1, '\0'),
        std::string("a=1\0b\nhost=2\n", 13),
        std::string("\0a=1\nhost=2\n", 12),
        allBytes,
        allBytes + "\nhost=" + allBytes,
        std::string(100000, 'x'),
        std::string(100000, '='),
        std::string(100000, '\n'),
        std::string(100000, '['),
        std::string(100000, '\0'),
        "host=" + std::string(600, 'v'),
        "host=" + std::string(504, 'v') + "\n" + "a=1",
        "host=" + std::string(505, 'v') + "\n" + "a=1",
        "host=" + std::string(506, 'v') + "\n" + "a=1",
        "host=" + std::string(506, 'v') + "a=1",
        std::string(510, 'h') + "=1\n",
        std::string(511, 'h') + "=1\n",
        std::string(20, ' ') + "host" + std::string(20, '\t') + ":" + std::string(480, ' ') + "v",
        "host=1\r",
        "host=1\r\r\n\r\nhost =2\r\n",
        "\xEF\xBB\xBFhost=1\na=2\n",
        "%s%n%x=%s%n\nhost=%s%n%99999999d\n",
        "host=1\n[unclosed\nhost=2\n",
        "host\n=1\n",
        manyKeys,
    };
    for (const std::string& content : files) {
        SCOPED_TRACE(testing::Message() << "file " << &content - files);
        expectAsReadPlainly(folder, content);
    }
}

TEST_F(KeyValueParserTest, RandomFilesAreReadByTheRules) {
    kfl_test::Random random;
    const std::string characters("abAB=: \t[];#\r\0", 14);
    for (int round = 0; round < 150; ++round) {
        std::string content;
        for (std::uint32_t i = random.below(300); i > 0; --i) {
            const bool feed = random.oneIn(8);
            content += feed ? '\n' : characters[random.below(14)];
            if (random.oneIn(200)) content += std::string(random.below(600), 'a');
        }
        SCOPED_TRACE(testing::Message() << "round " << round << ": " << content);
        expectAsReadPlainly(folder, content);
        if (HasFailure()) return;
    }
}

}  // namespace
