#include "kfl/StringsContainer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <new>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/counted_new.h"
#include "tests/support/seed.h"

namespace {

// A list whose texts live as long as it does.
class List {
  public:
    List(std::initializer_list<const char*> texts) : List(texts, 10) {}
    List(std::initializer_list<const char*> texts, unsigned int capacity) : list_(capacity) {
        for (const char* const text : texts) {
            texts_.push_back(text);
            EXPECT_EQ(list_.addString(texts_.back().data()), 0);
        }
    }
    StringsContainer* operator->() { return &list_; }
    StringsContainer* get() { return &list_; }

  private:
    std::deque<std::string> texts_;
    StringsContainer list_;
};

bool contained(List& a, List& b) { return a->areAllStringsPresentInOtherContainer(b.get()); }
bool identical(List& a, List& b) { return a->isItIdentical(b.get()); }

TEST(StringsContainerTest, StartsEmpty) {
    StringsContainer list(3);
    EXPECT_EQ(list.getNumberOfStrings(), 0U);
    EXPECT_EQ(list.getLengthOfStrings(), 0U);
    EXPECT_EQ(list.capacity(), 3U);
}

TEST(StringsContainerTest, TakesTextsUpToItsCapacity) {
    char a[] = "a";
    char b[] = "b";
    char c[] = "c";
    StringsContainer list(2);
    EXPECT_EQ(list.addString(a), 0);
    EXPECT_EQ(list.getNumberOfStrings(), 1U);
    EXPECT_EQ(list.addString(b), 0);
    EXPECT_EQ(list.addString(c), 1);
    EXPECT_EQ(list.addString(c), 1);
    EXPECT_EQ(list.getNumberOfStrings(), 2U);
    EXPECT_EQ(list.getString(1), a);
    EXPECT_EQ(list.getString(2), b);
}

TEST(StringsContainerTest, ACapacityOfZeroTakesNothing) {
    char a[] = "a";
    StringsContainer list(0);
    EXPECT_EQ(list.addString(a), 1);
    EXPECT_EQ(list.getNumberOfStrings(), 0U);
    EXPECT_EQ(list.getString(0), nullptr);
    EXPECT_EQ(list.getString(1), nullptr);
}

TEST(StringsContainerTest, PositionsCountFromOne) {
    List list({"a", "b"}, 3);
    EXPECT_EQ(list->getString(0), nullptr);
    EXPECT_STREQ(list->getString(1), "a");
    EXPECT_STREQ(list->getString(2), "b");
    EXPECT_EQ(list->getString(4), nullptr);
    EXPECT_EQ(list->getString(UINT_MAX), nullptr);
}

TEST(StringsContainerTest, APlaceThatNeverHeldATextIsNull) {
    List list({"a"}, 3);
    EXPECT_EQ(list->getString(2), nullptr);
    EXPECT_EQ(list->getString(3), nullptr);
}

TEST(StringsContainerTest, BorrowsItsTexts) {
    char text[] = "abc";
    {
        StringsContainer list(1);
        list.addString(text);
        EXPECT_EQ(list.getString(1), text);
        text[0] = 'x';
        EXPECT_STREQ(list.getString(1), "xbc");
    }
    EXPECT_STREQ(text, "xbc");
}

TEST(StringsContainerTest, StoresANullTextUnasked) {
    StringsContainer list(2);
    EXPECT_EQ(list.addString(nullptr), 0);
    EXPECT_EQ(list.getNumberOfStrings(), 1U);
    EXPECT_EQ(list.getString(1), nullptr);
}

TEST(StringsContainerTest, ClearForgetsTheNumberAndKeepsThePlaces) {
    List list({"a", "b"}, 3);
    list->clear();
    EXPECT_EQ(list->getNumberOfStrings(), 0U);
    EXPECT_EQ(list->getLengthOfStrings(), 0U);
    EXPECT_STREQ(list->getString(1), "a");
    EXPECT_STREQ(list->getString(2), "b");
    char c[] = "c";
    EXPECT_EQ(list->addString(c), 0);
    EXPECT_EQ(list->getString(1), c);
    EXPECT_STREQ(list->getString(2), "b");
}

TEST(StringsContainerTest, ClearFromStringDropsItAndAllBehindIt) {
    List list({"a", "b", "c"});
    list->clearFromString(2);
    EXPECT_EQ(list->getNumberOfStrings(), 1U);
    EXPECT_STREQ(list->getString(1), "a");
    // The places are as they were.
    EXPECT_STREQ(list->getString(3), "c");
}

TEST(StringsContainerTest, ClearFromStringAtTheEndsOfTheList) {
    List list({"a", "b", "c"});
    list->clearFromString(3);
    EXPECT_EQ(list->getNumberOfStrings(), 2U);
    list->clearFromString(1);
    EXPECT_EQ(list->getNumberOfStrings(), 0U);
}

TEST(StringsContainerTest, ClearFromStringOutsideTheListChangesNothing) {
    List list({"a", "b", "c"});
    for (const unsigned int index : {0U, 4U, 5U, 10U, 11U, UINT_MAX}) {
        list->clearFromString(index);
        EXPECT_EQ(list->getNumberOfStrings(), 3U) << index;
    }
    list->clear();
    list->clearFromString(1);
    EXPECT_EQ(list->getNumberOfStrings(), 0U);
}

TEST(StringsContainerTest, LengthIsTheSumOfAllLengths) {
    List list({"ab", "cde"});
    EXPECT_EQ(list->getLengthOfStrings(), 5U);
    List withEmpty({"", "a", ""});
    EXPECT_EQ(withEmpty->getLengthOfStrings(), 1U);
    list->clearFromString(2);
    EXPECT_EQ(list->getLengthOfStrings(), 2U);
}

TEST(StringsContainerTest, AnEmptyListIsInEveryList) {
    List empty({});
    List other({});
    List some({"a"});
    EXPECT_TRUE(contained(empty, other));
    EXPECT_TRUE(contained(empty, some));
    EXPECT_FALSE(contained(some, empty));
    EXPECT_TRUE(identical(empty, other));
    EXPECT_FALSE(identical(empty, some));
    EXPECT_FALSE(identical(some, empty));
}

TEST(StringsContainerTest, TextsAreComparedByTheirCharacters) {
    List one({"abc"});
    List same({"abc"});
    List longer({"abcd"});
    List upper({"ABC"});
    ASSERT_NE(one->getString(1), same->getString(1));
    EXPECT_TRUE(contained(one, same));
    EXPECT_FALSE(contained(one, longer));
    EXPECT_FALSE(contained(longer, one));
    EXPECT_FALSE(contained(one, upper));
}

TEST(StringsContainerTest, OrderDoesNotMatter) {
    List xy({"x", "y"});
    List yx({"y", "x"});
    EXPECT_TRUE(identical(xy, yx));
    EXPECT_TRUE(identical(yx, xy));
}

TEST(StringsContainerTest, APartIsContainedButNotIdentical) {
    List x({"x"});
    List xy({"x", "y"});
    EXPECT_TRUE(contained(x, xy));
    EXPECT_FALSE(identical(x, xy));
    EXPECT_FALSE(contained(xy, x));
}

TEST(StringsContainerTest, IdenticalIsOneSided) {
    List aa({"a", "a"});
    List ab({"a", "b"});
    EXPECT_TRUE(identical(aa, ab));
    EXPECT_FALSE(identical(ab, aa));
}

TEST(StringsContainerTest, AListIsIdenticalToItself) {
    List list({"a", "b", "a"});
    EXPECT_TRUE(identical(list, list));
}

TEST(StringsContainerTest, ForgottenTextsAreNotCompared) {
    List list({"a", "b"});
    List forgetful({"a", "b"});
    forgetful->clearFromString(2);
    EXPECT_FALSE(contained(list, forgetful));
    EXPECT_TRUE(contained(forgetful, list));
    list->clear();
    EXPECT_TRUE(contained(list, forgetful));
}

TEST(StringsContainerTest, OtherCapacitiesDoNotMatter) {
    List small({"a", "b"}, 2);
    List large({"b", "a"}, 100);
    EXPECT_TRUE(identical(small, large));
    EXPECT_TRUE(identical(large, small));
}

TEST(StringsContainerTest, ANullOtherCountsAsEmpty) {
    List empty({});
    List some({"a"});
    EXPECT_TRUE(empty->areAllStringsPresentInOtherContainer(nullptr));
    EXPECT_TRUE(empty->isItIdentical(nullptr));
    EXPECT_FALSE(some->areAllStringsPresentInOtherContainer(nullptr));
    EXPECT_FALSE(some->isItIdentical(nullptr));
}

TEST(StringsContainerTest, ComparesAsAModelDoes) {
    kfl_test::Random random;
    char names[6][2] = {"a", "b", "c", "d", "e", "f"};
    for (int i = 0; i < 3000; ++i) {
        StringsContainer lists[2] = {{5}, {5}};
        std::multiset<std::string> models[2];
        for (int l = 0; l < 2; ++l) {
            for (std::uint32_t n = random.below(7); n > 0; --n) {
                char* const name = names[random.below(6)];
                const bool full = models[l].size() == 5;
                ASSERT_EQ(lists[l].addString(name), full ? 1 : 0);
                if (!full) models[l].insert(name);
            }
        }
        bool expected = true;
        for (const std::string& name : models[0]) expected &= models[1].count(name) > 0;
        ASSERT_EQ(lists[0].areAllStringsPresentInOtherContainer(&lists[1]), expected);
        ASSERT_EQ(lists[0].isItIdentical(&lists[1]),
                  expected && models[0].size() == models[1].size());
    }
}

TEST(StringsContainerTest, AllocatesItsPlacesOnceAndGivesThemBack) {
    char a[] = "a";
    const kfl_test::AllocationCount count;
    {
        StringsContainer list(100);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(count.madeAsArrays(), 1U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 100 * sizeof(char*));
        for (int i = 0; i < 120; ++i) list.addString(a);
        list.clear();
        EXPECT_EQ(count.made(), 1U);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(StringsContainerTest, AFailedAllocationPassesThrough) {
    const kfl_test::AllocationCount count;
    {
        const kfl_test::FailingNew first(1);
        EXPECT_THROW(StringsContainer list(5), std::bad_alloc);
        EXPECT_TRUE(first.happened());
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(StringsContainerTest, ASizePast32BitsFailsAsAnAllocationDoes) {
    EXPECT_THROW(StringsContainer list(UINT_MAX), std::bad_alloc);
    EXPECT_THROW(StringsContainer list(UINT_MAX / sizeof(char*) + 1), std::bad_alloc);
}

TEST(StringsContainerTest, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible<StringsContainer>::value);
    EXPECT_FALSE(std::is_copy_assignable<StringsContainer>::value);
}

TEST(StringsContainerTest, StandsInBothNamespaces) {
    EXPECT_TRUE((std::is_same<::StringsContainer, kfl::StringsContainer>::value));
}

TEST(StringsContainerTest, IsDestroyedThroughItsVirtualDestructor) {
    struct Watched : StringsContainer {
        explicit Watched(bool& gone) : StringsContainer(1), gone_(gone) {}
        ~Watched() override { gone_ = true; }
        bool& gone_;
    };
    bool gone = false;
    const StringsContainer* const list = new Watched(gone);
    delete list;
    EXPECT_TRUE(gone);
}

}  // namespace
