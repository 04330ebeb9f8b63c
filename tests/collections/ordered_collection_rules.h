// The rules that both ordered collections keep.
#ifndef KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_RULES_H
#define KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_RULES_H

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>
#include <vector>

#include "tests/collections/counting_allocator.h"
#include "tests/collections/kinds.h"

namespace kfl_test {

template <class Kind>
class OrderedCollectionTest : public testing::Test {
  protected:
    using List = typename Kind::List;
    using Item = typename Kind::Item;
    using Cursor = typename Kind::Cursor;
    using Items = std::vector<Item>;

    OrderedCollectionTest() { abc.add(a), abc.add(b), abc.add(c); }

    // Appends things 0 to n - 1.
    static void fill(List& list, unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) list.add(thing(i));
    }
    static Items itemsOf(const List& list) {
        Items items;
        EXPECT_EQ(list.size(), list.count());
        for (unsigned int i = 0; i < list.count(); ++i) items.push_back(list.idAt(i));
        return items;
    }
    // All slots of the capacity.
    static Items slotsOf(const List& list) {
        return list.data() ? Items(list.data(), list.data() + list.capacity()) : Items();
    }
    static void expectAt(const Cursor& it, unsigned int position, Item current) {
        EXPECT_EQ(it.position, position);
        EXPECT_EQ(it.current, current);
    }

    const Item a = thing(40);
    const Item b = thing(41);
    const Item c = thing(42);
    const Item d = thing(43);
    List empty;
    List abc;
};

TYPED_TEST_SUITE_P(OrderedCollectionTest);

TYPED_TEST_P(OrderedCollectionTest, TypesAreAsPromised) {
    using L = typename TypeParam::List;
    using B = typename TypeParam::Base;
    EXPECT_TRUE((std::is_base_of<B, L>::value));
    EXPECT_TRUE(std::is_abstract<B>::value);
    EXPECT_FALSE(std::is_copy_constructible<L>::value);
    EXPECT_FALSE(std::is_copy_assignable<L>::value);
    EXPECT_TRUE(std::has_virtual_destructor<B>::value);
    EXPECT_TRUE(std::is_copy_constructible<typename TypeParam::Cursor>::value);
}

TYPED_TEST_P(OrderedCollectionTest, NewOneIsEmptyWithRoomForTen) {
    EXPECT_EQ(this->empty.count(), 0U);
    EXPECT_EQ(this->empty.capacity(), 10U);
    EXPECT_EQ(this->empty.first(), nullptr);
    EXPECT_EQ(this->empty.last(), nullptr);
    EXPECT_EQ(this->empty.idAt(0), nullptr);
    typename TypeParam::Cursor it(this->empty);
    EXPECT_EQ(this->empty.next(it), nullptr);
}

TYPED_TEST_P(OrderedCollectionTest, CapacityIsTakenExactly) {
    for (const unsigned int n : {1U, 2U, 9U, 10U, 11U, 500U}) {
        const typename TypeParam::List list(n);
        EXPECT_EQ(list.capacity(), n);
        EXPECT_EQ(list.count(), 0U);
        EXPECT_EQ(this->slotsOf(list), typename TestFixture::Items(n));
    }
}

TYPED_TEST_P(OrderedCollectionTest, CapacityZeroHasNoStorageUntilTheFirstAdd) {
    typename TypeParam::List list(0);
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.capacity(), 0U);
    EXPECT_EQ(list.removeAt(0), nullptr);
    EXPECT_EQ(list.replaceAt(0, this->a), nullptr);
    EXPECT_EQ(list.indexOfSame(this->a), -1);
    EXPECT_EQ(list.findSame(this->a), nullptr);
    EXPECT_EQ(list.last(), nullptr);
    TypeParam::forget(list);
    EXPECT_EQ(list.add(this->a), this->a);
    EXPECT_EQ(list.capacity(), 10U);
    EXPECT_EQ(this->itemsOf(list), (typename TestFixture::Items{this->a}));
    typename TypeParam::List other(0);
    EXPECT_EQ(other.insertAt(5, this->a), this->a);
    EXPECT_EQ(other.capacity(), 10U);
    EXPECT_EQ(other.idAt(0), this->a);
}

TYPED_TEST_P(OrderedCollectionTest, AddAppendsAndReturnsTheItem) {
    EXPECT_EQ(this->empty.add(this->b), this->b);
    EXPECT_EQ(this->empty.add(this->a), this->a);
    EXPECT_EQ(this->empty.add(this->b), this->b);
    EXPECT_EQ(this->itemsOf(this->empty), (typename TestFixture::Items{this->b, this->a, this->b}));
}

