#include "kfl/SObjectArray.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/collections/pointer_array_rules.h"
#include "tests/collections/tracked.h"

namespace kfl_test {

INSTANTIATE_TYPED_TEST_SUITE_P(SObjectArray, PointerArrayTest, testing::Types<Objects>, KindNames);

class SObjectArrayTest : public testing::Test {
  protected:
    kfl::SObject* object(char name, std::function<void()> atEnd = {}) {
        return new Tracked(name, deaths, std::move(atEnd));
    }
    void expectAllEmpty(unsigned int capacity) const {
        EXPECT_EQ(array.size(), capacity);
        for (unsigned int i = 0; i < capacity; ++i) EXPECT_EQ(array.idAt(i), nullptr) << i;
    }

    std::string deaths;
    kfl::SObjectArray array;
};

TEST_F(SObjectArrayTest, FreeContentsDeletesFromTheFirstSlotUpward) {
    array.add(object('a'));
    array.add(object('b'));
    array.add(object('c'));
    const char* const storage = array.data();
    array.freeContents();
    EXPECT_EQ(deaths, "abc");
    EXPECT_EQ(array.data(), storage);
    expectAllEmpty(10);
}

TEST_F(SObjectArrayTest, FreeContentsPassesOverEmptySlotsToTheEndOfTheCapacity) {
    array[1] = object('a');
    array[4] = object('b');
    array[20] = object('c');
    array.freeContents();
    EXPECT_EQ(deaths, "abc");
    expectAllEmpty(21);
}

TEST_F(SObjectArrayTest, FreeContentsGoesByTheCapacityWhateverAnOverriddenSizeSays) {
    class Misstating : public kfl::SObjectArray {
      public:
        unsigned int size() const override { return 1; }
    };
    Misstating stated;
    stated.add(object('a'));
    stated.add(object('b'));
    stated.freeContents();
    EXPECT_EQ(deaths, "ab");
    EXPECT_EQ(stated.idAt(1), nullptr);
}

TEST_F(SObjectArrayTest, FreeContentsOfNothingDoesNothing) {
    array.freeContents();
    expectAllEmpty(10);
    kfl::SObjectArray empty(0);
    empty.freeContents();
    EXPECT_EQ(empty.data(), nullptr);
    array.setData(nullptr);
    array.freeContents();
    EXPECT_EQ(array.data(), nullptr);
}

TEST_F(SObjectArrayTest, AnObjectStandsInItsSlotWhileItIsDeleted) {
    kfl::SObject* seen = nullptr;
    kfl::SObject* const doomed = object('a', [&] { seen = array.idAt(0); });
    array.add(doomed);
    array.freeContents();
    EXPECT_EQ(seen, doomed);
    expectAllEmpty(10);
}

TEST_F(SObjectArrayTest, SlotsAlreadyFreedAreEmptyWhenTheNextOneGoes) {
    array.add(object('a'));
    array.add(object('b', [&] { deaths += array.idAt(0) ? '!' : '-'; }));
    array.freeContents();
    EXPECT_EQ(deaths, "a-b");
}

TEST_F(SObjectArrayTest, AnObjectThatADestructorAddsFurtherOutIsDeletedToo) {
    array.add(object('a', [&] { array[15] = object('z'); }));
    array.add(object('b'));
    array.freeContents();
    EXPECT_EQ(deaths, "abz") << "the capacity is read anew after each slot";
    expectAllEmpty(16);
}

TEST_F(SObjectArrayTest, AnObjectThatADestructorPutsIntoAFreedSlotStays) {
    array.add(object('a'));
    array.add(object('b', [&] { array.add(object('z')); }));
    array.freeContents();
    EXPECT_EQ(deaths, "ab");
    ASSERT_NE(array.idAt(0), nullptr);
    array.freeContents();
    EXPECT_EQ(deaths, "abz");
}

TEST_F(SObjectArrayTest, ADestructorMayShrinkTheArray) {
    kfl::SObject* const last = object('c');
    array.add(object('a'));
    array.add(object('b', [&] { array.expandTo(1); }));
    array.add(last);
    array.freeContents();
    EXPECT_EQ(deaths, "ab");
    expectAllEmpty(1);
    delete last;
}

TEST_F(SObjectArrayTest, ADestructorMayReleaseTheStorage) {
    kfl::SObject* const last = object('c');
    array.add(object('a', [&] { array.expandTo(0); }));
    array.add(last);
    array.freeContents();
    EXPECT_EQ(deaths, "a");
    EXPECT_EQ(array.data(), nullptr);
    delete last;
}

TEST_F(SObjectArrayTest, TheArrayIsUsableAfterFreeContents) {
    array.add(object('a'));
    array.freeContents();
    array.add(object('b'));
    ASSERT_NE(array.idAt(0), nullptr);
    array.freeContents();
    EXPECT_EQ(deaths, "ab");
}

TEST_F(SObjectArrayTest, DestructionLeavesTheObjectsAlive) {
    kfl::SObject* const survivor = object('a');
    {
        kfl::SObjectArray gone;
        gone.add(survivor);
    }
    EXPECT_EQ(deaths, "");
    delete survivor;
}

TEST_F(SObjectArrayTest, ResetLeavesTheObjectsAlive) {
    kfl::SObject* const survivor = object('a');
    array.add(survivor);
    array.reset();
    EXPECT_EQ(deaths, "");
    expectAllEmpty(10);
    delete survivor;
}

}  // namespace kfl_test
