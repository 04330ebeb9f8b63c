// AString and AStringIterator as an already compiled host knows them.
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/AString.h"
#include "kfl/Buffer.h"
#include "kfl/StringFormat.h"
#include "tests/support/counted_new.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t countOffset = bits(4, 8);
constexpr std::size_t objectPart = bits(8, 16);
constexpr std::size_t dataOffset = bits(12, 24);
constexpr std::size_t capacityOffset = bits(16, 32);
constexpr std::size_t lengthOffset = bits(20, 36);
constexpr std::size_t incrementOffset = bits(24, 40);

constexpr std::size_t appendTextSlot = 2;
constexpr std::size_t appendCharactersSlot = 3;
constexpr std::size_t appendBufferSlot = 4;
constexpr std::size_t appendStringSlot = 5;
constexpr std::size_t appendCharacterSlot = 6;
constexpr std::size_t appendUnsignedSlot = 7;

const char* const fromText = "_ZN3kfl7AStringC1EPKcj";

class StringRoom : public Room<bits(28, 48)> {
  public:
    void expect(const char* text, unsigned int length, unsigned int capacity,
                unsigned int increment) const {
        EXPECT_STREQ(this->text(dataOffset), text);
        EXPECT_EQ(word(capacityOffset), capacity);
        EXPECT_EQ(word(lengthOffset), length);
        EXPECT_EQ(word(incrementOffset), increment);
        EXPECT_TRUE(intact());
    }
};

// A string in a room of its own, made and destroyed through mangled names.
class HostString : public StringRoom {
  public:
    explicit HostString(const char* text) {
        call<void, void*, const char*, unsigned int>(fromText, *this, text, 100);
    }
    ~HostString() { callSlot<void>(0, *this); }
    HostString(const HostString&) = delete;
    HostString& operator=(const HostString&) = delete;
};

TEST(AStringLayoutTest, Sizes) {
    EXPECT_EQ(sizeof(kfl::AString), bits(28, 48));
    EXPECT_EQ(sizeof(kfl::AStringIterator), bits(12, 24));
}

TEST(AStringLayoutTest, FieldsFollowTheTwoBases) {
    StringRoom empty;
    call<void, void*, unsigned int, unsigned int>("_ZN3kfl7AStringC1Ejj", empty, 40, 7);
    EXPECT_EQ(empty.word(countOffset), 0U);
    empty.expect("", 0, 40, 7);

    StringRoom text;
    call<void, void*, const char*, unsigned int>(fromText, text, "abc", 100);
    text.expect("abc", 3, 3, 100);
    setFieldAt<unsigned int>(text, countOffset, 3);

    StringRoom copy;
    call<void, void*, const void*>("_ZN3kfl7AStringC1ERKS0_", copy, text);
    EXPECT_EQ(copy.word(countOffset), 0U);
    copy.expect("abc", 3, 3, 100);
    EXPECT_NE(copy.pointer(dataOffset), text.pointer(dataOffset));

    for (StringRoom* const room : {&empty, &text, &copy})
        call<void, void*>("_ZN3kfl7AStringD1Ev", *room);
}

TEST(AStringLayoutTest, ConstructorsFromAFormatAndABufferFillTheSameFields) {
    StringRoom formatted;
    const StringFormat format("%d", 1234);
    call<void, void*, const void*>("_ZN3kfl7AStringC1ERK12StringFormat", formatted, &format);
    formatted.expect("1234", 4, 4, 100);

    unsigned char bytes[] = {'x', 'y', 'z'};
    Buffer buffer(10, 0);
    buffer.Write(bytes, 3);
    StringRoom read;
    call<void, void*, void*>("_ZN3kfl7AStringC1EP6Buffer", read, &buffer);
    read.expect("xyz", 3, 3, 100);

    call<void, void*>("_ZN3kfl7AStringD2Ev", formatted);
    call<void, void*>("_ZN3kfl7AStringD2Ev", read);
}

TEST(AStringLayoutTest, PrimaryTableHasEightSlots) {
    const HostString text("abc");
    expectTable(
        text, 0, "_ZTIN3kfl7AStringE",
        {"_ZN3kfl7AStringD1Ev", "_ZN3kfl7AStringD0Ev", "_ZN3kfl7AString6appendEPKc",
         "_ZN3kfl7AString6appendEPKcj", "_ZN3kfl7AString6appendEP6Buffer",
         "_ZN3kfl7AString6appendERKS0_", "_ZN3kfl7AString6appendEc", "_ZN3kfl7AString6appendEh"});
    // Two words and eight slots, then two words and two slots for the second base.
    expectTableWords("_ZTVN3kfl7AStringE", 14);
}

TEST(AStringLayoutTest, TheObjectBaseHasTheTwoDestructorsThatFindTheWholeObject) {
    const HostString text("abc");
    const void* const object = static_cast<unsigned char*>(static_cast<void*>(text)) + objectPart;
    const bool on32 = pointerSize == 4;
    expectTable(object, -static_cast<std::ptrdiff_t>(objectPart), "_ZTIN3kfl7AStringE",
                {on32 ? "_ZThn8_N3kfl7AStringD1Ev" : "_ZThn16_N3kfl7AStringD1Ev",
                 on32 ? "_ZThn8_N3kfl7AStringD0Ev" : "_ZThn16_N3kfl7AStringD0Ev"});
}

