#include "kfl/Container.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "core/copy_bytes.h"

namespace kfl {
namespace {

using detail::copyBytes;

// The elements from `index` on that a request for `n` can have.
unsigned int available(unsigned int capacity, unsigned int index, unsigned int n) {
    return std::uint64_t{index} + n > capacity ? capacity - index : n;
}

}  // namespace

Container::Container() : data_(nullptr), capacity_(0), elementSize_(0) {}

Container::Container(unsigned int elementSize) : Container(1, elementSize) {}

Container::Container(unsigned int capacity, unsigned int elementSize)
    : data_(nullptr), capacity_(0), elementSize_(elementSize) {
    Container::expandTo(capacity);
}

Container::~Container() { reset(); }

unsigned int Container::size() const { return capacity_; }

void Container::expandTo(unsigned int n) {
    if (data_ && n == capacity_) return;
    if (n == 0) {
        reset();
        return;
    }
    char* const grown = detail::allocateArray(n, elementSize_);
    const std::size_t total = std::size_t{n} * elementSize_;
    const unsigned int old = data_ ? capacity_ : 0;
    const std::size_t kept = std::size_t{n < old ? n : old} * elementSize_;
    if (data_) std::memcpy(grown, data_, kept);
    std::memset(grown + kept, 0, total - kept);
    setData(grown);
    capacity_ = n;
}

void Container::expand() { expand(capacity_ / 2 > 0 ? capacity_ / 2 : 10); }

void Container::expand(unsigned int n) {
    expandTo(detail::checkedSize(std::uint64_t{capacity_} + n));
}

void Container::reset() {
    setData(nullptr);
    capacity_ = 0;
}

char* Container::setData(char* data) {
    delete[] data_;
    data_ = data;
    return data;
}

unsigned int Container::atPut(unsigned int index, char* source, unsigned int n) {
    const unsigned int needed = detail::checkedSize(std::uint64_t{index} + n);
    if (capacity_ < needed) expandTo(needed);
    // A subclass may have refused to grow.
    if (!data_ || capacity_ < needed) return 0;
    copyBytes(data_ + std::size_t{index} * elementSize_, source, std::size_t{n} * elementSize_);
    return n;
}

unsigned int Container::atPut(unsigned int index, char* source) { return atPut(index, source, 1); }

unsigned int Container::atGet(unsigned int index, char* destination, unsigned int n) {
    if (index >= capacity_ || !data_) return 0;
    const unsigned int count = available(capacity_, index, n);
    copyBytes(destination, data_ + std::size_t{index} * elementSize_,
              std::size_t{count} * elementSize_);
    return count;
}

unsigned int Container::atGet(unsigned int index, char* destination) {
    return atGet(index, destination, 1);
}

unsigned int Container::atPut(unsigned int index, Container* source, unsigned int n) {
    const unsigned int needed = detail::checkedSize(std::uint64_t{index} + source->capacity_);
    if (capacity_ < needed) expandTo(needed);
    if (capacity_ < needed || (!data_ && n > 0)) return 0;
    copyBytes(data_ + std::size_t{index} * elementSize_, source->data_,
              std::size_t{n} * elementSize_);
    return n;
}

unsigned int Container::atGet(unsigned int index, Container* destination, unsigned int n) {
    const unsigned int count = available(capacity_, index, n);
    if (destination->capacity_ < count) destination->expandTo(count);
    if (!data_ || !destination->data_ || destination->capacity_ < count) return 0;
    copyBytes(destination->data_, data_ + std::size_t{index} * elementSize_,
              std::size_t{count} * elementSize_);
    return count;
}

}  // namespace kfl
