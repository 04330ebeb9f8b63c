// The operations of kfl::AString that take a Buffer.
#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "kfl/AString.h"
#include "kfl/Buffer.h"

namespace kfl {
namespace {

// Reads the unread bytes to `to`. Kept on purpose: `size` counts all bytes ever written, so fewer
// may come; the rest reads as NUL.
void readInto(char* to, Buffer& buffer, unsigned int size) {
    const unsigned int n = buffer.Read(reinterpret_cast<unsigned char*>(to), size);
    std::memset(to + n, 0, std::size_t{size} - n + 1);
}

}  // namespace

AString::AString(Buffer* buffer)
    : capacity_(buffer->Size()), length_(capacity_), increment_(defaultIncrement) {
    data_ = detail::allocateArray(std::uint64_t{capacity_} + 1);
    readInto(data_, *buffer, length_);
}

int AString::append(Buffer* buffer) {
    if (!buffer) return 1;
    const unsigned int n = buffer->Size();
    expandTo(detail::checkedSize(std::uint64_t{length_} + n));
    readInto(data_ + length_, *buffer, n);
    length_ += n;
    return 1;
}

}  // namespace kfl
