// The rules that both pointer arrays keep.
#ifndef KFL_TESTS_COLLECTIONS_POINTER_ARRAY_RULES_H
#define KFL_TESTS_COLLECTIONS_POINTER_ARRAY_RULES_H

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>
#include <vector>

#include "tests/collections/counting_allocator.h"
#include "tests/collections/kinds.h"

namespace kfl_test {

template <class Kind>
class PointerArrayTest : public testing::Test {
  protected:
    using Array = typename Kind::Array;
    using Item = typename Kind::Item;

    // Notes each growth, and refuses it where told to.
    class Intercepting : public Array {
      public:
        void expandTo(unsigned int n) override {
            asked.push_back(n);
            if (!refusing) Array::expandTo(n);
        }

        std::vector<unsigned int> asked;
        bool refusing = false;
    };

    // Says of itself that it has another size.
    class Misstating : public Array {
      public:
        explicit Misstating(unsigned int stated) : stated_(stated) {}
        unsigned int size() const override { return stated_; }

      private:
        unsigned int stated_;
    };

    // All slots of the capacity.
    static std::vector<Item> slots(const Array& array) {
        std::vector<Item> all;
        for (unsigned int i = 0; i < array.capacity(); ++i) all.push_back(array.idAt(i));
        return all;
    }

    // Fills slots 0 to n - 1 with things 0 to n - 1.
    static void fill(Array& array, unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) array.atPutId(i, thing(i));
    }

    const Item a = thing(40);
    const Item b = thing(41);
    const Item c = thing(42);
};

TYPED_TEST_SUITE_P(PointerArrayTest);

TYPED_TEST_P(PointerArrayTest, IsAContainerThatIsNotCopied) {
    using Tested = typename TypeParam::Array;
    EXPECT_TRUE((std::is_base_of<kfl::Container, Tested>::value));
    EXPECT_EQ(sizeof(Tested), sizeof(kfl::Container));
    EXPECT_FALSE(std::is_copy_constructible<Tested>::value);
    EXPECT_FALSE(std::is_copy_assignable<Tested>::value);
}

TYPED_TEST_P(PointerArrayTest, DefaultHasTenEmptySlots) {
    typename TestFixture::Array array;
    EXPECT_EQ(array.size(), 10U);
    EXPECT_EQ(array.elementSize(), sizeof(void*));
    for (unsigned int i = 0; i < 12; ++i) EXPECT_EQ(array.idAt(i), nullptr);
}

TYPED_TEST_P(PointerArrayTest, CapacityIsTakenExactly) {
    for (const unsigned int n : {1U, 3U, 10U, 11U, 1000U}) {
        const typename TestFixture::Array array(n);
        EXPECT_EQ(array.size(), n);
        EXPECT_EQ(array.elementSize(), sizeof(void*));
        EXPECT_EQ(array.idAt(n - 1), nullptr);
    }
}

TYPED_TEST_P(PointerArrayTest, CapacityZeroHasNoStorage) {
    EXPECT_EQ(allocationsOf([this] {
                  typename TestFixture::Array array(0);
                  EXPECT_EQ(array.data(), nullptr);
                  EXPECT_EQ(array.size(), 0U);
                  EXPECT_EQ(array.idAt(0), nullptr);
                  EXPECT_EQ(array.indexOfSame(this->a), -1);
                  EXPECT_EQ(array.findSame(this->a), nullptr);
                  array.reset();
                  EXPECT_EQ(array.size(), 0U);
              }),
              0U);
}

TYPED_TEST_P(PointerArrayTest, DestructorReleasesTheStorageAndLeavesTheItems) {
    const AllocationCount count;
    {
        typename TestFixture::Array array;
        this->fill(array, 12);
        EXPECT_EQ(count.live(), 1);
    }
    EXPECT_EQ(count.live(), 0);
}

TYPED_TEST_P(PointerArrayTest, AddFillsTheFirstEmptySlot) {
    typename TestFixture::Array array;
    array.atPutId(0, this->a);
    array.atPutId(2, this->b);
    array.add(this->c);
    EXPECT_EQ(array.idAt(0), this->a);
    EXPECT_EQ(array.idAt(1), this->c);
    EXPECT_EQ(array.idAt(2), this->b);
    EXPECT_EQ(array.idAt(3), nullptr);
    EXPECT_EQ(array.size(), 10U);
}

