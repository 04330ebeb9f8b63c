#include "kfl/LocalHeap.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <vector>

#include "tests/memory/heap_words.h"
#include "tests/support/counted_new.h"

namespace {

using kfl_test::AllocationCount;
using kfl_test::blockOf;
using kfl_test::FailingNew;
using kfl_test::headerOf;
using kfl_test::moved;
using kfl_test::take;
using kfl_test::wordAtPlace;
using kfl_test::wordSize;

using Blocks = std::vector<void*>;

constexpr auto anotherMethod = static_cast<LocalHeap::AllocateMethod>(2);

TEST(LocalHeapTest, MethodsHaveTheirValues) {
    EXPECT_EQ(static_cast<int>(LocalHeap::GrowOnDemand), 0);
    EXPECT_EQ(static_cast<int>(LocalHeap::Preallocate), 1);
    static_assert(std::is_same<std::underlying_type<LocalHeap::AllocateMethod>::type, int>::value,
                  "any other value must be well defined");
    static_assert(!std::is_copy_constructible<LocalHeap>::value, "it owns its pools");
    static_assert(!std::is_copy_assignable<LocalHeap>::value, "it owns its pools");
    static_assert(std::has_virtual_destructor<LocalHeap>::value, "hosts derive from it");
}

// --- order, for block sizes that leave the header words aligned and for those that do not ---

class LocalHeapSizeTest : public testing::TestWithParam<unsigned> {
  protected:
    const unsigned size = GetParam();
    const int stride = static_cast<int>(size) + wordSize;
};

TEST_P(LocalHeapSizeTest, ANewPoolHandsOutItsBlocksFromTheLowestAddressUp) {
    LocalHeap heap(5, size, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 5, size);
    for (int i = 1; i < 5; ++i)
        EXPECT_EQ(blocks[static_cast<unsigned>(i)], moved(blocks[0], i * stride)) << i;
}

TEST_P(LocalHeapSizeTest, AMadePoolIsLaidOutAsPromised) {
    LocalHeap heap(3, size, LocalHeap::GrowOnDemand);
    void* const pool = heap.createPool();
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(wordAtPlace(pool), nullptr);
    char* const first = moved(pool, wordSize);
    EXPECT_EQ(wordAtPlace(first), first + stride);
    EXPECT_EQ(wordAtPlace(first + stride), first + 2 * stride);
    EXPECT_EQ(wordAtPlace(first + 2 * stride), nullptr);
    std::free(pool);
}

TEST_P(LocalHeapSizeTest, TheLastBlockGivenBackIsTheFirstUsedAgain) {
    LocalHeap heap(4, size, LocalHeap::Preallocate);
    const Blocks blocks = take(heap, 4, size);
    heap.deallocateBlock(blocks[2], size);
    heap.deallocateBlock(blocks[0], size);
    heap.deallocateBlock(blocks[3], size);
    EXPECT_EQ(take(heap, 3, size), (Blocks{blocks[3], blocks[0], blocks[2]}));
}

TEST_P(LocalHeapSizeTest, ABlockGivenBackGoesBeforeTheRestOfItsPool) {
    LocalHeap heap(3, size, LocalHeap::Preallocate);
    const Blocks blocks = take(heap, 2, size);
    heap.deallocateBlock(blocks[0], size);
    EXPECT_EQ(headerOf(blocks[0]), moved(blocks[0], -wordSize));
    EXPECT_EQ(wordAtPlace(headerOf(blocks[0])), moved(blocks[1], static_cast<int>(size)));
    EXPECT_EQ(heap.allocateBlock(size), blocks[0]);
    EXPECT_EQ(heap.allocateBlock(size), moved(blocks[1], stride));
}

TEST_P(LocalHeapSizeTest, BlocksKeepTheirBytesWhateverHappensToOthers) {
    LocalHeap heap(3, size, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 7, size);
    for (unsigned i = 0; i < 7; ++i) std::memset(blocks[i], static_cast<int>('a' + i), size);
    for (const unsigned i : {1U, 5U, 3U}) heap.deallocateBlock(blocks[i], size);
    take(heap, 2, size);
    heap.deallocateBlock(blocks[6], size);
    for (const unsigned i : {0U, 2U, 4U}) {
        const std::vector<char> expected(size, static_cast<char>('a' + i));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), moved(blocks[i], 0))) << i;
    }
}

TEST_P(LocalHeapSizeTest, BlocksAreNotCleared) {
    LocalHeap heap(2, size, LocalHeap::Preallocate);
    void* const block = heap.allocateBlock(size);
    std::memset(block, 0x5A, size);
    heap.deallocateBlock(block, size);
    ASSERT_EQ(heap.allocateBlock(size), block);
    const std::vector<char> expected(size, 0x5A);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), moved(block, 0)));
}

TEST_P(LocalHeapSizeTest, AFullPoolIsFollowedByAnother) {
    LocalHeap heap(2, size, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 6, size);
    for (const unsigned i : {0U, 2U, 4U}) EXPECT_EQ(blocks[i + 1], moved(blocks[i], stride)) << i;
    for (const unsigned i : {0U, 2U})
        EXPECT_EQ(wordAtPlace(moved(blocks[i], -2 * wordSize)), moved(blocks[i + 2], -2 * wordSize))
            << "pool " << i / 2 << " is not linked to the next";
    EXPECT_EQ(wordAtPlace(moved(blocks[4], -2 * wordSize)), nullptr);
    EXPECT_EQ(heap.inUse(), 6U);
}

