// The pools of a LocalHeap, seen from the C library's side: the program is linked with malloc and
// free wrapped.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"
#include "tests/support/halting_call.h"

namespace {

// The calls are recorded in arrays: a vector would allocate.
bool recording = false;
unsigned refusals = 0;  // how many mallocs fail from now on
std::size_t sizes[64];
void* made[64];
std::size_t madeCount = 0;
void* freed[64];
std::size_t freedCount = 0;

}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size);
void __wrap_free(void* block);

void* __wrap_malloc(std::size_t size) {
    if (!recording) return __real_malloc(size);
    void* block = nullptr;
    if (refusals > 0) {
        --refusals;
    } else {
        block = __real_malloc(size);
    }
    sizes[madeCount] = size;
    made[madeCount++] = block;
    return block;
}

void __wrap_free(void* block) {
    if (recording) freed[freedCount++] = block;
    __real_free(block);
}
}

namespace {

using kfl_test::blockOf;
using kfl_test::HaltingCall;
using kfl_test::take;

// Bytes of a header word.
constexpr unsigned wordSize = sizeof(void*);

class LocalHeapPoolTest : public testing::Test {
  protected:
    void SetUp() override {
        madeCount = freedCount = 0;
        refusals = 0;
        recording = true;
    }
    void TearDown() override { recording = false; }
};

constexpr std::size_t poolSize(std::size_t blocks, std::size_t blockSize) {
    return wordSize + blocks * (blockSize + wordSize);
}

// For a child, whose end may allocate what it likes.
void allocateForEver(LocalHeap& heap, unsigned size) {
    std::atexit([] { recording = false; });
    heap.allocateBlock(size);
}

TEST_F(LocalHeapPoolTest, NothingIsAllocatedUntilTheFirstBlock) {
    LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
    EXPECT_EQ(madeCount, 0U);
    void* const first = heap.allocateBlock(16);
    EXPECT_EQ(first, blockOf(made[0], 0, 16));
    EXPECT_EQ(madeCount, 1U);
    EXPECT_EQ(sizes[0], poolSize(4, 16));
    take(heap, 3, 16);
    EXPECT_EQ(madeCount, 1U);
    void* const fifth = heap.allocateBlock(16);
    EXPECT_EQ(fifth, blockOf(made[1], 0, 16));
    EXPECT_EQ(madeCount, 2U);
    EXPECT_EQ(sizes[1], poolSize(4, 16));
}

TEST_F(LocalHeapPoolTest, APreallocatedPoolStandsAfterConstruction) {
    LocalHeap heap(4, 16, LocalHeap::Preallocate);
    EXPECT_EQ(madeCount, 1U);
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(heap.allocateBlock(16), blockOf(made[0], i, 16));
    EXPECT_EQ(madeCount, 1U);
}

TEST_F(LocalHeapPoolTest, AnotherMethodMakesItsPoolAtTheFirstBlock) {
    for (const int value : {2, -1}) {
        madeCount = 0;
        LocalHeap heap(2, 16, static_cast<LocalHeap::AllocateMethod>(value));
        EXPECT_EQ(madeCount, 0U);
        take(heap, 2, 16);
        EXPECT_EQ(madeCount, 1U);
    }
}

TEST_F(LocalHeapPoolTest, AForeignSizeMakesNoPool) {
    LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
    ::operator delete[](heap.allocateBlock(20));
    EXPECT_EQ(madeCount, 0U);
}

TEST_F(LocalHeapPoolTest, PoolsHaveTheSizeOfTheirBlocksWithAWordEachAndOne) {
    for (const unsigned size : {0U, 1U, 3U, 16U, 1000U}) {
        for (const unsigned blocks : {1U, 2U, 7U}) {
            madeCount = 0;
            const LocalHeap heap(blocks, size, LocalHeap::Preallocate);
            EXPECT_EQ(sizes[0], poolSize(blocks, size)) << blocks << " of " << size;
        }
    }
}

TEST_F(LocalHeapPoolTest, PoolsAreKeptUntilTheHeapGoesAndThenReleasedInOrder) {
    {
        LocalHeap heap(2, 16, LocalHeap::GrowOnDemand);
        for (void* const block : take(heap, 6, 16)) heap.deallocateBlock(block, 16);
        recording = false;
        take(heap, 5, 16);
        recording = true;
        EXPECT_EQ(freedCount, 0U);
        EXPECT_EQ(madeCount, 3U);
    }
    ASSERT_EQ(freedCount, 3U);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(freed[i], made[i]);
}

TEST_F(LocalHeapPoolTest, AHeapWithoutPoolsReleasesNothing) {
    { const LocalHeap heap(2, 16, LocalHeap::GrowOnDemand); }
    EXPECT_EQ(freedCount, 0U);
}

TEST_F(LocalHeapPoolTest, ARefusedPoolIsNull) {
    LocalHeap heap(2, 16, LocalHeap::GrowOnDemand);
    refusals = 1;
    EXPECT_EQ(heap.createPool(), nullptr);
}

TEST_F(LocalHeapPoolTest, AfterARefusedPreallocationTheFirstBlockMakesThePool) {
    refusals = 1;
    LocalHeap heap(2, 16, LocalHeap::Preallocate);
    EXPECT_EQ(madeCount, 1U);
    const std::vector<void*> blocks = take(heap, 2, 16);
    EXPECT_EQ(madeCount, 2U);
    EXPECT_EQ(blocks[0], blockOf(made[1], 0, 16));
    EXPECT_EQ(blocks[1], blockOf(made[1], 1, 16));
}

TEST_F(LocalHeapPoolTest, ARefusedFirstPoolHaltsWhateverTheMethod) {
    for (const int value : {0, 1, 2}) {
        refusals = 2;
        LocalHeap heap(2, 16, static_cast<LocalHeap::AllocateMethod>(value));
        HaltingCall call([&] { allocateForEver(heap, 16); });
        EXPECT_TRUE(call.stillRuns());
        EXPECT_LT(call.processorMilliseconds(), 100);
        refusals = 0;
    }
}

TEST_F(LocalHeapPoolTest, ARefusedFurtherPoolHalts) {
    LocalHeap heap(2, 16, LocalHeap::GrowOnDemand);
    take(heap, 2, 16);
    refusals = 1;
    HaltingCall call([&] { allocateForEver(heap, 16); });
    EXPECT_TRUE(call.stillRuns());
    EXPECT_LT(call.processorMilliseconds(), 100);
}

TEST_F(LocalHeapPoolTest, APoolOfExactly32BitsIsAskedFor) {
    refusals = 1;
    LocalHeap heap(1, UINT_MAX - 2 * wordSize, LocalHeap::Preallocate);
    ASSERT_EQ(madeCount, 1U);
    EXPECT_EQ(sizes[0], std::size_t{UINT_MAX});
}

TEST_F(LocalHeapPoolTest, APoolWithoutBlocksIsAskedForAsLongAsABlockHas32Bits) {
    LocalHeap heap(0, UINT_MAX - wordSize, LocalHeap::Preallocate);
    ASSERT_EQ(madeCount, 1U);
    EXPECT_EQ(sizes[0], wordSize);
}

TEST_F(LocalHeapPoolTest, APoolPast32BitsIsRefusedWithoutAsking) {
    const struct {
        unsigned blocks, size;
    } rows[] = {{1, UINT_MAX - 2 * wordSize + 1},
                {1, UINT_MAX - wordSize},
                {1, UINT_MAX},
                {0, UINT_MAX},
                {2, 0x80000000U},
                {65536, 65536},
                {0x10000000, 16},
                {UINT_MAX, 0},
                {UINT_MAX, 1},
                {UINT_MAX, UINT_MAX}};
    for (const auto& row : rows) {
        LocalHeap heap(row.blocks, row.size, LocalHeap::Preallocate);
        EXPECT_EQ(heap.createPool(), nullptr) << row.blocks << " of " << row.size;
        EXPECT_EQ(madeCount, 0U) << row.blocks << " of " << row.size;
    }
}

// Some of these products just pass 64 bits, and would come out small.
TEST_F(LocalHeapPoolTest, NoProductOfLargeNumbersComesOutSmall) {
    for (unsigned size = UINT_MAX; size > UINT_MAX - 16; --size) {
        for (unsigned blocks = UINT_MAX; blocks > UINT_MAX - 16; --blocks) {
            LocalHeap heap(blocks, size, LocalHeap::Preallocate);
            EXPECT_EQ(madeCount, 0U) << blocks << " of " << size;
        }
    }
}

}  // namespace
