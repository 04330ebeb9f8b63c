#include "kfl/streams.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "kfl/AString.h"
#include "tests/support/seed.h"

namespace {

using kfl::AString;
using kfl::AStringInputStream;
using kfl::AStringOutputStream;

// What a stream gives for one read of up to `n` bytes; nothing behind it may be written.
std::string readOf(DataInputStream& stream, unsigned int n) {
    std::vector<char> dst(300, '\x7E');
    const unsigned int k = stream.read(dst.data(), n);
    EXPECT_LE(k, n);
    for (std::size_t i = k; i < dst.size(); ++i) EXPECT_EQ(dst[i], '\x7E') << i;
    return {dst.data(), k};
}

// ---- the two interfaces

class NullSink : public DataOutputStream {
  public:
    unsigned int write(const char* /*src*/, unsigned int n) override {
        calls += n;
        return n;
    }
    unsigned int calls = 0;
};

TEST(DataOutputStreamTest, WriteCharWritesNothingUnlessOverridden) {
    NullSink sink;
    DataOutputStream& stream = sink;
    EXPECT_EQ(stream.writeChar('x'), 0U);
    EXPECT_EQ(sink.calls, 0U);
}

TEST(DataOutputStreamTest, IsDestroyedThroughItsBase) {
    struct Watched : NullSink {
        explicit Watched(bool& gone) : gone_(gone) {}
        ~Watched() override { gone_ = true; }
        bool& gone_;
    };
    bool gone = false;
    const DataOutputStream* const stream = new Watched(gone);
    delete stream;
    EXPECT_TRUE(gone);
}

TEST(DataInputStreamTest, IsDestroyedThroughItsBase) {
    struct Watched : DataInputStream {
        explicit Watched(bool& gone) : gone_(gone) {}
        ~Watched() override { gone_ = true; }
        unsigned int read(char* /*dst*/, unsigned int /*n*/) override { return 0; }
        void rewind() override {}
        bool& gone_;
    };
    bool gone = false;
    const DataInputStream* const stream = new Watched(gone);
    delete stream;
    EXPECT_TRUE(gone);
}

// ---- reading a string

TEST(AStringInputStreamTest, GivesTheStringPieceByPiece) {
    AString text("hello");
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 3), "hel");
    EXPECT_EQ(readOf(stream, 3), "lo");
    EXPECT_EQ(readOf(stream, 3), "");
    EXPECT_EQ(readOf(stream, 3), "");
}

TEST(AStringInputStreamTest, StartsAgainAfterRewind) {
    AString text("hello");
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 3), "hel");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 3), "hel");
    EXPECT_EQ(readOf(stream, 3), "lo");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 10), "hello");
}

TEST(AStringInputStreamTest, ReadsNothingWhenAskedForNothing) {
    AString text("hello");
    AStringInputStream stream(text);
    EXPECT_EQ(stream.read(nullptr, 0), 0U);
    EXPECT_EQ(readOf(stream, 5), "hello");
}

TEST(AStringInputStreamTest, AnEmptyStringHasNothing) {
    AString text("");
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 5), "");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 5), "");
}

TEST(AStringInputStreamTest, TheLargestRequestIsNoTrouble) {
    AString text("hello");
    AStringInputStream stream(text);
    char dst[5];
    EXPECT_EQ(stream.read(dst, 2), 2U);
    EXPECT_EQ(stream.read(dst, UINT_MAX), 3U);
    EXPECT_EQ(std::string(dst, 3), "llo");
}

TEST(AStringInputStreamTest, ReadsTheLengthNotTheVisibleText) {
    AString text("ab");
    text.append("cd", 4);
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 10), std::string("abcd\0\0", 6));
}

TEST(AStringInputStreamTest, SeesWhatIsAppendedLater) {
    AString text("ab");
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 9), "ab");
    text.append("cd");
    EXPECT_EQ(readOf(stream, 9), "cd");
}

TEST(AStringInputStreamTest, AStringThatBecameShorterHasNothingLeft) {
    AString text("hello");
    AStringInputStream stream(text);
    EXPECT_EQ(readOf(stream, 4), "hell");
    text.trimRight(3);
    EXPECT_EQ(readOf(stream, 9), "");
    text.append("y there");
    EXPECT_EQ(readOf(stream, 9), "there");
    text.clear();
    EXPECT_EQ(readOf(stream, 9), "");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 9), "");
}

// ---- writing to a string

