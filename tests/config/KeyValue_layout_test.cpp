// The pairs and the parser of URIs as hosts compiled long ago know them: sizes, offsets, slots and
// names.
#include <gtest/gtest.h>

#include <new>

#include "kfl/AString.h"
#include "kfl/KeyValue.h"
#include "kfl/URIParser.h"
#include "tests/support/layout.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::bits;
using kfl_test::call;
using kfl_test::callSlot;
using kfl_test::exported;
using kfl_test::pointerAt;

// The fields of a string, from its start.
constexpr std::size_t stringSize = bits(28, 48);
constexpr std::size_t characters = bits(12, 24);
constexpr std::size_t increment = bits(24, 40);

TEST(KeyValuePairLayoutTest, HasItsSizeAndTable) {
    char text[] = "text";
    const kfl::KeyValuePair built(text, text);
    EXPECT_EQ(sizeof built, bits(60, 104));
    kfl_test::expectTable(&built, 0, "_ZTIN3kfl12KeyValuePairE",
                          {"_ZN3kfl12KeyValuePairD1Ev", "_ZN3kfl12KeyValuePairD0Ev"});
    kfl_test::expectTableWords("_ZTVN3kfl12KeyValuePairE", 4);
}

TEST(KeyValuePairLayoutTest, FieldsStandAtTheirOffsets) {
    constexpr std::size_t key = bits(4, 8);
    constexpr std::size_t value = key + stringSize;
    kfl_test::Room<bits(60, 104)> pair;
    char keyText[] = "key";
    char valueText[] = "value";
    for (const char* constructor :
         {"_ZN3kfl12KeyValuePairC1EPcS1_", "_ZN3kfl12KeyValuePairC2EPcS1_"}) {
        call<void>(constructor, static_cast<void*>(pair), +keyText, +valueText);
        EXPECT_STREQ(pair.text(key + characters), "key");
        EXPECT_STREQ(pair.text(value + characters), "value");
        EXPECT_EQ(pair.word(key + increment), 100U);
        EXPECT_EQ(pair.word(value + increment), 100U);
        call<void>("_ZN3kfl12KeyValuePairD2Ev", static_cast<void*>(pair));
    }
    EXPECT_TRUE(pair.intact());
    const kfl::KeyValuePair built(keyText, valueText);
    EXPECT_STREQ(static_cast<char*>(pointerAt(&built, key + characters)), "key");
    EXPECT_EQ(static_cast<const void*>(&built.value),
              reinterpret_cast<const unsigned char*>(&built) + value);
}

TEST(KeyValuePairLayoutTest, TheSecondSlotDeletesThePair) {
    void* const pair = ::operator new(bits(60, 104));
    char text[] = "text";
    call<void>("_ZN3kfl12KeyValuePairC1EPcS1_", pair, +text, +text);
    callSlot<void>(1, pair);
}

TEST(NameValuePairLayoutTest, HasItsSizeAndTable) {
    const kfl::NameValuePair built("name", "value");
    EXPECT_EQ(sizeof built, bits(64, 112));
    kfl_test::expectTable(&built, 0, "_ZTIN3kfl13NameValuePairE",
                          {"_ZN3kfl13NameValuePairD1Ev", "_ZN3kfl13NameValuePairD0Ev"});
    kfl_test::expectTableWords("_ZTVN3kfl13NameValuePairE", 4);
}

TEST(NameValuePairLayoutTest, FieldsStandAtTheirOffsets) {
    constexpr std::size_t count = bits(4, 8);
    constexpr std::size_t name = bits(8, 16);
    constexpr std::size_t value = name + stringSize;
    kfl_test::Room<bits(64, 112)> pair;
    const char* const nameText = "name";
    const char* const valueText = "value";
    for (const char* constructor :
         {"_ZN3kfl13NameValuePairC1EPKcS2_", "_ZN3kfl13NameValuePairC2EPKcS2_"}) {
        call<void>(constructor, static_cast<void*>(pair), nameText, valueText);
        EXPECT_EQ(pair.word(count), 0U);
        EXPECT_STREQ(pair.text(name + characters), "name");
        EXPECT_STREQ(pair.text(value + characters), "value");
        EXPECT_EQ(pair.word(name + increment), 100U);
        EXPECT_EQ(pair.word(value + increment), 100U);
        call<void>("_ZN3kfl13NameValuePairD2Ev", static_cast<void*>(pair));
    }
    EXPECT_TRUE(pair.intact());
}

