// Copying bytes where there may be none.
#ifndef KFL_CORE_COPY_BYTES_H
#define KFL_CORE_COPY_BYTES_H

#include <cstddef>
#include <cstring>

namespace kfl::detail {

// memmove; zero bytes may be copied from or to nowhere.
inline void copyBytes(void* to, const void* from, std::size_t n) {
    if (n > 0) std::memmove(to, from, n);
}

}  // namespace kfl::detail

#endif
