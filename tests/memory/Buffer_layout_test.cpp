// Buffer as an already compiled host knows it.
#include "kfl/Buffer.h"

#include <gtest/gtest.h>

#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t referenceCountOffset = bits(4, 8);
constexpr std::size_t maxSizeOffset = bits(8, 12);
constexpr std::size_t incrementOffset = bits(12, 16);
constexpr std::size_t dataOffset = bits(16, 24);
constexpr std::size_t readIndexOffset = bits(20, 32);
constexpr std::size_t writeCountOffset = bits(24, 36);

constexpr std::size_t resetSlot = 2;
constexpr std::size_t clearSlot = 3;
constexpr std::size_t sizeSlot = 4;
constexpr std::size_t maxSizeSlot = 5;
constexpr std::size_t setWriteCountSlot = 6;

using BufferRoom = Room<bits(28, 40)>;

class HostBuffer : public BufferRoom {
  public:
    HostBuffer(unsigned maxSize, unsigned increment) {
        call<void, void*, unsigned, unsigned>("_ZN6BufferC1Ejj", *this, maxSize, increment);
    }
    ~HostBuffer() { callSlot<void>(0, *this); }
    HostBuffer(const HostBuffer&) = delete;
    HostBuffer& operator=(const HostBuffer&) = delete;

    // An operation that takes bytes and a count.
    unsigned move(const char* name, void* bytes, unsigned count) const {
        return call<unsigned, void*, void*, unsigned>(name, *this, bytes, count);
    }
    unsigned write(const char* text, unsigned count) const {
        return move("_ZN6Buffer5WriteEPhj", const_cast<char*>(text), count);
    }
};

TEST(BufferLayoutTest, FieldsFollowTheCount) {
    EXPECT_EQ(sizeof(Buffer), bits(28, 40));
    const HostBuffer buffer(10, 4);
    EXPECT_EQ(buffer.word(referenceCountOffset), 0U);
    EXPECT_EQ(buffer.word(maxSizeOffset), 10U);
    EXPECT_EQ(buffer.word(incrementOffset), 4U);
    EXPECT_NE(buffer.pointer(dataOffset), nullptr);
    EXPECT_EQ(buffer.word(readIndexOffset), 0U);
    EXPECT_EQ(buffer.word(writeCountOffset), 0U);
    EXPECT_EQ(buffer.write("abcdef", 6), 6U);
    char read[] = "....";
    EXPECT_EQ(buffer.move("_ZN6Buffer4ReadEPhj", read, 2), 2U);
    EXPECT_STREQ(read, "ab..");
    EXPECT_EQ(buffer.word(readIndexOffset), 2U);
    EXPECT_EQ(buffer.word(writeCountOffset), 6U);
    EXPECT_EQ(buffer.text(dataOffset)[5], 'f');
    EXPECT_TRUE(buffer.intact());
}

TEST(BufferLayoutTest, TableHasSevenSlots) {
    const HostBuffer buffer(1, 0);
    expectTable(buffer, 0, "_ZTI6Buffer",
                {"_ZN6BufferD1Ev", "_ZN6BufferD0Ev", "_ZN6Buffer5ResetEv", "_ZN6Buffer5ClearEv",
                 "_ZN6Buffer4SizeEv", "_ZN6Buffer7MaxSizeEv", "_ZN6Buffer13SetWriteCountEj"});
    expectTableWords("_ZTV6Buffer", 9);
}

TEST(BufferLayoutTest, OperationsWorkThroughTheirSlots) {
    const HostBuffer buffer(10, 0);
    buffer.write("abcdef", 6);
    EXPECT_EQ(callSlot<unsigned>(sizeSlot, buffer), 6U);
    EXPECT_EQ(callSlot<unsigned>(maxSizeSlot, buffer), 10U);
    setFieldAt<unsigned>(buffer, readIndexOffset, 4);
    callSlot<void, unsigned>(setWriteCountSlot, buffer, 3);
    EXPECT_EQ(buffer.word(writeCountOffset), 3U);
    EXPECT_EQ(buffer.word(readIndexOffset), 4U);
    callSlot<void>(resetSlot, buffer);
    EXPECT_EQ(buffer.word(readIndexOffset), 0U);
    EXPECT_EQ(buffer.word(writeCountOffset), 3U);
    callSlot<void>(clearSlot, buffer);
    EXPECT_EQ(buffer.word(writeCountOffset), 0U);
}

TEST(BufferLayoutTest, OtherOperationsAreFoundByTheirNames) {
    const HostBuffer buffer(10, 4);
    buffer.write("abcdef", 6);
    char byte[] = "z";
    EXPECT_EQ(buffer.move("_ZN6Buffer15OneLocationReadEPhj", byte, 2), 2U);
    EXPECT_EQ(byte[0], 'b');
    EXPECT_EQ(buffer.move("_ZN6Buffer16OneLocationWriteEPhj", byte, 1), 1U);
    call<void, void*, unsigned>("_ZN6Buffer6UnreadEj", buffer, 1);
    EXPECT_EQ(buffer.word(readIndexOffset), 1U);
    call<void, void*, unsigned>("_ZN6Buffer7UnwriteEj", buffer, 2);
    EXPECT_EQ(buffer.word(writeCountOffset), 5U);
    EXPECT_EQ((call<void*, void*, unsigned>("_ZN6BufferixEj", buffer, 3)),
              static_cast<char*>(buffer.pointer(dataOffset)) + 3);

    const HostBuffer target(10, 0);
    EXPECT_EQ((call<unsigned, void*, void*, void*, unsigned>("_ZN6Buffer9ReadWriteERS_S0_j", buffer,
                                                             target, buffer, 3)),
              3U);
    EXPECT_EQ(target.word(writeCountOffset), 3U);
    EXPECT_EQ(target.text(dataOffset)[0], 'b');
    EXPECT_EQ((call<void*, void*, const void*>("_ZN6BufferpLERKS_", target, buffer)), target);
    EXPECT_EQ(target.word(writeCountOffset), 8U);
    EXPECT_FALSE((call<bool, void*, void*>("_ZN6BuffereqERS_", buffer, target)));

    const BufferRoom copy;
    call<void, void*, const void*>("_ZN6BufferC1ERKS_", copy, buffer);
    EXPECT_EQ(copy.word(referenceCountOffset), 0U);
    EXPECT_EQ(copy.word(readIndexOffset), 0U);
    EXPECT_EQ(copy.word(writeCountOffset), 5U);
    setFieldAt<unsigned>(copy, referenceCountOffset, 3);
    EXPECT_EQ((call<void*, void*, const void*>("_ZN6BufferaSERKS_", copy, target)), copy);
    EXPECT_EQ(copy.word(referenceCountOffset), 3U);
    EXPECT_EQ(copy.word(writeCountOffset), 8U);
    EXPECT_TRUE((call<bool, void*, void*>("_ZN6BuffereqERS_", copy, target)));
    EXPECT_TRUE(copy.intact());
    call<void, void*>("_ZN6BufferD1Ev", copy);
}

TEST(BufferLayoutTest, DestructorsReleaseTheBlock) {
    callSlot<void>(1, new Buffer(5, 0));
    const BufferRoom buffer;
    call<void, void*, unsigned, unsigned>("_ZN6BufferC1Ejj", buffer, 3, 0);
    call<void, void*>("_ZN6BufferD2Ev", buffer);
}

}  // namespace
