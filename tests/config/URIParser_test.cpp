#include "kfl/URIParser.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/config/uri_model.h"
#include "tests/support/counted_new.h"
#include "tests/support/seed.h"

namespace {

using kfl::AString;
using kfl::FileTransferProtocol;
using kfl::fileTransferProtocols;
using kfl::lookupStringIgnoreCase;
using kfl::URIParser;
using kfl_test::AllocationCount;
using kfl_test::FailingNew;
using kfl_test::modelOfHost;
using kfl_test::modelOfURI;
using kfl_test::oldPort;
using kfl_test::oldProtocol;
using kfl_test::oldText;
using kfl_test::Split;
using kfl_test::splitHost;
using kfl_test::splitURI;

// --- the table of protocols ---

TEST(URIParserTest, ProtocolsAreTheIndexesOfTheTable) {
    static_assert(std::is_same<decltype(kfl::fileTransferProtocols), const char* [6]>::value,
                  "six pointers, which lookupStringIgnoreCase takes as they are");
    EXPECT_STREQ(fileTransferProtocols[kfl::protocolTFTP], "TFTP");
    EXPECT_STREQ(fileTransferProtocols[kfl::protocolFTP], "FTP");
    EXPECT_STREQ(fileTransferProtocols[kfl::protocolHTTP], "HTTP");
    EXPECT_STREQ(fileTransferProtocols[kfl::protocolHTTPS], "HTTPS");
    EXPECT_STREQ(fileTransferProtocols[kfl::protocolMMDDF], "MMDDF");
    EXPECT_EQ(fileTransferProtocols[kfl::protocolNone], nullptr);
    const int values[] = {kfl::protocolTFTP,  kfl::protocolFTP,   kfl::protocolHTTP,
                          kfl::protocolHTTPS, kfl::protocolMMDDF, kfl::protocolNone};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(values[i], i);
}

// The rights of the mapping that holds an address, as in "rw-p".
std::string rightsAt(const void* place) {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string rights;
        words >> std::hex >> begin >> dash >> end >> rights;
        if (address >= begin && address < end) return rights;
    }
    return "unmapped";
}

TEST(URIParserTest, TheTableOfProtocolsIsReadOnly) {
    static int writable = 0;
    EXPECT_EQ(rightsAt(&writable), "rw-p");
    EXPECT_EQ(rightsAt(&fileTransferProtocols[0]), "r--p");
    EXPECT_EQ(rightsAt(&fileTransferProtocols[5]), "r--p");
}

// A program may have been given a copy of the table; the library's own is looked up in its file.
TEST(URIParserTest, TheLibrarysOwnTableIsReadOnlyToo) {
    Dl_info info{};
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "_ZN3kfl9URIParserC1Ev"), &info), 0);
    void* const library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << info.dli_fname;
    auto* const table =
        static_cast<const char**>(dlsym(library, "_ZN3kfl21fileTransferProtocolsE"));
    ASSERT_NE(table, nullptr);
    EXPECT_STREQ(table[0], "TFTP");
    EXPECT_EQ(rightsAt(&table[0]), "r--p");
    EXPECT_EQ(rightsAt(&table[5]), "r--p");
    dlclose(library);
}

TEST(LookupStringIgnoreCaseTest, FindsTheFirstEqualEntry) {
    const char* table[] = {"one", "Two", "two", "", "three", nullptr};
    EXPECT_EQ(lookupStringIgnoreCase("one", table), 0);
    EXPECT_EQ(lookupStringIgnoreCase("ONE", table), 0);
    EXPECT_EQ(lookupStringIgnoreCase("two", table), 1);
    EXPECT_EQ(lookupStringIgnoreCase("tWO", table), 1);
    EXPECT_EQ(lookupStringIgnoreCase("", table), 3);
    EXPECT_EQ(lookupStringIgnoreCase("thrEE", table), 4);
}