TYPED_TEST_P(PointerArrayTest, AddFindsTheOnlyEmptySlotWhereverItIs) {
    for (unsigned int capacity = 1; capacity <= 13; ++capacity) {
        for (unsigned int empty = 0; empty < capacity; ++empty) {
            typename TestFixture::Array array(capacity);
            this->fill(array, capacity);
            array.atPutId(empty, nullptr);
            array.add(this->a);
            EXPECT_EQ(array.size(), capacity);
            EXPECT_EQ(array.idAt(empty), this->a) << empty << " of " << capacity;
        }
    }
}

TYPED_TEST_P(PointerArrayTest, AddToAFullArrayGrowsByHalfOrTen) {
    const unsigned int rows[][2] = {{0, 10}, {1, 11}, {2, 3}, {10, 15}, {15, 22}};
    for (const auto& row : rows) {
        typename TestFixture::Array array(row[0]);
        this->fill(array, row[0]);
        array.add(this->a);
        EXPECT_EQ(array.size(), row[1]);
        EXPECT_EQ(array.idAt(row[0]), this->a) << "at the old capacity";
        EXPECT_EQ(array.idAt(row[0] + 1), nullptr);
        for (unsigned int i = 0; i < row[0]; ++i) EXPECT_EQ(array.idAt(i), thing(i));
    }
}

TYPED_TEST_P(PointerArrayTest, AddOfNullChangesNothingWhileASlotIsEmpty) {
    typename TestFixture::Array array(2);
    array.add(nullptr);
    array.add(nullptr);
    EXPECT_EQ(this->slots(array), (std::vector<typename TypeParam::Item>{nullptr, nullptr}));
    this->fill(array, 2);
    array.add(nullptr);
    EXPECT_EQ(array.size(), 3U) << "a full array grows for it all the same";
}

TYPED_TEST_P(PointerArrayTest, ReadPastTheEndGivesNull) {
    typename TestFixture::Array array(3);
    this->fill(array, 3);
    EXPECT_EQ(array.idAt(2), thing(2));
    EXPECT_EQ(array.idAt(3), nullptr);
    EXPECT_EQ(array.idAt(UINT_MAX), nullptr);
    EXPECT_EQ(array.size(), 3U);
}

TYPED_TEST_P(PointerArrayTest, SubscriptRefersToTheSlot) {
    typename TestFixture::Array array;
    array[4] = this->a;
    EXPECT_EQ(array.idAt(4), this->a);
    EXPECT_EQ(&array[4], &array[4]);
    EXPECT_EQ(array[5], nullptr);
    array[4] = nullptr;
    EXPECT_EQ(array.idAt(4), nullptr);
    EXPECT_EQ(array.size(), 10U);
}

TYPED_TEST_P(PointerArrayTest, SubscriptGrowsToExactlyTheIndex) {
    typename TestFixture::Array array;
    this->fill(array, 10);
    array[20] = this->a;
    EXPECT_EQ(array.size(), 21U);
    EXPECT_EQ(array.idAt(20), this->a);
    EXPECT_EQ(array.idAt(9), thing(9));
    EXPECT_EQ(array.idAt(10), nullptr);
    EXPECT_EQ(array[21], nullptr) << "also just past the end";
    EXPECT_EQ(array.size(), 22U);
    typename TestFixture::Array empty(0);
    empty[0] = this->b;
    EXPECT_EQ(empty.size(), 1U);
    EXPECT_EQ(empty.idAt(0), this->b);
}

TYPED_TEST_P(PointerArrayTest, PutJustPastTheEndGrowsAsAddDoes) {
    typename TestFixture::Array array;
    array.atPutId(10, this->a);
    EXPECT_EQ(array.size(), 15U);
    EXPECT_EQ(array.idAt(10), this->a);
    typename TestFixture::Array empty(0);
    empty.atPutId(0, this->a);
    EXPECT_EQ(empty.size(), 10U);
    EXPECT_EQ(empty.idAt(0), this->a);
}

TYPED_TEST_P(PointerArrayTest, PutFurtherOutGrowsToExactlyTheIndex) {
    typename TestFixture::Array array;
    array.atPutId(30, this->a);
    EXPECT_EQ(array.size(), 31U);
    EXPECT_EQ(array.idAt(30), this->a);
    typename TestFixture::Array near;
    near.atPutId(11, this->a);
    EXPECT_EQ(near.size(), 12U);
}

TYPED_TEST_P(PointerArrayTest, PutWithinTheCapacityTouchesNoAllocator) {
    typename TestFixture::Array array;
    EXPECT_EQ(allocationsOf([&] {
                  array.atPutId(9, this->a);
                  array.atPutId(9, this->b);
                  array.add(this->c);
                  array[3] = this->c;
              }),
              0U);
    EXPECT_EQ(array.idAt(9), this->b);
    EXPECT_EQ(array.size(), 10U);
}

