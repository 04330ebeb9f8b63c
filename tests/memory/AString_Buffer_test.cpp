// The operations of AString that take a Buffer.
#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>

#include "kfl/AString.h"
#include "tests/memory/buffer_text.h"
#include "tests/support/counted_new.h"
#include "tests/support/seed.h"

namespace {

using kfl::AString;
using kfl_test::AllocationCount;
using kfl_test::FailingNew;
using kfl_test::read;
using kfl_test::TextBuffer;
using kfl_test::write;

// All characters up to the length, with the terminator, which must be there.
std::string wholeText(const AString& string) {
    EXPECT_EQ(string.c_str()[string.length()], '\0');
    return {string.c_str(), string.length()};
}

// A buffer whose virtual Size differs from what it holds.
class Sized : public TextBuffer {
  public:
    Sized(const std::string& text, unsigned size) : TextBuffer(text), size_(size) {}
    unsigned Size() override { return size_; }

  private:
    unsigned size_;
};

TEST(AStringBufferTest, IsBuiltFromAFreshBuffer) {
    TextBuffer buffer("abc");
    const AString string(&buffer);
    EXPECT_STREQ(string.c_str(), "abc");
    EXPECT_EQ(string.length(), 3U);
    EXPECT_EQ(string.capacity(), 3U);
    EXPECT_EQ(string.increment(), 100U);
    EXPECT_EQ(string.referenceCount(), 0U);
    EXPECT_EQ(buffer.readPosition(), 3U);
    EXPECT_EQ(buffer.Size(), 3U);
}

TEST(AStringBufferTest, TakesOneAllocationOfTheBuffersSizeAndATerminator) {
    TextBuffer buffer("abc");
    const AllocationCount count;
    {
        const AString string(&buffer);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 4U);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(AStringBufferTest, ASecondStringHasTheLengthAndNoBytes) {
    TextBuffer buffer("abc");
    const AString first(&buffer);
    const AString second(&buffer);
    EXPECT_EQ(second.length(), 3U);
    EXPECT_EQ(second.capacity(), 3U);
    EXPECT_EQ(wholeText(second), std::string(3, '\0'));
}

TEST(AStringBufferTest, APartlyReadBufferGivesItsUnreadBytesInItsWholeSize) {
    TextBuffer buffer("abcdef");
    read(buffer, 4);
    const AString string(&buffer);
    EXPECT_EQ(string.length(), 6U);
    EXPECT_STREQ(string.c_str(), "ef");
    EXPECT_EQ(wholeText(string), std::string("ef\0\0\0\0", 6));
    EXPECT_EQ(buffer.readPosition(), 6U);
}

TEST(AStringBufferTest, IsBuiltEmptyFromAnEmptyBuffer) {
    Buffer none(0, 0);
    const AString string(&none);
    EXPECT_STREQ(string.c_str(), "");
    EXPECT_EQ(string.length(), 0U);
    EXPECT_EQ(string.capacity(), 0U);
}

TEST(AStringBufferTest, KeepsEveryByte) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    TextBuffer buffer(all);
    EXPECT_EQ(wholeText(AString(&buffer)), all);
    buffer.Reset();
    AString string("");
    string.append(&buffer);
    EXPECT_EQ(wholeText(string), all);
}

TEST(AStringBufferTest, AsksForTheVirtualSize) {
    Sized small("abcdef", 2);
    const AString string(&small);
    EXPECT_EQ(wholeText(string), "ab");
    EXPECT_EQ(small.readPosition(), 2U);
    AString appended("x");
    appended.append(&small);
    EXPECT_EQ(wholeText(appended), "xcd");
    Sized large("abc", 5);
    EXPECT_EQ(wholeText(AString(&large)), std::string("abc\0\0", 5));
}

TEST(AStringBufferTest, AReadPositionBehindTheWriteCountGivesNoBytes) {
    TextBuffer buffer("abcdef");
    read(buffer, 5);
    buffer.SetWriteCount(2);
    const AString string(&buffer);
    EXPECT_EQ(wholeText(string), std::string(2, '\0'));
    EXPECT_EQ(buffer.readPosition(), 5U);
}

TEST(AStringBufferTest, AppendsWhatABufferHolds) {
    TextBuffer buffer("abc");
    AString string("12");
    EXPECT_EQ(string.append(&buffer), 1);
    EXPECT_STREQ(string.c_str(), "12abc");
    EXPECT_EQ(string.length(), 5U);
    EXPECT_EQ(buffer.readPosition(), 3U);
    EXPECT_EQ(string.append(&buffer), 1);
    EXPECT_EQ(wholeText(string), std::string("12abc\0\0\0", 8));
}

TEST(AStringBufferTest, AppendsAPartlyReadBufferInItsWholeSize) {
    TextBuffer buffer("abcdef");
    read(buffer, 4);
    AString string("12");
    EXPECT_EQ(string.append(&buffer), 1);
    EXPECT_EQ(wholeText(string), std::string("12ef\0\0\0\0", 8));
}

TEST(AStringBufferTest, AppendingNullChangesNothing) {
    AString string("12");
    const AllocationCount count;
    EXPECT_EQ(string.append(static_cast<Buffer*>(nullptr)), 1);
    EXPECT_EQ(wholeText(string), "12");
    EXPECT_EQ(string.capacity(), 2U);
    EXPECT_EQ(count.made(), 0U);
}

TEST(AStringBufferTest, GrowsAsExpandToDoes) {
    for (const unsigned capacity : {0U, 3U, 4U, 5U, 6U, 50U}) {
        for (const unsigned increment : {0U, 1U, 3U, 100U}) {
            for (const char* const text : {"", "x", "abc", "0123456789"}) {
                AString expected(capacity, increment);
                AString string(capacity, increment);
                expected.append("12");
                string.append("12");
                TextBuffer buffer(text);
                expected.expandTo(2 + buffer.Size());
                string.append(&buffer);
                EXPECT_EQ(string.capacity(), expected.capacity());
                EXPECT_EQ(wholeText(string), std::string("12") + text);
            }
        }
    }
}

TEST(AStringBufferTest, AnEmptyBufferStillGrowsAFullString) {
    AString string("abc");
    Buffer none(0, 0);
    EXPECT_EQ(string.append(&none), 1);
    EXPECT_EQ(string.capacity(), 103U);
    EXPECT_EQ(wholeText(string), "abc");
}

TEST(AStringBufferTest, ClearsWhatStoodBehindTheLength) {
    AString string("abcdef");
    string.trimRight(4);
    TextBuffer buffer("xyz");
    read(buffer, 2);
    string.append(&buffer);
    EXPECT_EQ(wholeText(string), std::string("abz\0\0", 5));
}

TEST(AStringBufferTest, AFailedAllocationLeavesStringAndBufferAsTheyWere) {
    const AllocationCount count;
    {
        TextBuffer buffer("abc");
        AString string("12");
        {
            const FailingNew first(1);
            EXPECT_THROW(const AString built(&buffer), std::bad_alloc);
        }
        EXPECT_EQ(buffer.readPosition(), 0U);
        {
            const FailingNew first(1);
            EXPECT_THROW(string.append(&buffer), std::bad_alloc);
        }
        EXPECT_EQ(buffer.readPosition(), 0U);
        EXPECT_EQ(wholeText(string), "12");
        EXPECT_EQ(string.capacity(), 2U);
        string.append(&buffer);
        EXPECT_EQ(wholeText(string), "12abc");
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(AStringBufferTest, ASizePast32BitsFailsAsAnAllocationDoes) {
    Sized buffer("abc", UINT_MAX);
    EXPECT_THROW(const AString built(&buffer), std::bad_alloc);
    AString string("12");
    EXPECT_THROW(string.append(&buffer), std::bad_alloc);
    AString empty("");
    EXPECT_THROW(empty.append(&buffer), std::bad_alloc);
    EXPECT_EQ(wholeText(string), "12");
    EXPECT_EQ(buffer.readPosition(), 0U);
}

TEST(AStringBufferTest, FollowsAModelOfTextAndQueue) {
    kfl_test::Random random;
    for (int round = 0; round < 40; ++round) {
        AString string(random.below(20), random.below(30));
        Buffer buffer(random.below(10), 1 + random.below(9));
        std::string text;
        std::string queue;
        std::size_t position = 0;
        for (int i = 0; i < 12; ++i) {
            const std::string more(random.below(9), static_cast<char>('a' + i));
            queue += more.substr(0, write(buffer, more));
            const unsigned taken = random.below(4);
            position += read(buffer, taken).size();
            if (random.oneIn(2)) continue;
            const std::string unread = queue.substr(position);
            text += unread + std::string(queue.size() - unread.size(), '\0');
            position = queue.size();
            string.append(&buffer);
            ASSERT_EQ(wholeText(string), text) << "round " << round << ", step " << i;
            ASSERT_EQ(buffer.readPosition(), position);
        }
    }
}

}  // namespace