TEST(AStringOutputStreamTest, ReturnsTheLengthOfTheString) {
    AString text("hello");
    AStringOutputStream stream(text);
    EXPECT_EQ(stream.write("ab", 2), 7U);
    EXPECT_STREQ(text.c_str(), "helloab");
    EXPECT_EQ(stream.write("cdef", 1), 8U);
    EXPECT_STREQ(text.c_str(), "helloabc");
    EXPECT_EQ(stream.writeChar('!'), 9U);
    EXPECT_STREQ(text.c_str(), "helloabc!");
}

TEST(AStringOutputStreamTest, WritesExactlyTheGivenNumber) {
    AString text("");
    AStringOutputStream stream(text);
    EXPECT_EQ(stream.write("ab", 5), 5U);
    EXPECT_EQ(std::string(text.c_str(), text.length()), std::string("ab\0\0\0", 5));
}

TEST(AStringOutputStreamTest, ANullTextChangesNothing) {
    AString text("ab");
    AStringOutputStream stream(text);
    EXPECT_EQ(stream.write(nullptr, 5), 2U);
    EXPECT_EQ(stream.write("cd", 0), 2U);
    EXPECT_STREQ(text.c_str(), "ab");
}

// A string that tells which of its operations was called.
class TellingString : public AString {
  public:
    TellingString() : AString("abc") {}
    using AString::append;
    int append(const char* text, unsigned int n) override {
        told += "text(" + std::string(text, n) + ") ";
        return AString::append(text, n);
    }
    int append(char c) override {
        told += std::string("char(") + c + ") ";
        return 1;
    }
    std::string told;
};

TEST(AStringOutputStreamTest, GoesThroughTheVirtualOperations) {
    TellingString text;
    AStringOutputStream stream(text);
    EXPECT_EQ(stream.write("de", 2), 5U);
    // This string drops single characters.
    EXPECT_EQ(stream.writeChar('f'), 5U);
    EXPECT_EQ(text.told, "text(de) char(f) ");
}

TEST(AStringOutputStreamTest, WhatWasWrittenCanBeRead) {
    AString text("");
    AStringOutputStream out(text);
    AStringInputStream in(text);
    kfl_test::Random random;
    std::string written;
    std::string read;
    for (int i = 0; i < 2000; ++i) {
        if (random.oneIn(3)) {
            const char c = static_cast<char>(1 + random.below(255));
            out.writeChar(c);
            written += c;
        } else {
            const std::string piece(random.below(20), static_cast<char>(1 + random.below(255)));
            EXPECT_EQ(out.write(piece.c_str(), static_cast<unsigned int>(piece.size())),
                      written.size() + piece.size());
            written += piece;
        }
        read += readOf(in, random.below(25));
    }
    while (read.size() < written.size()) {
        const std::string piece = readOf(in, 100);
        ASSERT_FALSE(piece.empty());
        read += piece;
    }
    EXPECT_EQ(read, written);
}

// ---- reading bytes

TEST(BufferInputStreamTest, GivesTheBytesPieceByPiece) {
    BufferInputStream stream("hello", 5);
    EXPECT_EQ(readOf(stream, 3), "hel");
    EXPECT_EQ(readOf(stream, 3), "lo");
    EXPECT_EQ(readOf(stream, 3), "");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 3), "hel");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 9), "hello");
}

TEST(BufferInputStreamTest, GivesNulBytesToo) {
    BufferInputStream stream("a\0b\0", 4);
    EXPECT_EQ(readOf(stream, 9), std::string("a\0b\0", 4));
}

TEST(BufferInputStreamTest, ReadsNoFurtherThanItsLength) {
    const std::vector<char> bytes = {'a', 'b', 'c'};
    BufferInputStream stream(bytes.data(), 3);
    char dst[3];
    EXPECT_EQ(stream.read(dst, UINT_MAX), 3U);
    EXPECT_EQ(std::string(dst, 3), "abc");
    EXPECT_EQ(stream.read(dst, UINT_MAX), 0U);
}

TEST(BufferInputStreamTest, NothingHasNothing) {
    BufferInputStream stream(nullptr, 0);
    EXPECT_EQ(readOf(stream, 5), "");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 5), "");
    EXPECT_EQ(stream.read(nullptr, 0), 0U);
}

