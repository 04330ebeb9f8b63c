// Protectable, ProtectionElement and SObject as an already compiled host knows them.
#include <gtest/gtest.h>

#include "kfl/Protectable.h"
#include "kfl/SObject.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t countOffset = bits(4, 8);
constexpr std::size_t objectOffset = bits(4, 8);

using ProtectableRoom = Room<bits(8, 16)>;
using HandleRoom = Room<bits(8, 16)>;

TEST(ProtectableLayoutTest, Sizes) {
    EXPECT_EQ(sizeof(Protectable), bits(8, 16));
    EXPECT_EQ(sizeof(ProtectionElement), bits(8, 16));
    EXPECT_EQ(sizeof(kfl::SObject), bits(4, 8));
}

TEST(ProtectableLayoutTest, TheCountIsA32BitNumberBehindTheTable) {
    ProtectableRoom object;
    call<void, void*>("_ZN11ProtectableC1Ev", object);
    EXPECT_EQ(object.word(countOffset), 0U);
    setFieldAt<unsigned int>(object, countOffset, 7);
    EXPECT_EQ(static_cast<Protectable*>(static_cast<void*>(object))->referenceCount(), 7U);
    ProtectableRoom copy;
    call<void, void*, const void*>("_ZN11ProtectableC1ERKS_", copy, object);
    EXPECT_EQ(copy.word(countOffset), 0U);
    EXPECT_EQ(object.word(countOffset), 7U);
    // The complete-object destructor.
    callSlot<void>(0, copy);
    call<void, void*>("_ZN11ProtectableD1Ev", object);
    EXPECT_TRUE(object.intact());
    EXPECT_TRUE(copy.intact());
}

TEST(ProtectableLayoutTest, ProtectableHasTwoSlots) {
    ProtectableRoom object;
    call<void, void*>("_ZN11ProtectableC1Ev", object);
    expectTable(object, 0, "_ZTI11Protectable", {"_ZN11ProtectableD1Ev", "_ZN11ProtectableD0Ev"});
    expectTableWords("_ZTV11Protectable", 4);
    call<void, void*>("_ZN11ProtectableD2Ev", object);
}

TEST(ProtectableLayoutTest, ProtectionElementHasTwoSlotsAndItsObjectBehindTheTable) {
    ProtectableRoom object;
    call<void, void*>("_ZN11ProtectableC1Ev", object);
    // Not the last handle: the object is not from new.
    setFieldAt<unsigned int>(object, countOffset, 1);

    HandleRoom empty;
    call<void, void*>("_ZN17ProtectionElementC1Ev", empty);
    EXPECT_EQ(empty.pointer(objectOffset), nullptr);
    expectTable(empty, 0, "_ZTI17ProtectionElement",
                {"_ZN17ProtectionElementD1Ev", "_ZN17ProtectionElementD0Ev"});
    expectTableWords("_ZTV17ProtectionElement", 4);

    HandleRoom handle;
    call<void, void*, void*>("_ZN17ProtectionElementC1EP11Protectable", handle, object);
    EXPECT_EQ(handle.pointer(objectOffset), object);
    EXPECT_EQ(object.word(countOffset), 2U);

    HandleRoom copy;
    call<void, void*, const void*>("_ZN17ProtectionElementC1ERKS_", copy, handle);
    EXPECT_EQ(copy.pointer(objectOffset), object);
    EXPECT_EQ(object.word(countOffset), 3U);

    void* assigned = call<void*, void*, const void*>("_ZN17ProtectionElementaSERKS_", empty, copy);
    EXPECT_EQ(assigned, empty);
    EXPECT_EQ(empty.pointer(objectOffset), object);
    EXPECT_EQ(object.word(countOffset), 4U);

    assigned = call<void*, void*, void*>("_ZN17ProtectionElementaSEP11Protectable", empty, nullptr);
    EXPECT_EQ(assigned, empty);
    EXPECT_EQ(empty.pointer(objectOffset), nullptr);
    EXPECT_EQ(object.word(countOffset), 3U);

    callSlot<void>(0, copy);
    call<void, void*>("_ZN17ProtectionElementD1Ev", handle);
    call<void, void*>("_ZN17ProtectionElementD2Ev", empty);
    EXPECT_EQ(object.word(countOffset), 1U);
    // The pointers of destroyed handles are left as they were.
    EXPECT_EQ(copy.pointer(objectOffset), object);
    EXPECT_EQ(handle.pointer(objectOffset), object);
    for (const HandleRoom* room : {&empty, &handle, &copy}) EXPECT_TRUE(room->intact());
}

