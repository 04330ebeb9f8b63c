// LocalHeap as hosts compiled long ago know it: sizes, offsets, slots and names.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"
#include "tests/support/layout.h"

namespace {

using kfl_test::bits;
using kfl_test::call;
using kfl_test::callSlot;

constexpr std::size_t heapSize = bits(36, 56);

// Offsets of the fields.
constexpr std::size_t method = bits(4, 8);
constexpr std::size_t blocksPerPool = bits(8, 12);
constexpr std::size_t blockSize = bits(12, 16);
constexpr std::size_t firstPool = bits(16, 24);
constexpr std::size_t lastPool = bits(20, 32);
constexpr std::size_t freeList = bits(24, 40);
constexpr std::size_t blocksInUse = bits(28, 48);
constexpr std::size_t maxBlocksInUse = bits(32, 52);

constexpr const char* constructor = "_ZN9LocalHeapC1EjjNS_14AllocateMethodE";
constexpr const char* destructor = "_ZN9LocalHeapD1Ev";
constexpr const char* allocate = "_ZN9LocalHeap13allocateBlockEj";
constexpr const char* deallocate = "_ZN9LocalHeap15deallocateBlockEPvj";

class LocalHeapLayoutTest : public testing::Test {
  protected:
    void construct(int allocateMethod) {
        call<void>(constructor, static_cast<void*>(heap), 3U, 16U, allocateMethod);
    }
    void destroy() { call<void>(destructor, static_cast<void*>(heap)); }
    void* allocateBlock() { return call<void*>(allocate, static_cast<void*>(heap), 16U); }

    kfl_test::Room<heapSize> heap;
};

TEST_F(LocalHeapLayoutTest, HasItsSize) { EXPECT_EQ(sizeof(LocalHeap), heapSize); }

TEST_F(LocalHeapLayoutTest, TableHoldsTheDestructorsAndNothingElse) {
    const LocalHeap built(3, 16, LocalHeap::GrowOnDemand);
    kfl_test::expectTable(&built, 0, "_ZTI9LocalHeap", {destructor, "_ZN9LocalHeapD0Ev"});
    kfl_test::expectTableWords("_ZTV9LocalHeap", 4);
    construct(0);
    EXPECT_EQ(heap.pointer(0), kfl_test::pointerAt(&built, 0));
    destroy();
}

TEST_F(LocalHeapLayoutTest, FieldsOfANewHeapStandAtTheirOffsets) {
    construct(7);
    EXPECT_EQ(heap.word(method), 7U);
    EXPECT_EQ(heap.word(blocksPerPool), 3U);
    EXPECT_EQ(heap.word(blockSize), 16U);
    EXPECT_EQ(heap.pointer(firstPool), nullptr);
    EXPECT_EQ(heap.pointer(lastPool), nullptr);
    EXPECT_EQ(heap.pointer(freeList), nullptr);
    EXPECT_EQ(heap.word(blocksInUse), 0U);
    EXPECT_EQ(heap.word(maxBlocksInUse), 0U);
    destroy();
    EXPECT_TRUE(heap.intact());
}

TEST_F(LocalHeapLayoutTest, APreallocatedHeapShowsItsPool) {
    construct(1);
    void* const pool = heap.pointer(firstPool);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(heap.pointer(lastPool), pool);
    EXPECT_EQ(heap.pointer(freeList), kfl_test::moved(pool, kfl_test::wordSize));
    EXPECT_EQ(kfl_test::wordAtPlace(pool), nullptr);
    destroy();
}

TEST_F(LocalHeapLayoutTest, FieldsFollowAllocationAndRelease) {
    construct(0);
    void* blocks[4];
    for (void*& block : blocks) block = allocateBlock();
    void* const first = heap.pointer(firstPool);
    void* const last = heap.pointer(lastPool);
    EXPECT_EQ(blocks[0], kfl_test::blockOf(first, 0, 16));
    EXPECT_EQ(blocks[3], kfl_test::blockOf(last, 0, 16));
    EXPECT_EQ(kfl_test::wordAtPlace(first), last);
    EXPECT_EQ(heap.pointer(freeList), kfl_test::headerOf(kfl_test::blockOf(last, 1, 16)));
    call<void>(deallocate, static_cast<void*>(heap), blocks[1], 16U);
    EXPECT_EQ(heap.pointer(freeList), kfl_test::headerOf(blocks[1]));
    EXPECT_EQ(heap.word(blocksInUse), 3U);
    EXPECT_EQ(heap.word(maxBlocksInUse), 4U);
    destroy();
    EXPECT_TRUE(heap.intact());
}

TEST_F(LocalHeapLayoutTest, OperationsHaveTheirNames) {
    construct(2);
    call<void>("_ZN9LocalHeap10initializeEv", static_cast<void*>(heap));
    EXPECT_NE(heap.pointer(firstPool), nullptr);
    void* const pool = call<void*>("_ZN9LocalHeap10createPoolEv", static_cast<void*>(heap));
    EXPECT_NE(pool, heap.pointer(firstPool));
    std::free(pool);
    destroy();
    call<void>("_ZN9LocalHeapC2EjjNS_14AllocateMethodE", static_cast<void*>(heap), 1U, 2U, 0);
    call<void>("_ZN9LocalHeapD2Ev", static_cast<void*>(heap));
}

TEST_F(LocalHeapLayoutTest, TheSecondSlotDeletesTheHeap) {
    void* const deleted = ::operator new(heapSize);
    call<void>(constructor, deleted, 3U, 16U, 1);
    callSlot<void>(1, deleted);
}

}  // namespace
