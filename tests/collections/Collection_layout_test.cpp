// The object collections and their iterator as an already compiled host knows them.
#include "kfl/Collection.h"

#include <gtest/gtest.h>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t itemsOffset = bits(4, 8);
constexpr std::size_t dataOffset = itemsOffset + bits(4, 8);
constexpr std::size_t capacityOffset = itemsOffset + bits(8, 16);
constexpr std::size_t elementSizeOffset = itemsOffset + bits(12, 20);
constexpr std::size_t countOffset = bits(20, 32);

constexpr std::size_t positionOffset = bits(4, 8);
constexpr std::size_t currentOffset = bits(8, 16);
constexpr std::size_t collectionOffset = bits(12, 24);

enum Slot : std::size_t {
    addSlot = 2,
    removeSameSlot,
    replaceSameSlot,
    findSameSlot,
    countSlot,
    freeContentsSlot,
    startSlot,
    endSlot,
    nextSlot,
    prevSlot,
    insertAtSlot,
    removeAtSlot,
    replaceAtSlot,
    indexOfSameSlot,
    idAtSlot,
    expandToSlot
};

using CollectionRoom = Room<bits(24, 40)>;
using IteratorRoom = Room<bits(16, 32)>;

class HostCollection : public CollectionRoom {
  public:
    HostCollection() { call<void, void*>("_ZN3kfl10OrdCollectC1Ev", *this); }
    ~HostCollection() { callSlot<void>(0, *this); }
    HostCollection(const HostCollection&) = delete;
    HostCollection& operator=(const HostCollection&) = delete;
};

TEST(IteratorLayoutTest, IsAnObjectWithThreeFields) {
    EXPECT_EQ(sizeof(kfl::Iterator), bits(16, 32));
    const HostCollection collection;
    kfl::SObject item;
    callSlot<void*, void*>(addSlot, collection, &item);
    for (const char* const constructor :
         {"_ZN3kfl8IteratorC1EPNS_10CollectionE", "_ZN3kfl8IteratorC1ERNS_10CollectionE"}) {
        const IteratorRoom it;
        call<void, void*, void*>(constructor, it, collection);
        EXPECT_EQ(it.word(positionOffset), 0U);
        EXPECT_EQ(it.pointer(currentOffset), &item);
        EXPECT_EQ(it.pointer(collectionOffset), collection);
        EXPECT_EQ((callSlot<void*, void*>(nextSlot, collection, it)), &item);
        EXPECT_EQ(it.word(positionOffset), 1U);
        EXPECT_EQ(it.pointer(currentOffset), nullptr);
        callSlot<void>(0, it);
        EXPECT_TRUE(it.intact());
    }
}

TEST(IteratorLayoutTest, UnboundIteratorIsZeroAndHasTwoSlots) {
    const IteratorRoom it;
    call<void, void*>("_ZN3kfl8IteratorC1Ev", it);
    EXPECT_EQ(it.word(positionOffset), 0U);
    EXPECT_EQ(it.pointer(currentOffset), nullptr);
    EXPECT_EQ(it.pointer(collectionOffset), nullptr);
    EXPECT_TRUE(it.intact());
    expectTable(it, 0, "_ZTIN3kfl8IteratorE", {"_ZN3kfl8IteratorD1Ev", "_ZN3kfl8IteratorD0Ev"});
    expectTableWords("_ZTVN3kfl8IteratorE", 4);
    call<void, void*>("_ZN3kfl8IteratorD2Ev", it);
    callSlot<void>(1, new kfl::Iterator);
}

TEST(CollectionLayoutTest, InterfaceHasTwelveSlotsAndNoFields) {
    EXPECT_EQ(sizeof(kfl::Collection), bits(4, 8));
    expectAbstractTable("_ZTVN3kfl10CollectionE", "_ZTIN3kfl10CollectionE", 10);
    expectTableWords("_ZTVN3kfl10CollectionE", 14);
}

TEST(CollectionLayoutTest, OrdCollectHasItsArrayAndItsCount) {
    EXPECT_EQ(sizeof(kfl::OrdCollect), bits(24, 40));
    const HostCollection collection;
    EXPECT_EQ(collection.pointer(itemsOffset),
              static_cast<unsigned char*>(exported("_ZTVN3kfl12SObjectArrayE")) + 2 * pointerSize);
    EXPECT_EQ(collection.word(capacityOffset), 10U);
    EXPECT_EQ(collection.word(elementSizeOffset), pointerSize);
    EXPECT_EQ(collection.word(countOffset), 0U);
    kfl::SObject item;
    callSlot<void*, void*>(addSlot, collection, &item);
    EXPECT_EQ(collection.word(countOffset), 1U);
    EXPECT_EQ(pointerAt(collection.pointer(dataOffset), 0), &item);
    EXPECT_TRUE(collection.intact());

    const CollectionRoom sized;
    call<void, void*, unsigned int>("_ZN3kfl10OrdCollectC1Ej", sized, 3);
    EXPECT_EQ(sized.word(capacityOffset), 3U);
    EXPECT_EQ(sized.word(countOffset), 0U);
    EXPECT_TRUE(sized.intact());
    call<void, void*>("_ZN3kfl10OrdCollectD1Ev", sized);
}

