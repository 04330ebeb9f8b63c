// Buffer where memory runs out, or 32 bits do.
#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>

#include "kfl/Buffer.h"
#include "tests/memory/buffer_text.h"
#include "tests/support/counted_new.h"
#include "tests/support/layout.h"

namespace {

using kfl_test::AllocationCount;
using kfl_test::bits;
using kfl_test::bytesOf;
using kfl_test::FailingNew;
using kfl_test::read;
using kfl_test::TextBuffer;
using kfl_test::write;
using kfl_test::written;

constexpr unsigned allBits = UINT_MAX;

// Where the counts stand, for what no buffer of a test could ever hold.
constexpr std::size_t maxSizeOffset = bits(8, 12);
constexpr std::size_t writeCountOffset = bits(24, 36);

// --- failed allocations ---

struct GrowingOperation {
    const char* name;
    void (*run)(Buffer& buffer);
};

void PrintTo(const GrowingOperation& row, std::ostream* out) { *out << row.name; }

void writeMore(Buffer& buffer) { write(buffer, "more than fits"); }
void writeOneLocation(Buffer& buffer) {
    unsigned char byte = 'b';
    buffer.OneLocationWrite(&byte, 20);
}
void appendItself(Buffer& buffer) {
    const Buffer& itself = buffer;
    buffer += itself;
}

class BufferGrowthFailureTest : public testing::TestWithParam<GrowingOperation> {};

TEST_P(BufferGrowthFailureTest, AFailedGrowthLeavesTheBufferAsItWas) {
    const AllocationCount count;
    {
        Buffer buffer(8, 5);
        write(buffer, "1234567");
        read(buffer, 2);
        Buffer before(buffer);
        const unsigned char* const block = buffer.bytes();
        bool failed = false;
        for (unsigned long n = 1; !failed; ++n) {
            ASSERT_LE(n, 4U) << "no allocation of the buffer's own failed";
            const FailingNew failing(n);
            try {
                GetParam().run(buffer);
                FAIL() << "nothing failed";
            } catch (const std::bad_alloc&) {
                failed = failing.happened();
            }
        }
        EXPECT_EQ(buffer.bytes(), block);
        EXPECT_EQ(buffer.MaxSize(), 8U);
        EXPECT_EQ(buffer.readPosition(), 2U);
        EXPECT_TRUE(buffer == before);
        GetParam().run(buffer);
        EXPECT_GT(buffer.MaxSize(), 8U);
        EXPECT_EQ(written(buffer).substr(0, 7), "1234567");
    }
    EXPECT_EQ(count.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(, BufferGrowthFailureTest,
                         testing::Values(GrowingOperation{"Write", writeMore},
                                         GrowingOperation{"OneLocationWrite", writeOneLocation},
                                         GrowingOperation{"Append", appendItself}),
                         [](const auto& row) { return row.param.name; });

TEST(BufferFailureTest, AFailedReadWriteLeavesBothAsTheyWere) {
    Buffer dest(2, 5);
    TextBuffer source("abcdef");
    {
        const FailingNew first(1);
        EXPECT_THROW(dest.ReadWrite(dest, source, 6), std::bad_alloc);
    }
    EXPECT_EQ(dest.Size(), 0U);
    EXPECT_EQ(dest.MaxSize(), 2U);
    EXPECT_EQ(source.readPosition(), 0U);
    EXPECT_EQ(dest.ReadWrite(dest, source, 6), 6U);
    EXPECT_EQ(written(dest), "abcdef");
}

TEST(BufferFailureTest, AFailedConstructionLeavesNothing) {
    const AllocationCount count;
    const TextBuffer other("abc");
    for (const unsigned long n : {1UL, 2UL}) {
        const FailingNew failing(n);
        EXPECT_THROW(delete new Buffer(10, 4), std::bad_alloc);
    }
    for (const unsigned long n : {1UL, 2UL}) {
        const FailingNew failing(n);
        EXPECT_THROW(delete new Buffer(other), std::bad_alloc);
    }
    EXPECT_EQ(count.live(), 1);
}

TEST(BufferFailureTest, AFailedAssignmentLeavesAnEmptyAndUsableBuffer) {
    const AllocationCount count;
    {
        const TextBuffer other("abc");
        Buffer buffer(10, 4);
        write(buffer, "12345");
        read(buffer, 2);
        {
            const FailingNew first(1);
            EXPECT_THROW(buffer = other, std::bad_alloc);
        }
        EXPECT_EQ(buffer.bytes(), nullptr);
        EXPECT_EQ(buffer.MaxSize(), 0U);
        EXPECT_EQ(buffer.Size(), 0U);
        EXPECT_EQ(buffer.readPosition(), 0U);
        EXPECT_EQ(read(buffer, 5), "");
        buffer += other;
        EXPECT_EQ(written(buffer), "abc");
        buffer = other;
        EXPECT_EQ(written(buffer), "abc");
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferFailureTest, AFailedSelfAssignmentLeavesAnEmptyAndUsableBuffer) {
    const AllocationCount count;
    {
        TextBuffer buffer("abc");
        const Buffer& itself = buffer;
        {
            const FailingNew first(1);
            EXPECT_THROW(static_cast<Buffer&>(buffer) = itself, std::bad_alloc);
        }
        EXPECT_EQ(buffer.MaxSize(), 0U);
        EXPECT_EQ(buffer.Size(), 0U);
        EXPECT_EQ(write(buffer, "z"), 1U);
    }
    EXPECT_EQ(count.live(), 0);
}

// --- sizes past 32 bits ---

TEST(BufferFailureTest, ABlockPast32BitsFailsAsAnAllocationDoes) {
    const AllocationCount count;
    EXPECT_THROW(Buffer(allBits, 0), std::bad_alloc);
    EXPECT_EQ(count.made(), 0U);
}

TEST(BufferFailureTest, GrowthPast32BitsFailsAsAnAllocationDoes) {
    Buffer buffer(10, allBits);
    write(buffer, "12345");
    const AllocationCount count;
    std::string more(20, 'm');
    EXPECT_THROW(buffer.Write(bytesOf(more), 20), std::bad_alloc);
    EXPECT_THROW(buffer.OneLocationWrite(bytesOf(more), 20), std::bad_alloc);
    TextBuffer source(more);
    EXPECT_THROW(buffer.ReadWrite(buffer, source, 20), std::bad_alloc);
    EXPECT_EQ(buffer.MaxSize(), 10U);
    EXPECT_EQ(written(buffer), "12345");
    EXPECT_EQ(source.readPosition(), 0U);
    EXPECT_EQ(write(buffer, "67890"), 5U);
}

TEST(BufferFailureTest, GrowthByAFactorPast32BitsFailsToo) {
    // 65536 * (65535 % 65536 + 1) bytes are 2 to the power of 32: as a short number, none.
    Buffer buffer(10, 65536);
    unsigned char byte = 'b';
    EXPECT_THROW(buffer.OneLocationWrite(&byte, 10 + 65535), std::bad_alloc);
    EXPECT_EQ(buffer.MaxSize(), 10U);
}

TEST(BufferFailureTest, AppendingPast32BitsFailsAsAnAllocationDoes) {
    TextBuffer buffer("12345");
    TextBuffer other("abc");
    kfl_test::setFieldAt(&other, writeCountOffset, allBits - 2);
    EXPECT_THROW(buffer += other, std::bad_alloc);  // 2 to the power of 32 and 2 bytes
    kfl_test::setFieldAt(&other, writeCountOffset, allBits - 5);
    EXPECT_THROW(buffer += other, std::bad_alloc);  // with the spare byte they are too many
    EXPECT_EQ(buffer.MaxSize(), 5U);
    EXPECT_EQ(written(buffer), "12345");
    kfl_test::setFieldAt(&other, writeCountOffset, 3U);
    buffer += other;
    EXPECT_EQ(written(buffer), "12345abc");
}

TEST(BufferFailureTest, CopyingABlockPast32BitsFailsAsAnAllocationDoes) {
    TextBuffer other("abc");
    TextBuffer assigned("12345");
    kfl_test::setFieldAt(&other, maxSizeOffset, allBits);
    EXPECT_THROW(const Buffer copy(other), std::bad_alloc);
    EXPECT_THROW(static_cast<Buffer&>(assigned) = other, std::bad_alloc);
    kfl_test::setFieldAt(&other, maxSizeOffset, 3U);
    EXPECT_EQ(assigned.MaxSize(), 0U);
    static_cast<Buffer&>(assigned) = other;
    EXPECT_EQ(written(assigned), "abc");
}

}  // namespace
