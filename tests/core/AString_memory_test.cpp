// What AString asks of the allocator, and what it does when it gets nothing.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kfl/AString.h"
#include "kfl/StringFormat.h"
#include "tests/support/counted_new.h"

using kfl::AString;
using kfl::AStringIterator;
using kfl_test::AllocationCount;
using kfl_test::FailingNew;

namespace {

// Out of line, where the compiler cannot see that a block is not needed.
[[gnu::noinline]] std::unique_ptr<int> newInt(int value) { return std::make_unique<int>(value); }

TEST(CountedNewTest, CountsFailsOnceAndRemembersWhatWasReleased) {
    const AllocationCount count;
    auto first = newInt(1);
    EXPECT_EQ(count.made(), 1U);
    EXPECT_EQ(count.live(), 1);
    const void* const block = first.get();
    EXPECT_FALSE(count.hasReleased(block));
    first.reset();
    EXPECT_TRUE(count.hasReleased(block));
    EXPECT_EQ(count.live(), 0);
    {
        const FailingNew second(2);
        const auto works = newInt(1);
        EXPECT_FALSE(second.happened());
        EXPECT_THROW(newInt(2), std::bad_alloc);
        EXPECT_TRUE(second.happened());
        EXPECT_NO_THROW(newInt(3));
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(CountedNewTest, TellsArraysFromSingleObjects) {
    const AllocationCount count;
    const auto single = newInt(1);
    EXPECT_EQ(count.madeAsArrays(), 0U);
    const auto array = std::make_unique<int[]>(3);
    EXPECT_EQ(count.made(), 2U);
    EXPECT_EQ(count.madeAsArrays(), 1U);
}

TEST(CountedNewTest, KnowsABlockThatGoesAnotherWayThanItCame) {
    using kfl_test::allocations::faultOf;
    using kfl_test::allocations::Form;
    EXPECT_EQ(faultOf(Form::single, Form::single), nullptr);
    EXPECT_EQ(faultOf(Form::array, Form::array), nullptr);
    EXPECT_STREQ(faultOf(Form::array, Form::single),
                 "A block of array new was given to single delete.\n");
    EXPECT_STREQ(faultOf(Form::single, Form::array),
                 "A block of single new was given to array delete.\n");
    EXPECT_STREQ(faultOf(static_cast<Form>(0), Form::array),
                 "A block was overwritten in front of its start, or did not come from new.\n");
}

// --- How much is asked for ---

TEST(AStringMemoryTest, ConstructionAllocatesTheArrayAndNothingElse) {
    const AllocationCount count;
    {
        const AString empty(10U);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 11U);
        const AString text("abc");
        EXPECT_EQ(count.made(), 2U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 4U);
        const AString copy(empty);
        EXPECT_EQ(count.made(), 3U);
        EXPECT_EQ(count.madeAsArrays(), 3U);
        EXPECT_EQ(kfl_test::allocations::lastSize, 11U);
        EXPECT_EQ(count.released(), 0U);
    }
    EXPECT_EQ(count.released(), 3U);
}

TEST(AStringMemoryTest, WhatFitsTouchesNoAllocator) {
    AString text(200U);
    const AString other("other");
    const AllocationCount count;
    text.append("hello");
    text.append("hello", 10);
    text.append('c');
    text.append(static_cast<unsigned char>('c'));
    text.append(other);
    text.append(text);
    text.append(text.c_str() + 1, 3);
    text.insert(2, "xyz");
    text.insert(2, text.c_str() + 1);
    text.expandTo(199);
    EXPECT_EQ(text.capacity(), 200U);
    EXPECT_EQ(count.made(), 0U);
    EXPECT_EQ(count.released(), 0U);
}

TEST(AStringMemoryTest, SearchesAndRemovalsTouchNoAllocator) {
    AString text("hello world");
    const AString other("hello");
    const AllocationCount count;
    text.find("o", 0);
    text.findFirstOf("o", 0);
    text.findFirstNotOf("h", 0);
    text.findLastOf("o");
    text.findLastNotOf("d");
    EXPECT_FALSE(text == other);
    text.replace('o', '0');
    text.erase(0, 2);
    text.trimRight(1);
    text.clear();
    EXPECT_EQ(count.made(), 0U);
    EXPECT_EQ(count.released(), 0U);
}

TEST(AStringMemoryTest, ALineTouchesNoAllocator) {
    AString text("one\ntwo\nthree");
    AStringIterator walk(text, 10);
    const AllocationCount count;
    while (walk.Next()) {
    }
    walk.Reset();
    EXPECT_STREQ(walk.Next(), "one\n");
    EXPECT_EQ(count.made(), 0U);
    EXPECT_EQ(count.released(), 0U);
}

TEST(AStringMemoryTest, AnIteratorAllocatesItsLineAndReleasesIt) {
    AString text("one\n");
    const AllocationCount count;
    {
        const AStringIterator walk(text, 10);
        EXPECT_EQ(count.made(), 1U);
        EXPECT_EQ(count.madeAsArrays(), 1U);
    }
    EXPECT_EQ(count.live(), 0);
}

// --- Every operation that grows ---

// A string of capacity 3 and increment 2 holding "abc", and a call that must grow it.
struct Growing {
    const char* name;
    std::function<void(AString&)> call;
    std::string result;
};

std::ostream& operator<<(std::ostream& out, const Growing& row) { return out << row.name; }

class AStringGrowingTest : public testing::TestWithParam<Growing> {
  protected:
    static std::string contents(const AString& text) {
        return std::string(text.c_str(), text.length());
    }
};

TEST_P(AStringGrowingTest, AllocatesOnceAndReleasesOnce) {
    AString text("abc", 2);
    const char* const old = text.c_str();
    const AllocationCount count;
    GetParam().call(text);
    const unsigned long made = count.made();
    const unsigned long released = count.released();
    const unsigned long madeAsArrays = count.madeAsArrays();
    EXPECT_EQ(made, 1U);
    EXPECT_EQ(madeAsArrays, 1U);
    EXPECT_EQ(released, 1U);
    EXPECT_TRUE(count.hasReleased(old));
    EXPECT_EQ(kfl_test::allocations::lastSize, std::size_t{text.capacity()} + 1);
    EXPECT_EQ(contents(text), GetParam().result);
}

TEST_P(AStringGrowingTest, LeavesTheStringAsItWasWhenAnAllocationFails) {
    const AllocationCount whole;
    {
        AString text("abc", 2);
        const char* const data = text.c_str();
        unsigned long n = 1;
        for (bool failed = true; failed; ++n) {
            const AllocationCount count;
            const FailingNew failing(n);
            try {
                GetParam().call(text);
                failed = failing.happened();
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(failing.happened());
                // Nothing changed, nothing leaked; (the exception itself is not made with new)
                EXPECT_EQ(count.made(), 0U);
                EXPECT_EQ(count.released(), 0U);
                EXPECT_EQ(contents(text), "abc");
                EXPECT_EQ(text.c_str(), data);
                EXPECT_EQ(text.capacity(), 3U);
                EXPECT_EQ(text.increment(), 2U);
                EXPECT_EQ(text.c_str()[3], '\0');
            }
        }
        // The first allocation failed, and the second try worked.
        EXPECT_EQ(n, 3U);
        EXPECT_EQ(contents(text), GetParam().result);
    }
    EXPECT_EQ(whole.live(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, AStringGrowingTest,
    testing::Values(
        Growing{"appendText", [](AString& text) { text.append("defghij"); }, "abcdefghij"},
        Growing{"appendEmptyText", [](AString& text) { text.append(""); }, "abc"},
        Growing{"appendCharacters", [](AString& text) { text.append("d", 4); },
                std::string("abcd\0\0\0", 7)},
        Growing{"appendCharacter", [](AString& text) { text.append('d'); }, "abcd"},
        Growing{"appendUnsignedCharacter",
                [](AString& text) { text.append(static_cast<unsigned char>('d')); }, "abcd"},
        Growing{"appendItself", [](AString& text) { text.append(text); }, "abcabc"},
        Growing{"appendPieceOfItself", [](AString& text) { text.append(text.c_str() + 1); },
                "abcbc"},
        Growing{"appendCharactersOfItself", [](AString& text) { text.append(text.c_str() + 1, 3); },
                std::string("abcbc\0", 6)},
        Growing{"insert", [](AString& text) { text.insert(1, "xyz"); }, "axyzbc"},
        Growing{"insertPieceOfItself", [](AString& text) { text.insert(1, text.c_str()); },
                "aabcbc"},
        Growing{"expandTo", [](AString& text) { text.expandTo(3); }, "abc"},
        Growing{"expandFar", [](AString& text) { text.expandTo(1000); }, "abc"}),
    [](const testing::TestParamInfo<Growing>& row) { return std::string(row.param.name); });

AString& sample() {
    static AString text("sample");
    return text;
}

struct Making {
    const char* name;
    std::function<void()> make;
};

std::ostream& operator<<(std::ostream& out, const Making& row) { return out << row.name; }

class AStringMakingTest : public testing::TestWithParam<Making> {};

TEST_P(AStringMakingTest, LeaksNothingWhenAnAllocationFails) {
    sample();  // not to be counted
    unsigned long n = 1;
    for (bool failed = true; failed; ++n) {
        const AllocationCount count;
        const FailingNew failing(n);
        try {
            GetParam().make();
            failed = false;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(failing.happened());
        }
        EXPECT_EQ(count.live(), 0);
    }
    EXPECT_GT(n, 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Constructors, AStringMakingTest,
    testing::Values(Making{"withCapacity", [] { const AString text(10U); }},
                    Making{"fromText", [] { const AString text("abc"); }},
                    Making{"fromNull",
                           [] { const AString text(static_cast<const char*>(nullptr)); }},
                    Making{"copy", [] { const AString text(sample()); }},
                    Making{"fromFormat", [] { const AString text(StringFormat("%d", 12)); }},
                    Making{"iterator", [] { const AStringIterator walk(sample(), 20); }},
                    Making{"onTheHeap", [] { delete new AString("abc"); }},
                    Making{"asObject",
                           [] {
                               const kfl::SObject* const object = new AString("abc");
                               delete object;
                           }},
                    Making{"shared", [] { const ProtectionElement handle(new AString("abc")); }}),
    [](const testing::TestParamInfo<Making>& row) { return std::string(row.param.name); });

// --- Deletion ---

TEST(AStringMemoryTest, DeletionThroughTheObjectBaseReleasesTheWholeString) {
    const AllocationCount count;
    auto* const text = new AString("abc");
    EXPECT_EQ(count.made(), 2U);
    EXPECT_EQ(count.madeAsArrays(), 1U);
    const void* const data = text->c_str();
    kfl::SObject* const object = text;
    ASSERT_NE(static_cast<void*>(object), static_cast<void*>(text));
    delete object;
    EXPECT_TRUE(count.hasReleased(text));
    EXPECT_TRUE(count.hasReleased(data));
    EXPECT_EQ(count.live(), 0);
}

TEST(AStringMemoryTest, TheLastHandleReleasesTheWholeString) {
    const AllocationCount count;
    {
        ProtectionElement first(new AString("abc"));
        const ProtectionElement second(first);
        first = nullptr;
        EXPECT_EQ(count.live(), 2);
    }
    EXPECT_EQ(count.live(), 0);
}

// --- Sizes past 32 bits ---

// The allocator is asked for what it cannot have; the string stays as it was.
struct Huge {
    const char* name;
    unsigned int capacity;
    unsigned int increment;
    std::function<void(AString&)> call;
};

std::ostream& operator<<(std::ostream& out, const Huge& row) { return out << row.name; }

class AStringHugeTest : public testing::TestWithParam<Huge> {};

TEST_P(AStringHugeTest, FailsAsAnAllocationDoes) {
    const Huge& row = GetParam();
    AString text(row.capacity, row.increment);
    text.append("abc");
    const unsigned int capacity = text.capacity();
    const char* const data = text.c_str();
    const AllocationCount count;
    EXPECT_THROW(row.call(text), std::bad_alloc);
    EXPECT_EQ(count.made(), 0U);
    EXPECT_EQ(count.released(), 0U);
    EXPECT_EQ(text.c_str(), data);
    EXPECT_STREQ(text.c_str(), "abc");
    EXPECT_EQ(text.length(), 3U);
    EXPECT_EQ(text.capacity(), capacity);
    // And it still works.
    text.erase(0, 1);
    text.append("d");
    EXPECT_STREQ(text.c_str(), "bcd");
}

INSTANTIATE_TEST_SUITE_P(
    Operations, AStringHugeTest,
    testing::Values(
        // length + n passes 32 bits.
        Huge{"appendCharacters", 10, 100, [](AString& text) { text.append("x", UINT_MAX); }},
        Huge{"appendCharactersByOne", 10, 100,
             [](AString& text) { text.append("x", UINT_MAX - 2); }},
        // The length fits, its terminator does not.
        Huge{"appendUpToTheLastLength", 10, 100,
             [](AString& text) { text.append("x", UINT_MAX - 3); }},
        Huge{"expandToTheLastLength", 10, 100, [](AString& text) { text.expandTo(UINT_MAX); }},
        // capacity + increment passes 32 bits, at once or with the terminator.
        Huge{"expandByAHugeIncrement", 10, UINT_MAX, [](AString& text) { text.expandTo(10); }},
        Huge{"expandByTheLastIncrement", 10, UINT_MAX - 10,
             [](AString& text) { text.expandTo(10); }},
        Huge{"appendWithAHugeIncrement", 10, UINT_MAX,
             [](AString& text) { text.append("0123456789"); }},
        Huge{"appendCharacterWithAHugeIncrement", 4, UINT_MAX,
             [](AString& text) { text.append('x'); }},
        Huge{"insertWithAHugeIncrement", 10, UINT_MAX,
             [](AString& text) { text.insert(0, "0123456789"); }},
        Huge{"insertPieceWithAHugeIncrement", 6, UINT_MAX,
             [](AString& text) { text.insert(1, text.c_str()); }}),
    [](const testing::TestParamInfo<Huge>& row) { return std::string(row.param.name); });

TEST(AStringMemoryTest, ConstructionPast32BitsFailsAsAnAllocationDoes) {
    sample();  // not to be counted
    const AllocationCount count;
    EXPECT_THROW(AString(UINT_MAX, 1), std::bad_alloc);
    EXPECT_EQ(count.live(), 0);
    EXPECT_THROW(AStringIterator(sample(), UINT_MAX), std::bad_alloc);
    EXPECT_EQ(count.live(), 0);
}

TEST(AStringMemoryTest, AHugeIncrementThatIsNotNeededDoesNoHarm) {
    AString text(10U, UINT_MAX);
    text.append("abc");
    EXPECT_EQ(text.expandTo(9), 1);
    const AString copy(text);
    EXPECT_EQ(copy.increment(), UINT_MAX);
    EXPECT_TRUE(copy == text);
}

}  // namespace
