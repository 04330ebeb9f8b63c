// What the INI parser asks of the allocator, and what it keeps when that says no.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kfl/IniFileParser.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/counted_new.h"
#include "tests/support/huge_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::AllocationCount;
using kfl_test::contentOf;
using kfl_test::FailingNew;
using Work = std::function<void(kfl::IniFileParser&)>;

constexpr unsigned long allocationsPerKey = 3;      // the record, its name, its value
constexpr unsigned long allocationsPerSection = 3;  // the record, its name, its list

int nextDescriptor() {
    const int descriptor = open("/dev/null", O_RDONLY);
    close(descriptor);
    return descriptor;
}

class IniFileParserMemoryTest : public testing::Test {
  protected:
    // The number of allocations that a file costs a new parser.
    unsigned long allocationsFor(const std::string& content) {
        const std::string path = folder.write("test.ini", content);
        kfl::IniFileParser parser;
        const AllocationCount count;
        EXPECT_TRUE(parser.parseFile(path.c_str()));
        return count.made();
    }

    const kfl_test::TemporaryFolder folder;
};

TEST_F(IniFileParserMemoryTest, LinesThatStoreNothingAllocateNothing) {
    std::string content;
    for (int i = 0; i < 500; ++i) content += "; comment\n\n  \nno separator\nempty=\n[]\n\xFF\n";
    content += std::string(3000, 'x');
    EXPECT_EQ(allocationsFor(content), 0U);
}

TEST_F(IniFileParserMemoryTest, LinesAllocateOnlyTheRecordsTheyStore) {
    EXPECT_EQ(allocationsFor("k=v\n"), allocationsPerKey);
    EXPECT_EQ(allocationsFor("[s]\n"), allocationsPerSection);
    EXPECT_EQ(allocationsFor("a=1\nb=2\n[s]\nc=3\n[t]\nd=4\n"),
              4 * allocationsPerKey + 2 * allocationsPerSection);
}

TEST_F(IniFileParserMemoryTest, ReplacedValuesThatFitAllocateNothing) {
    std::string content = "k=v\n";
    for (int i = 0; i < 500; ++i) content += "K = another value " + std::to_string(i) + "\n";
    EXPECT_EQ(allocationsFor(content), allocationsPerKey);
}

TEST_F(IniFileParserMemoryTest, LookupsAllocateNothing) {
    kfl::IniFileParser parser;
    ASSERT_TRUE(parser.setValue("k", "1", "s"));
    const AllocationCount count;
    parser.getInt("k", "s");
    parser.getFloat("k", "s");
    parser.getBool("k", "s");
    parser.getString("missing", "s");
    parser.getValue("k", "missing");
    EXPECT_EQ(count.made(), 0U);
}

TEST_F(IniFileParserMemoryTest, TheParserReleasesAllThatItMade) {
    const std::string path =
        folder.write("test.ini", "a=1\n[s]\nb=" + std::string(300, 'v') + "\n");
    const AllocationCount count;
    {
        kfl::IniFileParser parser;
        EXPECT_TRUE(parser.parseFile(path.c_str()));
        EXPECT_TRUE(parser.setValue("c", std::string(1000, 'w').c_str(), "t"));
    }
    EXPECT_GT(count.made(), 10U);
    EXPECT_EQ(count.live(), 0);
}

// What stands in the blocks of memory of some records.
class NamedBlocks {
  public:
    void add(const st_key& key) {
        const std::string name = key.name.c_str();
        names_[&key] = "key " + name;
        names_[key.name.c_str()] = "name of " + name;
        names_[key.value.c_str()] = "value of " + name;
    }
    void add(const kfl::st_section& section) {
        const std::string name = '[' + std::string(section.name.c_str()) + ']';
        names_[&section] = name;
        names_[section.name.c_str()] = "name of " + name;
        for (unsigned int i = 0; i < section.keys.count(); ++i) {
            add(*static_cast<const st_key*>(section.keys.idAt(i)));
        }
    }

    // The names of the blocks that were released, in order.
    std::string releasedSince(const AllocationCount& count) const {
        std::vector<const void*> blocks(count.released());
        EXPECT_LE(blocks.size(), kfl_test::allocations::remembered);
        for (unsigned long i = 0; i < blocks.size(); ++i) blocks[i] = count.releasedBlock(i);

        std::string released;
        for (const void* block : blocks) {
            const auto found = names_.find(block);
            released += (found != names_.end() ? found->second : "list") + '\n';
        }
        return released;
    }