// What a host's own class does when it is destroyed at count zero: slot 1 is called.
void* deleted = nullptr;
void deletingDestructor(void* object) { deleted = object; }

TEST(ProtectableLayoutTest, TheLastHandleCallsTheDeletingDestructorsSlot) {
    ProtectableRoom object;
    call<void, void*>("_ZN11ProtectableC1Ev", object);
    HostTable table(object, 2);
    table.fill(1, &deletingDestructor);
    setFieldAt<void*>(object, 0, table.start());
    HandleRoom handle;
    call<void, void*, void*>("_ZN17ProtectionElementC1EP11Protectable", handle, object);
    deleted = nullptr;
    callSlot<void>(0, handle);
    EXPECT_EQ(deleted, object);
    EXPECT_EQ(object.word(countOffset), 0U);

    call<void, void*, void*>("_ZN17ProtectionElementC1EP11Protectable", handle, object);
    deleted = nullptr;
    call<void*, void*, void*>("_ZN17ProtectionElementaSEP11Protectable", handle, nullptr);
    EXPECT_EQ(deleted, object);
    callSlot<void>(0, handle);
}

// The count is a word without a sign, and only an exact zero is the end: a handle that releases
// from zero wraps it, and one that releases from beyond 2^31 counts down.
TEST(ProtectableLayoutTest, OnlyACountOfExactlyZeroDeletes) {
    ProtectableRoom object;
    call<void, void*>("_ZN11ProtectableC1Ev", object);
    HostTable table(object, 2);
    table.fill(1, &deletingDestructor);
    setFieldAt<void*>(object, 0, table.start());
    HandleRoom empty;
    call<void, void*>("_ZN17ProtectionElementC1Ev", empty);
    const unsigned int rows[][2] = {
        {0, 0xFFFFFFFFU}, {0xFFFFFFFFU, 0xFFFFFFFEU}, {0x80000001U, 0x80000000U}, {2, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        const auto expectReleased = [&](void (*release)(void* handle, const void* other)) {
            HandleRoom handle;
            call<void, void*, void*>("_ZN17ProtectionElementC1EP11Protectable", handle, object);
            setFieldAt<unsigned int>(object, countOffset, row[0]);
            deleted = nullptr;
            release(handle, empty);
            EXPECT_EQ(deleted, nullptr);
            EXPECT_EQ(object.word(countOffset), row[1]);
        };
        expectReleased([](void* handle, const void* /*other*/) {
            call<void, void*>("_ZN17ProtectionElementD1Ev", handle);
        });
        expectReleased([](void* handle, const void* /*other*/) {
            call<void*, void*, void*>("_ZN17ProtectionElementaSEP11Protectable", handle, nullptr);
        });
        expectReleased([](void* handle, const void* other) {
            call<void*, void*, const void*>("_ZN17ProtectionElementaSERKS_", handle, other);
        });
    }
}

TEST(ProtectableLayoutTest, DeletingDestructorsReleaseTheirObjects) {
    auto* const handle = new ProtectionElement(new Protectable);
    callSlot<void>(1, handle);
    kfl::SObject* const object = new kfl::SObject;
    callSlot<void>(1, object);
}

TEST(SObjectLayoutTest, IsATableOfTwoSlots) {
    Room<bits(4, 8)> object;
    call<void, void*>("_ZN3kfl7SObjectC1Ev", object);
    expectTable(object, 0, "_ZTIN3kfl7SObjectE", {"_ZN3kfl7SObjectD1Ev", "_ZN3kfl7SObjectD0Ev"});
    expectTableWords("_ZTVN3kfl7SObjectE", 4);
    callSlot<void>(0, object);
    call<void, void*>("_ZN3kfl7SObjectD2Ev", object);
    EXPECT_TRUE(object.intact());
}

}  // namespace