TEST(AStringLayoutTest, DeletionThroughEitherBaseReleasesTheWholeObject) {
    for (const std::size_t part : {std::size_t{0}, objectPart}) {
        SCOPED_TRACE(part);
        const AllocationCount count;
        void* const text = new kfl::AString("abc");
        const void* const data = pointerAt(text, dataOffset);
        callSlot<void>(1, static_cast<unsigned char*>(text) + part);
        EXPECT_TRUE(count.hasReleased(text));
        EXPECT_TRUE(count.hasReleased(data));
        EXPECT_EQ(count.live(), 0);
    }
}

TEST(AStringLayoutTest, DestructionThroughTheObjectBaseReleasesTheTextAlone) {
    const AllocationCount count;
    StringRoom text;
    call<void, void*, const char*, unsigned int>(fromText, text, "abc", 100);
    const void* const data = text.pointer(dataOffset);
    callSlot<void>(0, static_cast<unsigned char*>(static_cast<void*>(text)) + objectPart);
    EXPECT_TRUE(count.hasReleased(data));
    EXPECT_EQ(count.live(), 0);
}

TEST(AStringLayoutTest, AppendsWorkThroughTheirSlots) {
    HostString text("a");
    const HostString other("other");
    unsigned char bytes[] = {'x', 'y'};
    Buffer buffer(10, 0);
    buffer.Write(bytes, 2);
    int result = callSlot<int, const char*>(appendTextSlot, text, "bc");
    result += callSlot<int, const char*, unsigned int>(appendCharactersSlot, text, "de", 1);
    result += callSlot<int, void*>(appendBufferSlot, text, &buffer);
    result += callSlot<int, const void*>(appendStringSlot, text, other);
    result += callSlot<int, char>(appendCharacterSlot, text, 'f');
    result += callSlot<int, unsigned char>(appendUnsignedSlot, text, 'g');
    EXPECT_EQ(result, 6);
    text.expect("abcdxyotherfg", 13, 101, 100);
}

TEST(AStringLayoutTest, OtherOperationsAreFoundByTheirNames) {
    HostString text("hello world");
    using Search = int (*)(void*, const char*, int);
    const auto search = [&](const char* name, const char* set, int start) {
        return reinterpret_cast<Search>(exported(name))(text, set, start);
    };
    EXPECT_EQ(search("_ZN3kfl7AString4findEPKci", "world", 7), 6);
    EXPECT_EQ(search("_ZN3kfl7AString11findFirstOfEPKci", " ", 2), 3);
    EXPECT_EQ(search("_ZN3kfl7AString14findFirstNotOfEPKci", "hel", 0), 4);
    EXPECT_EQ((call<int, void*, const char*>("_ZN3kfl7AString10findLastOfEPKc", text, "o")), 7);
    EXPECT_EQ((call<int, void*, const char*>("_ZN3kfl7AString13findLastNotOfEPKc", text, "dl")), 8);
    EXPECT_EQ(
        (call<int, void*, unsigned int, const char*>("_ZN3kfl7AString6insertEjPKc", text, 0, "XY")),
        1);
    EXPECT_EQ((call<int, void*, unsigned int, int>("_ZN3kfl7AString5eraseEji", text, 7, -1)), 1);
    EXPECT_EQ((call<int, void*, unsigned int>("_ZN3kfl7AString9trimRightEj", text, 1)), 1);
    EXPECT_EQ((call<int, void*, char, char>("_ZN3kfl7AString7replaceEcc", text, 'l', 'L')), 1);
    EXPECT_EQ((call<int, void*, unsigned int>("_ZN3kfl7AString8expandToEj", text, 500)), 1);
    text.expect("XYheLL", 6, 500, 100);
    const HostString other("XYheLL");
    EXPECT_TRUE((call<bool, const void*, const void*>("_ZNK3kfl7AStringeqERKS0_", text, other)));
}

TEST(AStringIteratorLayoutTest, HasStringPositionAndLine) {
    HostString text("one\ntwo");
    Room<bits(12, 24)> walk;
    call<void, void*, void*, unsigned int>("_ZN3kfl15AStringIteratorC1ERNS_7AStringEj", walk, text,
                                           20);
    const char* const data = text.text(dataOffset);
    EXPECT_EQ(walk.pointer(0), text);
    EXPECT_EQ(walk.text(bits(4, 8)), data);
    char* const line = call<char*, void*>("_ZN3kfl15AStringIterator4NextEv", walk);
    EXPECT_STREQ(line, "one\n");
    EXPECT_EQ(walk.pointer(bits(8, 16)), line);
    EXPECT_EQ(walk.text(bits(4, 8)), data + 4);
    EXPECT_STREQ((call<char*, void*>("_ZN3kfl15AStringIterator4NextEv", walk)), "two");
    // Past the terminator, which the last line took along.
    EXPECT_EQ(walk.text(bits(4, 8)), data + 8);
    EXPECT_EQ((call<char*, void*>("_ZN3kfl15AStringIterator4NextEv", walk)), nullptr);
    call<void, void*>("_ZN3kfl15AStringIterator5ResetEv", walk);
    EXPECT_EQ(walk.text(bits(4, 8)), data);
    call<void, void*>("_ZN3kfl15AStringIteratorD1Ev", walk);
    EXPECT_TRUE(walk.intact());
}

}  // namespace