TYPED_TEST_P(OrderedCollectionTest, AppendsGrowByHalf) {
    this->fill(this->empty, 10);
    EXPECT_EQ(this->empty.capacity(), 10U);
    this->empty.add(this->a);
    EXPECT_EQ(this->empty.capacity(), 15U);
    this->fill(this->empty, 4);
    EXPECT_EQ(this->empty.capacity(), 15U);
    this->empty.add(this->b);
    EXPECT_EQ(this->empty.capacity(), 22U);
    EXPECT_EQ(this->empty.count(), 16U);
    EXPECT_EQ(this->empty.idAt(10), this->a);
    EXPECT_EQ(this->empty.idAt(15), this->b);
    EXPECT_EQ(this->empty.idAt(9), thing(9));
}

TYPED_TEST_P(OrderedCollectionTest, GrowthIsTenWhereHalfIsNothing) {
    const unsigned int rows[][2] = {{0, 10}, {1, 11}, {2, 3}, {3, 4}, {15, 22}};
    for (const auto& row : rows) {
        typename TypeParam::List added(row[0]);
        this->fill(added, row[0] + 1);
        EXPECT_EQ(added.capacity(), row[1]) << "add to " << row[0];
        typename TypeParam::List inserted(row[0]);
        for (unsigned int i = 0; i <= row[0]; ++i) inserted.insertAt(0, thing(i));
        EXPECT_EQ(inserted.capacity(), row[1]) << "insert into " << row[0];
        EXPECT_EQ(inserted.idAt(0), thing(row[0]));
        EXPECT_EQ(inserted.idAt(row[0]), thing(0));
    }
}

TYPED_TEST_P(OrderedCollectionTest, AppendThatFitsTouchesNoAllocatorAndGrowthTouchesItOnce) {
    EXPECT_EQ(allocationsOf([this] { this->fill(this->empty, 10); }), 0U);
    EXPECT_EQ(allocationsOf([this] { this->empty.add(this->a); }), 1U);
    EXPECT_EQ(allocationsOf([this] { this->fill(this->empty, 4); }), 0U);
    EXPECT_EQ(allocationsOf([this] { this->empty.insertAt(0, this->a); }), 1U);
}

TYPED_TEST_P(OrderedCollectionTest, NothingButGrowthTouchesTheAllocator) {
    typename TypeParam::List& list = this->abc;
    EXPECT_EQ(allocationsOf([&] {
                  typename TypeParam::Cursor it(list);
                  list.next(it), list.prev(it), list.end(it), list.first(), list.last();
                  list.insertAt(1, this->d), list.removeAt(0), list.removeSame(this->c);
                  list.replaceAt(0, this->a), list.replaceSame(this->a, this->c);
                  list.findSame(this->c), list.expandTo(10);
                  TypeParam::forget(list);
                  list.add(this->a);
              }),
              0U);
}

TYPED_TEST_P(OrderedCollectionTest, InsertPutsTheItemBeforeTheIndex) {
    using Sequence = typename std::vector<typename TypeParam::Item>;
    const Sequence expected[] = {{this->d, this->a, this->b, this->c},
                                 {this->a, this->d, this->b, this->c},
                                 {this->a, this->b, this->d, this->c},
                                 {this->a, this->b, this->c, this->d}};
    for (unsigned int index = 0; index < 4; ++index) {
        EXPECT_EQ(this->abc.insertAt(index, this->d), this->d);
        EXPECT_EQ(this->itemsOf(this->abc), expected[index]);
        EXPECT_EQ(this->abc.removeSame(this->d), this->d);
    }
}

TYPED_TEST_P(OrderedCollectionTest, InsertPastTheEndAppends) {
    EXPECT_EQ(this->abc.insertAt(1000, this->d), this->d);
    EXPECT_EQ(this->abc.count(), 4U);
    EXPECT_EQ(this->abc.idAt(3), this->d);
    EXPECT_EQ(this->abc.insertAt(UINT_MAX, this->a), this->a);
    EXPECT_EQ(this->abc.idAt(4), this->a);
    EXPECT_EQ(this->abc.capacity(), 10U);
}

TYPED_TEST_P(OrderedCollectionTest, InsertIntoAFullOneGrowsByHalfWhateverTheIndex) {
    this->fill(this->empty, 10);
    this->empty.insertAt(3, this->a);
    EXPECT_EQ(this->empty.capacity(), 15U);
    EXPECT_EQ(this->empty.idAt(2), thing(2));
    EXPECT_EQ(this->empty.idAt(3), this->a);
    EXPECT_EQ(this->empty.idAt(4), thing(3));
    EXPECT_EQ(this->empty.idAt(10), thing(9));
    typename TypeParam::List full;
    this->fill(full, 10);
    full.insertAt(5000, this->a);
    EXPECT_EQ(full.capacity(), 15U);
    EXPECT_EQ(full.idAt(10), this->a);
}