TEST(NameValuePairLayoutTest, TheSecondSlotDeletesThePair) {
    void* const pair = ::operator new(bits(64, 112));
    const char* const text = "text";
    call<void>("_ZN3kfl13NameValuePairC1EPKcS2_", pair, text, text);
    callSlot<void>(1, pair);
}

TEST(KeyValueParserLayoutTest, OperationsHaveTheirNames) {
    EXPECT_EQ(sizeof(kfl::KeyValueParser), 1U);
    kfl_test::Room<1> parser;
    for (const char* name : {"_ZN3kfl14KeyValueParserC1Ev", "_ZN3kfl14KeyValueParserD1Ev",
                             "_ZN3kfl14KeyValueParserC2Ev", "_ZN3kfl14KeyValueParserD2Ev"})
        call<void>(name, static_cast<void*>(parser));
    EXPECT_TRUE(parser.intact());

    const kfl_test::TemporaryFolder folder;
    const std::string path = folder.write("pairs", "key=found");
    char key[] = "key";
    char none[] = "none";
    kfl::KeyValuePair pair(key, none);
    kfl::KeyValuePair* pairs[] = {&pair, nullptr};
    EXPECT_EQ(call<int>("_ZN3kfl14KeyValueParser5parseEPKcPPNS_12KeyValuePairE", path.c_str(),
                        static_cast<kfl::KeyValuePair**>(pairs)),
              2);
    EXPECT_STREQ(pair.value.c_str(), "found");
}

TEST(URIParserLayoutTest, OperationsHaveTheirNames) {
    EXPECT_EQ(sizeof(kfl::URIParser), 1U);
    EXPECT_EQ(sizeof(kfl::FileTransferProtocol), 4U);
    kfl_test::Room<1> parser;
    for (const char* name : {"_ZN3kfl9URIParserC1Ev", "_ZN3kfl9URIParserD1Ev",
                             "_ZN3kfl9URIParserC2Ev", "_ZN3kfl9URIParserD2Ev"})
        call<void>(name, static_cast<void*>(parser));
    EXPECT_TRUE(parser.intact());

    int protocol = -1;
    unsigned short port = 1;
    kfl::AString host("");
    kfl::AString path("");
    const char* const uri = "FTP://h:7/p";
    EXPECT_TRUE(
        call<bool>("_ZN3kfl9URIParser20parseFileTransferURIEPKcRNS_20FileTransferProtocolERNS"
                   "_7AStringERtS6_",
                   uri, &protocol, &host, &port, &path));
    EXPECT_EQ(protocol, 1);
    EXPECT_STREQ(host.c_str(), "h");
    EXPECT_EQ(port, 7);
    EXPECT_STREQ(path.c_str(), "p");
    const char* const text = "x:8";
    EXPECT_TRUE(call<bool>("_ZN3kfl9URIParser9parseHostEPKcRNS_7AStringERt", text, &host, &port));
    EXPECT_STREQ(host.c_str(), "x");
    EXPECT_EQ(port, 8);
}

TEST(URIParserLayoutTest, TheTableHasSixPointersAndItsName) {
    EXPECT_EQ(exported("_ZN3kfl21fileTransferProtocolsE"), kfl::fileTransferProtocols);
    Dl_info info{};
    void* entry = nullptr;
    ASSERT_NE(dladdr1(kfl::fileTransferProtocols, &info, &entry, RTLD_DL_SYMENT), 0);
    EXPECT_EQ(kfl_test::fieldAt<std::size_t>(entry, bits(8, 16)), 6 * sizeof(void*));
    const char* const text = "https";
    EXPECT_EQ(call<int>("_ZN3kfl22lookupStringIgnoreCaseEPKcPS1_", text,
                        static_cast<const char**>(kfl::fileTransferProtocols)),
              3);
}

}  // namespace
