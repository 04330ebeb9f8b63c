// Counted objects, strings, formats, streams and lists of texts.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <new>
#include <string>

#include "tests/old_host/old_kfl.h"

namespace {

// The host's own counted class: destroyed by the library, through its table.
class Shared : public Protectable {
  public:
    explicit Shared(int& destroyed) : destroyed_(destroyed) {}
    ~Shared() override { ++destroyed_; }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

  private:
    int& destroyed_;
};

TEST(OldHost, CountedObjectsDieWithTheirLastHandle) {
    int destroyed = 0;
    auto* const first = new Shared(destroyed);
    EXPECT_EQ(first->count, 0U);
    {
        ProtectionElement handle(first);
        ProtectionElement copy(handle);
        EXPECT_EQ(first->count, 2U);
        EXPECT_EQ(copy.object, first);
        copy = new Shared(destroyed);
        EXPECT_EQ(first->count, 1U);
        handle = copy;
        EXPECT_EQ(destroyed, 1);
        ProtectionElement empty;
        EXPECT_EQ(empty.object, nullptr);
        empty = handle;
        EXPECT_EQ(empty.object->count, 3U);
    }
    EXPECT_EQ(destroyed, 2);
}

// A string of the host's own: the library must append through its overrides.
class Shouting : public kfl::AString {
  public:
    explicit Shouting(int& destroyed) : AString(4U, 10U), destroyed_(destroyed) {}
    ~Shouting() override { ++destroyed_; }
    Shouting(const Shouting&) = delete;
    Shouting& operator=(const Shouting&) = delete;

    using AString::append;
    int append(const char* characters, unsigned int n) override {
        AString::append(characters, n);
        return AString::append("!");
    }
    int append(char c) override { return AString::append(static_cast<char>(c - 'a' + 'A')); }

  private:
    int& destroyed_;
};

TEST(OldHost, StringsFillTheHostsStorage) {
    alignas(kfl::AString) unsigned char room[bits(28, 48) + 4];
    std::memset(room, 0xA5, sizeof room);
    auto* const text = new (room) kfl::AString("device", 7);
    EXPECT_STREQ(text->data, "device");
    EXPECT_EQ(text->length, 6U);
    EXPECT_EQ(text->capacity, 6U);
    EXPECT_EQ(text->increment, 7U);
    EXPECT_EQ(text->count, 0U);
    EXPECT_EQ(text->append(static_cast<unsigned char>('s')), 1);
    EXPECT_EQ(text->capacity, 13U);
    const kfl::AString copy(*text);
    EXPECT_TRUE(copy == *text);
    EXPECT_EQ(text->append(copy), 1);
    EXPECT_STREQ(text->data, "devicesdevices");
    EXPECT_EQ(text->erase(7, -1) + text->insert(0, "all ") + text->trimRight(1), 3);
    EXPECT_STREQ(text->data, "all device");
    EXPECT_EQ(text->replace('e', 'E') + text->expandTo(50), 2);
    EXPECT_EQ(text->capacity, 50U);
    EXPECT_EQ(text->find("vi", 0), 6);
    EXPECT_EQ(text->findFirstOf("E", 6), 3);
    EXPECT_EQ(text->findFirstNotOf("al ", 0), 4);
    EXPECT_EQ(text->findLastOf("E"), 9);
    EXPECT_EQ(text->findLastNotOf("E"), 8);
    text->~AString();
    for (std::size_t i = bits(28, 48); i < sizeof room; ++i) EXPECT_EQ(room[i], 0xA5);
}

TEST(OldHost, TheLibraryAppendsThroughTheHostsString) {
    int destroyed = 0;
    auto* const text = new Shouting(destroyed);
    kfl::AStringOutputStream stream(*text);
    EXPECT_EQ(stream.string, text);
    EXPECT_EQ(stream.write("stop", 4), 5U);
    EXPECT_EQ(stream.writeChar('x'), 6U);
    EXPECT_STREQ(text->data, "stop!X");
    // Deleted as what the second base makes of it.
    delete static_cast<kfl::SObject*>(text);
    EXPECT_EQ(destroyed, 1);
}

TEST(OldHost, LinesComeOneByOne) {
    kfl::AString text("one\r\ntwo");
    kfl::AStringIterator walk(text, 20);
    EXPECT_EQ(walk.string, &text);
    EXPECT_STREQ(walk.Next(), "one\n");
    EXPECT_EQ(walk.position, text.data + 5);
    EXPECT_STREQ(walk.Next(), "two");
    EXPECT_STREQ(walk.line, "two");
    walk.Reset();
    EXPECT_EQ(walk.position, text.data);
}

// The kind of a va_list differs between machines; hosts hand over what theirs becomes as an
// argument.
int formatted(char* out, unsigned int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = BoundedStringBase::makeString(out, size, format, arguments);
    va_end(arguments);
    return length;
}

TEST(OldHost, TextsAreFormatted) {
    char text[20];
    EXPECT_EQ(formatted(text, 12, "%-3d|%s|%lx", 7, "ab", 0xBEEFL), 11);
    EXPECT_STREQ(text, "7  |ab|beef");
    *BoundedStringBase::number(text, text + 19, -42, 10, 6, -1, 1 | 2) = '\0';
    EXPECT_STREQ(text, "-00042");
    const char* digits = "123x";
    EXPECT_EQ(BoundedStringBase::skip_atoi(&digits), 123);
    EXPECT_STREQ(digits, "x");
    const BoundedStringBase object;
    EXPECT_EQ(sizeof object, 1U);

    const StringFormat format("%s-%d", "kfl", 1);
    EXPECT_STREQ(format.getString(), "kfl-1");
    const kfl::AString kept(format);
    EXPECT_EQ(kept.capacity, 5U);
    EXPECT_STREQ(kept.data, "kfl-1");
}

// Streams of the host's own, used as the library's are.
class Letters : public DataInputStream {
  public:
    unsigned int read(char* to, unsigned int n) override {
        for (unsigned int i = 0; i < n; ++i) to[i] = static_cast<char>('a' + next_++ % 26);
        return n;
    }
    void rewind() override { next_ = 0; }