TYPED_TEST_P(OrderedCollectionTest, RemoveAtClosesTheGapAndEmptiesTheLastSlot) {
    EXPECT_EQ(this->abc.removeAt(0), this->a);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->b, this->c}));
    EXPECT_EQ(this->abc.data()[2], nullptr);
    EXPECT_EQ(this->abc.removeAt(1), this->c);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->b}));
    EXPECT_EQ(this->slotsOf(this->abc)[1], nullptr);
    EXPECT_EQ(this->abc.capacity(), 10U) << "the capacity never shrinks";
}

TYPED_TEST_P(OrderedCollectionTest, RemoveAtOfAFullOneStaysInside) {
    this->fill(this->empty, 10);
    EXPECT_EQ(this->empty.removeAt(0), thing(0));
    EXPECT_EQ(this->empty.count(), 9U);
    EXPECT_EQ(this->empty.idAt(8), thing(9));
    EXPECT_EQ(this->empty.data()[9], nullptr);
}

TYPED_TEST_P(OrderedCollectionTest, IndexesPastTheEndGiveNullAndChangeNothing) {
    const auto before = this->slotsOf(this->abc);
    for (const unsigned int index : {3U, 4U, 10U, 1000U, UINT_MAX}) {
        EXPECT_EQ(this->abc.removeAt(index), nullptr);
        EXPECT_EQ(this->abc.replaceAt(index, this->d), nullptr);
        EXPECT_EQ(this->abc.idAt(index), nullptr);
    }
    EXPECT_EQ(this->abc.count(), 3U);
    EXPECT_EQ(this->slotsOf(this->abc), before);
}

TYPED_TEST_P(OrderedCollectionTest, RemoveSameTakesTheFirstOccurrenceOnly) {
    this->abc.add(this->a);
    EXPECT_EQ(this->abc.removeSame(this->a), this->a);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->b, this->c, this->a}));
    EXPECT_EQ(this->abc.removeSame(this->a), this->a);
    EXPECT_EQ(this->abc.removeSame(this->a), nullptr);
    EXPECT_EQ(this->abc.removeSame(nullptr), nullptr);
    EXPECT_EQ(this->abc.count(), 2U);
}

TYPED_TEST_P(OrderedCollectionTest, ReplaceAtReturnsTheFormerItem) {
    EXPECT_EQ(this->abc.replaceAt(1, this->d), this->b);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->a, this->d, this->c}));
    EXPECT_EQ(this->abc.replaceAt(1, nullptr), this->d);
    EXPECT_EQ(this->abc.replaceAt(1, this->b), nullptr) << "a null stood there";
    EXPECT_EQ(this->abc.idAt(1), this->b);
    EXPECT_EQ(this->abc.count(), 3U);
}

TYPED_TEST_P(OrderedCollectionTest, ReplaceSameReplacesTheFirstOccurrence) {
    this->abc.add(this->b);
    EXPECT_EQ(this->abc.replaceSame(this->b, this->d), this->b);
    EXPECT_EQ(this->itemsOf(this->abc),
              (typename TestFixture::Items{this->a, this->d, this->c, this->b}));
    EXPECT_EQ(this->abc.replaceSame(thing(0), this->a), nullptr);
    EXPECT_EQ(this->abc.replaceSame(nullptr, this->a), nullptr);
    EXPECT_EQ(this->abc.count(), 4U);
    EXPECT_EQ(this->abc.replaceSame(this->d, this->d), this->d);
}

TYPED_TEST_P(OrderedCollectionTest, FindsByAddress) {
    EXPECT_EQ(this->abc.findSame(this->b), this->b);
    EXPECT_EQ(this->abc.indexOfSame(this->b), 1);
    EXPECT_EQ(this->abc.findSame(this->d), nullptr);
    EXPECT_EQ(this->abc.indexOfSame(this->d), -1);
    this->abc.insertAt(0, this->b);
    EXPECT_EQ(this->abc.indexOfSame(this->b), 0) << "the first of two";
}

TYPED_TEST_P(OrderedCollectionTest, NullIsNeverFound) {
    this->abc.insertAt(1, nullptr);
    EXPECT_EQ(this->abc.count(), 4U);
    EXPECT_EQ(this->abc.indexOfSame(nullptr), -1);
    EXPECT_EQ(this->abc.findSame(nullptr), nullptr);
    EXPECT_EQ(this->empty.indexOfSame(nullptr), -1);
}

