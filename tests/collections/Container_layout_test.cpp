// Container as an already compiled host knows it.
#include "kfl/Container.h"

#include <gtest/gtest.h>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t dataOffset = bits(4, 8);
constexpr std::size_t capacityOffset = bits(8, 16);
constexpr std::size_t elementSizeOffset = bits(12, 20);

constexpr std::size_t destroySlot = 0;
constexpr std::size_t sizeSlot = 2;
constexpr std::size_t atGetSlot = 3;
constexpr std::size_t atPutSlot = 4;
constexpr std::size_t expandToSlot = 5;

class ContainerRoom : public Room<bits(16, 24)> {
  public:
    void expect(bool storage, unsigned int capacity, unsigned int elementSize) const {
        EXPECT_EQ(pointer(dataOffset) != nullptr, storage);
        EXPECT_EQ(word(capacityOffset), capacity);
        EXPECT_EQ(word(elementSizeOffset), elementSize);
        EXPECT_TRUE(intact());
    }
};

// A container of `capacity` elements of two bytes.
class HostContainer : public ContainerRoom {
  public:
    explicit HostContainer(unsigned int capacity) {
        call<void, void*, unsigned int, unsigned int>("_ZN3kfl9ContainerC1Ejj", *this, capacity, 2);
    }
    ~HostContainer() { callSlot<void>(destroySlot, *this); }
    HostContainer(const HostContainer&) = delete;
    HostContainer& operator=(const HostContainer&) = delete;
};

TEST(ContainerLayoutTest, FieldsFollowTheTable) {
    EXPECT_EQ(sizeof(kfl::Container), bits(16, 24));
    ContainerRoom empty;
    call<void, void*>("_ZN3kfl9ContainerC1Ev", empty);
    empty.expect(false, 0, 0);
    ContainerRoom one;
    call<void, void*, unsigned int>("_ZN3kfl9ContainerC1Ej", one, 4);
    one.expect(true, 1, 4);
    const HostContainer many(5);
    many.expect(true, 5, 2);
    call<void, void*>("_ZN3kfl9ContainerD1Ev", empty);
    call<void, void*>("_ZN3kfl9ContainerD2Ev", one);
}

TEST(ContainerLayoutTest, TableHasSixSlots) {
    const HostContainer container(1);
    expectTable(container, 0, "_ZTIN3kfl9ContainerE",
                {"_ZN3kfl9ContainerD1Ev", "_ZN3kfl9ContainerD0Ev", "_ZNK3kfl9Container4sizeEv",
                 "_ZN3kfl9Container5atGetEjPS0_j", "_ZN3kfl9Container5atPutEjPS0_j",
                 "_ZN3kfl9Container8expandToEj"});
    expectTableWords("_ZTVN3kfl9ContainerE", 8);
}

TEST(ContainerLayoutTest, OperationsWorkThroughTheirSlots) {
    const HostContainer source(2);
    const HostContainer target(1);
    static_cast<char*>(source.pointer(dataOffset))[2] = 'x';
    EXPECT_EQ(callSlot<unsigned int>(sizeSlot, source), 2U);
    EXPECT_EQ((callSlot<unsigned int, unsigned int, void*, unsigned int>(atPutSlot, target, 1,
                                                                         source, 2)),
              2U);
    target.expect(true, 3, 2);
    EXPECT_EQ(target.text(dataOffset)[4], 'x');
    const HostContainer copy(0);
    EXPECT_EQ(
        (callSlot<unsigned int, unsigned int, void*, unsigned int>(atGetSlot, target, 2, copy, 9)),
        1U);
    copy.expect(true, 1, 2);
    EXPECT_EQ(copy.text(dataOffset)[0], 'x');
    callSlot<void, unsigned int>(expandToSlot, target, 7);
    target.expect(true, 7, 2);
    callSlot<void, unsigned int>(expandToSlot, target, 0);
    target.expect(false, 0, 2);
}

TEST(ContainerLayoutTest, OtherOperationsAreFoundByTheirNames) {
    const HostContainer container(2);
    char bytes[] = "abcd";
    EXPECT_EQ((call<unsigned int, void*, unsigned int, char*, unsigned int>(
                  "_ZN3kfl9Container5atPutEjPcj", container, 1, bytes, 2)),
              2U);
    container.expect(true, 3, 2);
    EXPECT_EQ((call<unsigned int, void*, unsigned int, char*>("_ZN3kfl9Container5atPutEjPc",
                                                              container, 0, bytes)),
              1U);
    char read[] = "....";
    EXPECT_EQ((call<unsigned int, void*, unsigned int, char*, unsigned int>(
                  "_ZN3kfl9Container5atGetEjPcj", container, 2, read, 5)),
              1U);
    EXPECT_STREQ(read, "cd..");
    EXPECT_EQ((call<unsigned int, void*, unsigned int, char*>("_ZN3kfl9Container5atGetEjPc",
                                                              container, 0, read)),
              1U);
    EXPECT_STREQ(read, "ab..");
    call<void, void*>("_ZN3kfl9Container6expandEv", container);
    container.expect(true, 4, 2);
    call<void, void*, unsigned int>("_ZN3kfl9Container6expandEj", container, 3);
    container.expect(true, 7, 2);
    char* const adopted = new char[14];
    EXPECT_EQ((call<char*, void*, char*>("_ZN3kfl9Container7setDataEPc", container, adopted)),
              adopted);
    EXPECT_EQ(container.pointer(dataOffset), adopted);
    call<void, void*>("_ZN3kfl9Container5resetEv", container);
    container.expect(false, 0, 2);
}

TEST(ContainerLayoutTest, GrowthGoesThroughTheExpandToSlot) {
    // A host's subclass: the same table but for one slot.
    static unsigned int asked;
    asked = 0;
    const HostContainer container(2);
    HostTable table(container, 6);
    void (*const refuse)(void*, unsigned int) = [](void*, unsigned int n) { asked = n; };
    table.fill(expandToSlot, refuse);
    void* const own = container.pointer(0);
    setFieldAt<void*>(container, 0, table.start());
    call<void, void*, unsigned int>("_ZN3kfl9Container6expandEj", container, 3);
    EXPECT_EQ(asked, 5U);
    call<void, void*>("_ZN3kfl9Container6expandEv", container);
    EXPECT_EQ(asked, 3U);
    char byte[] = "xy";
    call<unsigned int, void*, unsigned int, char*>("_ZN3kfl9Container5atPutEjPc", container, 8,
                                                   byte);
    EXPECT_EQ(asked, 9U);
    container.expect(true, 2, 2);
    setFieldAt<void*>(container, 0, own);
}

TEST(ContainerLayoutTest, DeletingDestructorReleasesTheObject) {
    callSlot<void>(1, new kfl::Container(3, 4));
}

}  // namespace
