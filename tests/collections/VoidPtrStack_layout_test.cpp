// VoidPtrStack as an already compiled host knows it.
#include "kfl/VoidPtrStack.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t capacityOffset = 0;
constexpr std::size_t topOffset = 4;
constexpr std::size_t slotsOffset = 8;

TEST(VoidPtrStackLayoutTest, HasCapacityTopAndSlots) {
    EXPECT_EQ(sizeof(kfl::VoidPtrStack), bits(12, 16));
    EXPECT_FALSE(std::is_polymorphic<kfl::VoidPtrStack>::value);
    Room<bits(12, 16)> stack;
    call<void, void*, int>("_ZN3kfl12VoidPtrStackC1Ei", stack, 2);
    EXPECT_EQ(fieldAt<int>(stack, capacityOffset), 2);
    EXPECT_EQ(fieldAt<int>(stack, topOffset), -1);
    const void* const slots = stack.pointer(slotsOffset);
    EXPECT_NE(slots, nullptr);

    int a = 1;
    int b = 2;
    const auto push = [&](void* item) {
        return call<bool, void*, void*>("_ZN3kfl12VoidPtrStack4pushEPv", stack, item);
    };
    const auto pop = [&] { return call<void*, void*>("_ZN3kfl12VoidPtrStack3popEv", stack); };
    EXPECT_TRUE(push(&a));
    EXPECT_TRUE(push(&b));
    EXPECT_FALSE(push(&a));
    EXPECT_EQ(fieldAt<int>(stack, topOffset), 2);
    EXPECT_EQ(pointerAt(slots, 0), &a);
    EXPECT_EQ(pointerAt(slots, pointerSize), &b);
    EXPECT_EQ(pop(), nullptr);
    EXPECT_EQ(pop(), &b);
    EXPECT_EQ(fieldAt<int>(stack, topOffset), 0);
    EXPECT_EQ(fieldAt<int>(stack, capacityOffset), 2);
    EXPECT_EQ(stack.pointer(slotsOffset), slots);
    call<void, void*>("_ZN3kfl12VoidPtrStackD1Ev", stack);
    EXPECT_TRUE(stack.intact());
}

TEST(VoidPtrStackLayoutTest, BaseObjectDestructorIsThereToo) {
    Room<bits(12, 16)> stack;
    call<void, void*, int>("_ZN3kfl12VoidPtrStackC1Ei", stack, 2);
    call<void, void*>("_ZN3kfl12VoidPtrStackD2Ev", stack);
}

}  // namespace
