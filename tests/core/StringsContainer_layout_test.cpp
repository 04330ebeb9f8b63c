// StringsContainer as an already compiled host knows it.
#include <gtest/gtest.h>

#include "kfl/StringsContainer.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t capacityOffset = bits(4, 8);
constexpr std::size_t countOffset = bits(8, 12);
constexpr std::size_t slotsOffset = bits(12, 16);

using ListRoom = Room<bits(16, 24)>;

TEST(StringsContainerLayoutTest, Size) { EXPECT_EQ(sizeof(StringsContainer), bits(16, 24)); }

TEST(StringsContainerLayoutTest, FieldsAndOperations) {
    char a[] = "ab";
    char b[] = "cde";
    ListRoom list;
    call<void, void*, unsigned int>("_ZN16StringsContainerC1Ej", list, 2);
    EXPECT_EQ(list.word(capacityOffset), 2U);
    EXPECT_EQ(list.word(countOffset), 0U);
    ASSERT_NE(list.pointer(slotsOffset), nullptr);

    const char* const add = "_ZN16StringsContainer9addStringEPc";
    EXPECT_EQ((call<int, void*, char*>(add, list, a)), 0);
    EXPECT_EQ((call<int, void*, char*>(add, list, b)), 0);
    EXPECT_EQ((call<int, void*, char*>(add, list, a)), 1);
    EXPECT_EQ(list.word(countOffset), 2U);
    EXPECT_EQ(pointerAt(list.pointer(slotsOffset), 0), a);
    EXPECT_EQ(pointerAt(list.pointer(slotsOffset), pointerSize), b);

    EXPECT_EQ((call<unsigned int, void*>("_ZN16StringsContainer18getNumberOfStringsEv", list)), 2U);
    EXPECT_EQ((call<char*, void*, unsigned int>("_ZN16StringsContainer9getStringEj", list, 2)), b);
    EXPECT_EQ((call<unsigned int, void*>("_ZN16StringsContainer18getLengthOfStringsEv", list)), 5U);
    EXPECT_TRUE((call<bool, void*, void*>(
        "_ZN16StringsContainer36areAllStringsPresentInOtherContainerEPS_", list, list)));
    EXPECT_TRUE((call<bool, void*, void*>("_ZN16StringsContainer13isItIdenticalEPS_", list, list)));
    call<void, void*, unsigned int>("_ZN16StringsContainer15clearFromStringEj", list, 2);
    EXPECT_EQ(list.word(countOffset), 1U);
    call<void, void*>("_ZN16StringsContainer5clearEv", list);
    EXPECT_EQ(list.word(countOffset), 0U);
    EXPECT_EQ(list.word(capacityOffset), 2U);
    call<void, void*>("_ZN16StringsContainerD1Ev", list);
    EXPECT_TRUE(list.intact());
}

TEST(StringsContainerLayoutTest, HasTwoSlots) {
    ListRoom list;
    call<void, void*, unsigned int>("_ZN16StringsContainerC2Ej", list, 2);
    expectTable(list, 0, "_ZTI16StringsContainer",
                {"_ZN16StringsContainerD1Ev", "_ZN16StringsContainerD0Ev"});
    expectTableWords("_ZTV16StringsContainer", 4);
    call<void, void*>("_ZN16StringsContainerD2Ev", list);
}

TEST(StringsContainerLayoutTest, DeletingDestructorReleasesTheObject) {
    void* const list = new StringsContainer(3);
    callSlot<void>(1, list);
}

}  // namespace
