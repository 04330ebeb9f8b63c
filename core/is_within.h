// Whether a text argument is a piece of the object it is given to.
#ifndef KFL_CORE_IS_WITHIN_H
#define KFL_CORE_IS_WITHIN_H

#include <cstdint>

namespace kfl::detail {

// True when `place` is one of the `length` bytes from `data` on.
inline bool isWithin(const char* place, const char* data, unsigned int length) {
    return reinterpret_cast<std::uintptr_t>(place) - reinterpret_cast<std::uintptr_t>(data) <
           length;
}

}  // namespace kfl::detail

#endif
