// Buffers beside plain models of them, and steps that both take together.
#ifndef KFL_TESTS_MEMORY_BUFFER_MODEL_H
#define KFL_TESTS_MEMORY_BUFFER_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "kfl/Buffer.h"
#include "tests/support/choices.h"

namespace kfl_test {

using BufferBytes = std::vector<unsigned char>;

// What a byte is that nobody has written since its block was made.
constexpr unsigned char freshByte = 0xEE;

// The rules of Buffer, in numbers that do not wrap.
struct BufferModel {
    BufferModel(unsigned maxSize_, unsigned increment_)
        : maxSize(maxSize_), increment(increment_), block(maxSize_ + 1, freshByte) {}

    void resize(std::int64_t size) {
        maxSize = size;
        block.resize(static_cast<std::size_t>(written));
        block.resize(static_cast<std::size_t>(size) + 1, freshByte);
    }
    void growFor(std::int64_t count) {
        const std::int64_t excess = written + count - maxSize;
        if (excess > 0 && increment > 0) resize(maxSize + increment * (excess % increment + 1));
    }
    std::int64_t unread() const { return std::max<std::int64_t>(written - position, 0); }
    // How often a one-location operation turns.
    static std::int64_t turns(std::int64_t count) {
        const std::int64_t low = count & 0xFFFF;
        return low < 0x8000 ? low : 0;
    }

    BufferBytes read(std::int64_t count) {
        const auto begin = block.begin() + static_cast<std::ptrdiff_t>(position);
        const BufferBytes taken(begin,
                                begin + static_cast<std::ptrdiff_t>(std::min(unread(), count)));
        position += static_cast<std::int64_t>(taken.size());
        return taken;
    }
    std::int64_t write(const BufferBytes& bytes) {
        growFor(static_cast<std::int64_t>(bytes.size()));
        const std::int64_t fit =
            std::min(maxSize - written, static_cast<std::int64_t>(bytes.size()));
        std::copy_n(bytes.begin(), fit, block.begin() + static_cast<std::ptrdiff_t>(written));
        written += fit;
        return fit;
    }
    void assign(const BufferModel& other) {
        const BufferBytes bytes(other.block.begin(),
                                other.block.begin() + static_cast<std::ptrdiff_t>(other.written));
        increment = other.increment;
        position = written = 0;
        resize(other.maxSize);
        std::copy(bytes.begin(), bytes.end(), block.begin());
        written = static_cast<std::int64_t>(bytes.size());
    }
    void append(const BufferModel& other) {
        const BufferBytes bytes(other.block.begin(),
                                other.block.begin() + static_cast<std::ptrdiff_t>(other.written));
        if (written + other.written > maxSize) resize(written + other.written);
        std::copy(bytes.begin(), bytes.end(), block.begin() + static_cast<std::ptrdiff_t>(written));
        written += static_cast<std::int64_t>(bytes.size());
    }
    bool operator==(const BufferModel& other) const {
        return written == other.written &&
               std::equal(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(written),
                          other.block.begin());
    }

    std::int64_t maxSize, increment;
    std::int64_t position = 0;
    std::int64_t written = 0;
    BufferBytes block;  // with the spare byte
};

// A buffer and its model, which do everything together.
class BufferPair {
  public:
    BufferPair(Choices& random, unsigned maxSize, unsigned increment)
        : random_(random), buffer(maxSize, increment), model(maxSize, increment) {
        refresh();
    }
    BufferPair(const BufferPair& other)
        : random_(other.random_), buffer(other.buffer), model(0, 0) {
        model.assign(other.model);
        refresh();
    }