TYPED_TEST_P(OrderedCollectionTest, AStoredNullIsAnItemThatLooksLikeNone) {
    EXPECT_EQ(this->empty.add(nullptr), nullptr);
    this->empty.add(this->a);
    EXPECT_EQ(this->empty.count(), 2U);
    EXPECT_EQ(this->empty.first(), nullptr);
    EXPECT_EQ(this->empty.last(), this->a);
    EXPECT_EQ(this->empty.add(this->b), this->b);
    EXPECT_EQ(this->empty.idAt(2), this->b) << "an append never fills a stored null";
    EXPECT_EQ(this->empty.removeAt(0), nullptr);
    EXPECT_EQ(this->empty.count(), 2U);
}

TYPED_TEST_P(OrderedCollectionTest, ForgettingItemsKeepsTheStorage) {
    this->fill(this->empty, 11);
    const void* const storage = this->empty.data();
    TypeParam::forget(this->empty);
    EXPECT_EQ(this->empty.count(), 0U);
    EXPECT_EQ(this->empty.capacity(), 15U);
    EXPECT_EQ(this->empty.data(), storage);
    EXPECT_EQ(this->slotsOf(this->empty), typename TestFixture::Items(15));
    EXPECT_EQ(this->empty.findSame(thing(3)), nullptr);
    EXPECT_EQ(this->empty.first(), nullptr);
    this->empty.add(this->a);
    EXPECT_EQ(this->empty.first(), this->a);
}

TYPED_TEST_P(OrderedCollectionTest, ExpandToSetsTheCapacityExactly) {
    this->abc.expandTo(37);
    EXPECT_EQ(this->abc.capacity(), 37U);
    this->abc.expandTo(3);
    EXPECT_EQ(this->abc.capacity(), 3U);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->a, this->b, this->c}));
    this->abc.add(this->d);
    EXPECT_EQ(this->abc.capacity(), 4U) << "half of three is one";
}

TYPED_TEST_P(OrderedCollectionTest, ShrinkingBelowTheCountLeavesTheCount) {
    this->abc.expandTo(1);
    EXPECT_EQ(this->abc.capacity(), 1U);
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->a, nullptr, nullptr}));
    EXPECT_EQ(this->abc.last(), nullptr);
    EXPECT_EQ(this->abc.indexOfSame(this->c), -1);
    typename TypeParam::Cursor it(this->abc);
    EXPECT_EQ(this->abc.next(it), this->a);
    EXPECT_EQ(this->abc.next(it), nullptr);
    this->expectAt(it, 2, nullptr);
    EXPECT_EQ(this->abc.end(it), nullptr);
    EXPECT_EQ(this->abc.prev(it), nullptr);
    EXPECT_EQ(this->abc.prev(it), nullptr);
    this->expectAt(it, 0, this->a);
}

TYPED_TEST_P(OrderedCollectionTest, AShrunkOneGrowsToWhatAWriteNeeds) {
    using Sequence = typename std::vector<typename TypeParam::Item>;
    const auto x = this->a;
    const auto y = this->d;
    struct Row {
        const char* name;
        void (*write)(typename TypeParam::List&, typename TypeParam::Item);
        Sequence slots;
    };
    const Row rows[] = {
        {"add", [](auto& list, auto item) { list.add(item); }, {x, nullptr, nullptr, y}},
        {"insert", [](auto& list, auto item) { list.insertAt(0, item); }, {y, x, nullptr, nullptr}},
        {"append", [](auto& list, auto item) { list.insertAt(9, item); }, {x, nullptr, nullptr, y}},
        {"replace", [](auto& list, auto item) { list.replaceAt(2, item); }, {x, nullptr, y}},
        {"remove", [](auto& list, auto) { list.removeAt(2); }, {x}},
        {"remove first", [](auto& list, auto) { list.removeAt(0); }, {nullptr}},
    };
    for (const Row& row : rows) {
        typename TypeParam::List list;
        list.add(x), list.add(this->b), list.add(this->c);
        list.expandTo(1);
        row.write(list, y);
        EXPECT_EQ(this->slotsOf(list), row.slots) << row.name;
    }
}

