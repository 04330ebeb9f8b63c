#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "kfl/AString.h"

namespace kfl {
namespace {

// The line array's size has no field of its own: it stands in front of the array.
constexpr std::size_t sizeBytes = sizeof(unsigned int);

char* newLine(unsigned int lineSize) {
    const unsigned int size = lineSize > 0 ? lineSize : 1;
    char* const block = detail::allocateArray(sizeBytes + std::uint64_t{size} + 1);
    std::memcpy(block, &size, sizeBytes);
    return block + sizeBytes;
}

unsigned int sizeOf(const char* line) {
    unsigned int size;
    std::memcpy(&size, line - sizeBytes, sizeBytes);
    return size;
}

}  // namespace

AStringIterator::AStringIterator(AString& s, unsigned int lineSize)
    : string_(&s), position_(const_cast<char*>(s.c_str())), line_(newLine(lineSize)) {}

AStringIterator::~AStringIterator() { delete[](line_ - sizeBytes); }

void AStringIterator::Reset() { position_ = const_cast<char*>(string_->c_str()); }

char* AStringIterator::Next() {
    const char* const end = string_->c_str() + string_->length();
    // A last line without a line feed took the terminator with it: behind that nothing may be read.
    if (position_ > end || *position_ == '\0') return nullptr;

    const unsigned int size = sizeOf(line_);
    unsigned int used = 0;
    for (;; ++position_) {
        const char c = *position_;
        if (c == '\r') continue;
        if (c == '\0') {
            ++position_;
            break;
        }
        if (used == size) break;
        line_[used++] = c;
        if (c == '\n') {
            ++position_;
            break;
        }
    }
    line_[used] = '\0';
    return line_;
}

}  // namespace kfl
