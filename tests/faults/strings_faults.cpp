// Strings, formatting, streams, the list of texts.
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/AString.h"
#include "kfl/BoundedStringBase.h"
#include "kfl/StringFormat.h"
#include "kfl/StringsContainer.h"
#include "kfl/streams.h"
#include "tests/faults/steps.h"

namespace {

using kfl::AString;
using kfl_test::Attempt;
using kfl_test::exhaust;
using kfl_test::exhaustMaking;
using kfl_test::exhaustSteps;
using kfl_test::Fault;
using kfl_test::Injection;
using kfl_test::Steps;

std::string stateOf(const AString& text) {
    return std::string(text.c_str(), text.length()) + '/' + std::to_string(text.capacity());
}

TEST(StringsFaults, AString) {
    exhaustSteps(
        "strings: one that grows",
        Steps<AString>{
            [] { return std::make_unique<AString>("abc", 2); },
            {[](AString& s) { s.append("defghi"); }, [](AString& s) { s.append("xyz", 5); },
             [](AString& s) { s.append(s); }, [](AString& s) { s.insert(2, s.c_str() + 1); },
             [](AString& s) { s.expandTo(500); }, [](AString& s) { s.append('c'); }},
            [](AString& s) { return stateOf(s); }});
    exhaustMaking("strings: made, copied, shared, walked through", [] {
        AString text("one\ntwo");
        const AString copy(text);
        const ProtectionElement handle(new AString(10U));
        kfl::AStringIterator walk(text, 3);
        EXPECT_STREQ(walk.Next(), "one");
    });
}

TEST(StringsFaults, Formatting) {
    exhaust("formatting: a text and a string made of it", [](Attempt& attempt) {
        const StringFormat before("%s", "before");
        std::string formatted;
        formatted.reserve(40);
        attempt([&] {
            const StringFormat format("%d of %s", 7, "nine");
            formatted = format.getString();
            const AString text(format);
        });
        EXPECT_EQ(formatted, attempt.failed("vsnprintf") ? "before" : "7 of nine");
        EXPECT_STREQ(StringFormat("%d of %s", 7, "nine").getString(), "7 of nine");
    });
}

TEST(StringsFaults, BoundedFormattingAsksNobodyForAnything) {
    char text[40];
    const Injection watched(Fault{});
    EXPECT_EQ(BoundedStringBase::format(text, 39, "%s %08lx %c %o", "x", 77L, 'y', 8), 15);
    EXPECT_EQ(Injection::result().calls, 0U);
}

TEST(StringsFaults, Streams) {
    exhaust("streams: writing to a string", [](Attempt& attempt) {
        AString text("ab", 1);
        kfl::AStringOutputStream out(text);
        attempt([&] {
            out.write("cdef", 4);
            out.writeChar('g');
        });
        if (attempt.threw()) {
            EXPECT_TRUE(std::strcmp(text.c_str(), "ab") == 0 ||
                        std::strcmp(text.c_str(), "abcdef") == 0);
            text.clear();
            text.append("ab");
            out.write("cdef", 4);
            out.writeChar('g');
        }
        EXPECT_STREQ(text.c_str(), "abcdefg");
    });
}

TEST(StringsFaults, StringsContainer) {
    exhaustMaking("list of texts: made and filled", [] {
        StringsContainer list(3);
        char text[] = "text";
        EXPECT_EQ(list.addString(text), 0);
        EXPECT_EQ(list.getString(1), text);
    });
}

}  // namespace
