// StringFormat and BoundedStringBase as an already compiled host knows them.
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/AString.h"
#include "kfl/BoundedStringBase.h"
#include "kfl/StringFormat.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

using FormatRoom = Room<bits(4, 8)>;

TEST(StringFormatLayoutTest, HasNoFieldsOfItsOwn) {
    EXPECT_EQ(sizeof(StringFormat), bits(4, 8));
    EXPECT_EQ(sizeof(BoundedStringBase), 1U);
}

using Constructor = void (*)(void* object, const char* format, ...);

TEST(StringFormatLayoutTest, HasTwoSlots) {
    FormatRoom object;
    reinterpret_cast<Constructor>(exported("_ZN12StringFormatC1EPKcz"))(object, "%s-%d", "ab", 7);
    expectTable(object, 0, "_ZTI12StringFormat",
                {"_ZN12StringFormatD1Ev", "_ZN12StringFormatD0Ev"});
    expectTableWords("_ZTV12StringFormat", 4);
    EXPECT_STREQ((call<const char*, const void*>("_ZNK12StringFormat9getStringEv", object)),
                 "ab-7");
    call<void, void*>("_ZN12StringFormatD1Ev", object);
    call<void, void*>("_ZN12StringFormatD2Ev", object);
    EXPECT_TRUE(object.intact());
}

TEST(StringFormatLayoutTest, BaseObjectConstructorIsThereForDerivedClasses) {
    FormatRoom object;
    reinterpret_cast<Constructor>(exported("_ZN12StringFormatC2EPKcz"))(object, "%d", 42);
    EXPECT_STREQ((call<const char*, const void*>("_ZNK12StringFormat9getStringEv", object)), "42");
}

TEST(StringFormatLayoutTest, DeletingDestructorReleasesTheObject) {
    void* const object = ::operator new(sizeof(StringFormat));
    reinterpret_cast<Constructor>(exported("_ZN12StringFormatC1EPKcz"))(object, "x");
    callSlot<void>(1, object);
}

TEST(StringFormatLayoutTest, AStringIsMadeOfIt) {
    FormatRoom format;
    reinterpret_cast<Constructor>(exported("_ZN12StringFormatC1EPKcz"))(format, "abc");
    Room<bits(28, 48)> text;
    call<void, void*, const void*>("_ZN3kfl7AStringC1ERK12StringFormat", text, format);
    EXPECT_STREQ(text.text(bits(12, 24)), "abc");
    EXPECT_EQ(text.word(bits(16, 32)), 3U);
    EXPECT_EQ(text.word(bits(20, 36)), 3U);
    EXPECT_EQ(text.word(bits(24, 40)), 100U);
    EXPECT_TRUE(text.intact());
    call<void, void*>("_ZN3kfl7AStringD1Ev", text);
}

TEST(BoundedStringBaseLayoutTest, ItsOperationsTakeNoObject) {
    char out[8] = {};
    char* const end = call<char*, char*, char*, long, int, int, int, int>(
        "_ZN17BoundedStringBase6numberEPcS0_liiii", out, out + 7, -42, 10, 5, -1,
        BoundedStringBase::SIGN);
    EXPECT_EQ(end, out + 5);
    EXPECT_STREQ(out, "  -42");

    const char* digits = "42x";
    EXPECT_EQ((call<int, const char**>("_ZN17BoundedStringBase9skip_atoiEPPKc", &digits)), 42);
    EXPECT_STREQ(digits, "x");

    char plain[8];
    EXPECT_EQ((call<int, char*, unsigned int, const char*, void*>(
                  "_ZN17BoundedStringBase10makeStringEPcjPKcPv", plain, 7, "%%", plain)),
              1);
    EXPECT_STREQ(plain, "%");
}

TEST(BoundedStringBaseLayoutTest, ItsObjectsAreMadeAndDestroyedInTheLibrary) {
    Room<1> object;
    call<void, void*>("_ZN17BoundedStringBaseC1Ev", object);
    call<void, void*>("_ZN17BoundedStringBaseD1Ev", object);
    exported("_ZN17BoundedStringBaseC2Ev");
    exported("_ZN17BoundedStringBaseD2Ev");
    EXPECT_TRUE(object.intact());
}

}  // namespace
