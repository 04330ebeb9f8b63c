#include "kfl/VoidPtrCollection.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/collections/cursor_rules.h"
#include "tests/collections/ordered_collection_rules.h"

namespace kfl_test {

INSTANTIATE_TYPED_TEST_SUITE_P(VoidPtr, OrderedCollectionTest, testing::Types<Untyped>, KindNames);
INSTANTIATE_TYPED_TEST_SUITE_P(VoidPtr, CursorTest, testing::Types<Untyped>, KindNames);

TEST(VoidPtrIteratorTest, IsAPlainValue) {
    EXPECT_FALSE(std::is_polymorphic<kfl::VoidPtrIterator>::value);
    EXPECT_TRUE(std::is_trivially_copyable<kfl::VoidPtrIterator>::value);
    EXPECT_FALSE(std::is_default_constructible<kfl::VoidPtrIterator>::value);
}

TEST(VoidPtrOrderedCollectionTest, HoldsAnyAddress) {
    int number = 0;
    kfl::VoidPtrOrderedCollection list;
    EXPECT_EQ(list.add(&number), &number);
    EXPECT_EQ(list.findSame(&number), &number);
    EXPECT_EQ(list.data()[0], &number);
}

TEST(VoidPtrOrderedCollectionTest, ClearIsVirtualAndLeavesTheItemsAlone) {
    class Clearing : public kfl::VoidPtrOrderedCollection {
      public:
        void clear() override { cleared = true; }
        bool cleared = false;
    };
    Clearing list;
    kfl::VoidPtrCollection& base = list;
    int number = 7;
    list.add(&number);
    base.clear();
    EXPECT_TRUE(list.cleared);
    list.VoidPtrOrderedCollection::clear();
    EXPECT_EQ(list.count(), 0U);
    EXPECT_EQ(number, 7);
}

TEST(VoidPtrOrderedCollectionTest, ItsOwnerMayDeleteItemsWhileWalking) {
    kfl::VoidPtrOrderedCollection list;
    for (int i = 0; i < 25; ++i) list.add(new int(i));
    kfl::VoidPtrIterator it(list);
    int expected = 0;
    while (void* const item = list.next(it)) {
        EXPECT_EQ(*static_cast<int*>(item), expected++);
        delete static_cast<int*>(item);
    }
    list.clear();
    EXPECT_EQ(expected, 25);
    EXPECT_EQ(list.first(), nullptr);
}

}  // namespace kfl_test
