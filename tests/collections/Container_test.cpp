#include "kfl/Container.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/collections/counting_allocator.h"

namespace {

using kfl::Container;
using kfl_test::AllocationCount;
using kfl_test::allocationsOf;
using kfl_test::failEachRequest;
using kfl_test::refuses;

// All bytes of a container.
std::string bytesOf(const Container& container) {
    const std::size_t size = std::size_t{container.capacity()} * container.elementSize();
    return size > 0 ? std::string(container.data(), size) : std::string();
}

std::string zeros(std::size_t n) { return std::string(n, '\0'); }

// A container of one-byte elements.
class Text : public Container {
  public:
    explicit Text(std::string text) : Container(static_cast<unsigned int>(text.size()), 1) {
        if (!text.empty()) atPut(0, text.data(), size());
    }
};

// Notes each growth, and refuses it where told to.
class Intercepting : public Container {
  public:
    Intercepting(unsigned int capacity, unsigned int elementSize)
        : Container(capacity, elementSize) {}
    void expandTo(unsigned int n) override {
        asked.push_back(n);
        if (!refusing) Container::expandTo(n);
    }

    std::vector<unsigned int> asked;
    bool refusing = false;
};

using Asked = std::vector<unsigned int>;

// Holds "abcd", and says of itself that it has another size.
class Misstating : public Container {
  public:
    explicit Misstating(unsigned int stated) : Container(4, 1), stated_(stated) {
        char text[] = "abcd";
        std::memcpy(data(), text, 4);
    }
    unsigned int size() const override { return stated_; }

  private:
    unsigned int stated_;
};

// Too small a size, and too large a one.
constexpr unsigned int misstatements[] = {1, 20};

TEST(ContainerTest, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible<Container>::value);
    EXPECT_FALSE(std::is_copy_assignable<Container>::value);
}

TEST(ContainerTest, DefaultHasNoStorageAndNoElementSize) {
    EXPECT_EQ(allocationsOf([] {
                  const Container container;
                  EXPECT_EQ(container.data(), nullptr);
                  EXPECT_EQ(container.size(), 0U);
                  EXPECT_EQ(container.capacity(), 0U);
                  EXPECT_EQ(container.elementSize(), 0U);
              }),
              0U);
}

TEST(ContainerTest, ElementSizeAloneGivesOneZeroedElement) {
    const Container container(4);
    EXPECT_EQ(container.size(), 1U);
    EXPECT_EQ(container.elementSize(), 4U);
    EXPECT_EQ(bytesOf(container), zeros(4));
}

TEST(ContainerTest, CapacityAndElementSizeGiveZeroedElements) {
    const AllocationCount count;
    const Container container(7, 3);
    EXPECT_EQ(count.madeAsArrays(), 1U);
    EXPECT_EQ(kfl_test::allocations::lastSize, 21U);
    EXPECT_EQ(container.size(), 7U);
    EXPECT_EQ(container.elementSize(), 3U);
    EXPECT_EQ(bytesOf(container), zeros(21));
}

TEST(ContainerTest, CapacityZeroHasNoStorage) {
    EXPECT_EQ(allocationsOf([] {
                  const Container container(0, 4);
                  EXPECT_EQ(container.data(), nullptr);
                  EXPECT_EQ(container.size(), 0U);
                  EXPECT_EQ(container.elementSize(), 4U);
              }),
              0U);
}

TEST(ContainerTest, ElementsOfNoBytesCountAllTheSame) {
    Container container(3, 0);
    char byte = 'x';
    EXPECT_NE(container.data(), nullptr);
    EXPECT_EQ(container.size(), 3U);
    EXPECT_EQ(container.atPut(9, &byte, 2), 2U);
    EXPECT_EQ(container.size(), 11U);
    EXPECT_EQ(container.atGet(9, &byte, 5), 2U);
    EXPECT_EQ(byte, 'x');
    container.expandTo(UINT_MAX);
    EXPECT_EQ(container.size(), UINT_MAX);
}

