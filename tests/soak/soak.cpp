#include "tests/soak/soak.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/os/children.h"
#include "tests/support/process_state.h"

namespace kfl_test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool ownAllocator = true;  // which keeps what is released, to find its use
#else
constexpr bool ownAllocator = false;
#endif

// An emulator's own memory, which holds the code that it translated, is resident with the
// program's.
#ifdef KFL_EMULATED
constexpr bool isEmulated = true;
#else
constexpr bool isEmulated = false;
#endif

// Pages that the kernel gives late, or that an allocator sets apart, are no leak.
constexpr long residentTolerance = 512;

struct Footprint {
    long residentKiB;
    long heapBytes;  // in use, in all arenas
    std::size_t descriptors;
    unsigned int threads;
};

long residentKiB() {
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

Footprint footprint() {
    const struct mallinfo2 heap = mallinfo2();
    return {residentKiB(), static_cast<long>(heap.uordblks + heap.hblkhd), openDescriptors().size(),
            threadCount()};
}

void expectFlat(const Footprint& before, const Footprint& after) {
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_TRUE(hasNoMoreThreads(before.threads)) << threadCount() << " threads";
    EXPECT_FALSE(hasChildren());
    if (ownAllocator) return;
    EXPECT_LE(after.heapBytes, before.heapBytes)
        << "(ctest and scripts/soak set GLIBC_TUNABLES, without which threads keep some)";
    if (isEmulated) return;
    EXPECT_LE(after.residentKiB, before.residentKiB + residentTolerance);
}

void print(const char* work, unsigned long count, double seconds, const Footprint& before,
           const Footprint& after) {
    std::printf("soak | %-44s | %9lu | %7.1f | %6ld %6ld | %7ld %7ld | %2zu %2zu | %2u %2u |\n",
                work, count, seconds, before.residentKiB, after.residentKiB, before.heapBytes,
                after.heapBytes, before.descriptors, after.descriptors, before.threads,
                after.threads);
}

}  // namespace

unsigned long rounds(unsigned long usual) {
    const char* const given = std::getenv("KFL_TEST_ROUNDS");
    return given && *given != '\0' ? usual * std::strtoul(given, nullptr, 0) : usual;
}

void soak(const char* work, unsigned long rounds, unsigned long each,
          const std::function<void()>& round) {
    using Clock = std::chrono::steady_clock;
    const unsigned long warming = rounds / 10 + 1;
    const auto start = Clock::now();
    for (unsigned long i = 0; i < warming; ++i) round();
    footprint();  // its own first time is not to be counted
    const Footprint before = footprint();
    for (unsigned long i = warming; i < rounds; ++i) round();
    ASSERT_TRUE(hasNoMoreThreads(before.threads)) << threadCount() << " threads";
    const Footprint after = footprint();
    const std::chrono::duration<double> time = Clock::now() - start;
    print(work, rounds * each, time.count(), before, after);
    expectFlat(before, after);
}

}  // namespace kfl_test
