#include "kfl/Buffer.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>

#include "tests/memory/buffer_text.h"
#include "tests/support/counted_new.h"

namespace {

using kfl_test::AllocationCount;
using kfl_test::bytesOf;
using kfl_test::FailingNew;
using kfl_test::read;
using kfl_test::TextBuffer;
using kfl_test::write;
using kfl_test::written;

constexpr unsigned allBits = UINT_MAX;

// --- construction, copy, assignment ---

TEST(BufferTest, StartsEmpty) {
    Buffer buffer(10, 4);
    EXPECT_EQ(buffer.MaxSize(), 10U);
    EXPECT_EQ(buffer.growthIncrement(), 4U);
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(buffer.readPosition(), 0U);
    EXPECT_EQ(buffer.unread(), 0U);
    EXPECT_EQ(buffer.referenceCount(), 0U);
    EXPECT_NE(buffer.bytes(), nullptr);
}

TEST(BufferTest, BlockHasOneByteMoreThanTheCapacity) {
    const AllocationCount count;
    {
        const Buffer buffer(10, 4);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 11U);
        EXPECT_EQ(count.live(), 1);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferTest, WithoutCapacityThereIsNoBlock) {
    const AllocationCount count;
    unsigned char byte = 'b';
    Buffer buffer(0, 0);
    EXPECT_EQ(buffer.bytes(), nullptr);
    EXPECT_EQ(buffer.Write(&byte, 1), 0U);
    EXPECT_EQ(buffer.Read(&byte, 1), 0U);
    EXPECT_EQ(buffer.OneLocationWrite(&byte, 1), 0U);
    EXPECT_EQ(buffer.OneLocationRead(&byte, 1), 0U);
    EXPECT_EQ(byte, 'b');
    buffer.Unread(1);
    buffer.Unwrite(1);
    buffer.SetWriteCount(1);
    buffer.Reset();
    buffer.Clear();
    EXPECT_EQ(buffer.Size(), 0U);
    Buffer copy(buffer);
    EXPECT_TRUE(copy == buffer);
    copy = buffer;
    copy += buffer;
    EXPECT_EQ(copy.ReadWrite(copy, buffer, 5), 0U);
    EXPECT_EQ(copy.bytes(), nullptr);
    EXPECT_EQ(count.made(), 0U);
}

TEST(BufferTest, WithoutABlockEveryIndexGivesOneSpareByte) {
    Buffer buffer(0, 0);
    buffer[0] = 's';
    EXPECT_EQ(&buffer[0], &buffer[allBits]);
    EXPECT_EQ(buffer[7], 's');
}

TEST(BufferTest, WithoutCapacityButWithIncrementItGrows) {
    Buffer buffer(0, 8);
    EXPECT_EQ(write(buffer, "abc"), 3U);
    EXPECT_EQ(buffer.MaxSize(), 32U);  // 8 * (3 % 8 + 1)
    EXPECT_EQ(written(buffer), "abc");
}

TEST(BufferTest, DestructorReleasesTheBlockThroughTheBase) {
    const AllocationCount count;
    const Protectable* const base = new Buffer(10, 4);
    delete base;
    EXPECT_EQ(count.made(), 2U);
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferTest, LastHandleDeletesIt) {
    const AllocationCount count;
    {
        const ProtectionElement first(new Buffer(10, 4));
        const ProtectionElement second(first);
        EXPECT_EQ(second.get()->referenceCount(), 2U);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferTest, CopyIsUnreadFromTheStart) {
    Buffer buffer(10, 4);
    write(buffer, "abcdef");
    read(buffer, 3);
    Buffer copy(buffer);
    EXPECT_EQ(copy.MaxSize(), 10U);
    EXPECT_EQ(copy.growthIncrement(), 4U);
    EXPECT_EQ(copy.Size(), 6U);
    EXPECT_EQ(copy.readPosition(), 0U);
    EXPECT_NE(copy.bytes(), buffer.bytes());
    EXPECT_EQ(read(copy, 10), "abcdef");
    EXPECT_EQ(buffer.readPosition(), 3U);
}

TEST(BufferTest, CopyAndAssignmentLeaveReferenceCountsAlone) {
    auto* const shared = new Buffer(10, 4);
    const ProtectionElement handle(shared);
    const Buffer copy(*shared);
    EXPECT_EQ(copy.referenceCount(), 0U);
    Buffer assigned(1, 1);
    assigned = *shared;
    EXPECT_EQ(assigned.referenceCount(), 0U);
    *shared = copy;
    EXPECT_EQ(shared->referenceCount(), 1U);
}

TEST(BufferTest, AssignmentTakesEverythingButTheReadPosition) {
    Buffer from(10, 4);
    write(from, "abcdef");
    read(from, 3);
    Buffer to(100, 0);
    write(to, "something else");
    read(to, 5);
    EXPECT_EQ(&(to = from), &to);
    EXPECT_EQ(to.MaxSize(), 10U);
    EXPECT_EQ(to.growthIncrement(), 4U);
    EXPECT_EQ(to.readPosition(), 0U);
    EXPECT_EQ(written(to), "abcdef");
    EXPECT_EQ(from.readPosition(), 3U);
}

TEST(BufferTest, AssignmentReleasesTheOldBlockFirst) {
    const Buffer from(10, 4);
    Buffer to(20, 0);
    const unsigned char* const old = to.bytes();
    const AllocationCount count;
    const FailingNew first(1);
    EXPECT_THROW(to = from, std::bad_alloc);
    EXPECT_TRUE(count.hasReleased(old));
    EXPECT_EQ(to.bytes(), nullptr);
}

TEST(BufferTest, AssigningABufferWithoutCapacityLeavesNoBlock) {
    const AllocationCount count;
    Buffer to(20, 3);
    to = Buffer(0, 5);
    EXPECT_EQ(to.bytes(), nullptr);
    EXPECT_EQ(to.MaxSize(), 0U);
    EXPECT_EQ(to.growthIncrement(), 5U);
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferTest, SelfAssignmentKeepsTheCountsAndLosesTheBytes) {
    const AllocationCount count;
    {
        Buffer buffer(10, 4);
        write(buffer, "abcdef");
        read(buffer, 2);
        const Buffer& itself = buffer;
        buffer = itself;
        EXPECT_EQ(buffer.MaxSize(), 10U);
        EXPECT_EQ(buffer.growthIncrement(), 4U);
        EXPECT_EQ(buffer.readPosition(), 0U);
        EXPECT_EQ(written(buffer), std::string(6, '\0'));
        EXPECT_EQ(write(buffer, "wxyz"), 4U);
        EXPECT_EQ(written(buffer).substr(6), "wxyz");
        EXPECT_EQ(count.live(), 1);
    }
    Buffer none(0, 0);
    const Buffer& itself = none;
    none = itself;
    EXPECT_EQ(none.bytes(), nullptr);
    EXPECT_EQ(count.live(), 0);
}

// --- comparison and indexing ---

TEST(BufferTest, EqualBytesAreEqualWhateverElseDiffers) {
    Buffer a(10, 4);
    Buffer b(100, 0);
    write(a, "abc");
    write(b, "abc");
    read(b, 2);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(b == a);
    EXPECT_TRUE(a == a);
}

TEST(BufferTest, DifferentSizesOrBytesAreUnequal) {
    TextBuffer abc("abc");
    TextBuffer abd("abd");
    TextBuffer bbc("bbc");
    TextBuffer ab("ab");
    TextBuffer x("x");
    TextBuffer y("y");
    TextBuffer empty("");
    EXPECT_FALSE(x == y);
    EXPECT_FALSE(abc == abd);
    EXPECT_FALSE(abc == bbc);
    EXPECT_FALSE(abc == ab);
    EXPECT_FALSE(ab == abc);
    EXPECT_FALSE(empty == ab);
    EXPECT_FALSE(ab == empty);
}

TEST(BufferTest, BytesBehindTheWrittenOnesAreNotCompared) {
    TextBuffer a("abc");
    TextBuffer b("abd");
    a.Unwrite(1);
    b.Unwrite(1);
    EXPECT_TRUE(a == b);
}

TEST(BufferTest, ANulByteDoesNotEndTheComparison) {
    TextBuffer a(std::string("a\0b", 3));
    TextBuffer b(std::string("a\0c", 3));
    EXPECT_FALSE(a == b);
}

// Says that it holds two bytes.
class SizedTwo : public TextBuffer {
  public:
    using TextBuffer::TextBuffer;
    unsigned Size() override { return 2; }
};

TEST(BufferTest, ComparisonAsksTheVirtualSizes) {
    SizedTwo abx("abx");
    SizedTwo aby("aby");
    TextBuffer ab("ab");
    TextBuffer abz("abz");
    EXPECT_TRUE(abx == aby);
    EXPECT_TRUE(abx == ab);
    EXPECT_TRUE(ab == abx);
    EXPECT_FALSE(abx == abz);
    EXPECT_FALSE(abz == abx);
}

TEST(BufferTest, AnIndexReachesEveryByteOfTheBlock) {
    Buffer buffer(3, 0);
    buffer[0] = 'a';
    buffer[1] = 'b';
    buffer[2] = 'c';
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(&buffer[0], buffer.bytes());
    EXPECT_EQ(&buffer[2], buffer.bytes() + 2);
    buffer.SetWriteCount(3);
    EXPECT_EQ(written(buffer), "abc");
}

TEST(BufferTest, EveryIndexFromTheCapacityOnGivesTheSpareByte) {
    TextBuffer buffer("abc");
    EXPECT_EQ(&buffer[3], buffer.bytes() + 3);
    EXPECT_EQ(&buffer[103], &buffer[3]);
    EXPECT_EQ(&buffer[allBits], &buffer[3]);
    buffer[5] = 's';
    EXPECT_EQ(written(buffer), "abc");
    EXPECT_EQ(buffer[3], 's');
}

TEST(BufferTest, QueueOperationsNeverWriteTheSpareByte) {
    Buffer buffer(5, 0);
    buffer[5] = 's';
    unsigned char byte = 'b';
    write(buffer, "12345678");
    buffer.Clear();
    buffer.OneLocationWrite(&byte, 8);
    buffer.Clear();
    TextBuffer other("12345678");
    buffer.ReadWrite(buffer, other, 8);
    EXPECT_EQ(buffer.Size(), 5U);
    EXPECT_EQ(buffer[5], 's');
}

// --- reading and writing ---

TEST(BufferTest, ReadTakesWhatThereIs) {
    TextBuffer buffer("0123456789");
    EXPECT_EQ(read(buffer, 3), "012");
    EXPECT_EQ(buffer.readPosition(), 3U);
    EXPECT_EQ(buffer.unread(), 7U);
    EXPECT_EQ(read(buffer, 0), "");
    EXPECT_EQ(read(buffer, 100), "3456789");
    EXPECT_EQ(read(buffer, 100), "");
    EXPECT_EQ(buffer.Size(), 10U);
    unsigned char byte = 0;
    EXPECT_EQ(buffer.Read(&byte, allBits), 0U);
}

TEST(BufferTest, UnreadGivesTheLastBytesBack) {
    TextBuffer buffer("0123456789");
    read(buffer, 3);
    buffer.Unread(1);
    EXPECT_EQ(buffer.readPosition(), 2U);
    EXPECT_EQ(read(buffer, 1), "2");
    buffer.Unread(50);
    EXPECT_EQ(buffer.readPosition(), 0U);
    read(buffer, 3);
    buffer.Unread(3);
    EXPECT_EQ(buffer.readPosition(), 0U);
    read(buffer, 3);
    buffer.Unread(allBits);
    EXPECT_EQ(buffer.readPosition(), 0U);
}

TEST(BufferTest, AFixedBufferTakesOnlyWhatFits) {
    Buffer buffer(5, 0);
    EXPECT_EQ(write(buffer, "12345678"), 5U);
    EXPECT_EQ(write(buffer, "9"), 0U);
    EXPECT_EQ(buffer.MaxSize(), 5U);
    EXPECT_EQ(written(buffer), "12345");
    EXPECT_EQ(read(buffer, 3), "123");
    EXPECT_EQ(write(buffer, "9"), 0U) << "room in front must not be used again";
}

TEST(BufferTest, AWriteThatFitsExactlyDoesNotGrow) {
    const AllocationCount count;
    Buffer buffer(8, 4);
    EXPECT_EQ(write(buffer, "12345678"), 8U);
    EXPECT_EQ(write(buffer, ""), 0U);
    EXPECT_EQ(buffer.MaxSize(), 8U);
    EXPECT_EQ(count.made(), 1U);
}

struct Growth {
    const char* name;
    unsigned maxSize, increment, writeCount, count, newMaxSize, result;
};

void PrintTo(const Growth& row, std::ostream* out) { *out << row.name; }

class BufferGrowthTest : public testing::TestWithParam<Growth> {
  protected:
    Buffer filled() const {
        Buffer buffer(GetParam().maxSize, GetParam().increment);
        EXPECT_EQ(write(buffer, std::string(GetParam().writeCount, 'o')), GetParam().writeCount);
        return buffer;
    }
    void expectGrown(Buffer& buffer, unsigned result, char added) const {
        EXPECT_EQ(result, GetParam().result);
        EXPECT_EQ(buffer.MaxSize(), GetParam().newMaxSize);
        EXPECT_EQ(buffer.readPosition(), 0U);
        EXPECT_EQ(written(buffer),
                  std::string(GetParam().writeCount, 'o') + std::string(GetParam().result, added));
    }
};

TEST_P(BufferGrowthTest, WriteGrowsByTheRemainder) {
    Buffer buffer = filled();
    std::string text(GetParam().result, 'n');
    const unsigned result = buffer.Write(bytesOf(text), GetParam().count);
    expectGrown(buffer, result, 'n');
}

TEST_P(BufferGrowthTest, OneLocationWriteGrowsAlike) {
    Buffer buffer = filled();
    unsigned char byte = 'n';
    const unsigned result = buffer.OneLocationWrite(&byte, GetParam().count);
    expectGrown(buffer, result, 'n');
}

// For counts that a source can hold.
class BufferMoveGrowthTest : public BufferGrowthTest {};

TEST_P(BufferMoveGrowthTest, ReadWriteGrowsAlike) {
    Buffer buffer = filled();
    TextBuffer source(std::string(GetParam().count, 'n'));
    const unsigned result = source.ReadWrite(buffer, source, GetParam().count);
    expectGrown(buffer, result, 'n');
    EXPECT_EQ(source.readPosition(), result);
}

const Growth growths[] = {
    {"Example", 10, 4, 8, 20, 22, 14},
    {"OneTooMany", 10, 4, 10, 1, 18, 1},
    {"ExcessOfOneIncrement", 10, 4, 10, 4, 14, 4},
    {"ExcessOfTwoIncrementsGrowsByOne", 10, 4, 10, 8, 14, 4},
    {"IncrementOfOneGrowsByOne", 10, 1, 10, 100, 11, 1},
    {"LargeIncrement", 10, 100, 5, 8, 410, 8},
    {"Fixed", 10, 0, 5, 8, 10, 5},
    {"Fits", 10, 4, 5, 5, 10, 5},
};

const Growth wrappingGrowths[] = {
    {"CountThatWouldWrap", 10, 4, 8, allBits, 18, 10},
    {"CountThatWouldWrapInAFixedOne", 10, 0, 8, allBits, 10, 2},
};

std::string nameOf(const testing::TestParamInfo<Growth>& row) { return row.param.name; }

INSTANTIATE_TEST_SUITE_P(, BufferGrowthTest, testing::ValuesIn(growths), nameOf);
INSTANTIATE_TEST_SUITE_P(Wrapping, BufferGrowthTest, testing::ValuesIn(wrappingGrowths), nameOf);
INSTANTIATE_TEST_SUITE_P(, BufferMoveGrowthTest, testing::ValuesIn(growths), nameOf);

TEST(BufferTest, GrowthKeepsCountsAndReleasesTheOldBlock) {
    const AllocationCount count;
    {
        Buffer buffer(4, 4);
        write(buffer, "abcd");
        read(buffer, 3);
        const unsigned char* const old = buffer.bytes();
        EXPECT_EQ(write(buffer, "ef"), 2U);
        EXPECT_TRUE(count.hasReleased(old));
        EXPECT_EQ(kfl_test::allocations::lastSize, 17U);  // 4 + 4 * (2 % 4 + 1) and the spare
        EXPECT_EQ(buffer.readPosition(), 3U);
        EXPECT_EQ(read(buffer, 9), "def");
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(BufferTest, APieceOfItsOwnBlockCanBeWritten) {
    Buffer buffer(6, 6);
    write(buffer, "abcdef");
    EXPECT_EQ(buffer.Write(&buffer[1], 4), 4U);  // grows
    EXPECT_EQ(written(buffer), "abcdefbcde");
    buffer.Unwrite(8);
    EXPECT_EQ(buffer.Write(&buffer[0], 6), 6U);  // overlaps
    EXPECT_EQ(written(buffer), "ababcdef");
}

TEST(BufferTest, UnwriteDropsTheLastBytesAndTakesTheReadPositionAlong) {
    TextBuffer buffer("123456");
    read(buffer, 5);
    buffer.Unwrite(4);
    EXPECT_EQ(buffer.Size(), 2U);
    EXPECT_EQ(buffer.readPosition(), 2U);
    buffer.Unwrite(0);
    EXPECT_EQ(written(buffer), "12");
    buffer.Unwrite(3);
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(buffer.readPosition(), 0U);
    EXPECT_EQ(buffer.MaxSize(), 6U);
}

TEST(BufferTest, UnwriteLeavesAReadPositionInFrontAlone) {
    TextBuffer buffer("123456");
    read(buffer, 2);
    buffer.Unwrite(4);
    EXPECT_EQ(buffer.readPosition(), 2U);
    buffer.Unwrite(allBits);
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(buffer.readPosition(), 0U);
}

TEST(BufferTest, ResetRewindsReading) {
    TextBuffer buffer("abc");
    read(buffer, 2);
    buffer.Reset();
    EXPECT_EQ(buffer.Size(), 3U);
    EXPECT_EQ(read(buffer, 9), "abc");
}

TEST(BufferTest, ClearEmptiesAndKeepsTheBlock) {
    Buffer buffer(5, 0);
    write(buffer, "12345");
    read(buffer, 2);
    const unsigned char* const block = buffer.bytes();
    buffer.Clear();
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(buffer.readPosition(), 0U);
    EXPECT_EQ(buffer.MaxSize(), 5U);
    EXPECT_EQ(buffer.bytes(), block);
    EXPECT_EQ(write(buffer, "67890"), 5U);
}

TEST(BufferTest, SetWriteCountBeyondTheCapacityIsIgnored) {
    TextBuffer buffer("123456");
    buffer.Unwrite(2);
    buffer.SetWriteCount(7);
    EXPECT_EQ(buffer.Size(), 4U);
    buffer.SetWriteCount(allBits);
    EXPECT_EQ(buffer.Size(), 4U);
    buffer.SetWriteCount(6);
    EXPECT_EQ(written(buffer), "123456");
}

TEST(BufferTest, SetWriteCountLeavesTheReadPosition) {
    TextBuffer buffer("123456");
    read(buffer, 4);
    buffer.SetWriteCount(0);
    EXPECT_EQ(buffer.Size(), 0U);
    EXPECT_EQ(buffer.readPosition(), 4U);
}

TEST(BufferTest, NothingCanBeReadBehindTheWriteCount) {
    TextBuffer buffer("123456");
    TextBuffer other("");
    read(buffer, 4);
    buffer.SetWriteCount(1);
    unsigned char byte = 'b';
    EXPECT_EQ(buffer.unread(), 0U);
    EXPECT_EQ(read(buffer, 10), "");
    EXPECT_EQ(buffer.OneLocationRead(&byte, 10), 0U);
    EXPECT_EQ(byte, 'b');
    EXPECT_EQ(other.ReadWrite(other, buffer, 10), 0U);
    EXPECT_EQ(buffer.readPosition(), 4U);
    EXPECT_EQ(write(buffer, "abc"), 3U);
    EXPECT_EQ(read(buffer, 10), "");
    EXPECT_EQ(write(buffer, "d"), 1U);
    EXPECT_EQ(buffer.Size(), 5U);
    EXPECT_EQ(read(buffer, 10), "d");
    buffer.SetWriteCount(2);
    buffer.Unread(4);
    EXPECT_EQ(read(buffer, 10), "a");
}

TEST(BufferTest, UnwriteBehindSetWriteCountBringsTheReadPositionBack) {
    TextBuffer buffer("123456");
    read(buffer, 5);
    buffer.SetWriteCount(3);
    buffer.Unwrite(0);
    EXPECT_EQ(buffer.readPosition(), 3U);
}

// --- the one-location operations ---

TEST(BufferTest, OneLocationReadLeavesTheLastByteTaken) {
    TextBuffer buffer("abcdef");
    unsigned char port[2] = {'-', '-'};
    EXPECT_EQ(buffer.OneLocationRead(port, 4), 4U);
    EXPECT_EQ(port[0], 'd');
    EXPECT_EQ(port[1], '-');
    EXPECT_EQ(buffer.readPosition(), 4U);
    EXPECT_EQ(buffer.OneLocationRead(port, 100), 2U);
    EXPECT_EQ(port[0], 'f');
    EXPECT_EQ(buffer.OneLocationRead(port, 100), 0U);
    EXPECT_EQ(port[0], 'f');
}

TEST(BufferTest, OneLocationReadStoresEachByteInTurn) {
    // The location is the last byte that is read: it holds the one before it by then.
    TextBuffer buffer("abcde");
    EXPECT_EQ(buffer.OneLocationRead(&buffer[4], 5), 5U);
    EXPECT_EQ(written(buffer), "abcdd");
}

TEST(BufferTest, OneLocationWriteRepeatsTheByte) {
    Buffer buffer(6, 0);
    unsigned char port[2] = {'x', 'y'};
    EXPECT_EQ(buffer.OneLocationWrite(port, 4), 4U);
    EXPECT_EQ(buffer.OneLocationWrite(port + 1, 9), 2U);
    EXPECT_EQ(buffer.OneLocationWrite(port, 9), 0U);
    EXPECT_EQ(written(buffer), "xxxxyy");
}

TEST(BufferTest, OneLocationWriteTakesAByteOfItsOwnBlock) {
    Buffer buffer(3, 3);
    write(buffer, "abc");
    EXPECT_EQ(buffer.OneLocationWrite(&buffer[1], 3), 3U);  // grows
    EXPECT_EQ(written(buffer), "abcbbb");
}

struct Turns {
    unsigned count, moved;
};

// The loop counts in 16 signed bits.
const Turns turns[] = {{1, 1},         {100, 100}, {32767, 32767}, {32768, 0}, {32769, 0},
                       {40000, 0},     {65535, 0}, {65536, 0},     {65537, 1}, {70000, 4464},
                       {98303, 32767}, {98304, 0}, {131072, 0},    {131073, 1}};

TEST(BufferTest, OneLocationReadCountsItsLoopIn16SignedBits) {
    for (const auto& [count, moved] : turns) {
        Buffer buffer(count, 0);
        for (unsigned i = 0; i < count; ++i) buffer[i] = static_cast<unsigned char>(i * 7 + 1);
        buffer.SetWriteCount(count);
        unsigned char port = 0;
        EXPECT_EQ(buffer.OneLocationRead(&port, count), count);
        EXPECT_EQ(buffer.readPosition(), moved) << count;
        EXPECT_EQ(port, moved == 0 ? 0 : buffer[moved - 1]) << count;
    }
}

TEST(BufferTest, OneLocationWriteCountsItsLoopIn16SignedBits) {
    for (const auto& [count, moved] : turns) {
        Buffer buffer(count, 0);
        buffer[moved] = '|';
        unsigned char port = 'w';
        EXPECT_EQ(buffer.OneLocationWrite(&port, count), count);
        EXPECT_EQ(buffer.Size(), moved) << count;
        EXPECT_EQ(written(buffer), std::string(moved, 'w'));
        EXPECT_EQ(buffer[moved], '|') << count;
    }
}

TEST(BufferTest, OneLocationCountsAreThoseOfTheResultNotOfTheRequest) {
    TextBuffer buffer("abc");
    unsigned char port = 0;
    EXPECT_EQ(buffer.OneLocationRead(&port, 40000), 3U);
    EXPECT_EQ(port, 'c');
    Buffer fixed(3, 0);
    EXPECT_EQ(fixed.OneLocationWrite(&port, 40000), 3U);
    EXPECT_EQ(written(fixed), "ccc");
}

TEST(BufferTest, OneLocationWriteGrowsAlsoWhereItThenMovesNothing) {
    Buffer buffer(10, 39990);
    unsigned char port = 'w';
    EXPECT_EQ(buffer.OneLocationWrite(&port, 40000), 40000U);
    EXPECT_EQ(buffer.MaxSize(), 40000U);
    EXPECT_EQ(buffer.Size(), 0U);
}

// --- two buffers ---

TEST(BufferTest, ReadWriteMovesBetweenTheTwoOthers) {
    TextBuffer self("self");
    TextBuffer source("abcdef");
    Buffer dest(10, 0);
    read(source, 1);
    write(dest, "12");
    EXPECT_EQ(self.ReadWrite(dest, source, 3), 3U);
    EXPECT_EQ(written(dest), "12bcd");
    EXPECT_EQ(dest.readPosition(), 0U);
    EXPECT_EQ(source.readPosition(), 4U);
    EXPECT_EQ(written(source), "abcdef");
    EXPECT_EQ(self.ReadWrite(dest, source, 100), 2U);
    EXPECT_EQ(written(dest), "12bcdef");
    EXPECT_EQ(self.ReadWrite(dest, source, 100), 0U);
    EXPECT_EQ(written(self), "self");
    EXPECT_EQ(self.readPosition(), 0U);
}

TEST(BufferTest, WhatReadWriteCannotPlaceStaysUnread) {
    TextBuffer source("abcdef");
    Buffer dest(4, 0);
    EXPECT_EQ(dest.ReadWrite(dest, source, 6), 4U);
    EXPECT_EQ(written(dest), "abcd");
    EXPECT_EQ(read(source, 9), "ef");
}

TEST(BufferTest, ReadWriteGrowsForWhatThereIsToRead) {
    TextBuffer source("abc");
    Buffer dest(4, 4);
    EXPECT_EQ(dest.ReadWrite(dest, source, allBits), 3U);
    EXPECT_EQ(dest.MaxSize(), 4U);
}

TEST(BufferTest, ReadWriteOnOneBufferAppendsItsUnreadBytes) {
    Buffer buffer(6, 6);
    write(buffer, "abcdef");
    read(buffer, 2);
    EXPECT_EQ(buffer.ReadWrite(buffer, buffer, 3), 3U);  // grows
    EXPECT_EQ(written(buffer), "abcdefcde");
    EXPECT_EQ(buffer.readPosition(), 5U);
    EXPECT_EQ(read(buffer, 100), "fcde");
}

TEST(BufferTest, AppendingTakesAllBytesWhateverWasRead) {
    TextBuffer other("abc");
    read(other, 2);
    Buffer buffer(10, 0);
    write(buffer, "12");
    read(buffer, 1);
    EXPECT_EQ(&(buffer += other), &buffer);
    EXPECT_EQ(written(buffer), "12abc");
    EXPECT_EQ(buffer.readPosition(), 1U);
    EXPECT_EQ(other.readPosition(), 2U);
    EXPECT_EQ(buffer.MaxSize(), 10U);
}

TEST(BufferTest, AppendingEnlargesToExactlyWhatIsNeeded) {
    const TextBuffer other("abc");
    for (const unsigned increment : {0U, 1U, 100U}) {
        const AllocationCount count;
        Buffer buffer(4, increment);
        write(buffer, "1234");
        buffer += other;
        EXPECT_EQ(buffer.MaxSize(), 7U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 8U);
        EXPECT_EQ(buffer.growthIncrement(), increment);
        EXPECT_EQ(written(buffer), "1234abc");
        EXPECT_EQ(count.live(), 1);
    }
    Buffer none(0, 0);
    none += other;
    EXPECT_EQ(none.MaxSize(), 3U);
    EXPECT_EQ(written(none), "abc");
}

TEST(BufferTest, AppendingWhatFitsExactlyDoesNotEnlarge) {
    const TextBuffer other("abc");
    Buffer buffer(7, 5);
    write(buffer, "1234");
    const unsigned char* const block = buffer.bytes();
    buffer += other;
    EXPECT_EQ(buffer.bytes(), block);
    EXPECT_EQ(buffer.MaxSize(), 7U);
}

TEST(BufferTest, ABufferCanBeAppendedToItself) {
    Buffer buffer(4, 0);
    write(buffer, "abc");
    const Buffer& itself = buffer;
    buffer += itself;  // enlarges
    EXPECT_EQ(written(buffer), "abcabc");
    Buffer roomy(100, 0);
    write(roomy, "abc");
    const Buffer& roomyItself = roomy;
    roomy += roomyItself;
    EXPECT_EQ(written(roomy), "abcabc");
}

// --- what a subclass can change ---

// Its virtual operations do nothing, and do not say how large it is.
class Contrary : public Buffer {
  public:
    using Buffer::Buffer;

    void Reset() override { ++asked; }
    void Clear() override { ++asked; }
    unsigned Size() override {
        ++asked;
        return 1;
    }
    unsigned MaxSize() override {
        ++asked;
        return 1;
    }
    void SetWriteCount(unsigned) override { ++asked; }

    // What it really holds.
    std::string text() const {
        return {reinterpret_cast<const char*>(bytes()), readPosition() + unread()};
    }

    // How often any of them was called.
    unsigned asked = 0;
};

TEST(BufferTest, OnlyTheComparisonAsksTheVirtualOperations) {
    Contrary buffer(4, 4);
    EXPECT_EQ(write(buffer, "abcdef"), 6U);  // grows to 16
    EXPECT_EQ(buffer.bytes() + 16, &buffer[16]);
    EXPECT_EQ(&buffer[17], &buffer[16]);
    EXPECT_EQ(read(buffer, 4), "abcd");
    buffer.Unread(1);
    EXPECT_EQ(buffer.readPosition(), 3U);
    buffer.Unwrite(1);
    buffer[1] = 'B';
    EXPECT_EQ(buffer.text(), "aBcde");
    unsigned char port = 'p';
    EXPECT_EQ(buffer.OneLocationWrite(&port, 2), 2U);
    EXPECT_EQ(buffer.text(), "aBcdepp");
    EXPECT_EQ(buffer.OneLocationRead(&port, 2), 2U);
    EXPECT_EQ(port, 'e');

    Contrary dest(1, 2);
    EXPECT_EQ(dest.ReadWrite(dest, buffer, 100), 2U);  // grows to 5
    EXPECT_EQ(dest.text(), "pp");
    dest += buffer;
    EXPECT_EQ(dest.text(), "ppaBcdepp");
    Buffer copy(dest);
    EXPECT_EQ(written(copy), "ppaBcdepp");
    EXPECT_EQ(copy.MaxSize(), 9U);
    copy = buffer;
    EXPECT_EQ(written(copy), "aBcdepp");
    EXPECT_EQ(copy.MaxSize(), 16U);
    static_cast<Buffer&>(dest) = buffer;
    EXPECT_EQ(dest.text(), "aBcdepp");
    dest.Unwrite(100);
    EXPECT_EQ(dest.text(), "");

    EXPECT_EQ(buffer.asked, 0U);
    EXPECT_EQ(dest.asked, 0U);
}

}  // namespace