  private:
    unsigned int next_ = 0;
};

class Counter : public DataOutputStream {
  public:
    unsigned int write(const char* /*from*/, unsigned int n) override { return total_ += n; }

  private:
    unsigned int total_ = 0;
};

std::string firstTwice(DataInputStream& stream) {
    char text[5] = {};
    EXPECT_EQ(stream.read(text, 2), 2U);
    stream.rewind();
    EXPECT_EQ(stream.read(text + 2, 2), 2U);
    return text;
}

TEST(OldHost, StreamsAreReadThroughTheirBase) {
    kfl::AString text("xyz");
    kfl::AStringInputStream fromString(text);
    BufferInputStream fromBytes("123", 3);
    Letters letters;
    EXPECT_EQ(firstTwice(fromString), "xyxy");
    EXPECT_EQ(fromString.position, 2U);
    EXPECT_EQ(firstTwice(fromBytes), "1212");
    EXPECT_EQ(fromBytes.remaining, 1U);
    EXPECT_EQ(fromBytes.current, fromBytes.start + 2);
    EXPECT_EQ(fromBytes.total, 3U);
    EXPECT_EQ(firstTwice(letters), "abab");
}

TEST(OldHost, StreamsAreWrittenThroughTheirBase) {
    char array[10];
    BufferOutputStream toBytes(array);
    Counter counter;
    for (DataOutputStream* const stream :
         {static_cast<DataOutputStream*>(&toBytes), static_cast<DataOutputStream*>(&counter)}) {
        stream->write("ab", 2);
        // Not overridden by either: the library's own, which writes nothing.
        EXPECT_EQ(stream->writeChar('c'), 0U);
    }
    EXPECT_STREQ(array, "ab");
    EXPECT_EQ(toBytes.array, array);
    EXPECT_EQ(toBytes.length, 2U);
    EXPECT_EQ(counter.write("", 0), 2U);
}

TEST(OldHost, ListsKeepTheHostsTexts) {
    char up[] = "up";
    char down[] = "down";
    StringsContainer states(2);
    EXPECT_EQ(states.addString(up), 0);
    EXPECT_EQ(states.addString(down), 0);
    EXPECT_EQ(states.addString(up), 1);
    EXPECT_EQ(states.slots[1], down);
    EXPECT_EQ(states.count, 2U);
    EXPECT_EQ(states.capacity, 2U);
    EXPECT_EQ(states.getString(1), up);
    EXPECT_EQ(states.getNumberOfStrings(), 2U);
    EXPECT_EQ(states.getLengthOfStrings(), 6U);
    StringsContainer other(1);
    other.addString(up);
    EXPECT_TRUE(other.areAllStringsPresentInOtherContainer(&states));
    EXPECT_FALSE(states.isItIdentical(&other));
    states.clearFromString(2);
    EXPECT_EQ(states.count, 1U);
    states.clear();
    EXPECT_EQ(states.count, 0U);
}

}  // namespace
