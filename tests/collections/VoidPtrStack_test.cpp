#include "kfl/VoidPtrStack.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <type_traits>
#include <vector>

#include "tests/collections/counting_allocator.h"

namespace {

using kfl::VoidPtrStack;

int items[8];
void* const a = &items[0];
void* const b = &items[1];
void* const c = &items[2];

TEST(VoidPtrStackTest, IsNeitherCopiedNorPolymorphic) {
    EXPECT_FALSE(std::is_copy_constructible<VoidPtrStack>::value);
    EXPECT_FALSE(std::is_copy_assignable<VoidPtrStack>::value);
    EXPECT_FALSE(std::is_polymorphic<VoidPtrStack>::value);
}

TEST(VoidPtrStackTest, StartsEmpty) {
    VoidPtrStack stack(5);
    EXPECT_EQ(stack.capacity(), 5);
    EXPECT_EQ(stack.size(), 0);
    EXPECT_TRUE(stack.empty());
}

TEST(VoidPtrStackTest, PopOfAnEmptyStackGivesNullAndLeavesItEmpty) {
    VoidPtrStack stack(1);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.size(), 0);
    EXPECT_TRUE(stack.push(a)) << "the place below the first was not counted";
    EXPECT_EQ(stack.pop(), a);
}

TEST(VoidPtrStackTest, GivesTheLastItemFirst) {
    VoidPtrStack stack(3);
    EXPECT_TRUE(stack.push(a));
    EXPECT_TRUE(stack.push(b));
    EXPECT_TRUE(stack.push(c));
    EXPECT_EQ(stack.size(), 3);
    EXPECT_FALSE(stack.empty());
    EXPECT_EQ(stack.pop(), c);
    EXPECT_EQ(stack.pop(), b);
    EXPECT_TRUE(stack.push(c));
    EXPECT_EQ(stack.pop(), c);
    EXPECT_EQ(stack.pop(), a);
    EXPECT_EQ(stack.pop(), nullptr);
}

TEST(VoidPtrStackTest, TakesAStoredNull) {
    VoidPtrStack stack(2);
    EXPECT_TRUE(stack.push(a));
    EXPECT_TRUE(stack.push(nullptr));
    EXPECT_EQ(stack.size(), 2);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.pop(), a);
}

TEST(VoidPtrStackTest, AFailedPushIsCounted) {
    VoidPtrStack stack(2);
    EXPECT_TRUE(stack.push(a));
    EXPECT_TRUE(stack.push(b));
    EXPECT_FALSE(stack.push(c));
    EXPECT_EQ(stack.size(), 3);
    EXPECT_EQ(stack.pop(), nullptr) << "the place of the failed push";
    EXPECT_EQ(stack.pop(), b);
    EXPECT_EQ(stack.pop(), a);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_TRUE(stack.empty());
}

TEST(VoidPtrStackTest, EveryFailedPushMovesOnePlaceFurther) {
    VoidPtrStack stack(1);
    EXPECT_TRUE(stack.push(a));
    for (int i = 0; i < 1000; ++i) EXPECT_FALSE(stack.push(b));
    EXPECT_EQ(stack.size(), 1001);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(stack.pop(), nullptr);
        EXPECT_EQ(stack.size(), 1000 - i);
    }
    EXPECT_EQ(stack.pop(), a);
}

TEST(VoidPtrStackTest, APushFailsUntilTheFailedOnesAreTakenBack) {
    VoidPtrStack stack(1);
    stack.push(a);
    stack.push(b);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_FALSE(stack.push(c)) << "a still stands";
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.pop(), a);
    EXPECT_TRUE(stack.push(c));
}

TEST(VoidPtrStackTest, CapacityZeroTakesNothing) {
    VoidPtrStack stack(0);
    EXPECT_FALSE(stack.push(a));
    EXPECT_EQ(stack.size(), 1);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.size(), 0);
}

TEST(VoidPtrStackTest, ACountOfFailedPushesThatFillsAnIntStaysThere) {
    VoidPtrStack stack(1);
    stack.push(a);
    // The top stands behind the capacity. So many pushes would take too long.
    const int nearlyAll = INT_MAX - 2;
    std::memcpy(reinterpret_cast<char*>(&stack) + sizeof(int), &nearlyAll, sizeof nearlyAll);
    EXPECT_EQ(stack.size(), INT_MAX - 1);
    EXPECT_FALSE(stack.push(b));
    EXPECT_EQ(stack.size(), INT_MAX);
    EXPECT_FALSE(stack.push(b));
    EXPECT_EQ(stack.size(), INT_MAX);
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_EQ(stack.size(), INT_MAX - 1);
}

TEST(VoidPtrStackTest, HoldsAsManyItemsAsItHasSlots) {
    constexpr int n = 5000;
    std::vector<int> many(n);
    VoidPtrStack stack(n);
    for (int& one : many) ASSERT_TRUE(stack.push(&one));
    for (int i = n - 1; i >= 0; --i) ASSERT_EQ(stack.pop(), &many[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(stack.empty());
}

TEST(VoidPtrStackTest, AllocatesItsSlotsOnceAndReleasesThem) {
    const kfl_test::AllocationCount count;
    {
        VoidPtrStack stack(6);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(count.madeAsArrays(), 1U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 6 * sizeof(void*));
        EXPECT_EQ(kfl_test::allocationsOf([&] {
                      for (int i = 0; i < 9; ++i) stack.push(a);
                      for (int i = 0; i < 9; ++i) stack.pop();
                  }),
                  0U);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(VoidPtrStackTest, NegativeAndHugeCapacitiesAreRefusedAsAllocationsAre) {
    for (const int capacity : {-1, INT_MIN, INT_MAX, 0x40000000}) {
        EXPECT_TRUE(kfl_test::refuses([&] { const VoidPtrStack stack(capacity); })) << capacity;
    }
}

TEST(VoidPtrStackTest, AFailedAllocationLeaksNothing) {
    const kfl_test::AllocationCount count;
    EXPECT_EQ(kfl_test::failEachRequest([] { const VoidPtrStack stack(4); }, [] {}), 1U);
    EXPECT_EQ(count.live(), 0);
}

}  // namespace