    void write(unsigned count) {
        BufferBytes bytes(count);
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random_());
        expectResult(model.write(bytes), buffer.Write(bytes.data(), count));
    }
    void read(unsigned count) {
        BufferBytes bytes(count);
        const unsigned k = buffer.Read(bytes.data(), count);
        ASSERT_LE(k, count);
        bytes.resize(k);
        EXPECT_EQ(bytes, model.read(count));
    }
    void writeOneLocation(unsigned count) {
        unsigned char byte = static_cast<unsigned char>(random_());
        model.growFor(count);
        const std::int64_t k = std::min<std::int64_t>(model.maxSize - model.written, count);
        model.write(BufferBytes(static_cast<std::size_t>(BufferModel::turns(k)), byte));
        expectResult(k, buffer.OneLocationWrite(&byte, count));
    }
    void readOneLocation(unsigned count) {
        unsigned char byte = 0x55;
        const std::int64_t k = std::min<std::int64_t>(model.unread(), count);
        const BufferBytes taken = model.read(BufferModel::turns(k));
        expectResult(k, buffer.OneLocationRead(&byte, count));
        EXPECT_EQ(byte, taken.empty() ? 0x55 : taken.back());
    }
    void unread(unsigned count) {
        buffer.Unread(count);
        model.position = std::max<std::int64_t>(model.position - count, 0);
    }
    void unwrite(unsigned count) {
        buffer.Unwrite(count);
        model.written = std::max<std::int64_t>(model.written - count, 0);
        model.position = std::min(model.position, model.written);
    }
    void reset() {
        buffer.Reset();
        model.position = 0;
    }
    void clear() {
        buffer.Clear();
        model.position = model.written = 0;
    }
    void setWriteCount(unsigned count) {
        buffer.SetWriteCount(count);
        if (count <= model.maxSize) model.written = count;
    }
    void setByte(unsigned index, unsigned char value) {
        buffer[index] = value;
        model.block[static_cast<std::size_t>(std::min<std::int64_t>(index, model.maxSize))] = value;
    }
    void assign(const BufferPair& other) {
        buffer = other.buffer;
        model.assign(other.model);
        if (this == &other) std::fill_n(model.block.begin(), model.written, 0);
        refresh();
    }
    void append(const BufferPair& other) {
        buffer += other.buffer;
        model.append(other.model);
        refreshIfGrown();
    }
    void moveTo(BufferPair& dest, BufferPair& bystander, unsigned count) {
        const std::int64_t before = model.position;
        const BufferBytes bytes = model.read(count);
        const std::int64_t moved = dest.model.write(bytes);
        model.position = before + moved;
        EXPECT_EQ(bystander.buffer.ReadWrite(dest.buffer, buffer, count), moved);
        dest.refreshIfGrown();
    }
    void expectSame(BufferPair& other) { EXPECT_EQ(buffer == other.buffer, model == other.model); }

    void check(bool bytesToo) {
        ASSERT_EQ(buffer.MaxSize(), model.maxSize);
        ASSERT_EQ(buffer.growthIncrement(), model.increment);
        ASSERT_EQ(buffer.Size(), model.written);
        ASSERT_EQ(buffer.readPosition(), model.position);
        ASSERT_EQ(buffer.unread(), model.unread());
        ASSERT_EQ(buffer.bytes() == nullptr, model.maxSize == 0);
        if (!buffer.bytes() || !bytesToo) return;
        ASSERT_TRUE(std::equal(model.block.begin(), model.block.end(), buffer.bytes()));
    }
    std::int64_t maxSize() const { return model.maxSize; }

  private:
    void expectResult(std::int64_t expected, unsigned result) {
        EXPECT_EQ(result, expected);
        refreshIfGrown();
    }
    // Gives the bytes that nobody has written yet the value that they have in the model.
    void refresh() {
        knownSize_ = model.maxSize;
        if (model.maxSize == 0) return;
        for (std::int64_t i = model.written; i <= model.maxSize; ++i) {
            model.block[static_cast<std::size_t>(i)] = freshByte;
            buffer[static_cast<unsigned>(i)] = freshByte;
        }
    }
    void refreshIfGrown() {
        if (model.maxSize != knownSize_) refresh();
    }

    Choices& random_;
    Buffer buffer;
    BufferModel model;
    std::int64_t knownSize_ = 0;
};

inline unsigned pick(Choices& random, std::initializer_list<unsigned> choices) {
    return choices.begin()[random.below(static_cast<std::uint32_t>(choices.size()))];
}

inline BufferPair freshPair(Choices& random) {
    return {random, pick(random, {0, 1, 5, 10, 64, 300}), pick(random, {0, 1, 2, 3, 4, 7, 16})};
}

inline unsigned anyCount(Choices& random) {
    switch (random.below(12)) {
        case 0: return 0;
        case 1: return random.below(200);
        default: return random.below(24);
    }
}

inline void takeBufferStep(Choices& random, std::vector<BufferPair>& pairs) {
    const auto any = [&]() -> BufferPair& {
        return pairs[random.below(static_cast<std::uint32_t>(pairs.size()))];
    };
    BufferPair& pair = any();
    BufferPair& other = any();
    const unsigned count = anyCount(random);
    switch (random.below(20)) {
        case 0:
        case 1:
        case 2:
        case 3: return pair.write(count);
        case 4:
        case 5:
        case 6: return pair.read(count);
        case 7: return pair.writeOneLocation(count);
        case 8: return pair.readOneLocation(count);
        case 9: return pair.unread(random.oneIn(9) ? ~count : count);
        case 10: return pair.unwrite(random.oneIn(9) ? ~count : count);
        case 11: return random.oneIn(3) ? pair.clear() : pair.reset();
        case 12: return pair.setWriteCount(random.oneIn(9) ? ~count : count);
        case 13: return pair.setByte(random.oneIn(9) ? ~count : count, 'x');
        case 14: return pair.assign(other);
        case 15: return pair.append(other);
        case 16:
        case 17: return pair.moveTo(other, any(), count);
        case 18: return pair.expectSame(other);
        default: {
            // A block never shrinks, so now and then a buffer starts over; else it is copied.
            const BufferPair next =
                random.oneIn(2) || pair.maxSize() > 5000 ? freshPair(random) : other;
            return pair.assign(next);
        }
    }
}

}  // namespace kfl_test

#endif