  private:
    std::map<const void*, std::string> names_;
};

TEST_F(IniFileParserMemoryTest, KeysReleaseTheirValueFirst) {
    auto* const key = new st_key;
    key->name.append("k");
    NamedBlocks blocks;
    blocks.add(*key);
    const AllocationCount count;
    delete key;
    EXPECT_EQ(blocks.releasedSince(count), "value of k\nname of k\nkey k\n");
}

TEST_F(IniFileParserMemoryTest, RecordsAreReleasedInTheOrderOfTheirLists) {
    NamedBlocks blocks;
    std::optional<kfl::IniFileParser> parser(std::in_place);
    for (const char* key : {"z", "y", "x"}) ASSERT_TRUE(parser->setValue(key, "v", "s"));
    ASSERT_TRUE(parser->setValue("w", "v", "r"));
    for (unsigned int i = 0; i < parser->sectionList().count(); ++i) {
        blocks.add(*static_cast<const kfl::st_section*>(parser->sectionList().idAt(i)));
    }
    const AllocationCount count;
    parser.reset();
    EXPECT_EQ(blocks.releasedSince(count),
              "list\nname of []\n[]\n"
              "value of z\nname of z\nkey z\n"
              "value of y\nname of y\nkey y\n"
              "value of x\nname of x\nkey x\n"
              "list\nname of [s]\n[s]\n"
              "value of w\nname of w\nkey w\n"
              "list\nname of [r]\n[r]\n"
              "list\n");
}

