// Array storage whose size was added up in 64 bits, so that no sum of 32-bit counts can wrap.
#ifndef KFL_CORE_ALLOCATION_H
#define KFL_CORE_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <new>

namespace kfl::detail {

// Array new for `bytes` bytes, to be released with array delete. A size that passes 32 bits fails
// as an allocation does: the allocator is asked for what it must refuse, so it is the one that
// throws.
inline char* allocateArray(std::uint64_t bytes) {
    const std::size_t size = bytes > UINT32_MAX ? SIZE_MAX : static_cast<std::size_t>(bytes);
    return static_cast<char*>(::operator new[](size));
}

// The same for `count` elements of `elementSize` bytes.
inline char* allocateArray(unsigned int count, std::uint64_t elementSize) {
    return allocateArray(count * elementSize);
}

// Fails as an allocation does; for a size that cannot even be written down in 32 bits.
[[gnu::cold, gnu::noinline]] void refuseAllocation();

// A size in 32 bits; fails as an allocation does when it has more.
inline unsigned int checkedSize(std::uint64_t size) {
    if (size > UINT32_MAX) refuseAllocation();
    return static_cast<unsigned int>(size);
}

}  // namespace kfl::detail

#endif
