// Puts itself in the place of the global allocator: counts blocks, and fails where it is told to.
// To be included by one source of a program, since it defines the allocator.
#ifndef KFL_TESTS_COLLECTIONS_COUNTING_ALLOCATOR_H
#define KFL_TESTS_COLLECTIONS_COUNTING_ALLOCATOR_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace kfl_test {

// Larger requests fail, so that no test really takes so much memory.
constexpr std::size_t largestBlock = std::size_t{1} << 28;

inline std::size_t allocations = 0;
inline std::size_t liveBlocks = 0;
inline std::size_t lastSize = 0;
// The request that fails, counted down from now; 0: none.
inline unsigned int failingRequest = 0;

inline void* allocate(std::size_t size) {
    ++allocations;
    lastSize = size;
    if (failingRequest > 0 && --failingRequest == 0) throw std::bad_alloc();
    void* const block = size > largestBlock ? nullptr : std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    ++liveBlocks;
    return block;
}

inline void release(void* block) noexcept {
    if (!block) return;
    --liveBlocks;
    std::free(block);
}

// Requests to the allocator that `operation` makes.
template <class Operation>
std::size_t allocationsOf(Operation operation) {
    const std::size_t before = allocations;
    operation();
    return allocations - before;
}

// Whether the allocator refused `operation`.
template <class Operation>
bool refuses(Operation operation) {
    try {
        operation();
        return false;
    } catch (const std::bad_alloc&) {
        return true;
    }
}

// Tries `operation` with its first request failing, then with its second, and so on, until it goes
// through; `unchanged` looks at the object after each failure. Returns the number of failures.
template <class Operation, class Check>
unsigned int failEachRequest(Operation operation, Check unchanged) {
    for (unsigned int n = 1;; ++n) {
        failingRequest = n;
        const bool failed = refuses(operation);
        failingRequest = 0;
        if (!failed) return n - 1;
        unchanged();
    }
}

}  // namespace kfl_test

void* operator new(std::size_t size) { return kfl_test::allocate(size); }
void* operator new[](std::size_t size) { return kfl_test::allocate(size); }
void operator delete(void* block) noexcept { kfl_test::release(block); }
void operator delete[](void* block) noexcept { kfl_test::release(block); }
void operator delete(void* block, std::size_t) noexcept { kfl_test::release(block); }
void operator delete[](void* block, std::size_t) noexcept { kfl_test::release(block); }

#endif
