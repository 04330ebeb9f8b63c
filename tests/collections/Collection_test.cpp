#include "kfl/Collection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/collections/cursor_rules.h"
#include "tests/collections/ordered_collection_rules.h"
#include "tests/collections/tracked.h"
#include "tests/support/seed.h"

namespace kfl_test {

INSTANTIATE_TYPED_TEST_SUITE_P(Object, OrderedCollectionTest, testing::Types<Objects>, KindNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Object, CursorTest, testing::Types<Objects>, KindNames);

TEST(IteratorTest, IsAnObject) {
    EXPECT_TRUE((std::is_base_of<kfl::SObject, kfl::Iterator>::value));
    EXPECT_TRUE((std::is_base_of<kfl::SObject, kfl::Collection>::value));
}

TEST(IteratorTest, DefaultIsBoundToNothing) {
    const kfl::Iterator it;
    EXPECT_EQ(it.position, 0U);
    EXPECT_EQ(it.current, nullptr);
    EXPECT_EQ(it.collection, nullptr);
}

class OrdCollectTest : public testing::Test {
  protected:
    Tracked* object(char name, std::function<void()> atEnd = {}) {
        return new Tracked(name, deaths, std::move(atEnd));
    }

    std::string deaths;
    kfl::OrdCollect list;
};

TEST_F(OrdCollectTest, FreeContentsDeletesFromTheLastToTheFirst) {
    for (const char name : {'a', 'b', 'c'}) list.add(object(name));
    list.freeContents();
    EXPECT_EQ(deaths, "cba");
    EXPECT_EQ(list.count(), 0U);
    EXPECT_EQ(list.capacity(), 10U);
}

TEST_F(OrdCollectTest, FreeContentsOfNothingDoesNothing) {
    list.freeContents();
    EXPECT_EQ(list.count(), 0U);
    kfl::OrdCollect none(0);
    none.freeContents();
    EXPECT_EQ(none.capacity(), 0U);
}

TEST_F(OrdCollectTest, AStoredNullEndsTheDeletion) {
    Tracked* const a = object('a');
    list.add(a);
    list.add(nullptr);
    list.add(object('c'));
    list.freeContents();
    EXPECT_EQ(deaths, "c");
    EXPECT_EQ(list.count(), 0U);
    delete a;
}

TEST_F(OrdCollectTest, ANullAtTheEndKeepsEverythingAlive) {
    Tracked* const a = object('a');
    list.add(a);
    list.add(nullptr);
    list.freeContents();
    EXPECT_EQ(deaths, "");
    EXPECT_EQ(list.count(), 0U);
    delete a;
}

TEST_F(OrdCollectTest, DeletedItemsAreStillFoundButNeverGivenBack) {
    kfl::SObject* const a = list.add(object('a'));
    kfl::SObject* const b = list.add(object('b'));
    list.freeContents();
    EXPECT_EQ(list.findSame(a), a);
    EXPECT_EQ(list.indexOfSame(b), 1);
    EXPECT_EQ(list.idAt(0), nullptr);
    EXPECT_EQ(list.removeSame(b), nullptr);
    EXPECT_EQ(list.replaceSame(a, nullptr), nullptr);
    EXPECT_EQ(list.removeAt(0), nullptr);
    EXPECT_EQ(list.replaceAt(0, nullptr), nullptr);
    EXPECT_EQ(list.first(), nullptr);
    EXPECT_EQ(list.last(), nullptr);
    EXPECT_EQ(list.data()[0], a) << "the slots keep their pointers";
}

TEST_F(OrdCollectTest, AddOverwritesTheSlotsOfDeletedItemsFromTheFirstOn) {
    kfl::SObject* const a = list.add(object('a'));
    kfl::SObject* const b = list.add(object('b'));
    list.freeContents();
    list.add(thing(0));
    EXPECT_EQ(list.count(), 1U);
    EXPECT_EQ(list.idAt(0), thing(0));
    EXPECT_EQ(list.findSame(a), nullptr);
    EXPECT_EQ(list.indexOfSame(b), 1);
    list.insertAt(0, thing(1));
    EXPECT_EQ(list.findSame(b), nullptr);
    EXPECT_EQ(list.idAt(1), thing(0));
}

TEST_F(OrdCollectTest, ResetAfterFreeContentsForgetsTheDeletedItems) {
    kfl::SObject* const a = list.add(object('a'));
    list.freeContents();
    list.reset();
    EXPECT_EQ(list.findSame(a), nullptr);
}

TEST_F(OrdCollectTest, ResetAndDestructionLeaveTheItemsAlive) {
    Tracked* const a = object('a');
    {
        kfl::OrdCollect gone;
        gone.add(a);
        gone.reset();
        EXPECT_EQ(gone.count(), 0U);
        EXPECT_EQ(gone.capacity(), 10U);
        EXPECT_EQ(gone.findSame(a), nullptr);
        gone.add(a);
    }
    EXPECT_EQ(deaths, "");
    delete a;
}

TEST_F(OrdCollectTest, FreeContentsWalksThroughTheVirtualOperations) {
    Overriding<Objects> watched;
    watched.add(object('a'));
    watched.add(object('b'));
    watched.calls();
    watched.freeContents();
    EXPECT_EQ(watched.calls(), "start end prev prev prev");
    EXPECT_EQ(deaths, "ba");
    watched.freeContents();
    EXPECT_EQ(watched.calls(), "start end start prev");
}

TEST_F(OrdCollectTest, FreeContentsIsVirtualAndResetIsNot) {
    class Keeping : public kfl::OrdCollect {
      public:
        void freeContents() override { asked = true; }
        bool asked = false;
    };
    Keeping keeping;
    kfl::Collection& base = keeping;
    keeping.add(thing(0));
    base.freeContents();
    EXPECT_TRUE(keeping.asked);
    keeping.reset();
    EXPECT_EQ(keeping.count(), 0U);
}

TEST_F(OrdCollectTest, AnItemStandsInTheListWhileItIsDeleted) {
    unsigned int count = 0;
    list.add(thing(0));
    list.removeAt(0);
    Tracked* const a = object('a', [&] { count = list.count() + (list.idAt(0) ? 10 : 0); });
    list.add(a);
    list.freeContents();
    EXPECT_EQ(count, 11U);
    EXPECT_EQ(list.count(), 0U);
}

TEST_F(OrdCollectTest, TheCountStaysWholeUntilTheLastItemIsDeleted) {
    std::vector<unsigned int> counts;
    for (const char name : {'a', 'b', 'c'}) {
        list.add(object(name, [&] { counts.push_back(list.count()); }));
    }
    list.freeContents();
    EXPECT_EQ(counts, (std::vector<unsigned int>{3, 3, 3}));
    EXPECT_EQ(list.count(), 0U);
}

TEST_F(OrdCollectTest, WhatADestructorAddsIsForgottenButNotDeleted) {
    Tracked* const late = object('z');
    list.add(object('a', [&] { list.add(late); }));
    list.freeContents();
    EXPECT_EQ(deaths, "a");
    EXPECT_EQ(list.count(), 0U);
    EXPECT_EQ(list.findSame(late), late);
    delete late;
}

TEST_F(OrdCollectTest, ADestructorMayRemoveItsOwnItem) {
    Tracked* b = nullptr;
    b = object('b', [&] { list.removeSame(b); });
    list.add(object('a'));
    list.add(b);
    list.add(object('c'));
    list.freeContents();
    EXPECT_EQ(deaths, "cba");
    EXPECT_EQ(list.count(), 0U);
}

TEST_F(OrdCollectTest, ADestructorMayGrowOrShrinkTheList) {
    Tracked* const a = object('a');
    Tracked* const b = object('b');
    list.add(a);
    list.add(b);
    list.add(object('c', [&] { list.expandTo(300); }));
    list.add(object('d', [&] { list.expandTo(0); }));
    list.freeContents();
    // The cursor stood on c already when d took the storage away.
    EXPECT_EQ(deaths, "dc");
    EXPECT_EQ(list.count(), 0U);
    EXPECT_EQ(list.capacity(), 300U);
    EXPECT_EQ(list.findSame(a), nullptr);
    delete a;
    delete b;
}

TEST_F(OrdCollectTest, CollectionsAreItemsToo) {
    auto* const inner = new kfl::OrdCollect;
    inner->add(thing(3));
    list.add(inner);
    list.add(new kfl::Iterator(inner));
    EXPECT_EQ(static_cast<kfl::OrdCollect*>(list.first())->first(), thing(3));
    list.freeContents();
    EXPECT_EQ(list.count(), 0U);
}

// What is deleted, and in which order, for lists with nulls at random places.
TEST_F(OrdCollectTest, FreeContentsAgreesWithAPlainLoop) {
    Random random;
    for (int round = 0; round < 500; ++round) {
        std::vector<Tracked*> items(random.below(20));
        for (Tracked*& item : items) {
            item = random.oneIn(8) ? nullptr : object(static_cast<char>('a' + random.below(26)));
            list.add(item);
        }
        std::size_t left = items.size();
        while (left > 0 && items[left - 1]) --left;
        const unsigned int capacity = list.capacity();
        list.freeContents();
        EXPECT_EQ(deaths.size(), items.size() - left);
        EXPECT_EQ(list.count(), 0U);
        EXPECT_EQ(list.capacity(), capacity);
        for (std::size_t i = 0; i < items.size(); ++i) EXPECT_EQ(list.data()[i], items[i]);
        for (std::size_t i = 0; i < left; ++i) delete items[i];
        deaths.clear();
    }
}

}  // namespace kfl_test