TYPED_TEST_P(OrderedCollectionTest, AOneShrunkToNothingHasNothingToRemove) {
    this->abc.expandTo(0);
    EXPECT_EQ(this->abc.count(), 3U);
    EXPECT_EQ(this->abc.removeAt(0), nullptr);
    EXPECT_EQ(this->abc.count(), 3U) << "without storage nothing is removed";
    EXPECT_EQ(this->abc.idAt(0), nullptr);
    EXPECT_EQ(this->abc.removeSame(this->a), nullptr);
    TypeParam::forget(this->abc);
    EXPECT_EQ(this->abc.count(), 0U);
}

TYPED_TEST_P(OrderedCollectionTest, DestructorReleasesTheStorageAndLeavesTheItems) {
    const AllocationCount count;
    {
        typename TypeParam::List list;
        this->fill(list, 40);
        EXPECT_EQ(count.live(), 1);
    }
    EXPECT_EQ(count.live(), 0);
}

TYPED_TEST_P(OrderedCollectionTest, HugeCapacitiesAreRefusedAsAllocationsAre) {
    using L = typename TypeParam::List;
    EXPECT_TRUE(refuses([this] { this->abc.expandTo(UINT_MAX); }));
    EXPECT_TRUE(refuses([this] { this->abc.expandTo(0x40000000U); }));
    EXPECT_TRUE(refuses([] { const L huge(UINT_MAX); }));
    EXPECT_EQ(this->itemsOf(this->abc), (typename TestFixture::Items{this->a, this->b, this->c}));
    EXPECT_EQ(this->abc.capacity(), 10U);
}

TYPED_TEST_P(OrderedCollectionTest, AFailedAllocationLeavesTheCollectionAsItWas) {
    using L = typename TypeParam::List;
    struct Row {
        const char* name;
        void (*grow)(L&);
        unsigned int count;
    };
    const Row rows[] = {{"add", [](L& list) { list.add(thing(50)); }, 11},
                        {"insert", [](L& list) { list.insertAt(4, thing(50)); }, 11},
                        {"append", [](L& list) { list.insertAt(99, thing(50)); }, 11},
                        {"expandTo", [](L& list) { list.expandTo(20); }, 10},
                        {"shrinking", [](L& list) { list.expandTo(5); }, 10}};
    for (const Row& row : rows) {
        L list;
        this->fill(list, 10);
        const auto before = this->slotsOf(list);
        EXPECT_EQ(failEachRequest([&] { row.grow(list); },
                                  [&] {
                                      EXPECT_EQ(list.count(), 10U) << row.name;
                                      EXPECT_EQ(this->slotsOf(list), before) << row.name;
                                  }),
                  1U)
            << row.name;
        EXPECT_EQ(list.count(), row.count) << row.name;
    }
}

TYPED_TEST_P(OrderedCollectionTest, AFailedConstructionLeaksNothing) {
    using L = typename TypeParam::List;
    const AllocationCount count;
    EXPECT_EQ(failEachRequest([] { const L list; }, [] {}), 1U);
    EXPECT_EQ(failEachRequest([] { const L list(25); }, [] {}), 1U);
    EXPECT_EQ(count.live(), 0);
}

REGISTER_TYPED_TEST_SUITE_P(
    OrderedCollectionTest, TypesAreAsPromised, NewOneIsEmptyWithRoomForTen, CapacityIsTakenExactly,
    CapacityZeroHasNoStorageUntilTheFirstAdd, AddAppendsAndReturnsTheItem, AppendsGrowByHalf,
    GrowthIsTenWhereHalfIsNothing, AppendThatFitsTouchesNoAllocatorAndGrowthTouchesItOnce,
    NothingButGrowthTouchesTheAllocator, InsertPutsTheItemBeforeTheIndex, InsertPastTheEndAppends,
    InsertIntoAFullOneGrowsByHalfWhateverTheIndex, RemoveAtClosesTheGapAndEmptiesTheLastSlot,
    RemoveAtOfAFullOneStaysInside, IndexesPastTheEndGiveNullAndChangeNothing,
    RemoveSameTakesTheFirstOccurrenceOnly, ReplaceAtReturnsTheFormerItem,
    ReplaceSameReplacesTheFirstOccurrence, FindsByAddress, NullIsNeverFound,
    AStoredNullIsAnItemThatLooksLikeNone, ForgettingItemsKeepsTheStorage,
    ExpandToSetsTheCapacityExactly, ShrinkingBelowTheCountLeavesTheCount,
    AShrunkOneGrowsToWhatAWriteNeeds, AOneShrunkToNothingHasNothingToRemove,
    DestructorReleasesTheStorageAndLeavesTheItems, HugeCapacitiesAreRefusedAsAllocationsAre,
    AFailedAllocationLeavesTheCollectionAsItWas, AFailedConstructionLeaksNothing);

}  // namespace kfl_test

#endif