TEST(BufferInputStreamTest, DoesNotCopyTheBytes) {
    char bytes[] = "abc";
    BufferInputStream stream(bytes, 3);
    EXPECT_EQ(readOf(stream, 1), "a");
    std::memcpy(bytes, "xyz", 3);
    EXPECT_EQ(readOf(stream, 9), "yz");
    stream.rewind();
    EXPECT_EQ(readOf(stream, 9), "xyz");
}

// ---- writing to an array

// An array whose unwritten places can be told.
struct Array {
    Array() { std::memset(bytes, '\x7E', sizeof bytes); }
    std::string front(std::size_t n) const { return {bytes, n}; }
    char bytes[40];
};

TEST(BufferOutputStreamTest, StartsWithAnEmptyText) {
    Array array;
    const BufferOutputStream stream(array.bytes);
    EXPECT_EQ(array.front(2), std::string("\0\x7E", 2));
    EXPECT_EQ(stream.length(), 0U);
}

TEST(BufferOutputStreamTest, WritesOneBehindTheOther) {
    Array array;
    BufferOutputStream stream(array.bytes);
    EXPECT_EQ(stream.write("ab", 2), 2U);
    EXPECT_EQ(stream.write("ab", 2), 2U);
    EXPECT_EQ(array.front(6), std::string("abab\0\x7E", 6));
    EXPECT_EQ(stream.length(), 4U);
}

TEST(BufferOutputStreamTest, WritesTheFrontOfALongerText) {
    Array array;
    BufferOutputStream stream(array.bytes);
    EXPECT_EQ(stream.write("abcdef", 4), 4U);
    EXPECT_EQ(array.front(6), std::string("abcd\0\x7E", 6));
}

TEST(BufferOutputStreamTest, TheLengthGrowsByTheNumberAlsoForAShorterText) {
    Array array;
    BufferOutputStream stream(array.bytes);
    EXPECT_EQ(stream.write("a", 3), 3U);
    EXPECT_EQ(stream.length(), 3U);
    // "a" and its NUL, an untouched place, and the NUL at the length.
    EXPECT_EQ(array.front(5), std::string("a\0\x7E\0\x7E", 5));
}

TEST(BufferOutputStreamTest, TheNextTextGoesBehindTheFirstNul) {
    Array array;
    BufferOutputStream stream(array.bytes);
    stream.write("a", 3);
    EXPECT_EQ(stream.write("bcdef", 5), 5U);
    EXPECT_EQ(stream.length(), 8U);
    EXPECT_EQ(array.front(10), std::string("abcdef\0\x7E\0\x7E", 10));
}

TEST(BufferOutputStreamTest, WritesBehindTheFirstNulThatTheCallerPut) {
    Array array;
    BufferOutputStream stream(array.bytes);
    stream.write("abc", 3);
    array.bytes[1] = '\0';
    EXPECT_EQ(stream.write("xy", 2), 2U);
    EXPECT_EQ(stream.length(), 5U);
    EXPECT_EQ(array.front(7), std::string("axy\0\x7E\0\x7E", 7));
}

TEST(BufferOutputStreamTest, WritingNothingChangesNothing) {
    Array array;
    BufferOutputStream stream(array.bytes);
    stream.write("ab", 2);
    EXPECT_EQ(stream.write("cd", 0), 0U);
    EXPECT_EQ(stream.write(nullptr, 2), 0U);
    EXPECT_EQ(stream.length(), 2U);
    EXPECT_EQ(array.front(4), std::string("ab\0\x7E", 4));
}

TEST(BufferOutputStreamTest, MayAppendItsOwnText) {
    Array array;
    BufferOutputStream stream(array.bytes);
    stream.write("abc", 3);
    EXPECT_EQ(stream.write(array.bytes + 1, 2), 2U);
    EXPECT_EQ(array.front(7), std::string("abcbc\0\x7E", 7));
}

TEST(BufferOutputStreamTest, ReadsATextNoFurtherThanTheNumber) {
    const std::vector<char> open = {'a', 'b'};
    Array array;
    BufferOutputStream stream(array.bytes);
    EXPECT_EQ(stream.write(open.data(), 2), 2U);
    EXPECT_STREQ(array.bytes, "ab");
}

TEST(BufferOutputStreamTest, DropsSingleCharacters) {
    Array array;
    BufferOutputStream stream(array.bytes);
    stream.write("ab", 2);
    EXPECT_EQ(stream.writeChar('x'), 0U);
    EXPECT_EQ(stream.length(), 2U);
    EXPECT_EQ(array.front(4), std::string("ab\0\x7E", 4));
}

}  // namespace
