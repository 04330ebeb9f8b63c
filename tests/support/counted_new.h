// Replaces operator new and delete in the program that includes it, to count and to fail them. One
// source of a program includes it; the tests of that program run on one thread.
//
//     const kfl_test::AllocationCount count;
//     string.append("x");
//     EXPECT_EQ(count.made(), 0U);
//
//     {
//         const kfl_test::FailingNew second(2);
//         EXPECT_THROW(work(), std::bad_alloc);   // its second allocation fails, later ones work
//     }
#ifndef KFL_TESTS_COUNTED_NEW_H
#define KFL_TESTS_COUNTED_NEW_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace kfl_test {
namespace allocations {

inline unsigned long made = 0;
inline unsigned long released = 0;
// Calls until the one that fails; 0: none does.
inline unsigned long countdown = 0;
inline std::size_t lastSize = 0;
// The last blocks released, in turn.
constexpr unsigned long remembered = 32;
inline const void* releasedBlocks[remembered] = {};

inline void* take(std::size_t size) noexcept {
    if (countdown > 0 && --countdown == 0) return nullptr;
    void* const block = std::malloc(size > 0 ? size : 1);
    if (!block) return nullptr;
    ++made;
    lastSize = size;
    return block;
}

inline void* takeOrThrow(std::size_t size) {
    void* const block = take(size);
    if (!block) throw std::bad_alloc();
    return block;
}

inline void give(void* block) noexcept {
    if (!block) return;
    releasedBlocks[released % remembered] = block;
    ++released;
    std::free(block);
}

}  // namespace allocations

// Counts from where it is made.
class AllocationCount {
  public:
    AllocationCount() : made_(allocations::made), released_(allocations::released) {}

    // Blocks given out, and blocks taken back; releasing null counts as nothing.
    unsigned long made() const { return allocations::made - made_; }
    unsigned long released() const { return allocations::released - released_; }
    // Blocks more than there were.
    long live() const { return static_cast<long>(made()) - static_cast<long>(released()); }
    // The `i`-th block released since, from 0 on; only the last ones are remembered.
    const void* releasedBlock(unsigned long i) const {
        return allocations::releasedBlocks[(released_ + i) % allocations::remembered];
    }
    // Whether the block is among those.
    bool hasReleased(const void* block) const {
        const unsigned long n = released();
        for (unsigned long i = n < allocations::remembered ? 0 : n - allocations::remembered; i < n;
             ++i)
            if (releasedBlock(i) == block) return true;
        return false;
    }

  private:
    unsigned long made_;
    unsigned long released_;
};

// Lets the `n`-th allocation from now on fail, while it lives.
class FailingNew {
  public:
    explicit FailingNew(unsigned long n) { allocations::countdown = n; }
    ~FailingNew() { allocations::countdown = 0; }
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Whether the allocation that was to fail did.
    bool happened() const { return allocations::countdown == 0; }
};

}  // namespace kfl_test

void* operator new(std::size_t size) { return kfl_test::allocations::takeOrThrow(size); }
void* operator new[](std::size_t size) { return kfl_test::allocations::takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return kfl_test::allocations::take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return kfl_test::allocations::take(size);
}
void operator delete(void* block) noexcept { kfl_test::allocations::give(block); }
void operator delete[](void* block) noexcept { kfl_test::allocations::give(block); }
void operator delete(void* block, std::size_t) noexcept { kfl_test::allocations::give(block); }
void operator delete[](void* block, std::size_t) noexcept { kfl_test::allocations::give(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept {
    kfl_test::allocations::give(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    kfl_test::allocations::give(block);
}

#endif
