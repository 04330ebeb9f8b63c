#include "kfl/streams.h"

#include <cstring>

#include "core/copy_bytes.h"

namespace {

// Hands out up to `n` of the `available` bytes at `from`.
unsigned int take(char* to, const char* from, unsigned int available, unsigned int n) {
    const unsigned int k = n < available ? n : available;
    kfl::detail::copyBytes(to, from, k);
    return k;
}

}  // namespace

DataInputStream::DataInputStream() = default;

DataInputStream::~DataInputStream() = default;

DataOutputStream::DataOutputStream() = default;

DataOutputStream::~DataOutputStream() = default;

unsigned int DataOutputStream::writeChar(char /*c*/) { return 0; }

namespace kfl {

AStringInputStream::AStringInputStream(AString& s) : string_(&s), position_(0) {}

AStringInputStream::~AStringInputStream() = default;

unsigned int AStringInputStream::read(char* dst, unsigned int n) {
    const unsigned int length = string_->length();
    if (position_ >= length) return 0;
    const unsigned int k = take(dst, string_->c_str() + position_, length - position_, n);
    position_ += k;
    return k;
}

void AStringInputStream::rewind() { position_ = 0; }

AStringOutputStream::AStringOutputStream(AString& s) : string_(&s) {}

AStringOutputStream::~AStringOutputStream() = default;

unsigned int AStringOutputStream::write(const char* src, unsigned int n) {
    string_->append(src, n);
    return string_->length();
}

unsigned int AStringOutputStream::writeChar(char c) {
    string_->append(c);
    return string_->length();
}

}  // namespace kfl

BufferInputStream::BufferInputStream(const char* data, unsigned int length)
    : start_(data), total_(length), current_(data), remaining_(length) {}

BufferInputStream::~BufferInputStream() = default;

unsigned int BufferInputStream::read(char* dst, unsigned int n) {
    const unsigned int k = take(dst, current_, remaining_, n);
    current_ += k;
    remaining_ -= k;
    return k;
}

void BufferInputStream::rewind() {
    current_ = start_;
    remaining_ = total_;
}

BufferOutputStream::BufferOutputStream(char* array) : array_(array), length_(0) {
    array_[0] = '\0';
}

BufferOutputStream::~BufferOutputStream() = default;

unsigned int BufferOutputStream::write(const char* src, unsigned int n) {
    if (!src) return 0;
    char* const end = array_ + std::strlen(array_);
    const std::size_t visible = strnlen(src, n);
    std::memmove(end, src, visible);
    end[visible] = '\0';
    length_ += n;
    array_[length_] = '\0';
    return n;
}
