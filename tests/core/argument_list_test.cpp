#include "core/argument_list.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <type_traits>

#include "kfl/BoundedStringBase.h"

namespace {

using kfl::detail::ArgumentList;
using kfl::detail::asArgument;
using kfl::detail::listBehind;
using kfl::detail::pointerIn;

// The three kinds of type that a va_list is somewhere, as a list of one number.
struct Tag {
    int number;
};
using ArrayList = Tag[1];
using PointerList = Tag*;
struct StructureList {
    Tag* next;
};

TEST(ArgumentListTest, AnArrayComesAsTheAddressOfItsFirstElement) {
    ArrayList list = {{42}};
    void* const argument = asArgument(list);
    EXPECT_EQ(argument, &list[0]);
    static_assert(std::is_same<decltype(listBehind<ArrayList>(argument)), ArrayList&>::value, "");
    EXPECT_EQ(&listBehind<ArrayList>(argument), &list);
    EXPECT_EQ(listBehind<ArrayList>(argument)[0].number, 42);
}

TEST(ArgumentListTest, APointerComesAsItself) {
    Tag tag = {42};
    PointerList list = &tag;
    void* const argument = asArgument(list);
    EXPECT_EQ(argument, &tag);
    static_assert(std::is_same<decltype(listBehind<PointerList>(argument)), PointerList>::value,
                  "");
    EXPECT_EQ(listBehind<PointerList>(argument)->number, 42);
}

TEST(ArgumentListTest, AStructureComesAsItsAddress) {
    Tag tag = {42};
    StructureList list = {&tag};
    void* const argument = asArgument(list);
    EXPECT_EQ(argument, &list);
    static_assert(
        std::is_same<decltype(listBehind<StructureList>(argument)), StructureList&>::value, "");
    EXPECT_EQ(listBehind<StructureList>(argument).next->number, 42);
}

// An array that is a function's parameter is a pointer there, and still comes as what it points to.
void* asParameter(ArrayList list) { return asArgument(list); }

TEST(ArgumentListTest, AnArrayThatWasPassedOnIsStillItself) {
    ArrayList list = {{42}};
    EXPECT_EQ(asParameter(list), &list[0]);
}

std::string taken(int unused, ...) {
    va_list arguments;
    va_start(arguments, unused);
    ArgumentList list(asArgument(arguments));
    const int number = static_cast<int>(list.next());
    const std::string text = static_cast<const char*>(pointerIn(list.next()));
    const long wide = list.next();
    va_end(arguments);
    return std::to_string(number) + " " + text + " " + std::to_string(wide);
}

TEST(ArgumentListTest, GivesArgumentsOneAfterTheOther) {
    EXPECT_EQ(taken(0, -1, "two", -3L), "-1 two -3");
}

// A host's own variadic function: it hands its va_list on as it would to vsnprintf.
template <class Element>
int handOn(char* buf, unsigned int size, const char* format, Element* arguments) {
    return BoundedStringBase::makeString(buf, size, format, arguments);
}
template <class Structure>
int handOn(char* buf, unsigned int size, const char* format, Structure& arguments) {
    return BoundedStringBase::makeString(buf, size, format, &arguments);
}

int hostFormat(char* buf, unsigned int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int stored = handOn(buf, size, format, arguments);
    va_end(arguments);
    return stored;
}

int hostFormatTwice(char* buf, unsigned int size, const char* format, va_list arguments) {
    BoundedStringBase::makeString(buf, size, format, asArgument(arguments));
    return BoundedStringBase::makeString(buf, size, format, asArgument(arguments));
}

int hostFormatAndNext(char* buf, unsigned int size, int* next, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int stored = hostFormatTwice(buf, size, format, arguments);
    *next = va_arg(arguments, int);
    va_end(arguments);
    return stored;
}

TEST(ArgumentListTest, MakeStringTakesAHostsList) {
    char buf[64];
    EXPECT_EQ(hostFormat(buf, 63, "%s/%03d-%02d|%lx", "agent", 3, 7, 255L), 15);
    EXPECT_STREQ(buf, "agent/003-07|ff");
}

TEST(ArgumentListTest, MakeStringTakesMoreArgumentsThanThereAreRegisters) {
    char buf[64];
    EXPECT_EQ(
        hostFormat(buf, 63, "%d%s%ld%d%c%d%d%s%d%d%d", 1, "a", 2L, 3, 'b', 4, 5, "c", 6, 7, 8), 11);
    EXPECT_STREQ(buf, "1a23b45c678");
}

TEST(ArgumentListTest, MakeStringLeavesTheCallersListWhereItWas) {
    char buf[64];
    int next = 0;
    EXPECT_EQ(hostFormatAndNext(buf, 63, &next, "%d %d", 41, 42), 5);
    EXPECT_STREQ(buf, "41 42");
    EXPECT_EQ(next, 41);
}

// A host that takes the first arguments itself.
int hostFormatRest(char* buf, unsigned int size, const char* format, int numbers, int fractions,
                   ...) {
    va_list arguments;
    va_start(arguments, fractions);
    for (int i = 0; i < fractions; ++i) EXPECT_EQ(va_arg(arguments, double), i + 0.5);
    for (int i = 0; i < numbers; ++i) EXPECT_EQ(va_arg(arguments, int), i);
    const int stored = handOn(buf, size, format, arguments);
    EXPECT_EQ(va_arg(arguments, int), numbers);
    va_end(arguments);
    return stored;
}

TEST(ArgumentListTest, MakeStringTakesTheRestOfAList) {
    for (int used = 0; used <= 8; ++used) {
        char buf[64];
        hostFormatRest(buf, 63, "%d,%d,%d", used, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
        EXPECT_EQ(buf, std::to_string(used) + ',' + std::to_string(used + 1) + ',' +
                           std::to_string(used + 2));
    }
}

TEST(ArgumentListTest, MakeStringTakesTheRestBehindFractions) {
    for (int used = 0; used <= 6; ++used) {
        char buf[64];
        hostFormatRest(buf, 63, "%d %d", used, 3, 0.5, 1.5, 2.5, 0, 1, 2, 3, 4, 5, 6, 7);
        EXPECT_EQ(buf, std::to_string(used) + ' ' + std::to_string(used + 1));
        // More than there are registers for.
        hostFormatRest(buf, 63, "%d %d", used, 10, 0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5,
                       0, 1, 2, 3, 4, 5, 6, 7);
        EXPECT_EQ(buf, std::to_string(used) + ' ' + std::to_string(used + 1));
    }
}

TEST(ArgumentListTest, FormatTakesArgumentsFromTheCall) {
    char buf[64];
    EXPECT_EQ(BoundedStringBase::format(buf, 63, "%d%s%ld%d%c%d%d%s%d%d%d", 1, "a", 2L, 3, 'b', 4,
                                        5, "c", 6, 7, 8),
              11);
    EXPECT_STREQ(buf, "1a23b45c678");
}

}  // namespace