TEST(ContainerTest, DestructorReleasesTheStorage) {
    const AllocationCount count;
    {
        Container container(5, 8);
        container.expandTo(50);
        EXPECT_EQ(count.live(), 1);
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(ContainerTest, ExpandToGrowsToExactlyThatAndZeroesTheRest) {
    Text text("abc");
    text.expandTo(8);
    EXPECT_EQ(text.size(), 8U);
    EXPECT_EQ(bytesOf(text), "abc" + zeros(5));
}

TEST(ContainerTest, ExpandToShrinksAndKeepsTheFirstElements) {
    Container container(5, 3);
    char source[] = "aaabbbcccdddeee";
    container.atPut(0, source, 5);
    container.expandTo(2);
    EXPECT_EQ(bytesOf(container), "aaabbb");
    container.expandTo(3);
    EXPECT_EQ(bytesOf(container), "aaabbb" + zeros(3));
}

TEST(ContainerTest, ExpandToTheCapacityDoesNothing) {
    Text text("abc");
    const char* const storage = text.data();
    EXPECT_EQ(allocationsOf([&] { text.expandTo(3); }), 0U);
    EXPECT_EQ(text.data(), storage);
    EXPECT_EQ(bytesOf(text), "abc");
}

TEST(ContainerTest, ExpandToZeroFreesTheStorage) {
    Text text("abc");
    const AllocationCount count;
    text.expandTo(0);
    EXPECT_EQ(text.size(), 0U);
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(text.elementSize(), 1U);
    EXPECT_EQ(count.live(), -1);
    text.expandTo(0);
    EXPECT_EQ(text.data(), nullptr);
}

TEST(ContainerTest, GrowthAllocatesOnceAndFreesTheOldBlock) {
    Text text("abc");
    const AllocationCount count;
    text.expandTo(1000);
    EXPECT_EQ(count.made(), 1U);
    EXPECT_EQ(count.madeAsArrays(), 1U);
    EXPECT_EQ(count.live(), 0);
    EXPECT_EQ(kfl_test::allocations::lastSize, 1000U);
}

TEST(ContainerTest, ExpandAddsHalfOrTen) {
    const unsigned int rows[][2] = {{0, 10},  {1, 11},  {2, 3},   {3, 4},
                                    {10, 15}, {15, 22}, {22, 33}, {1000, 1500}};
    for (const auto& row : rows) {
        Container container(row[0], 4);
        container.expand();
        EXPECT_EQ(container.size(), row[1]) << "from " << row[0];
    }
}

TEST(ContainerTest, ExpandByACountAddsExactlyThat) {
    Text text("abc");
    text.expand(4);
    EXPECT_EQ(bytesOf(text), "abc" + zeros(4));
    text.expand(0U);
    EXPECT_EQ(text.size(), 7U);
}

TEST(ContainerTest, ResetReleasesTheStorageAndKeepsTheElementSize) {
    Container container(5, 3);
    const AllocationCount count;
    container.reset();
    EXPECT_EQ(container.data(), nullptr);
    EXPECT_EQ(container.size(), 0U);
    EXPECT_EQ(container.elementSize(), 3U);
    EXPECT_EQ(count.live(), -1);
    container.expandTo(2);
    EXPECT_EQ(bytesOf(container), zeros(6));
}

TEST(ContainerTest, SetDataAdoptsABlockAndLeavesTheCapacity) {
    Text text("abc");
    const AllocationCount count;
    char* const block = new char[3];
    std::memcpy(block, "xyz", 3);
    EXPECT_EQ(text.setData(block), block);
    EXPECT_EQ(count.live(), 0) << "the old block is released";
    EXPECT_EQ(text.data(), block);
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(bytesOf(text), "xyz");
}

TEST(ContainerTest, SetDataNeedsNoOldStorage) {
    Container container;
    char* const block = new char[4];
    EXPECT_EQ(container.setData(block), block);
    EXPECT_EQ(container.size(), 0U);
    EXPECT_EQ(container.setData(nullptr), nullptr);
    EXPECT_EQ(container.data(), nullptr);
}

TEST(ContainerTest, WithoutStorageButWithACapacityNothingIsCopied) {
    Text text("abc");
    Text other("other");
    char bytes[] = "xyz";
    text.setData(nullptr);
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(text.atGet(0, bytes, 3), 0U);
    EXPECT_EQ(text.atGet(0, &other, 3), 0U);
    EXPECT_EQ(text.atPut(0, bytes, 3), 0U);
    Text two("ab");
    EXPECT_EQ(text.atPut(0, &two, 2), 0U);
    EXPECT_STREQ(bytes, "xyz");
    EXPECT_EQ(bytesOf(other), "other");
    text.expandTo(3);
    EXPECT_EQ(bytesOf(text), zeros(3)) << "storage that is missing is made, whatever the capacity";
    text.setData(nullptr);
    text.expandTo(5);
    EXPECT_EQ(bytesOf(text), zeros(5));
}

TEST(ContainerTest, StorageThatIsMadeAnewIsZeroed) {
    Container container(3, 100);
    container.setData(nullptr);
    // What the allocator gives next.
    char* const used = new char[500];
    std::memset(used, 0xFF, 500);
    delete[] used;
    container.expandTo(5);
    EXPECT_EQ(bytesOf(container), zeros(500));
}

TEST(ContainerTest, PutGrowsToExactlyWhatIsNeeded) {
    Container container(0, 4);
    char element[] = {1, 2, 3, 4};
    EXPECT_EQ(container.atPut(5, element, 1), 1U);
    EXPECT_EQ(container.size(), 6U);
    EXPECT_EQ(bytesOf(container), zeros(20) + std::string(element, 4));
}

TEST(ContainerTest, PutWithinTheCapacityDoesNotGrow) {
    Text text("abcdef");
    char source[] = "XY";
    EXPECT_EQ(allocationsOf([&] { EXPECT_EQ(text.atPut(4, source, 2), 2U); }), 0U);
    EXPECT_EQ(bytesOf(text), "abcdXY");
}

TEST(ContainerTest, PutOverTheEndKeepsWhatStoodBefore) {
    Text text("abc");
    char source[] = "XYZ";
    EXPECT_EQ(text.atPut(2, source, 3), 3U);
    EXPECT_EQ(bytesOf(text), "abXYZ");
}

TEST(ContainerTest, PutOfOneElementTakesOne) {
    Container container(2, 2);
    char source[] = "XYZ";
    EXPECT_EQ(container.atPut(1, source), 1U);
    EXPECT_EQ(bytesOf(container), zeros(2) + "XY");
    EXPECT_EQ(container.atPut(2, source), 1U);
    EXPECT_EQ(container.size(), 3U);
}

TEST(ContainerTest, PutOfNothingStillMakesRoomUpToTheIndex) {
    Container container(0, 4);
    char source[] = "";
    EXPECT_EQ(container.atPut(0, source, 0), 0U);
    EXPECT_EQ(container.data(), nullptr);
    EXPECT_EQ(container.atPut(3, source, 0), 0U);
    EXPECT_EQ(container.size(), 3U);
}

TEST(ContainerTest, GetStopsAtTheEnd) {
    Text text("abcde");
    char bytes[11] = "..........";
    EXPECT_EQ(text.atGet(3, bytes, 10), 2U);
    EXPECT_STREQ(bytes, "de........");
    EXPECT_EQ(text.atGet(1, bytes, 4), 4U);
    EXPECT_STREQ(bytes, "bcde......");
    EXPECT_EQ(text.atGet(0, bytes, 2), 2U);
    EXPECT_STREQ(bytes, "abde......");
}

TEST(ContainerTest, GetPastTheEndCopiesNothing) {
    Text text("abcde");
    char bytes[] = "..";
    EXPECT_EQ(text.atGet(5, bytes, 1), 0U);
    EXPECT_EQ(text.atGet(UINT_MAX, bytes, 1), 0U);
    EXPECT_EQ(text.atGet(5, bytes), 0U);
    EXPECT_EQ(Container().atGet(0, bytes), 0U);
    EXPECT_STREQ(bytes, "..");
}

TEST(ContainerTest, GetOfOneElementCopiesOne) {
    Container container(2, 2);
    char source[] = "abcd";
    container.atPut(0, source, 2);
    char bytes[] = "....";
    EXPECT_EQ(container.atGet(1, bytes), 1U);
    EXPECT_STREQ(bytes, "cd..");
}

TEST(ContainerTest, GetCountsWithoutWrapping) {
    Text text("abcde");
    char bytes[] = "....";
    EXPECT_EQ(text.atGet(2, bytes, UINT_MAX), 3U);
    EXPECT_STREQ(bytes, "cde.");
    EXPECT_EQ(text.atGet(2, bytes, 0), 0U);
}

TEST(ContainerTest, PutOfAContainerMakesRoomForAllOfIt) {
    Text text("abc");
    Text source("12345");
    EXPECT_EQ(text.atPut(1, &source, 2), 2U);
    EXPECT_EQ(text.size(), 6U) << "1 + the source's capacity, not 1 + 2";
    EXPECT_EQ(bytesOf(text), "a12" + zeros(3));
    EXPECT_EQ(text.atPut(1, &source, 5), 5U);
    EXPECT_EQ(bytesOf(text), "a12345");
}

TEST(ContainerTest, PutOfAContainerThatFitsDoesNotGrow) {
    Text text("abcdefgh");
    Text source("123");
    EXPECT_EQ(allocationsOf([&] { EXPECT_EQ(text.atPut(5, &source, 1), 1U); }), 0U);
    EXPECT_EQ(bytesOf(text), "abcde1gh");
}

TEST(ContainerTest, PutOfAContainerUsesItsOwnElementSize) {
    Container pairs(2, 2);
    Text source("12345678");
    EXPECT_EQ(pairs.atPut(0, &source, 3), 3U);
    EXPECT_EQ(pairs.size(), 8U);
    EXPECT_EQ(bytesOf(pairs), "123456" + zeros(10));
}

TEST(ContainerTest, PutOfAnEmptyContainerCopiesNothing) {
    Text text("abc");
    Container empty(0, 1);
    EXPECT_EQ(text.atPut(1, &empty, 0), 0U);
    EXPECT_EQ(bytesOf(text), "abc");
    EXPECT_EQ(text.atPut(5, &empty, 0), 0U);
    EXPECT_EQ(text.size(), 5U);
    Container none(0, 1);
    EXPECT_EQ(none.atPut(0, &empty, 0), 0U);
    EXPECT_EQ(none.data(), nullptr);
}

TEST(ContainerTest, PutOfItselfCopiesItsOldContents) {
    Text text("abc");
    EXPECT_EQ(text.atPut(2, &text, 3), 3U);
    EXPECT_EQ(bytesOf(text), "ababc") << "the source is read after the growth";
}

TEST(ContainerTest, GetIntoAContainerGrowsItToTheNumberCopied) {
    Text text("abcdef");
    Container destination(0, 1);
    EXPECT_EQ(text.atGet(1, &destination, 3), 3U);
    EXPECT_EQ(bytesOf(destination), "bcd");
    EXPECT_EQ(text.atGet(4, &destination, 9), 2U);
    EXPECT_EQ(bytesOf(destination), "efd") << "a larger destination keeps its size and its rest";
    EXPECT_EQ(text.atGet(0, &destination, UINT_MAX), 6U);
    EXPECT_EQ(bytesOf(destination), "abcdef");
}

TEST(ContainerTest, GetIntoAContainerAtTheEndCopiesNothing) {
    Text text("abc");
    Container destination(0, 1);
    EXPECT_EQ(text.atGet(3, &destination, 5), 0U);
    EXPECT_EQ(destination.data(), nullptr);
    EXPECT_EQ(Container(0, 1).atGet(0, &text, 1), 0U) << "no storage to read from";
    EXPECT_EQ(bytesOf(text), "abc");
}

TEST(ContainerTest, GetIntoAContainerUsesTheReadersElementSize) {
    Container pairs(3, 2);
    char source[] = "aabbcc";
    pairs.atPut(0, source, 3);
    Container quads(0, 4);
    EXPECT_EQ(pairs.atGet(1, &quads, 2), 2U);
    EXPECT_EQ(bytesOf(quads), "bbcc" + zeros(4));
}

TEST(ContainerTest, GetIntoItselfMovesElementsToTheFront) {
    Text text("abcdef");
    EXPECT_EQ(text.atGet(2, &text, 4), 4U);
    EXPECT_EQ(bytesOf(text), "cdefef");
}

TEST(ContainerTest, AllGrowthPassesTheVirtualExpandTo) {
    Intercepting container(10, 1);
    Text source("123");
    char bytes[] = "ab";
    container.expand();
    container.expand(2);
    container.atPut(17, bytes, 2);
    container.atPut(19, bytes);
    container.atPut(18, &source, 1);
    Text("abcdefghijklmnopqrstuvwxyz").atGet(0, &container, 25);
    EXPECT_EQ(container.asked, (Asked{15, 17, 19, 20, 21, 25}));
}

TEST(ContainerTest, NothingIsAskedForWhatFits) {
    Intercepting container(10, 1);
    Text source("123");
    char bytes[] = "ab";
    container.atPut(8, bytes, 2);
    container.atPut(7, &source, 3);
    source.atGet(0, &container, 3);
    container.atGet(9, bytes, 2);
    container.reset();
    EXPECT_EQ(container.asked, Asked{});
}

TEST(ContainerTest, RefusedGrowthOverwritesNothing) {
    Intercepting container(2, 1);
    container.refusing = true;
    Text source("123");
    char bytes[] = "ab";
    EXPECT_EQ(container.atPut(1, bytes, 2), 0U);
    EXPECT_EQ(container.atPut(0, &source, 1), 0U);
    EXPECT_EQ(source.atGet(0, &container, 3), 0U);
    EXPECT_EQ(bytesOf(container), zeros(2));
    EXPECT_EQ(container.asked, (Asked{3, 3, 3}));
    Intercepting empty(0, 1);
    empty.refusing = true;
    EXPECT_EQ(empty.atPut(0, bytes), 0U);
    EXPECT_EQ(source.atGet(0, &empty, 3), 0U);
}

TEST(ContainerTest, AnOverriddenSizeDecidesNothingForBytes) {
    for (const unsigned int stated : misstatements) {
        SCOPED_TRACE(stated);
        Misstating container(stated);
        char source[] = "XY";
        char bytes[] = "..........";
        EXPECT_EQ(container.atGet(1, bytes, 9), 3U);
        EXPECT_STREQ(bytes, "bcd.......");
        EXPECT_EQ(container.atPut(1, source, 2), 2U);
        EXPECT_EQ(bytesOf(container), "aXYd") << "it fitted";
        EXPECT_EQ(container.atPut(3, source, 2), 2U);
        EXPECT_EQ(bytesOf(container), "aXYXY") << "it did not fit";
        container.expand();
        EXPECT_EQ(container.capacity(), 7U) << "half of five more";
        container.expand(2);
        EXPECT_EQ(bytesOf(container), "aXYXY" + zeros(4));
        container.expandTo(20);
        EXPECT_EQ(container.capacity(), 20U);
        container.expandTo(1);
        EXPECT_EQ(bytesOf(container), "a");
    }
}

TEST(ContainerTest, AnOverriddenSizeDecidesNothingBetweenContainers) {
    for (const unsigned int stated : misstatements) {
        SCOPED_TRACE(stated);
        Misstating source(stated);
        Misstating container(stated);
        EXPECT_EQ(container.atPut(0, &source, 2), 2U);
        EXPECT_EQ(bytesOf(container), "abcd") << "all of the source would have fitted";
        EXPECT_EQ(container.atPut(1, &source, 2), 2U);
        EXPECT_EQ(bytesOf(container), "aabd" + zeros(1)) << "room for all of the source";
        EXPECT_EQ(source.atGet(1, &container, 9), 3U);
        EXPECT_EQ(bytesOf(container), "bcdd" + zeros(1)) << "it fitted";
        container.expandTo(2);
        EXPECT_EQ(source.atGet(0, &container, 3), 3U);
        EXPECT_EQ(bytesOf(container), "abc") << "it did not fit";
    }
}

TEST(ContainerTest, SizesBeyond32BitsAreRefusedAsAllocationsAre) {
    Text source("123");
    Container container(3, 4);
    char bytes[] = "abcd";
    EXPECT_TRUE(refuses([&] { container.expandTo(0x40000000U); })) << "2^32 bytes";
    EXPECT_TRUE(refuses([&] { container.expandTo(UINT_MAX); }));
    EXPECT_TRUE(refuses([&] { container.expand(UINT_MAX); })) << "a count past 32 bits";
    EXPECT_TRUE(refuses([&] { container.expand(UINT_MAX - 2); })) << "2^32 elements";
    EXPECT_TRUE(refuses([&] { container.atPut(UINT_MAX, bytes); }));
    EXPECT_TRUE(refuses([&] { container.atPut(2, bytes, UINT_MAX); }));
    EXPECT_TRUE(refuses([&] { container.atPut(UINT_MAX - 1, &source, 0); }));
    EXPECT_TRUE(refuses([&] { Container(0x10000, 0x10000); }));
    EXPECT_TRUE(refuses([&] { Container(UINT_MAX, UINT_MAX); }));
    EXPECT_EQ(bytesOf(container), zeros(12));
    EXPECT_EQ(container.size(), 3U);
}

TEST(ContainerTest, ElementsWithoutBytesCanBeAsManyAs32BitsCount) {
    Container container(5, 0);
    container.expand(UINT_MAX - 5);
    EXPECT_EQ(container.size(), UINT_MAX);
    EXPECT_TRUE(refuses([&] { container.expand(1); }));
}

TEST(ContainerTest, ARefusedSizeReachesTheAllocatorWhole) {
    Container container(3, 4);
    EXPECT_TRUE(refuses([&] { container.expandTo(0x40000001U); }));
    EXPECT_EQ(kfl_test::allocations::lastSize, SIZE_MAX);
}

TEST(ContainerTest, AFailedAllocationLeavesTheContainerAsItWas) {
    Text source("12345");
    char bytes[] = "XY";
    struct Row {
        const char* name;
        void (*grow)(Container&, Container&, char*);
    };
    const Row rows[] = {
        {"expandTo", [](Container& c, Container&, char*) { c.expandTo(9); }},
        {"shrinking", [](Container& c, Container&, char*) { c.expandTo(1); }},
        {"expand", [](Container& c, Container&, char*) { c.expand(); }},
        {"expand by", [](Container& c, Container&, char*) { c.expand(3); }},
        {"put", [](Container& c, Container&, char* b) { c.atPut(2, b, 2); }},
        {"put one", [](Container& c, Container&, char* b) { c.atPut(3, b); }},
        {"put container", [](Container& c, Container& s, char*) { c.atPut(0, &s, 1); }},
        {"get into", [](Container& c, Container& s, char*) { s.atGet(0, &c, 5); }},
    };
    for (const Row& row : rows) {
        Text text("abc");
        const AllocationCount count;
        EXPECT_EQ(failEachRequest([&] { row.grow(text, source, bytes); },
                                  [&] {
                                      EXPECT_EQ(text.size(), 3U) << row.name;
                                      EXPECT_EQ(bytesOf(text), "abc") << row.name;
                                  }),
                  1U)
            << row.name;
        EXPECT_EQ(count.live(), 0) << row.name;
        EXPECT_NE(text.size(), 3U) << row.name;
    }
}

TEST(ContainerTest, AFailedConstructionLeaksNothing) {
    const AllocationCount count;
    EXPECT_EQ(failEachRequest([] { const Container one(4); }, [] {}), 1U);
    EXPECT_EQ(failEachRequest([] { const Container many(4, 4); }, [] {}), 1U);
    EXPECT_EQ(count.live(), 0);
}

}  // namespace
