#include "kfl/VoidPtrArray.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

#include "tests/collections/pointer_array_rules.h"

namespace kfl_test {

INSTANTIATE_TYPED_TEST_SUITE_P(VoidPtrArray, PointerArrayTest, testing::Types<Untyped>, KindNames);

TEST(VoidPtrArrayTest, HoldsAnyAddress) {
    int number = 0;
    kfl::VoidPtrArray array;
    array.add(&number);
    EXPECT_EQ(array.idAt(0), &number);
    EXPECT_EQ(array.findSame(&number), &number);
}

// Nothing looks behind an item: it may be any number.
void* itemOf(std::uintptr_t number) { return reinterpret_cast<void*>(number); }

TEST(VoidPtrArrayTest, ItemsAreTheSameOnlyInAllTheirBits) {
    constexpr unsigned int half = sizeof(void*) * CHAR_BIT / 2;
    constexpr unsigned int count = 100;
    kfl::VoidPtrArray array(count);
    for (unsigned int i = 0; i < count; ++i) {
        array[i] = itemOf((std::uintptr_t{i} + 1) << half | 7U);
    }
    for (unsigned int i = 0; i < count; ++i) {
        EXPECT_EQ(array.indexOfSame(array.idAt(i)), static_cast<int>(i));
    }
    EXPECT_EQ(array.indexOfSame(itemOf(7)), -1);
    EXPECT_EQ(array.indexOfSame(itemOf(std::uintptr_t{5} << half)), -1);
}

TEST(VoidPtrArrayTest, EveryPlaceIsSearched) {
    for (unsigned int count = 1; count < 70; ++count) {
        kfl::VoidPtrArray array(count);
        for (unsigned int i = 0; i < count; ++i) array[i] = itemOf(16 * (i % 50 + 1));
        for (unsigned int i = 0; i < count; ++i) {
            EXPECT_EQ(array.indexOfSame(array.idAt(i)), static_cast<int>(i % 50));
        }
        EXPECT_EQ(array.indexOfSame(itemOf(8)), -1);
    }
}

}  // namespace kfl_test
