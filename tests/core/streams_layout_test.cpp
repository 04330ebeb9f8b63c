// The streams as an already compiled host knows them.
#include "kfl/streams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kfl/AString.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t readSlot = 2;
constexpr std::size_t rewindSlot = 3;
constexpr std::size_t writeSlot = 2;
constexpr std::size_t writeCharSlot = 3;

unsigned int readThrough(void* stream, char* dst, unsigned int n) {
    return callSlot<unsigned int, char*, unsigned int>(readSlot, stream, dst, n);
}

unsigned int writeThrough(void* stream, const char* src, unsigned int n) {
    return callSlot<unsigned int, const char*, unsigned int>(writeSlot, stream, src, n);
}

TEST(StreamsLayoutTest, Sizes) {
    EXPECT_EQ(sizeof(DataInputStream), bits(4, 8));
    EXPECT_EQ(sizeof(DataOutputStream), bits(4, 8));
    EXPECT_EQ(sizeof(kfl::AStringInputStream), bits(12, 24));
    EXPECT_EQ(sizeof(kfl::AStringOutputStream), bits(8, 16));
    EXPECT_EQ(sizeof(BufferInputStream), bits(20, 40));
    EXPECT_EQ(sizeof(BufferOutputStream), bits(12, 24));
}

// Every table: two destructors and two operations, and nothing behind them.
TEST(StreamsLayoutTest, EveryTableHasFourSlots) {
    for (const char* const table :
         {"_ZTV15DataInputStream", "_ZTV16DataOutputStream", "_ZTVN3kfl18AStringInputStreamE",
          "_ZTVN3kfl19AStringOutputStreamE", "_ZTV17BufferInputStream",
          "_ZTV18BufferOutputStream"}) {
        expectTableWords(table, 6);
    }
}

// A table as it stands in the library; the functions begin behind two words. Those of abstract
// classes need no destructors, and some compilers leave them out there.
void* const* functionsOf(const char* table) {
    return static_cast<void* const*>(exported(table)) + 2;
}

TEST(StreamsLayoutTest, AbstractInputHasTwoPureSlots) {
    void* const* const slots = functionsOf("_ZTV15DataInputStream");
    EXPECT_NE(slots[readSlot], nullptr);
    EXPECT_EQ(slots[readSlot], slots[rewindSlot]);
    exported("_ZN15DataInputStreamC2Ev");
    exported("_ZN15DataInputStreamD2Ev");
}

TEST(StreamsLayoutTest, AbstractOutputHasOnePureSlotAndWriteChar) {
    void* const* const slots = functionsOf("_ZTV16DataOutputStream");
    EXPECT_EQ(slots[writeSlot], functionsOf("_ZTV15DataInputStream")[readSlot]);
    EXPECT_EQ(slots[writeCharSlot], exported("_ZN16DataOutputStream9writeCharEc"));
    exported("_ZN16DataOutputStreamC2Ev");
    exported("_ZN16DataOutputStreamD2Ev");
}

TEST(StreamsLayoutTest, StringInput) {
    constexpr std::size_t stringOffset = bits(4, 8);
    constexpr std::size_t positionOffset = bits(8, 16);
    kfl::AString text("hello");
    Room<bits(12, 24)> stream;
    call<void, void*, kfl::AString*>("_ZN3kfl18AStringInputStreamC1ERNS_7AStringE", stream, &text);
    EXPECT_EQ(stream.pointer(stringOffset), &text);
    EXPECT_EQ(stream.word(positionOffset), 0U);
    expectTable(stream, 0, "_ZTIN3kfl18AStringInputStreamE",
                {"_ZN3kfl18AStringInputStreamD1Ev", "_ZN3kfl18AStringInputStreamD0Ev",
                 "_ZN3kfl18AStringInputStream4readEPcj", "_ZN3kfl18AStringInputStream6rewindEv"});
    char dst[8];
    EXPECT_EQ(readThrough(stream, dst, 3), 3U);
    EXPECT_EQ(std::memcmp(dst, "hel", 3), 0);
    EXPECT_EQ(stream.word(positionOffset), 3U);
    callSlot<void>(rewindSlot, stream);
    EXPECT_EQ(stream.word(positionOffset), 0U);
    callSlot<void>(0, stream);
    EXPECT_TRUE(stream.intact());
}

TEST(StreamsLayoutTest, StringOutput) {
    kfl::AString text("hello");
    Room<bits(8, 16)> stream;
    call<void, void*, kfl::AString*>("_ZN3kfl19AStringOutputStreamC1ERNS_7AStringE", stream, &text);
    EXPECT_EQ(stream.pointer(bits(4, 8)), &text);
    expectTable(
        stream, 0, "_ZTIN3kfl19AStringOutputStreamE",
        {"_ZN3kfl19AStringOutputStreamD1Ev", "_ZN3kfl19AStringOutputStreamD0Ev",
         "_ZN3kfl19AStringOutputStream5writeEPKcj", "_ZN3kfl19AStringOutputStream9writeCharEc"});
    EXPECT_EQ(writeThrough(stream, "ab", 2), 7U);
    EXPECT_EQ((callSlot<unsigned int, char>(writeCharSlot, stream, 'c')), 8U);
    EXPECT_STREQ(text.c_str(), "helloabc");
    callSlot<void>(0, stream);
    EXPECT_TRUE(stream.intact());
}