TEST(CollectionLayoutTest, OrdCollectHasEighteenSlots) {
    const HostCollection collection;
    expectTable(
        collection, 0, "_ZTIN3kfl10OrdCollectE",
        {"_ZN3kfl10OrdCollectD1Ev", "_ZN3kfl10OrdCollectD0Ev",
         "_ZN3kfl10OrdCollect3addEPNS_7SObjectE", "_ZN3kfl10OrdCollect10removeSameEPNS_7SObjectE",
         "_ZN3kfl10OrdCollect11replaceSameEPNS_7SObjectES2_",
         "_ZN3kfl10OrdCollect8findSameEPNS_7SObjectE", "_ZNK3kfl10OrdCollect5countEv",
         "_ZN3kfl10OrdCollect12freeContentsEv", "_ZN3kfl10OrdCollect5startERNS_8IteratorE",
         "_ZN3kfl10OrdCollect3endERNS_8IteratorE", "_ZN3kfl10OrdCollect4nextERNS_8IteratorE",
         "_ZN3kfl10OrdCollect4prevERNS_8IteratorE", "_ZN3kfl10OrdCollect8insertAtEjPNS_7SObjectE",
         "_ZN3kfl10OrdCollect8removeAtEj", "_ZN3kfl10OrdCollect9replaceAtEjPNS_7SObjectE",
         "_ZNK3kfl10OrdCollect11indexOfSameEPNS_7SObjectE", "_ZNK3kfl10OrdCollect4idAtEj",
         "_ZN3kfl10OrdCollect8expandToEj"});
    expectTableWords("_ZTVN3kfl10OrdCollectE", 20);
}

TEST(CollectionLayoutTest, OperationsWorkThroughTheirSlots) {
    const HostCollection collection;
    kfl::SObject a;
    kfl::SObject b;
    kfl::SObject c;
    EXPECT_EQ((callSlot<void*, void*>(addSlot, collection, &a)), &a);
    EXPECT_EQ((callSlot<void*, unsigned int, void*>(insertAtSlot, collection, 0, &b)), &b);
    EXPECT_EQ((callSlot<void*, unsigned int, void*>(replaceAtSlot, collection, 1, &c)), &a);
    EXPECT_EQ((callSlot<void*, void*, void*>(replaceSameSlot, collection, &c, &a)), &c);
    EXPECT_EQ((callSlot<void*, void*>(findSameSlot, collection, &a)), &a);
    EXPECT_EQ((callSlot<int, void*>(indexOfSameSlot, collection, &a)), 1);
    EXPECT_EQ((callSlot<void*, unsigned int>(idAtSlot, collection, 0)), &b);
    EXPECT_EQ((callSlot<unsigned int>(countSlot, collection)), 2U);
    EXPECT_EQ((call<void*, void*>("_ZN3kfl10Collection5firstEv", collection)), &b);
    EXPECT_EQ((call<void*, void*>("_ZN3kfl10Collection4lastEv", collection)), &a);

    const IteratorRoom it;
    call<void, void*, void*>("_ZN3kfl8IteratorC1ERNS_10CollectionE", it, collection);
    EXPECT_EQ((callSlot<void*, void*>(endSlot, collection, it)), &a);
    EXPECT_EQ((callSlot<void*, void*>(prevSlot, collection, it)), &a);
    EXPECT_EQ((callSlot<void*, void*>(startSlot, collection, it)), &b);
    EXPECT_EQ((callSlot<void*, void*>(nextSlot, collection, it)), &b);
    EXPECT_EQ(it.word(positionOffset), 1U);
    callSlot<void>(0, it);

    EXPECT_EQ((callSlot<void*, unsigned int>(removeAtSlot, collection, 0)), &b);
    EXPECT_EQ((callSlot<void*, void*>(removeSameSlot, collection, &a)), &a);
    callSlot<void, unsigned int>(expandToSlot, collection, 4);
    EXPECT_EQ(collection.word(capacityOffset), 4U);
    callSlot<void*, void*>(addSlot, collection, &a);
    call<void, void*>("_ZN3kfl10OrdCollect5resetEv", collection);
    EXPECT_EQ(collection.word(countOffset), 0U);
    callSlot<void*, void*>(addSlot, collection, new kfl::SObject);
    callSlot<void>(freeContentsSlot, collection);
    EXPECT_EQ(collection.word(countOffset), 0U);
    EXPECT_EQ(collection.word(capacityOffset), 4U);
}

TEST(CollectionLayoutTest, DestructorsReleaseTheStorage) {
    callSlot<void>(1, new kfl::OrdCollect(3));
    const CollectionRoom collection;
    call<void, void*>("_ZN3kfl10OrdCollectC1Ev", collection);
    call<void, void*>("_ZN3kfl10OrdCollectD2Ev", collection);
}

}  // namespace
