// A source of its own: the calls cannot be seen through.
#include "benchmarks/bare_text.h"

#include <cstring>

namespace kfl_benchmark {

BareText::BareText(unsigned int room) : data_(new char[room + 1]), room_(room), length_(0) {
    data_[0] = '\0';
}

BareText::BareText(const char* text)
    : room_(static_cast<unsigned int>(std::strlen(text))), length_(room_) {
    data_ = new char[room_ + 1];
    std::memcpy(data_, text, room_ + 1);
}

BareText::BareText(const BareText& other)
    : data_(new char[other.room_ + 1]), room_(other.room_), length_(other.length_) {
    std::memcpy(data_, other.data_, length_ + 1);
}

BareText::~BareText() { delete[] data_; }

void BareText::insert(unsigned int pos, const char* text) {
    const std::size_t n = std::strlen(text);
    std::memmove(data_ + pos + n, data_ + pos, length_ - pos + 1);
    std::memcpy(data_ + pos, text, n);
    length_ += static_cast<unsigned int>(n);
}

void BareText::erase(unsigned int pos, unsigned int count) {
    std::memmove(data_ + pos, data_ + pos + count, length_ - pos - count + 1);
    length_ -= count;
}

bool BareText::operator==(const BareText& other) const {
    return length_ == other.length_ && std::memcmp(data_, other.data_, length_) == 0;
}

int BareText::find(const char* needle) const {
    const std::size_t n = std::strlen(needle);
    const char* found = std::strchr(data_, *needle);
    while (found && std::strncmp(found, needle, n) != 0) found = std::strchr(found + 1, *needle);
    return found ? static_cast<int>(found - data_) : -1;
}

}  // namespace kfl_benchmark
