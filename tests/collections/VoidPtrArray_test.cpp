#include "kfl/VoidPtrArray.h"

#include <gtest/gtest.h>

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

}  // namespace kfl_test