INSTANTIATE_TEST_SUITE_P(, LocalHeapSizeTest,
                         testing::Values(0, 1, 2, 3, 4, 5, 7, 8, 12, 15, 16, 17, 31, 64, 100, 1001),
                         testing::PrintToStringParamName());

TEST(LocalHeapTest, BlocksOfNoBytesAreAWordApart) {
    LocalHeap heap(3, 0, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 3, 0);
    EXPECT_EQ(blocks[1], moved(blocks[0], wordSize));
    EXPECT_EQ(blocks[2], moved(blocks[1], wordSize));
}

TEST(LocalHeapTest, PoolsOfOneBlockAreChainedToo) {
    LocalHeap heap(1, 8, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 3, 8);
    heap.deallocateBlock(blocks[1], 8);
    EXPECT_EQ(heap.allocateBlock(8), blocks[1]);
    for (unsigned i = 0; i < 2; ++i)
        EXPECT_EQ(wordAtPlace(moved(blocks[i], -2 * wordSize)),
                  moved(blocks[i + 1], -2 * wordSize));
}

TEST(LocalHeapTest, BlocksOfSeveralPoolsShareOneFreeList) {
    LocalHeap heap(2, 16, LocalHeap::GrowOnDemand);
    const Blocks blocks = take(heap, 5, 16);
    heap.deallocateBlock(blocks[4], 16);
    heap.deallocateBlock(blocks[0], 16);
    heap.deallocateBlock(blocks[3], 16);
    EXPECT_EQ(take(heap, 3, 16), (Blocks{blocks[3], blocks[0], blocks[4]}));
    EXPECT_EQ(heap.allocateBlock(16), moved(blocks[4], 16 + wordSize))
        << "the rest of the third pool";
}

TEST(LocalHeapTest, InitializeMakesTheFirstPool) {
    LocalHeap heap(2, 16, anotherMethod);
    heap.initialize();
    const Blocks blocks = take(heap, 2, 16);
    EXPECT_EQ(blocks[1], moved(blocks[0], 16 + wordSize));
}

TEST(LocalHeapTest, AMadePoolIsNotPartOfTheHeap) {
    LocalHeap heap(2, 16, LocalHeap::Preallocate);
    void* const pool = heap.createPool();
    const Blocks blocks = take(heap, 2, 16);
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_NE(blocks[0], blockOf(pool, i, 16));
        EXPECT_NE(blocks[1], blockOf(pool, i, 16));
    }
    EXPECT_EQ(heap.inUse(), 2U);
    std::free(pool);
}

// --- counters ---

TEST(LocalHeapTest, CountsBlocksInUseAndTheMostThereWere) {
    LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
    EXPECT_EQ(heap.inUse(), 0U);
    EXPECT_EQ(heap.maxInUse(), 0U);
    const Blocks blocks = take(heap, 3, 16);
    heap.deallocateBlock(blocks[1], 16);
    EXPECT_EQ(heap.inUse(), 2U);
    EXPECT_EQ(heap.maxInUse(), 3U);
    take(heap, 1, 16);
    EXPECT_EQ(heap.inUse(), 3U);
    EXPECT_EQ(heap.maxInUse(), 3U);
    take(heap, 1, 16);
    EXPECT_EQ(heap.maxInUse(), 4U);
}

TEST(LocalHeapTest, PreallocationCountsNothing) {
    const LocalHeap heap(4, 16, LocalHeap::Preallocate);
    EXPECT_EQ(heap.inUse(), 0U);
    EXPECT_EQ(heap.maxInUse(), 0U);
}

// --- foreign sizes ---

TEST(LocalHeapTest, AForeignSizeComesFromArrayNewAndIsNotCounted) {
    LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
    const AllocationCount count;
    void* const block = heap.allocateBlock(20);
    EXPECT_EQ(count.made(), 1U);
    EXPECT_EQ(kfl_test::allocations::lastSize, 20U);
    std::memset(block, 'x', 20);
    EXPECT_EQ(heap.inUse(), 0U);
    EXPECT_EQ(heap.maxInUse(), 0U);
    ::operator delete[](block);
    void* const none = heap.allocateBlock(0);
    EXPECT_NE(none, nullptr);
    EXPECT_EQ(kfl_test::allocations::lastSize, 0U);
    ::operator delete[](none);
}

TEST(LocalHeapTest, AForeignSizeThatFindsNoMemoryFailsAsAnAllocationDoes) {
    LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
    const FailingNew first(1);
    EXPECT_THROW(heap.allocateBlock(20), std::bad_alloc);
    EXPECT_EQ(heap.inUse(), 0U);
}

TEST(LocalHeapTest, PoolsDoNotComeFromNew) {
    const AllocationCount count;
    {
        LocalHeap heap(4, 16, LocalHeap::Preallocate);
        void* const blocks[] = {heap.allocateBlock(16), heap.allocateBlock(16)};
        heap.deallocateBlock(blocks[0], 16);
    }
    EXPECT_EQ(count.made(), 0U);
    EXPECT_EQ(count.released(), 0U);
}

}  // namespace
