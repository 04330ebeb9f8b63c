#include "core/allocation.h"

#include <cstddef>
#include <new>

namespace kfl::detail {

char* allocateArray(std::uint64_t bytes) {
    const std::size_t size = bytes > UINT32_MAX ? SIZE_MAX : static_cast<std::size_t>(bytes);
    return static_cast<char*>(::operator new[](size));
}

void refuseAllocation() { ::operator delete[](allocateArray(UINT64_MAX)); }

}  // namespace kfl::detail
