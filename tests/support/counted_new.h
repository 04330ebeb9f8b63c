// Replaces operator new and delete in the program that includes it, to count and to fail them, and
// to end the program where a block goes another way than it came: array new belongs to array
// delete. One source of a program includes it; the tests of that program run on one thread.
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
#include <cstdio>
#include <cstdlib>
#include <new>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

namespace kfl_test {
namespace allocations {

// Larger requests fail, so that no test really takes so much memory.
constexpr std::size_t largestBlock = std::size_t{1} << 28;

inline unsigned long made = 0;
inline unsigned long madeAsArrays = 0;
inline unsigned long released = 0;
// Calls until the one that fails; 0: none does.
inline unsigned long countdown = 0;
// What was asked for last, refused or not.
inline std::size_t lastSize = 0;
// The last blocks released, in turn.
constexpr unsigned long remembered = 32;
inline const void* releasedBlocks[remembered] = {};

// How a block is asked for and given back; numbers that do not stand in memory by chance.
enum class Form : unsigned int { single = 0x51A61E0B, array = 0xA88A7B0C };

// Stands in front of each block, which is as well aligned behind it as malloc's own. The form is
// next to the block: it is the first that a write in front of the block meets.
struct Front {
    alignas(std::max_align_t) char unused[alignof(std::max_align_t) - sizeof(Form)];
    Form form;
};

// What is wrong about a block that came in one form and goes in another; null when nothing is.
inline const char* faultOf(Form came, Form goes) {
    if (came == goes) return nullptr;
    if (came == Form::array) return "A block of array new was given to single delete.\n";
    if (came == Form::single) return "A block of single new was given to array delete.\n";
    return "A block was overwritten in front of its start, or did not come from new.\n";
}

// AddressSanitizer sees who reads or writes in front of a block, as it does without this file.
inline void fence([[maybe_unused]] Front* front) noexcept {
#ifdef __SANITIZE_ADDRESS__
    __asan_poison_memory_region(front, sizeof *front);
#endif
}

inline void unfence([[maybe_unused]] Front* front) noexcept {
#ifdef __SANITIZE_ADDRESS__
    __asan_unpoison_memory_region(front, sizeof *front);
#endif
}

inline void* take(std::size_t size, Form form) noexcept {
    lastSize = size;
    if (countdown > 0 && --countdown == 0) return nullptr;
    if (size > largestBlock) return nullptr;
    void* const start = std::malloc(sizeof(Front) + (size > 0 ? size : 1));
    if (!start) return nullptr;
    Front* const front = ::new (start) Front{{}, form};
    fence(front);
    ++made;
    if (form == Form::array) ++madeAsArrays;
    return front + 1;
}

inline void* takeOrThrow(std::size_t size, Form form) {
    void* const block = take(size, form);
    if (!block) throw std::bad_alloc();
    return block;
}

inline void give(void* block, Form form) noexcept {
    if (!block) return;
    Front* const front = static_cast<Front*>(block) - 1;
    unfence(front);
    if (const char* const fault = faultOf(front->form, form)) {
        std::fputs(fault, stderr);
        std::abort();
    }
    releasedBlocks[released % remembered] = block;
    ++released;
    std::free(front);
}

}  // namespace allocations

// Counts from where it is made.
class AllocationCount {
  public:
    AllocationCount()
        : made_(allocations::made),
          madeAsArrays_(allocations::madeAsArrays),
          released_(allocations::released) {}

    // Blocks given out, and blocks taken back; releasing null counts as nothing.
    unsigned long made() const { return allocations::made - made_; }
    unsigned long released() const { return allocations::released - released_; }
    // Those of the blocks given out that array new asked for.
    unsigned long madeAsArrays() const { return allocations::madeAsArrays - madeAsArrays_; }
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
    unsigned long madeAsArrays_;
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

void* operator new(std::size_t size) {
    return kfl_test::allocations::takeOrThrow(size, kfl_test::allocations::Form::single);
}
void* operator new[](std::size_t size) {
    return kfl_test::allocations::takeOrThrow(size, kfl_test::allocations::Form::array);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return kfl_test::allocations::take(size, kfl_test::allocations::Form::single);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return kfl_test::allocations::take(size, kfl_test::allocations::Form::array);
}
void operator delete(void* block) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::single);
}
void operator delete(void* block, std::size_t) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::single);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::single);
}
void operator delete[](void* block) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::array);
}
void operator delete[](void* block, std::size_t) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::array);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    kfl_test::allocations::give(block, kfl_test::allocations::Form::array);
}

#endif