TEST_F(IniFileParserMemoryTest, ConstructorLeavesNothingBehindWhenItFails) {
    unsigned long n = 1;
    for (bool failed = true; failed; ++n) {
        const AllocationCount count;
        const FailingNew failing(n);
        failed = false;
        try {
            const kfl::IniFileParser parser;
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        EXPECT_EQ(count.live(), 0) << n;
    }
    EXPECT_GT(n, 4U);
}

// Lets each allocation of a piece of work fail in turn. After each failure the parser must hold one
// of `states`, and nothing may be lost; a second try must do the work.
void failEveryAllocation(const Work& prepare, const Work& work,
                         const std::function<bool(const std::string&)>& isAllowed) {
    const int descriptor = nextDescriptor();
    bool failed = true;
    unsigned long n = 1;
    for (; failed; ++n) {
        const AllocationCount whole;
        {
            kfl::IniFileParser parser;
            prepare(parser);
            const unsigned int flags = parser.flags;
            failed = false;
            try {
                const FailingNew failing(n);
                work(parser);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            EXPECT_EQ(parser.flags, flags);
            if (failed) {
                const std::string content = contentOf(parser);
                EXPECT_TRUE(isAllowed(content)) << "after failure " << n << ":\n" << content;
                work(parser);
            }
        }
        EXPECT_EQ(whole.live(), 0) << "after failure " << n;
        EXPECT_EQ(nextDescriptor(), descriptor) << "after failure " << n;
    }
    EXPECT_GT(n, 2U) << "nothing was allocated";
}

void failEveryAllocation(const Work& prepare, const Work& work) {
    kfl::IniFileParser parser;
    prepare(parser);
    const std::string before = contentOf(parser);
    failEveryAllocation(prepare, work,
                        [&](const std::string& content) { return content == before; });
}

void prepareOneKey(kfl::IniFileParser& parser) {
    ASSERT_TRUE(parser.setValue("k", "v", "s"));
    parser.modified = false;
}

TEST_F(IniFileParserMemoryTest, CreateSectionThatFailsChangesNothing) {
    failEveryAllocation(prepareOneKey, [](kfl::IniFileParser& parser) {
        EXPECT_NE(parser.createSection("t"), nullptr);
        EXPECT_TRUE(parser.modified);
    });
}

TEST_F(IniFileParserMemoryTest, CreateSectionThatFailsToGrowTheListChangesNothing) {
    const Work fillTheList = [](kfl::IniFileParser& parser) {
        for (int i = 0; i < 9; ++i) parser.createSection(std::to_string(i).c_str());
        ASSERT_EQ(parser.sectionList().count(), parser.sectionList().capacity());
        parser.modified = false;
    };
    failEveryAllocation(fillTheList, [](kfl::IniFileParser& parser) {
        EXPECT_NE(parser.createSection("t"), nullptr);
    });
}

TEST_F(IniFileParserMemoryTest, NewKeyThatFailsChangesNothing) {
    const std::string name(200, 'n');
    const std::string value(300, 'v');
    failEveryAllocation(prepareOneKey, [&](kfl::IniFileParser& parser) {
        EXPECT_TRUE(parser.setValue(name.c_str(), value.c_str(), "s"));
        EXPECT_EQ(parser.getValue(name.c_str(), "s"), value);
    });
}

TEST_F(IniFileParserMemoryTest, NewKeyThatFailsToGrowTheListChangesNothing) {
    const Work fillTheList = [](kfl::IniFileParser& parser) {
        for (int i = 0; i < 10; ++i) parser.setValue(std::to_string(i).c_str(), "v", "s");
        parser.modified = false;
    };
    failEveryAllocation(fillTheList, [](kfl::IniFileParser& parser) {
        EXPECT_TRUE(parser.setValue("k", "v", "s"));
    });
}

TEST_F(IniFileParserMemoryTest, NewValueThatFailsLeavesTheOldOne) {
    const std::string value(300, 'w');
    failEveryAllocation(prepareOneKey, [&](kfl::IniFileParser& parser) {
        EXPECT_TRUE(parser.setValue("k", value.c_str(), "s"));
        EXPECT_EQ(parser.getValue("k", "s"), value);
    });
}

TEST_F(IniFileParserMemoryTest, OwnValueThatFailsLeavesTheOldOne) {
    const std::string value(300, 'w');
    const Work prepare = [&](kfl::IniFileParser& parser) {
        ASSERT_TRUE(parser.setValue("k", value.c_str(), "s"));
        parser.modified = false;
    };
    failEveryAllocation(prepare, [](kfl::IniFileParser& parser) {
        EXPECT_TRUE(parser.setValue("k", parser.getValue("k", "s"), "s"));
    });
}

// The section that had to be made first stays when its key finds no memory.
TEST_F(IniFileParserMemoryTest, NewKeyInANewSectionFailsInTwoSteps) {
    const auto isAllowed = [](const std::string& content) {
        return content == "[]\n[s]\nk=v\n" || content == "modified\n[]\n[s]\nk=v\n[t]\n";
    };
    failEveryAllocation(
        prepareOneKey,
        [](kfl::IniFileParser& parser) { EXPECT_TRUE(parser.setValue("l", "w", "t")); }, isAllowed);
}

// What was read before the failure is kept, and the file is closed.
TEST_F(IniFileParserMemoryTest, ParsingThatFailsKeepsWhatItRead) {
    const std::string path =
        folder.write("test.ini", "a=1\n[s]\nb=" + std::string(300, 'b') +
                                     "\n[t]\nb=" + std::string(90, 'c') + "\n");
    kfl::IniFileParser parser;
    ASSERT_TRUE(parser.parseFile(path.c_str()));
    const std::string all = contentOf(parser);
    failEveryAllocation(
        [](kfl::IniFileParser& fresh) { fresh.flags = 0; },
        [&](kfl::IniFileParser& fresh) { EXPECT_TRUE(fresh.parseFile(path.c_str())); },
        [&](const std::string& content) {
            return content == "[]\n" || all.compare(0, content.size(), content) == 0;
        });
}

TEST_F(IniFileParserMemoryTest, TextOfMoreThan32BitsIsRefusedWhole) {
    const kfl_test::HugeText huge;
    ASSERT_NE(huge.text(), nullptr);
    // The length of this one, cut to 32 bits, is that of one mebibyte.
    const std::string cut(std::size_t{1} << 20U, 'x');
    kfl::IniFileParser parser;
    ASSERT_TRUE(parser.setValue(cut.c_str(), "v", cut.c_str()));
    parser.modified = false;
    const std::string before = contentOf(parser);

    EXPECT_EQ(parser.getSection(huge.text()), nullptr);
    EXPECT_EQ(parser.getKey(huge.text(), cut.c_str()), nullptr);
    if (kfl_test::hasHugeText) {
        EXPECT_THROW(parser.createSection(huge.text()), std::bad_alloc);
        EXPECT_THROW(parser.setValue(huge.text(), "w", ""), std::bad_alloc);
        EXPECT_THROW(parser.setValue("k", huge.text(), ""), std::bad_alloc);
        EXPECT_THROW(parser.setValue(cut.c_str(), huge.text(), cut.c_str()), std::bad_alloc);
        EXPECT_EQ(contentOf(parser), before);
    }
    EXPECT_STREQ(parser.getValue(cut.c_str(), cut.c_str()), "v");
}

}  // namespace