TYPED_TEST_P(PointerArrayTest, IndexIsThatOfTheFirstOccurrence) {
    typename TestFixture::Array array;
    array.atPutId(3, this->a);
    array.atPutId(6, this->a);
    EXPECT_EQ(array.indexOfSame(this->a), 3);
    EXPECT_EQ(array.findSame(this->a), this->a);
    EXPECT_EQ(array.indexOfSame(this->b), -1);
    EXPECT_EQ(array.findSame(this->b), nullptr);
}

TYPED_TEST_P(PointerArrayTest, SearchCoversTheWholeCapacity) {
    for (unsigned int capacity = 1; capacity <= 13; ++capacity) {
        for (unsigned int place = 0; place < capacity; ++place) {
            typename TestFixture::Array array(capacity);
            array.atPutId(place, this->a);
            EXPECT_EQ(array.indexOfSame(this->a), static_cast<int>(place)) << "of " << capacity;
            EXPECT_EQ(array.findSame(this->a), this->a);
            array.atPutId(place, this->b);
            EXPECT_EQ(array.indexOfSame(this->a), -1);
        }
    }
}

TYPED_TEST_P(PointerArrayTest, NullIsNeverFound) {
    typename TestFixture::Array array;
    array.add(this->a);
    EXPECT_EQ(array.indexOfSame(nullptr), -1);
    EXPECT_EQ(array.findSame(nullptr), nullptr);
}

TYPED_TEST_P(PointerArrayTest, ResetEmptiesEverySlotAndKeepsTheStorage) {
    typename TestFixture::Array array;
    this->fill(array, 11);
    const char* const storage = array.data();
    array.reset();
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(this->slots(array), std::vector<typename TypeParam::Item>(15));
    static_cast<kfl::Container&>(array).reset();
    EXPECT_EQ(array.data(), nullptr) << "the container's own reset releases it";
}

TYPED_TEST_P(PointerArrayTest, ShrinkingCutsSlotsOff) {
    typename TestFixture::Array array;
    this->fill(array, 5);
    array.expandTo(2);
    EXPECT_EQ(array.idAt(1), thing(1));
    EXPECT_EQ(array.idAt(2), nullptr);
    EXPECT_EQ(array.indexOfSame(thing(3)), -1);
}

TYPED_TEST_P(PointerArrayTest, AllGrowthPassesTheVirtualExpandTo) {
    typename TestFixture::Intercepting array;
    array[12] = this->a;
    array.atPutId(13, this->a);
    array.atPutId(30, this->a);
    array.atPutId(5, this->a);
    EXPECT_EQ(array.asked, (std::vector<unsigned int>{13, 19, 31}));
    this->fill(array, 31);
    array.add(this->b);
    EXPECT_EQ(array.asked.back(), 46U);
    EXPECT_EQ(array.idAt(31), this->b);
}

TYPED_TEST_P(PointerArrayTest, RefusedGrowthStoresNothing) {
    typename TestFixture::Intercepting array;
    array.refusing = true;
    this->fill(array, 10);
    array.add(this->a);
    array.atPutId(10, this->a);
    array.atPutId(25, this->a);
    EXPECT_EQ(array.size(), 10U);
    EXPECT_EQ(array.indexOfSame(this->a), -1);
    EXPECT_EQ(array.idAt(9), thing(9));
}

TYPED_TEST_P(PointerArrayTest, AnOverriddenSizeDecidesNothing) {
    for (const unsigned int stated : {1U, 20U}) {
        SCOPED_TRACE(stated);
        typename TestFixture::Misstating array(stated);
        this->fill(array, 10);
        EXPECT_EQ(array.capacity(), 10U);
        EXPECT_EQ(array.idAt(9), thing(9));
        EXPECT_EQ(array.indexOfSame(thing(9)), 9);
        EXPECT_EQ(array.findSame(thing(9)), thing(9));
        EXPECT_EQ(array.indexOfSame(this->a), -1);
        EXPECT_EQ(array[9], thing(9));
        EXPECT_EQ(array.capacity(), 10U);
        array.add(this->a);
        EXPECT_EQ(array.capacity(), 15U) << "it was full";
        EXPECT_EQ(array.idAt(10), this->a);
        array.atPutId(15, this->b);
        EXPECT_EQ(array.capacity(), 22U) << "just past the end";
        array.atPutId(25, this->b);
        EXPECT_EQ(array.capacity(), 26U) << "further out";
        EXPECT_EQ(array.idAt(25), this->b);
        array[30] = this->c;
        EXPECT_EQ(array.capacity(), 31U);
        EXPECT_EQ(array.idAt(30), this->c);
        array.reset();
        EXPECT_EQ(this->slots(array), std::vector<typename TypeParam::Item>(31));
        array.setData(nullptr);
        EXPECT_EQ(array.indexOfSame(this->a), -1);
        EXPECT_EQ(array[4], nullptr);
        EXPECT_EQ(array.capacity(), 31U) << "all of the storage is made anew";
    }
}

