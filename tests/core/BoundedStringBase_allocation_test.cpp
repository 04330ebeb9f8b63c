// Formatting allocates nothing: every way to memory is counted. Linked with --wrap for malloc,
// calloc and realloc.
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "kfl/BoundedStringBase.h"
#include "kfl/StringFormat.h"

namespace {

std::atomic<int> allocations{0};

}  // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    ++allocations;
    return __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __real_calloc(count, size);
}

void* __wrap_realloc(void* block, std::size_t size) {
    ++allocations;
    return __real_realloc(block, size);
}

}  // extern "C"

// Not inlined: the compiler would take malloc and delete for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* const block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using B = BoundedStringBase;

TEST(BoundedStringBaseAllocationTest, TheCountersCount) {
    const int before = allocations;
    // Volatile, or the compiler would leave the allocation out.
    int* volatile object = new int(1);
    delete object;
    EXPECT_EQ(allocations, before + 1);
    char* volatile array = new char[100];
    delete[] array;
    EXPECT_EQ(allocations, before + 2);
    void* volatile block = std::realloc(std::calloc(3, 5), 50);
    std::free(block);
    EXPECT_EQ(allocations, before + 4);
}

TEST(BoundedStringBaseAllocationTest, MakeStringAllocatesNothing) {
    char buf[1001];
    int count = 0;
    const int before = allocations;
    B::format(buf, 1000, "%s|%-200s|%.3s|%c|%%|%q", "abc", "def", "ghijk", 'c');
    B::format(buf, 1000, "%900d|%.500x|%#o|%p|%n", 1, 2U, 3U, buf, &count);
    B::format(buf, 1000, "%*.*ld", INT_MAX, INT_MAX, LONG_MIN);
    EXPECT_EQ(allocations, before);
    EXPECT_GT(count, 900);
}

TEST(BoundedStringBaseAllocationTest, NumberAllocatesNothing) {
    char out[300];
    const int before = allocations;
    char* const end = B::number(out, out + sizeof out, LONG_MIN, 2, 200, 100, B::SIGN);
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(end, out + 200);
}

TEST(BoundedStringBaseAllocationTest, AStringFormatAllocatesNothing) {
    const int before = allocations;
    const StringFormat text("%s: %d", "abc", 42);
    EXPECT_EQ(allocations, before);
    EXPECT_STREQ(text.getString(), "abc: 42");
}

}  // namespace