TEST(LookupStringIgnoreCaseTest, NeitherABeginningNorMoreIsEqual) {
    const char* table[] = {"one", "HTTP", "HTTPS", nullptr};
    EXPECT_EQ(lookupStringIgnoreCase("on", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase("ones", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase("", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase(" one", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase("https", table), 2);
    EXPECT_EQ(lookupStringIgnoreCase("http", table), 1);
}

TEST(LookupStringIgnoreCaseTest, OnlyLettersHaveCase) {
    const char* table[] = {"a[b", "\xC4", nullptr};
    EXPECT_EQ(lookupStringIgnoreCase("A[B", table), 0);
    EXPECT_EQ(lookupStringIgnoreCase("a{b", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase("\xE4", table), -1);
    EXPECT_EQ(lookupStringIgnoreCase("\xC4", table), 1);
}

TEST(LookupStringIgnoreCaseTest, AnEmptyTableOrNothingGivesMinusOne) {
    const char* none[] = {nullptr};
    EXPECT_EQ(lookupStringIgnoreCase("", none), -1);
    EXPECT_EQ(lookupStringIgnoreCase("a", none), -1);
    EXPECT_EQ(lookupStringIgnoreCase(nullptr, fileTransferProtocols), -1);
    EXPECT_EQ(lookupStringIgnoreCase("a", nullptr), -1);
    EXPECT_EQ(lookupStringIgnoreCase(nullptr, nullptr), -1);
}

TEST(LookupStringIgnoreCaseTest, TakesTheTableOfProtocols) {
    EXPECT_EQ(lookupStringIgnoreCase("mmddf", fileTransferProtocols), 4);
    EXPECT_EQ(lookupStringIgnoreCase("sftp", fileTransferProtocols), -1);
}

// --- locations ---

struct URIRow {
    const char* uri;
    Split expected;
};

const Split refusedScheme{false, 5, oldText, oldPort, oldText};

const URIRow rows[] = {
    {"tftp://10.0.0.1:69/boot/img", {true, 0, "10.0.0.1", 69, "boot/img"}},
    {"ftp://h/x", {true, 1, "h", 0, "x"}},
    {"http://h:80/x", {true, 2, "h", 80, "x"}},
    {"HTTPS://h/x", {true, 3, "h", 0, "x"}},
    {"hTtPs://H/X", {true, 3, "H", 0, "X"}},
    {"mmddf://h/x", {true, 4, "h", 0, "x"}},
    // without a scheme
    {"h/x", {true, 5, "h", 0, "x"}},
    {"h:21/x", {true, 5, "h", 21, "x"}},
    {"tftp/x", {true, 5, "tftp", 0, "x"}},
    {"tftp:/x", {true, 5, "tftp", 0, "x"}},
    {"/x", refusedScheme},
    {"/", refusedScheme},
    {"//h/x", refusedScheme},
    {"", refusedScheme},
    {"h", refusedScheme},
    {"h:80", refusedScheme},
    // unknown schemes
    {"sftp://h/x", refusedScheme},
    {"ttp://h/x", refusedScheme},
    {"httpsx://h/x", refusedScheme},
    {"htt://h/x", refusedScheme},
    {" http://h/x", refusedScheme},
    {"http ://h/x", refusedScheme},
    {"://h/x", refusedScheme},
    {"://", refusedScheme},
    {"/http://h/x", refusedScheme},
    {"h/x://y", refusedScheme},
    // the first mark counts
    {"http://h/x://y", {true, 2, "h", 0, "x://y"}},
    {"http://ftp://h/x", {true, 2, "ftp", 0, "/h/x"}},
    // nothing, or no slash, behind the scheme
    {"http://", {false, 2, oldText, oldPort, oldText}},
    {"http://h", {false, 2, oldText, oldPort, oldText}},
    {"http://h:80", {false, 2, oldText, oldPort, oldText}},
    {"http:///x", {false, 2, oldText, oldPort, oldText}},
    {"http:///", {false, 2, oldText, oldPort, oldText}},
    // an empty host in front of a port: what was read before stays written
    {":80/x", {false, 5, oldText, 80, oldText}},
    {"ftp://:80/x", {false, 1, oldText, 80, oldText}},
    {"ftp://:/x", {false, 1, oldText, 0, oldText}},
    {"://:80/x", refusedScheme},
    // an empty path: host and port are set
    {"h/", {false, 5, "h", 0, oldText}},
    {"https://h:443/", {false, 3, "h", 443, oldText}},
    // the path is everything behind the slash
    {"h//x", {true, 5, "h", 0, "/x"}},
    {"h/ ", {true, 5, "h", 0, " "}},
    {"h/a/b/c?d=e#f%00", {true, 5, "h", 0, "a/b/c?d=e#f%00"}},
    {"user@h/x", {true, 5, "user@h", 0, "x"}},
    // a colon behind the first slash belongs to the path
    {"h/x:80", {true, 5, "h", 0, "x:80"}},
    {"http://h/:80", {true, 2, "h", 0, ":80"}},
    {"http://h/a:1/b", {true, 2, "h", 0, "a:1/b"}},
    // ports as atoi reads them, in 16 bits
    {"h:70000/x", {true, 5, "h", 4464, "x"}},
    {"h:65535/x", {true, 5, "h", 65535, "x"}},
    {"h:65536/x", {true, 5, "h", 0, "x"}},
    {"h:-1/x", {true, 5, "h", 65535, "x"}},
    {"h:+7/x", {true, 5, "h", 7, "x"}},
    {"h: 8/x", {true, 5, "h", 8, "x"}},
    {"h:9a/x", {true, 5, "h", 9, "x"}},
    {"h:0x10/x", {true, 5, "h", 0, "x"}},
    {"h:/5", {true, 5, "h", 0, "5"}},
    {"h: /5", {true, 5, "h", 0, "5"}},
    {"h:+/5", {true, 5, "h", 0, "5"}},
    {"h:port/x", {true, 5, "h", 0, "x"}},
    // only the first colon counts
    {"h:1:2/x", {true, 5, "h", 1, "x"}},
    {"::1/x", {false, 5, oldText, 0, oldText}},
    {"[fe80::1]:69/x", {true, 5, "[fe80", 0, "x"}},
};

TEST(URIParserTest, SplitsLocations) {
    for (const URIRow& row : rows) EXPECT_EQ(splitURI(row.uri), row.expected) << row.uri;
}

TEST(URIParserTest, ANullLocationIsRefusedWithoutAProtocol) {
    EXPECT_EQ(splitURI(nullptr), refusedScheme);
}

TEST(URIParserTest, ResultsKeepTheirRoom) {
    auto protocol = kfl::protocolNone;
    unsigned short port = 0;
    AString host(200);
    AString path(300);
    const AllocationCount count;
    ASSERT_TRUE(URIParser::parseFileTransferURI("ftp://host/path", protocol, host, port, path));
    ASSERT_TRUE(URIParser::parseHost("host:7", host, port));
    EXPECT_EQ(host.capacity(), 200U);
    EXPECT_EQ(path.capacity(), 300U);
    EXPECT_EQ(count.made(), 0U);
}

TEST(URIParserTest, CanBeConstructed) {
    const AllocationCount count;
    {
        const URIParser parser;
        static_cast<void>(parser);
    }
    EXPECT_EQ(count.made(), 0U);
}

TEST(URIParserTest, AFailedAllocationLosesNothing) {
    const std::string uri = "ftp://" + std::string(300, 'h') + ":7/" + std::string(300, 'p');
    const AllocationCount count;
    for (unsigned long n = 1; n <= 2; ++n) {
        auto protocol = kfl::protocolNone;
        unsigned short port = 0;
        AString host("");
        AString path("");
        {
            const FailingNew failing(n);
            EXPECT_THROW(URIParser::parseFileTransferURI(uri.c_str(), protocol, host, port, path),
                         std::bad_alloc);
        }
        EXPECT_EQ(port, 7);
        EXPECT_EQ(host.length(), n == 1 ? 0U : 300U);
        EXPECT_TRUE(URIParser::parseFileTransferURI(uri.c_str(), protocol, host, port, path));
        EXPECT_EQ(path.c_str(), std::string(300, 'p'));
    }
    {
        AString host("");
        unsigned short port = 0;
        const FailingNew failing(1);
        EXPECT_THROW(URIParser::parseHost("a host that is new", host, port), std::bad_alloc);
    }
    EXPECT_EQ(count.live(), 0);
}

// --- hosts ---

TEST(URIParserTest, SplitsHosts) {
    const struct {
        const char* text;
        const char* host;
        unsigned short port;
    } hosts[] = {
        {"h:8080", "h", 8080},     {"h", "h", 0},       {"h:", "h", 0},
        {":80", "", 80},           {":", "", 0},        {"h:70000", "h", 4464},
        {"h:-1", "h", 65535},      {"h: 5", "h", 5},    {"h:1:2", "h", 1},
        {"h:x", "h", 0},           {"::1", "", 0},      {"h/x:7/y", "h/x", 7},
        {"tftp://h:1", "tftp", 0}, {" h :1", " h ", 1}, {"\xFF\x80:1", "\xFF\x80", 1},
    };
    for (const auto& row : hosts) {
        const Split expected{true, oldProtocol, row.host, row.port, oldText};
        EXPECT_EQ(splitHost(row.text), expected) << row.text;
    }
}

TEST(URIParserTest, NoHostTextIsRefusedAndWritesNothing) {
    EXPECT_EQ(splitHost(nullptr), Split{});
    EXPECT_EQ(splitHost(""), Split{});
}

// --- a model, random and hostile texts ---

void expectAsModelled(const std::string& text) {
    // In a block of its exact size, so that a read past its end shows.
    const std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_EQ(splitURI(copy.data()), modelOfURI(text)) << text.substr(0, 100);
    EXPECT_EQ(splitHost(copy.data()), modelOfHost(text)) << text.substr(0, 100);
}

TEST(URIParserTest, TheTableFollowsTheModel) {
    for (const URIRow& row : rows) {
        EXPECT_EQ(modelOfURI(row.uri), row.expected) << row.uri;
        expectAsModelled(row.uri);
    }
}

TEST(URIParserTest, RandomTextsFollowTheModel) {
    kfl_test::Random random;
    const std::string pieces[] = {"://",   "/",     ":", "tftp", "HTTP", "ftp",
                                  "https", "mmddf", "h", "80",   "-70",  " ",
                                  "+",     "x.y",   "",  "//",   "\x80", "99999"};
    for (int i = 0; i < 20000; ++i) {
        std::string text = random.oneIn(2) ? pieces[3 + random.below(5)] + "://" : "";
        for (std::uint32_t n = random.below(8); n > 0; --n) text += pieces[random.below(18)];
        expectAsModelled(text);
        if (HasFailure()) return;
    }
}

TEST(URIParserTest, AllShortTextsFollowTheModel) {
    const std::string characters = ":/h7";
    for (unsigned length = 0; length <= 6; ++length) {
        for (unsigned number = 0; number < 1U << (2 * length); ++number) {
            std::string text;
            for (unsigned i = 0; i < length; ++i) text += characters[number >> (2 * i) & 3];
            expectAsModelled(text);
            expectAsModelled("ftp" + text);
        }
    }
}

TEST(URIParserTest, HostileTextsFollowTheModel) {
    const std::string large(1000000, 'a');
    const std::string texts[] = {
        large,
        large + "/",
        large + "/" + large,
        large + "://" + large + "/" + large,
        "http://" + large,
        "http://" + large + ":" + std::string(100000, '9') + "/x",
        "http://h:" + std::string(100000, ' ') + "7/x",
        std::string(1000000, '/'),
        std::string(1000000, ':'),
        "h" + std::string(1000000, '/'),
        "h" + std::string(1000000, ':') + "/x",
        "http://" + std::string(1000000, ':') + "/x",
        "tftp:/" + std::string(100000, ':') + "//h/x",
        ":/:/:/:/:/://:/",
        "http:/\xFF/h/x",
        "\xFF\xFE\xFD://\x80:\x81/\x82",
        "%s%n%s://%n:%d/%s",
        "http://%s%n:%n/%s%n%99999d",
        "http://h:99999999999999999999/x",
        "http://h:-99999999999999999999/x",
        "http://h:2147483648/x",
        "http://h:-2147483649/x",
        "http://h:4294967296/x",
        "http://\n\r\t\v:1\n/\n",
        "http://..:1/../../../../etc/passwd",
        "ht\ttp://h/x",
        "http//:h/x",
    };
    for (const std::string& text : texts) expectAsModelled(text);
}

TEST(URIParserTest, EveryByteMayStandInAHostAndAPath) {
    for (int i = 1; i < 256; ++i) {
        const std::string byte(1, static_cast<char>(i));
        expectAsModelled("ftp://a" + byte + "b:7/c" + byte + "d");
        expectAsModelled("ft" + byte + "p://h/x");
        expectAsModelled("h:" + byte + "7/x");
    }
}

}  // namespace
