// Configuration files, pairs and transfer locations.
#include <gtest/gtest.h>

#include <climits>

#include "tests/old_host/old_kfl.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::TemporaryFolder;

TEST(OldHost, ConfigurationIsReadAndWalked) {
    const TemporaryFolder folder;
    const std::string path = folder.write("agent.ini", "[timers]\nhello=30\nratio=0.5\non=true\n");
    kfl::IniFileParser config;
    ASSERT_TRUE(config.parseFile(path.c_str()));
    EXPECT_TRUE(config.modified);
    config.modified = false;
    EXPECT_EQ(config.getInt("HELLO", "timers"), 30);
    EXPECT_EQ(config.getInt("none", "timers"), INT_MIN);
    EXPECT_EQ(config.getFloat("ratio", "timers"), 0.5F);
    EXPECT_TRUE(config.getBool("on", "timers"));
    EXPECT_STREQ(config.getValue("hello", "timers"), "30");
    EXPECT_STREQ(config.getString("hello", "timers"), "30");
    EXPECT_EQ(config.sections.itemCount, 2U);
    const auto* const section = static_cast<kfl::st_section*>(config.sections.idAt(1));
    ASSERT_EQ(section, config.getSection("timers"));
    EXPECT_STREQ(section->name.data, "timers");
    const auto* const key = static_cast<st_key*>(section->keys.idAt(0));
    ASSERT_EQ(key, config.getKey("hello", "timers"));
    EXPECT_STREQ(key->name.data, "hello");
    EXPECT_STREQ(key->value.data, "30");

    config.flags = 2 | 4;
    EXPECT_TRUE(config.setValue("name", "agent", "new"));
    EXPECT_TRUE(config.modified);
    EXPECT_STREQ(config.getSection("new")->name.data, "new");
    EXPECT_NE(config.createSection("last"), nullptr);
    EXPECT_EQ(config.sections.itemCount, 4U);
}

TEST(OldHost, RecordsAreMadeByHosts) {
    // The section takes it over.
    auto* const key = new st_key;
    key->name.append("n");
    kfl::st_section section("s");
    section.keys.add(key);
    EXPECT_STREQ(section.name.data, "s");
    EXPECT_EQ(section.keys.first(), key);

    kfl::AString line("  two = words ");
    kfl::AString word(10U);
    kfl::trim(line);
    kfl::getNextWord(line, word);
    EXPECT_STREQ(word.data, "two");
    EXPECT_EQ(kfl::compareNoCase("Two", word.data), 0);
}

TEST(OldHost, PairsAreFilledFromAFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("upload.conf", "host=central\n");
    char hostKey[] = "host";
    char portKey[] = "port";
    char fallback[] = "69";
    kfl::KeyValuePair host(hostKey, fallback);
    kfl::KeyValuePair port(portKey, fallback);
    kfl::KeyValuePair* pairs[] = {&host, &port, nullptr};
    EXPECT_EQ(kfl::KeyValueParser::parse(path.c_str(), pairs), 2);
    EXPECT_STREQ(host.key.data, "host");
    EXPECT_STREQ(host.value.data, "central");
    EXPECT_STREQ(port.value.data, "69");

    const ProtectionElement held(new kfl::NameValuePair("n", "v"));
    const auto* const pair = static_cast<kfl::NameValuePair*>(held.object);
    EXPECT_STREQ(pair->name.data, "n");
    EXPECT_STREQ(pair->value.data, "v");
    EXPECT_EQ(pair->count, 1U);
}

TEST(OldHost, LocationsAreTakenApart) {
    kfl::FileTransferProtocol protocol{};
    kfl::AString host(10U);
    kfl::AString path(10U);
    unsigned short port = 0;
    EXPECT_TRUE(
        kfl::URIParser::parseFileTransferURI("http://server:8080/a/b", protocol, host, port, path));
    EXPECT_EQ(protocol, 2);
    EXPECT_STREQ(kfl::fileTransferProtocols[protocol], "HTTP");
    EXPECT_STREQ(host.data, "server");
    EXPECT_EQ(port, 8080);
    EXPECT_STREQ(path.data, "a/b");
    kfl::AString alone(10U);
    EXPECT_TRUE(kfl::URIParser::parseHost("box:7", alone, port));
    EXPECT_EQ(port, 7);
    EXPECT_EQ(kfl::lookupStringIgnoreCase("FTP", kfl::fileTransferProtocols), 1);
    const kfl::URIParser parser;
    EXPECT_EQ(sizeof parser, 1U);
}

}  // namespace
