#include "kfl/Buffer.h"

#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "core/bases.h"
#include "core/copy_bytes.h"
#include "core/retired.h"

namespace {

using kfl::detail::copyBytes;
using kfl::detail::Retired;

unsigned smallerOf(unsigned a, unsigned b) { return a < b ? a : b; }

// A block of `maxSize` bytes and the spare one behind them; null for 0.
unsigned char* newBlock(std::uint64_t maxSize) {
    if (maxSize == 0) return nullptr;
    return reinterpret_cast<unsigned char*>(kfl::detail::allocateArray(maxSize + 1));
}

// Moves the written bytes to a block of that size; returns the old block.
unsigned char* replaceBlock(unsigned char*& data, unsigned& maxSize, unsigned writeCount,
                            std::uint64_t newMaxSize) {
    unsigned char* const block = newBlock(newMaxSize);
    copyBytes(block, data, writeCount);
    unsigned char* const old = data;
    data = block;
    maxSize = static_cast<unsigned>(newMaxSize);
    return old;
}

// Grows for `count` more bytes where they do not fit and growth is allowed; returns the block that
// is no longer needed, or null.
unsigned char* growFor(unsigned count, unsigned char*& data, unsigned& maxSize, unsigned writeCount,
                       unsigned increment) {
    const std::uint64_t needed = std::uint64_t{writeCount} + count;
    if (needed <= maxSize || increment == 0) return nullptr;
    // Kept on purpose: the remainder, not the quotient, so the block may still be too small.
    const std::uint64_t steps = (needed - maxSize) % increment + 1;
    return replaceBlock(data, maxSize, writeCount, maxSize + steps * increment);
}

// Kept on purpose: how often a one-location operation turns for `count` bytes.
int oneLocationTurns(unsigned count) { return static_cast<std::int16_t>(count); }

}  // namespace

Buffer::Buffer(unsigned maxSize_, unsigned increment_)
    : maxSize(maxSize_),
      increment(increment_),
      data(newBlock(maxSize_)),
      readIndex(0),
      writeCount(0) {}

Buffer::Buffer(const Buffer& other)
    : Protectable(other),
      maxSize(other.maxSize),
      increment(other.increment),
      data(newBlock(other.maxSize)),
      readIndex(0),
      writeCount(other.writeCount) {
    copyBytes(data, other.data, writeCount);
}

Buffer::~Buffer() { delete[] data; }

Buffer& Buffer::operator=(const Buffer& other) {
    const unsigned newMaxSize = other.maxSize;
    const unsigned newWriteCount = other.writeCount;
    delete[] data;
    data = nullptr;
    maxSize = readIndex = writeCount = 0;
    increment = other.increment;

    data = newBlock(newMaxSize);
    maxSize = newMaxSize;
    writeCount = newWriteCount;
    // Kept on purpose: for the buffer itself there is nothing left to copy.
    if (this == &other) {
        if (data) std::memset(data, 0, writeCount);
    } else {
        copyBytes(data, other.data, writeCount);
    }
    return *this;
}

bool Buffer::operator==(Buffer& other) {
    const unsigned size = Size();
    if (size != other.Size()) return false;
    return size == 0 || std::memcmp(data, other.data, size) == 0;
}

unsigned char& Buffer::operator[](unsigned index) {
    // Without a block there is no spare byte in it either.
    static unsigned char noBlock;
    if (!data) return noBlock;
    return data[smallerOf(index, maxSize)];
}

unsigned Buffer::Read(unsigned char* dest, unsigned count) {
    const unsigned k = smallerOf(unread(), count);
    copyBytes(dest, data + readIndex, k);
    readIndex += k;
    return k;
}

void Buffer::Unread(unsigned count) { readIndex -= smallerOf(count, readIndex); }

unsigned Buffer::Write(unsigned char* src, unsigned count) {
    const Retired<unsigned char> old(growFor(count, data, maxSize, writeCount, increment));
    const unsigned k = smallerOf(maxSize - writeCount, count);
    copyBytes(data + writeCount, src, k);
    writeCount += k;
    return k;
}

void Buffer::Unwrite(unsigned count) {
    writeCount -= smallerOf(count, writeCount);
    readIndex = smallerOf(readIndex, writeCount);
}

unsigned Buffer::OneLocationRead(unsigned char* dest, unsigned count) {
    const unsigned k = smallerOf(unread(), count);
    volatile unsigned char* const port = dest;
    for (int turn = oneLocationTurns(k); turn > 0; --turn) *port = data[readIndex++];
    return k;
}

unsigned Buffer::OneLocationWrite(unsigned char* src, unsigned count) {
    const Retired<unsigned char> old(growFor(count, data, maxSize, writeCount, increment));
    const unsigned k = smallerOf(maxSize - writeCount, count);
    const volatile unsigned char* const port = src;
    for (int turn = oneLocationTurns(k); turn > 0; --turn) data[writeCount++] = *port;
    return k;
}

unsigned Buffer::ReadWrite(Buffer& dest, Buffer& src, unsigned count) {
    const unsigned k = smallerOf(src.unread(), count);
    const Retired<unsigned char> old(
        growFor(k, dest.data, dest.maxSize, dest.writeCount, dest.increment));
    const unsigned m = smallerOf(dest.maxSize - dest.writeCount, k);
    copyBytes(dest.data + dest.writeCount, src.data + src.readIndex, m);
    src.readIndex += m;
    dest.writeCount += m;
    return m;
}

Buffer& Buffer::operator+=(const Buffer& other) {
    const unsigned count = other.writeCount;
    const std::uint64_t needed = std::uint64_t{writeCount} + count;
    const Retired<unsigned char> old(
        needed > maxSize ? replaceBlock(data, maxSize, writeCount, needed) : nullptr);
    copyBytes(data + writeCount, other.data, count);
    writeCount += count;
    return *this;
}

void Buffer::Reset() { readIndex = 0; }

void Buffer::Clear() {
    readIndex = 0;
    writeCount = 0;
}

unsigned Buffer::Size() { return writeCount; }

unsigned Buffer::MaxSize() { return maxSize; }

void Buffer::SetWriteCount(unsigned count) {
    if (count <= maxSize) writeCount = count;
}
