#include "core/allocation.h"

#include <cstddef>
#include <new>

namespace kfl::detail {

void refuseAllocation() { ::operator delete[](allocateArray(UINT64_MAX)); }

}  // namespace kfl::detail
