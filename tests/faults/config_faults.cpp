// Configuration files, pairs, transfer locations.
#include <errno.h>
#include <gtest/gtest.h>

#include "kfl/IniFileParser.h"
#include "kfl/KeyValue.h"
#include "kfl/URIParser.h"
#include "tests/faults/steps.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::AString;
using kfl::IniFileParser;
using kfl_test::Attempt;
using kfl_test::exhaust;
using kfl_test::exhaustMaking;
using kfl_test::exhaustSteps;
using kfl_test::Steps;

// What is in the sections that these tests know.
std::string contentOf(IniFileParser& parser) {
    std::string text;
    for (const char* const name : {"", "s", "t"}) {
        const kfl::st_section* const section = parser.getSection(name);
        if (!section) continue;
        text += '[' + std::string(name) + ']';
        for (unsigned int i = 0; i < section->keys.count(); ++i) {
            const auto* const key = static_cast<const st_key*>(section->keys.idAt(i));
            text += std::string(key->name.c_str()) + '=' + key->value.c_str() + ';';
        }
    }
    return text;
}

// Texts that are filled are emptied first, and stay so where there is no memory for more.
bool isOldOrEmpty(const AString& text) {
    return text.empty() || std::string("old") == text.c_str();
}

class ConfigFaults : public testing::Test {
  protected:
    kfl_test::TemporaryFolder folder_;
};

TEST_F(ConfigFaults, IniValues) {
    exhaustSteps(
        "INI: sections and values set",
        Steps<IniFileParser>{
            [] { return std::make_unique<IniFileParser>(); },
            {[](IniFileParser& p) { p.createSection("s"); },
             [](IniFileParser& p) { p.setValue("k", "v", "s"); },
             [](IniFileParser& p) { p.setValue("k", std::string(300, 'v').c_str(), "s"); },
             [](IniFileParser& p) { p.setValue("long", std::string(300, 'v').c_str(), ""); }},
            contentOf});
    exhaustMaking("INI: made and asked", [] {
        IniFileParser parser;
        EXPECT_EQ(parser.getValue("none", ""), nullptr);
    });
}

// What was read before a failure is kept. A second try is made with a fresh parser: this one
// refuses headers that it has.
TEST_F(ConfigFaults, IniFile) {
    const std::string whole = "[]a=1;b=2;[s]c=" + std::string(200, 'x') + ";[t]d=4;";
    const std::string path =
        folder_.write("ini", "a=1\nb=2\n[s]\nc=" + std::string(200, 'x') + "\n[t]\nd=4\n");
    exhaust("INI: a file parsed", [&](Attempt& attempt) {
        IniFileParser parser;
        bool parsed = false;
        attempt([&] { parsed = parser.parseFile(path.c_str()); });
        const std::string content = contentOf(parser);
        EXPECT_EQ(parsed, !attempt.failed("open") && !attempt.threw());
        EXPECT_TRUE(kfl_test::beginsWith(whole, content)) << content;
        if (attempt.failed("open")) {
            EXPECT_EQ(content, "[]");
            EXPECT_FALSE(parser.modified);
        } else if (!attempt.threw() && !attempt.failed("read")) {
            EXPECT_EQ(content, whole) << "closing and short reads lose nothing";
        }
        IniFileParser again;
        EXPECT_TRUE(again.parseFile(path.c_str()));
        EXPECT_EQ(contentOf(again), whole);
    });
}

TEST_F(ConfigFaults, KeyValue) {
    const std::string path = folder_.write("pairs", "host=" + std::string(120, 'h') + "\n");
    exhaust("key/value: a file read into pairs", [&](Attempt& attempt) {
        char host[] = "Host";
        char other[] = "other";
        char none[] = "default";
        kfl::KeyValuePair first(host, none);
        kfl::KeyValuePair second(other, none);
        kfl::KeyValuePair* pairs[] = {&first, &second, nullptr};
        int result = -1;
        attempt([&] { result = kfl::KeyValueParser::parse(path.c_str(), pairs); });
        EXPECT_STREQ(second.value.c_str(), "default");
        const std::string value = first.value.c_str();
        if (attempt.threw()) {
            EXPECT_TRUE(value == "default" || value.empty()) << "emptied, to be filled";
        } else if (result < 2) {
            EXPECT_EQ(value, "default") << "stays";
        }
        if (!attempt.threw()) {
            EXPECT_EQ(result == 0, attempt.failed("open"));
            EXPECT_TRUE(result != 1 || attempt.failed("read")) << "nothing was read";
        }
        EXPECT_EQ(kfl::KeyValueParser::parse(path.c_str(), pairs), 2);
        EXPECT_EQ(first.value.c_str(), std::string(120, 'h'));
    });
    exhaustMaking("key/value: pairs made", [] {
        char text[] = "text";
        const kfl::KeyValuePair pair(text, text);
        const ProtectionElement handle(new kfl::NameValuePair(text, text));
    });
}

TEST_F(ConfigFaults, URI) {
    const std::string host(150, 'h');
    const std::string uri = "tftp://" + host + ":69/" + std::string(160, 'p');
    exhaust("URI: split", [&](Attempt& attempt) {
        AString foundHost("old");
        AString path("old");
        kfl::FileTransferProtocol protocol{};
        unsigned short port = 0;
        bool split = false;
        const auto work = [&] {
            split =
                kfl::URIParser::parseFileTransferURI(uri.c_str(), protocol, foundHost, port, path);
        };
        attempt(work);
        if (attempt.threw()) {
            EXPECT_TRUE(isOldOrEmpty(path)) << path.c_str();
            EXPECT_TRUE(isOldOrEmpty(foundHost) || foundHost.c_str() == host);
            work();
        }
        EXPECT_TRUE(split);
        EXPECT_EQ(foundHost.c_str(), host);
        EXPECT_EQ(port, 69);
        EXPECT_EQ(path.length(), 160U);
    });
    exhaust("URI: host and port split, words taken", [&](Attempt& attempt) {
        AString found("old");
        unsigned short port = 0;
        AString line((host + "=rest").c_str());
        AString word("old");
        const auto work = [&] {
            kfl::URIParser::parseHost((host + ":80").c_str(), found, port);
            kfl::getNextWord(line, word);
        };
        attempt(work);
        if (attempt.threw()) {
            EXPECT_TRUE(isOldOrEmpty(word)) << word.c_str();
            EXPECT_EQ(line.length(), host.length() + 5) << "nothing is taken off the line";
            EXPECT_TRUE(isOldOrEmpty(found) || found.c_str() == host);
            work();
        }
        EXPECT_EQ(found.c_str(), host);
        EXPECT_EQ(word.c_str(), host);
        EXPECT_STREQ(line.c_str(), "rest");
    });
}

}  // namespace