TYPED_TEST_P(PointerArrayTest, WithoutStorageButWithACapacityNothingIsFound) {
    typename TestFixture::Array array;
    array.add(this->a);
    array.setData(nullptr);
    EXPECT_EQ(array.size(), 10U);
    EXPECT_EQ(array.idAt(0), nullptr);
    EXPECT_EQ(array.indexOfSame(this->a), -1);
    EXPECT_EQ(array.findSame(this->a), nullptr);
    array.reset();
    array.atPutId(3, this->a);
    EXPECT_EQ(array.data(), nullptr);
    EXPECT_EQ(array[4], nullptr) << "a reference needs a slot: the storage is made anew";
    EXPECT_EQ(array.size(), 10U);
    array.setData(nullptr);
    array.add(this->b);
    EXPECT_EQ(array.size(), 15U) << "no empty slot: the array grows";
    EXPECT_EQ(array.idAt(10), this->b);
}

TYPED_TEST_P(PointerArrayTest, HugeIndexesAreRefusedAsAllocationsAre) {
    using Tested = typename TestFixture::Array;
    Tested array;
    this->fill(array, 10);
    EXPECT_TRUE(refuses([&] { array[UINT_MAX] = this->a; }));
    EXPECT_TRUE(refuses([&] { array[0x3FFFFFFFU] = this->a; }));
    EXPECT_TRUE(refuses([&] { array.atPutId(UINT_MAX, this->a); }));
    EXPECT_TRUE(refuses([&] { array.atPutId(0x3FFFFFFFU, this->a); }));
    EXPECT_TRUE(refuses([] { const Tested huge(UINT_MAX); }));
    EXPECT_EQ(array.size(), 10U);
    EXPECT_EQ(array.idAt(9), thing(9));
    EXPECT_EQ(array.indexOfSame(this->a), -1);
}

TYPED_TEST_P(PointerArrayTest, AFailedAllocationLeavesTheArrayAsItWas) {
    using Tested = typename TestFixture::Array;
    struct Row {
        const char* name;
        void (*grow)(Tested&);
        unsigned int place;
    };
    const Row rows[] = {
        {"add", [](Tested& array) { array.add(thing(50)); }, 10},
        {"put", [](Tested& array) { array.atPutId(10, thing(50)); }, 10},
        {"far put", [](Tested& array) { array.atPutId(30, thing(50)); }, 30},
        {"subscript", [](Tested& array) { array[20] = thing(50); }, 20},
    };
    for (const Row& row : rows) {
        Tested array;
        this->fill(array, 10);
        const auto before = this->slots(array);
        EXPECT_EQ(failEachRequest([&] { row.grow(array); },
                                  [&] { EXPECT_EQ(this->slots(array), before) << row.name; }),
                  1U)
            << row.name;
        EXPECT_EQ(array.indexOfSame(thing(50)), static_cast<int>(row.place)) << row.name;
    }
}

REGISTER_TYPED_TEST_SUITE_P(
    PointerArrayTest, IsAContainerThatIsNotCopied, DefaultHasTenEmptySlots, CapacityIsTakenExactly,
    CapacityZeroHasNoStorage, DestructorReleasesTheStorageAndLeavesTheItems,
    AddFillsTheFirstEmptySlot, AddFindsTheOnlyEmptySlotWhereverItIs,
    AddToAFullArrayGrowsByHalfOrTen, AddOfNullChangesNothingWhileASlotIsEmpty,
    ReadPastTheEndGivesNull, SubscriptRefersToTheSlot, SubscriptGrowsToExactlyTheIndex,
    PutJustPastTheEndGrowsAsAddDoes, PutFurtherOutGrowsToExactlyTheIndex,
    PutWithinTheCapacityTouchesNoAllocator, IndexIsThatOfTheFirstOccurrence,
    SearchCoversTheWholeCapacity, NullIsNeverFound, ResetEmptiesEverySlotAndKeepsTheStorage,
    ShrinkingCutsSlotsOff, AllGrowthPassesTheVirtualExpandTo, RefusedGrowthStoresNothing,
    AnOverriddenSizeDecidesNothing, WithoutStorageButWithACapacityNothingIsFound,
    HugeIndexesAreRefusedAsAllocationsAre, AFailedAllocationLeavesTheArrayAsItWas);

}  // namespace kfl_test

#endif
