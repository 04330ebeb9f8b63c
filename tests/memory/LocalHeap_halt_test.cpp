// LocalHeap where no block can be had: the call never returns, and leaves the processor to others.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/time.h>

#include <climits>
#include <new>

#include "kfl/LocalHeap.h"
#include "tests/memory/heap_words.h"
#include "tests/support/halting_call.h"

namespace {

using kfl_test::HaltingCall;

constexpr long processorMilliseconds = 100;

void expectHalt(HaltingCall& call) {
    EXPECT_TRUE(call.stillRuns());
    EXPECT_LT(call.processorMilliseconds(), processorMilliseconds);
}

LocalHeap::AllocateMethod method(int value) {
    return static_cast<LocalHeap::AllocateMethod>(value);
}

TEST(LocalHeapHaltTest, AnExhaustedPreallocatedHeapHalts) {
    LocalHeap heap(4, 16, LocalHeap::Preallocate);
    kfl_test::take(heap, 4, 16);
    HaltingCall call([&] { heap.allocateBlock(16); });
    expectHalt(call);
}

TEST(LocalHeapHaltTest, AnyOtherMethodMakesOnePoolAtTheFirstAllocationAndNoMore) {
    for (const int value : {2, INT_MIN}) {
        LocalHeap heap(2, 16, method(value));
        kfl_test::take(heap, 2, 16);
        HaltingCall call([&] { heap.allocateBlock(16); });
        expectHalt(call);
    }
}

TEST(LocalHeapHaltTest, ABlockGivenBackIsABlockThatCanBeHad) {
    LocalHeap heap(2, 16, LocalHeap::Preallocate);
    const auto blocks = kfl_test::take(heap, 2, 16);
    heap.deallocateBlock(blocks[0], 16);
    EXPECT_EQ(heap.allocateBlock(16), blocks[0]);
}

TEST(LocalHeapHaltTest, AForeignSizeStillComesFromAnExhaustedHeap) {
    LocalHeap heap(1, 16, LocalHeap::Preallocate);
    heap.allocateBlock(16);
    ::operator delete[](heap.allocateBlock(17));
}

TEST(LocalHeapHaltTest, SignalsDoNotEndTheHalt) {
    LocalHeap heap(1, 16, LocalHeap::Preallocate);
    heap.allocateBlock(16);
    HaltingCall call([&] {
        signal(SIGALRM, [](int) {});
        itimerval often{};
        often.it_interval.tv_usec = often.it_value.tv_usec = 20'000;
        setitimer(ITIMER_REAL, &often, nullptr);
        heap.allocateBlock(16);
    });
    expectHalt(call);
}

TEST(LocalHeapHaltTest, AHeapOfNoBlocksHalts) {
    for (const int value : {0, 1}) {
        LocalHeap heap(0, 16, method(value));
        HaltingCall call([&] { heap.allocateBlock(16); });
        expectHalt(call);
    }
}

TEST(LocalHeapHaltTest, AHeapWhosePoolPasses32BitsHalts) {
    LocalHeap heap(UINT_MAX, UINT_MAX, LocalHeap::GrowOnDemand);
    HaltingCall call([&] { heap.allocateBlock(UINT_MAX); });
    expectHalt(call);
}

// The heap stands in memory that the halted child shares.
TEST(LocalHeapHaltTest, TheBlockThatNeverCameIsCounted) {
    void* const shared =
        mmap(nullptr, sizeof(LocalHeap), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto* const heap = new (shared) LocalHeap(2, 16, LocalHeap::Preallocate);
    // Kept here as well, where a leak checker looks for pointers.
    const auto blocks = kfl_test::take(*heap, 2, 16);
    HaltingCall call([&] { heap->allocateBlock(16); });
    expectHalt(call);
    EXPECT_EQ(heap->inUse(), 3U);
    EXPECT_EQ(heap->maxInUse(), 3U);
    heap->~LocalHeap();
    munmap(shared, sizeof(LocalHeap));
}

}  // namespace
