// LocalHeap given blocks of a foreign size: it releases them and links them into its free list all
// the same. Here array delete leaves the memory where it is, and there is room for the header in
// front of it, so what follows is well defined.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"
#include "tests/support/halting_call.h"

namespace {

constexpr std::size_t roomInFront = 64;

// Array blocks asked for while this is on come with room in front, and stay for good.
bool keepArrays = false;
alignas(std::max_align_t) char keptMemory[4096];
std::size_t keptUsed = 0;
void* releasedArrays[16];
std::size_t releasedCount = 0;

bool isKept(const void* block) {
    return block >= keptMemory && block < keptMemory + sizeof keptMemory;
}

}  // namespace

void* operator new[](std::size_t size) {
    if (keepArrays) {
        char* const block = keptMemory + keptUsed + roomInFront;
        keptUsed += roomInFront + (size + roomInFront) / roomInFront * roomInFront;
        if (keptUsed > sizeof keptMemory) throw std::bad_alloc();
        return block;
    }
    if (void* const block = std::malloc(size > 0 ? size : 1)) return block;
    throw std::bad_alloc();
}

void operator delete[](void* block) noexcept {
    if (keepArrays && releasedCount < 16) releasedArrays[releasedCount++] = block;
    if (!keepArrays && !isKept(block)) std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept { operator delete[](block); }

namespace {

using kfl_test::headerOf;
using kfl_test::take;
using kfl_test::wordAtPlace;

class LocalHeapForeignTest : public testing::Test {
  protected:
    // Array blocks are kept only while the heap runs.
    void* allocate(unsigned size) {
        keepArrays = true;
        void* const block = heap.allocateBlock(size);
        keepArrays = false;
        return block;
    }
    void deallocate(void* block, unsigned size) {
        keepArrays = true;
        heap.deallocateBlock(block, size);
        keepArrays = false;
    }
    std::vector<void*> released() const {
        return std::vector<void*>(releasedArrays, releasedArrays + releasedCount);
    }
    void SetUp() override { releasedCount = 0; }

    LocalHeap heap{4, 16, LocalHeap::GrowOnDemand};
};

TEST_F(LocalHeapForeignTest, AForeignBlockIsReleasedAndLinkedAllTheSame) {
    void* const own = allocate(16);
    void* const foreign = allocate(20);
    ASSERT_TRUE(isKept(foreign));
    EXPECT_EQ(heap.inUse(), 1U);
    deallocate(foreign, 20);
    EXPECT_EQ(released(), std::vector<void*>{foreign});
    EXPECT_EQ(heap.inUse(), 0U);
    EXPECT_EQ(wordAtPlace(headerOf(foreign)), kfl_test::moved(own, 16))
        << "its header must lead to the rest of the pool";
    EXPECT_EQ(allocate(16), foreign);
    EXPECT_EQ(allocate(16), kfl_test::moved(own, 16 + kfl_test::wordSize));
    EXPECT_EQ(heap.inUse(), 2U);
}

TEST_F(LocalHeapForeignTest, ABlockOfTheHeapGivenBackWithAnotherSizeIsReleasedToo) {
    const std::vector<void*> blocks = take(heap, 3, 16);
    deallocate(blocks[1], 15);
    EXPECT_EQ(released(), std::vector<void*>{blocks[1]});
    EXPECT_EQ(heap.inUse(), 2U);
    EXPECT_EQ(heap.allocateBlock(16), blocks[1]);
}

TEST_F(LocalHeapForeignTest, ABlockOfTheRightSizeIsNotReleased) {
    void* const block = allocate(16);
    deallocate(block, 16);
    EXPECT_TRUE(released().empty());
}

TEST_F(LocalHeapForeignTest, TheCountOfBlocksInUseWraps) {
    void* const foreign = allocate(20);
    deallocate(foreign, 20);
    EXPECT_EQ(heap.inUse(), ~0U);
    EXPECT_EQ(heap.maxInUse(), 0U);
}

TEST_F(LocalHeapForeignTest, TheFirstPoolTakesThePlaceOfAForeignFreeList) {
    void* const foreign = allocate(20);
    deallocate(foreign, 20);
    void* const first = allocate(16);
    EXPECT_NE(first, foreign);
    EXPECT_EQ(allocate(16), kfl_test::moved(first, 16 + kfl_test::wordSize));
}

// The pool of this heap is larger than a pool can be.
TEST(LocalHeapRefusedTest, APoolThatCannotBeMadeLeavesAForeignFreeListAlone) {
    LocalHeap large(1U << 28U, 16, LocalHeap::GrowOnDemand);
    keepArrays = true;
    void* const foreign = large.allocateBlock(20);
    large.deallocateBlock(foreign, 20);
    keepArrays = false;
    kfl_test::HaltingCall call([&] { large.allocateBlock(16); });
    ASSERT_FALSE(call.stillRuns()) << "the list is lost, and there is no other block";
    EXPECT_EQ(large.allocateBlock(16), foreign);
    EXPECT_EQ(large.inUse(), 0U);
}

}  // namespace
