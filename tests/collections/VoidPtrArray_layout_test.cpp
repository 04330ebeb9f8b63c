// VoidPtrArray as an already compiled host knows it.
#include "kfl/VoidPtrArray.h"

#include <gtest/gtest.h>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t dataOffset = bits(4, 8);
constexpr std::size_t capacityOffset = bits(8, 16);
constexpr std::size_t elementSizeOffset = bits(12, 20);

// An array of three slots.
class HostArray : public Room<bits(16, 24)> {
  public:
    HostArray() { call<void, void*, unsigned int>("_ZN3kfl12VoidPtrArrayC1Ej", *this, 3); }
    ~HostArray() { callSlot<void>(0, *this); }
    HostArray(const HostArray&) = delete;
    HostArray& operator=(const HostArray&) = delete;

    void* slot(std::size_t index) const {
        return pointerAt(pointer(dataOffset), index * pointerSize);
    }
};

TEST(VoidPtrArrayLayoutTest, IsAContainerOfPointers) {
    EXPECT_EQ(sizeof(kfl::VoidPtrArray), bits(16, 24));
    Room<bits(16, 24)> array;
    call<void, void*>("_ZN3kfl12VoidPtrArrayC1Ev", array);
    EXPECT_NE(array.pointer(dataOffset), nullptr);
    EXPECT_EQ(array.word(capacityOffset), 10U);
    EXPECT_EQ(array.word(elementSizeOffset), pointerSize);
    EXPECT_TRUE(array.intact());
    call<void, void*>("_ZN3kfl12VoidPtrArrayD1Ev", array);

    const HostArray three;
    EXPECT_EQ(three.word(capacityOffset), 3U);
    EXPECT_EQ(three.word(elementSizeOffset), pointerSize);
    EXPECT_TRUE(three.intact());
}

TEST(VoidPtrArrayLayoutTest, TableIsTheContainersButForTheDestructors) {
    const HostArray array;
    expectTable(array, 0, "_ZTIN3kfl12VoidPtrArrayE",
                {"_ZN3kfl12VoidPtrArrayD1Ev", "_ZN3kfl12VoidPtrArrayD0Ev",
                 "_ZNK3kfl9Container4sizeEv", "_ZN3kfl9Container5atGetEjPS0_j",
                 "_ZN3kfl9Container5atPutEjPS0_j", "_ZN3kfl9Container8expandToEj"});
    expectTableWords("_ZTVN3kfl12VoidPtrArrayE", 8);
}

TEST(VoidPtrArrayLayoutTest, OperationsAreFoundByTheirNames) {
    const HostArray array;
    int a = 1;
    int b = 2;
    call<void, void*, void*>("_ZN3kfl12VoidPtrArray3addEPv", array, &a);
    EXPECT_EQ(array.slot(0), &a);
    call<void, void*, unsigned int, void*>("_ZN3kfl12VoidPtrArray7atPutIdEjPv", array, 2, &b);
    EXPECT_EQ(array.slot(2), &b);
    EXPECT_EQ((call<void*, const void*, unsigned int>("_ZNK3kfl12VoidPtrArray4idAtEj", array, 2)),
              &b);
    EXPECT_EQ((call<int, const void*, void*>("_ZNK3kfl12VoidPtrArray11indexOfSameEPv", array, &b)),
              2);
    EXPECT_EQ((call<void*, void*, void*>("_ZN3kfl12VoidPtrArray8findSameEPv", array, &a)), &a);
    void** const place = call<void**, void*, unsigned int>("_ZN3kfl12VoidPtrArrayixEj", array, 4);
    EXPECT_EQ(array.word(capacityOffset), 5U);
    EXPECT_EQ(place,
              static_cast<void*>(static_cast<char*>(array.pointer(dataOffset)) + 4 * pointerSize));
    call<void, void*>("_ZN3kfl12VoidPtrArray5resetEv", array);
    EXPECT_EQ(array.slot(0), nullptr);
    EXPECT_EQ(array.slot(2), nullptr);
    EXPECT_EQ(array.word(capacityOffset), 5U);
}

TEST(VoidPtrArrayLayoutTest, DestructorsReleaseTheStorage) {
    callSlot<void>(1, new kfl::VoidPtrArray(3));
    Room<bits(16, 24)> array;
    call<void, void*>("_ZN3kfl12VoidPtrArrayC1Ev", array);
    call<void, void*>("_ZN3kfl12VoidPtrArrayD2Ev", array);
}

}  // namespace