TEST(StreamsLayoutTest, BufferInput) {
    constexpr std::size_t startOffset = bits(4, 8);
    constexpr std::size_t totalOffset = bits(8, 16);
    constexpr std::size_t currentOffset = bits(12, 24);
    constexpr std::size_t remainingOffset = bits(16, 32);
    const char bytes[] = "hello";
    Room<bits(20, 40)> stream;
    call<void, void*, const char*, unsigned int>("_ZN17BufferInputStreamC1EPKcj", stream, bytes, 5);
    EXPECT_EQ(stream.text(startOffset), bytes);
    EXPECT_EQ(stream.word(totalOffset), 5U);
    EXPECT_EQ(stream.text(currentOffset), bytes);
    EXPECT_EQ(stream.word(remainingOffset), 5U);
    expectTable(stream, 0, "_ZTI17BufferInputStream",
                {"_ZN17BufferInputStreamD1Ev", "_ZN17BufferInputStreamD0Ev",
                 "_ZN17BufferInputStream4readEPcj", "_ZN17BufferInputStream6rewindEv"});
    char dst[8];
    EXPECT_EQ(readThrough(stream, dst, 3), 3U);
    EXPECT_EQ(stream.text(startOffset), bytes);
    EXPECT_EQ(stream.word(totalOffset), 5U);
    EXPECT_EQ(stream.text(currentOffset), bytes + 3);
    EXPECT_EQ(stream.word(remainingOffset), 2U);
    callSlot<void>(rewindSlot, stream);
    EXPECT_EQ(stream.text(currentOffset), bytes);
    EXPECT_EQ(stream.word(remainingOffset), 5U);
    callSlot<void>(0, stream);
    EXPECT_TRUE(stream.intact());
}

TEST(StreamsLayoutTest, BufferOutput) {
    constexpr std::size_t arrayOffset = bits(4, 8);
    constexpr std::size_t lengthOffset = bits(8, 16);
    char array[8] = "x";
    Room<bits(12, 24)> stream;
    call<void, void*, char*>("_ZN18BufferOutputStreamC1EPc", stream, array);
    EXPECT_STREQ(array, "");
    EXPECT_EQ(stream.pointer(arrayOffset), array);
    EXPECT_EQ(stream.word(lengthOffset), 0U);
    // The fourth slot is the base's: single characters are dropped.
    expectTable(stream, 0, "_ZTI18BufferOutputStream",
                {"_ZN18BufferOutputStreamD1Ev", "_ZN18BufferOutputStreamD0Ev",
                 "_ZN18BufferOutputStream5writeEPKcj", "_ZN16DataOutputStream9writeCharEc"});
    EXPECT_EQ(writeThrough(stream, "ab", 2), 2U);
    EXPECT_STREQ(array, "ab");
    EXPECT_EQ(stream.word(lengthOffset), 2U);
    EXPECT_EQ((callSlot<unsigned int, char>(writeCharSlot, stream, 'c')), 0U);
    EXPECT_STREQ(array, "ab");
    callSlot<void>(0, stream);
    EXPECT_TRUE(stream.intact());
}

TEST(StreamsLayoutTest, BaseObjectConstructorsAreThereForDerivedClasses) {
    for (const char* const name :
         {"_ZN3kfl18AStringInputStreamC2ERNS_7AStringE", "_ZN3kfl18AStringInputStreamD2Ev",
          "_ZN3kfl19AStringOutputStreamC2ERNS_7AStringE", "_ZN3kfl19AStringOutputStreamD2Ev",
          "_ZN17BufferInputStreamC2EPKcj", "_ZN17BufferInputStreamD2Ev",
          "_ZN18BufferOutputStreamC2EPc", "_ZN18BufferOutputStreamD2Ev"}) {
        exported(name);
    }
}

TEST(StreamsLayoutTest, DeletingDestructorsReleaseTheObjects) {
    kfl::AString text("");
    char array[1];
    const std::vector<void*> streams = {
        static_cast<DataInputStream*>(new kfl::AStringInputStream(text)),
        static_cast<DataOutputStream*>(new kfl::AStringOutputStream(text)),
        static_cast<DataInputStream*>(new BufferInputStream("", 0)),
        static_cast<DataOutputStream*>(new BufferOutputStream(array)),
    };
    for (void* const stream : streams) callSlot<void>(1, stream);
}

}  // namespace
