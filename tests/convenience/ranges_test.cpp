#include "kfl/convenience/ranges.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kfl/AString.h"

namespace {

TEST(RangesTest, WalksAListOfPointers) {
    kfl::VoidPtrOrderedCollection list;
    int numbers[] = {1, 2, 3};
    for (int& number : numbers) list.add(&number);
    std::vector<int> seen;
    for (const int* number : kfl::items<int>(list)) seen.push_back(*number);
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3}));
    unsigned int position = 0;
    for (void* item : kfl::items(list)) EXPECT_EQ(item, list.idAt(position++));
    EXPECT_EQ(position, 3U);
}

TEST(RangesTest, WalksAListOfObjects) {
    kfl::OrdCollect list;
    list.add(new kfl::AString("a"));
    list.add(new kfl::AString("b"));
    std::string seen;
    for (const kfl::AString* text : kfl::items<kfl::AString>(list)) seen += text->c_str();
    EXPECT_EQ(seen, "ab");
    unsigned int count = 0;
    for (kfl::SObject* item : kfl::items(list)) EXPECT_EQ(item, list.idAt(count++));
    EXPECT_EQ(count, 2U);
    list.freeContents();
}

TEST(RangesTest, AnEmptyListHasNoItems) {
    const kfl::VoidPtrOrderedCollection none(0);
    const kfl::OrdCollect objects;
    for (void* item : kfl::items(none)) FAIL() << item;
    for (kfl::SObject* item : kfl::items(objects)) FAIL() << item;
}

TEST(RangesTest, AStoredNullIsAnItem) {
    kfl::VoidPtrOrderedCollection list;
    list.add(nullptr);
    list.add(&list);
    std::vector<void*> seen;
    for (void* item : kfl::items(list)) seen.push_back(item);
    EXPECT_EQ(seen, (std::vector<void*>{nullptr, &list}));
}

TEST(RangesTest, AListMayGrowAndShrinkOnTheWay) {
    kfl::VoidPtrOrderedCollection list(1);
    int item = 0;
    list.add(&item);
    int steps = 0;
    for (void* seen : kfl::items(list)) {
        EXPECT_EQ(seen, &item);
        if (++steps < 30) list.add(&item);
    }
    EXPECT_EQ(steps, 30);
    for (void* seen : kfl::items(list)) list.removeSame(seen);
    EXPECT_EQ(list.count(), 15U);
}

// A host's own list is asked through its own operations.
class Reversed : public kfl::VoidPtrOrderedCollection {
  public:
    void* idAt(unsigned int index) const override {
        return kfl::VoidPtrOrderedCollection::idAt(count() - 1 - index);
    }
};

TEST(RangesTest, OverriddenOperationsAreUsed) {
    Reversed list;
    int numbers[] = {1, 2};
    for (int& number : numbers) list.add(&number);
    std::vector<int> seen;
    for (const int* number : kfl::items<int>(list)) seen.push_back(*number);
    EXPECT_EQ(seen, (std::vector<int>{2, 1}));
}

TEST(RangesTest, WalksTheSectionsAndKeysOfAFile) {
    kfl::IniFileParser parser;
    parser.setValue("top", "0", "");
    parser.setValue("b", "1", "net");
    parser.setValue("a", "2", "net");
    parser.createSection("empty");
    std::string seen;
    for (const kfl::st_section& section : kfl::sections(parser)) {
        seen += std::string("[") + section.name.c_str() + "]";
        for (const kfl::st_key& key : kfl::keys(section)) {
            seen += std::string(key.name.c_str()) + "=" + key.value.c_str() + ";";
        }
    }
    EXPECT_EQ(seen, "[]top=0;[net]b=1;a=2;[empty]");
}

TEST(RangesTest, ANullRecordEndsTheWalk) {
    kfl::IniFileParser parser;
    parser.setValue("a", "1", "net");
    kfl::st_section& section = *parser.getSection("net");
    section.keys.add(nullptr);
    int count = 0;
    for (const kfl::st_key& key : kfl::keys(section)) {
        EXPECT_STREQ(key.name.c_str(), "a");
        ++count;
    }
    EXPECT_EQ(count, 1);
}

TEST(RangesTest, RecordsMayBeChangedOnTheWay) {
    kfl::IniFileParser parser;
    parser.setValue("a", "1", "net");
    for (kfl::st_key& key : kfl::keys(*parser.getSection("net"))) key.value.append("0");
    EXPECT_EQ(parser.getInt("a", "net"), 10);
}

}  // namespace
