// The untyped collections and their iterator as an already compiled host knows them.
#include "kfl/VoidPtrCollection.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t itemsOffset = bits(4, 8);
constexpr std::size_t dataOffset = itemsOffset + bits(4, 8);
constexpr std::size_t capacityOffset = itemsOffset + bits(8, 16);
constexpr std::size_t elementSizeOffset = itemsOffset + bits(12, 20);
constexpr std::size_t countOffset = bits(20, 32);

constexpr std::size_t currentOffset = bits(4, 8);
constexpr std::size_t collectionOffset = bits(8, 16);

enum Slot : std::size_t {
    addSlot = 2,
    removeSameSlot,
    replaceSameSlot,
    findSameSlot,
    clearSlot,
    countSlot,
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
using IteratorRoom = Room<bits(12, 24)>;

class HostCollection : public CollectionRoom {
  public:
    HostCollection() { call<void, void*>("_ZN3kfl24VoidPtrOrderedCollectionC1Ev", *this); }
    ~HostCollection() { callSlot<void>(0, *this); }
    HostCollection(const HostCollection&) = delete;
    HostCollection& operator=(const HostCollection&) = delete;
};

TEST(VoidPtrIteratorLayoutTest, IsAPlainRecordOfThree) {
    EXPECT_EQ(sizeof(kfl::VoidPtrIterator), bits(12, 24));
    EXPECT_FALSE(std::is_polymorphic<kfl::VoidPtrIterator>::value);
    const HostCollection collection;
    int item = 1;
    callSlot<void*, void*>(addSlot, collection, &item);
    for (const char* const constructor : {"_ZN3kfl15VoidPtrIteratorC1EPNS_17VoidPtrCollectionE",
                                          "_ZN3kfl15VoidPtrIteratorC1ERNS_17VoidPtrCollectionE"}) {
        const IteratorRoom it;
        call<void, void*, void*>(constructor, it, collection);
        EXPECT_EQ(it.word(0), 0U);
        EXPECT_EQ(it.pointer(currentOffset), &item);
        EXPECT_EQ(it.pointer(collectionOffset), collection);
        EXPECT_EQ((callSlot<void*, void*>(nextSlot, collection, it)), &item);
        EXPECT_EQ(it.word(0), 1U);
        EXPECT_EQ(it.pointer(currentOffset), nullptr);
        EXPECT_TRUE(it.intact());
    }
}

TEST(VoidPtrCollectionLayoutTest, InterfaceHasTwelveSlotsAndNoFields) {
    EXPECT_EQ(sizeof(kfl::VoidPtrCollection), bits(4, 8));
    expectAbstractTable("_ZTVN3kfl17VoidPtrCollectionE", "_ZTIN3kfl17VoidPtrCollectionE", 10);
    expectTableWords("_ZTVN3kfl17VoidPtrCollectionE", 14);
}

TEST(VoidPtrCollectionLayoutTest, OrderedCollectionHasItsArrayAndItsCount) {
    EXPECT_EQ(sizeof(kfl::VoidPtrOrderedCollection), bits(24, 40));
    const HostCollection collection;
    EXPECT_EQ(collection.pointer(itemsOffset),
              static_cast<unsigned char*>(exported("_ZTVN3kfl12VoidPtrArrayE")) + 2 * pointerSize);
    EXPECT_EQ(collection.word(capacityOffset), 10U);
    EXPECT_EQ(collection.word(elementSizeOffset), pointerSize);
    EXPECT_EQ(collection.word(countOffset), 0U);
    int item = 1;
    callSlot<void*, void*>(addSlot, collection, &item);
    EXPECT_EQ(collection.word(countOffset), 1U);
    EXPECT_EQ(pointerAt(collection.pointer(dataOffset), 0), &item);
    EXPECT_TRUE(collection.intact());

    const CollectionRoom sized;
    call<void, void*, unsigned int>("_ZN3kfl24VoidPtrOrderedCollectionC1Ej", sized, 3);
    EXPECT_EQ(sized.word(capacityOffset), 3U);
    EXPECT_EQ(sized.word(countOffset), 0U);
    EXPECT_TRUE(sized.intact());
    call<void, void*>("_ZN3kfl24VoidPtrOrderedCollectionD1Ev", sized);
}

TEST(VoidPtrCollectionLayoutTest, OrderedCollectionHasEighteenSlots) {
    const HostCollection collection;
    expectTable(
        collection, 0, "_ZTIN3kfl24VoidPtrOrderedCollectionE",
        {"_ZN3kfl24VoidPtrOrderedCollectionD1Ev", "_ZN3kfl24VoidPtrOrderedCollectionD0Ev",
         "_ZN3kfl24VoidPtrOrderedCollection3addEPv",
         "_ZN3kfl24VoidPtrOrderedCollection10removeSameEPv",
         "_ZN3kfl24VoidPtrOrderedCollection11replaceSameEPvS1_",
         "_ZN3kfl24VoidPtrOrderedCollection8findSameEPv",
         "_ZN3kfl24VoidPtrOrderedCollection5clearEv", "_ZNK3kfl24VoidPtrOrderedCollection5countEv",
         "_ZN3kfl24VoidPtrOrderedCollection5startERNS_15VoidPtrIteratorE",
         "_ZN3kfl24VoidPtrOrderedCollection3endERNS_15VoidPtrIteratorE",
         "_ZN3kfl24VoidPtrOrderedCollection4nextERNS_15VoidPtrIteratorE",
         "_ZN3kfl24VoidPtrOrderedCollection4prevERNS_15VoidPtrIteratorE",
         "_ZN3kfl24VoidPtrOrderedCollection8insertAtEjPv",
         "_ZN3kfl24VoidPtrOrderedCollection8removeAtEj",
         "_ZN3kfl24VoidPtrOrderedCollection9replaceAtEjPv",
         "_ZNK3kfl24VoidPtrOrderedCollection11indexOfSameEPv",
         "_ZNK3kfl24VoidPtrOrderedCollection4idAtEj",
         "_ZN3kfl24VoidPtrOrderedCollection8expandToEj"});
    expectTableWords("_ZTVN3kfl24VoidPtrOrderedCollectionE", 20);
}

TEST(VoidPtrCollectionLayoutTest, OperationsWorkThroughTheirSlots) {
    const HostCollection collection;
    int a = 1;
    int b = 2;
    int c = 3;
    EXPECT_EQ((callSlot<void*, void*>(addSlot, collection, &a)), &a);
    EXPECT_EQ((callSlot<void*, unsigned int, void*>(insertAtSlot, collection, 0, &b)), &b);
    EXPECT_EQ((callSlot<void*, unsigned int, void*>(replaceAtSlot, collection, 1, &c)), &a);
    EXPECT_EQ((callSlot<void*, void*, void*>(replaceSameSlot, collection, &c, &a)), &c);
    EXPECT_EQ((callSlot<void*, void*>(findSameSlot, collection, &a)), &a);
    EXPECT_EQ((callSlot<int, void*>(indexOfSameSlot, collection, &a)), 1);
    EXPECT_EQ((callSlot<void*, unsigned int>(idAtSlot, collection, 0)), &b);
    EXPECT_EQ((callSlot<unsigned int>(countSlot, collection)), 2U);
    EXPECT_EQ((call<void*, void*>("_ZN3kfl17VoidPtrCollection5firstEv", collection)), &b);
    EXPECT_EQ((call<void*, void*>("_ZN3kfl17VoidPtrCollection4lastEv", collection)), &a);

    const IteratorRoom it;
    call<void, void*, void*>("_ZN3kfl15VoidPtrIteratorC1ERNS_17VoidPtrCollectionE", it, collection);
    EXPECT_EQ((callSlot<void*, void*>(endSlot, collection, it)), &a);
    EXPECT_EQ((callSlot<void*, void*>(prevSlot, collection, it)), &a);
    EXPECT_EQ((callSlot<void*, void*>(startSlot, collection, it)), &b);
    EXPECT_EQ((callSlot<void*, void*>(nextSlot, collection, it)), &b);
    EXPECT_EQ(it.word(0), 1U);

    EXPECT_EQ((callSlot<void*, unsigned int>(removeAtSlot, collection, 0)), &b);
    EXPECT_EQ((callSlot<void*, void*>(removeSameSlot, collection, &a)), &a);
    callSlot<void, unsigned int>(expandToSlot, collection, 4);
    EXPECT_EQ(collection.word(capacityOffset), 4U);
    callSlot<void*, void*>(addSlot, collection, &a);
    callSlot<void>(clearSlot, collection);
    EXPECT_EQ(collection.word(countOffset), 0U);
    EXPECT_EQ(collection.word(capacityOffset), 4U);
}

TEST(VoidPtrCollectionLayoutTest, DestructorsReleaseTheStorage) {
    callSlot<void>(1, new kfl::VoidPtrOrderedCollection(3));
    const CollectionRoom collection;
    call<void, void*>("_ZN3kfl24VoidPtrOrderedCollectionC1Ev", collection);
    call<void, void*>("_ZN3kfl24VoidPtrOrderedCollectionD2Ev", collection);
}

}  // namespace
