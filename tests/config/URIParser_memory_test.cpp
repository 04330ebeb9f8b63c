// URIs and pairs whose texts are longer than 32 bits can say.
#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "kfl/AString.h"
#include "kfl/KeyValue.h"
#include "kfl/URIParser.h"
#include "tests/support/counted_new.h"
#include "tests/support/huge_text.h"

namespace {

using kfl_test::AllocationCount;
using kfl_test::HugeText;

TEST(URIParserMemoryTest, AHostPast32BitsFailsAsAnAllocationDoes) {
    HugeText huge;
    ASSERT_NE(huge.text(), nullptr);
    const AllocationCount count;
    {
        std::strcpy(huge.end(), ":7/path");
        kfl::AString host("before");
        kfl::AString path("before");
        unsigned short port = 0;
        auto protocol = kfl::protocolTFTP;
        const auto splitHost = [&] { return kfl::URIParser::parseHost(huge.text(), host, port); };
        const auto splitAll = [&] {
            return kfl::URIParser::parseFileTransferURI(huge.text(), protocol, host, port, path);
        };
        if (kfl_test::hasHugeText) {
            EXPECT_THROW(splitHost(), std::bad_alloc);
            EXPECT_EQ(port, 0);
            EXPECT_THROW(splitAll(), std::bad_alloc);
            EXPECT_EQ(port, 7);
            EXPECT_STREQ(host.c_str(), "before");
            EXPECT_STREQ(path.c_str(), "before");
        } else {
            EXPECT_TRUE(splitHost());
            EXPECT_EQ(host.length(), huge.size());
            EXPECT_TRUE(splitAll());
            EXPECT_EQ(host.length(), huge.size());
            EXPECT_STREQ(path.c_str(), "path");
        }
    }
    EXPECT_EQ(count.live(), 0);
}

TEST(NameValuePairMemoryTest, ATextPast32BitsFailsAsAnAllocationDoes) {
    const HugeText huge;
    ASSERT_NE(huge.text(), nullptr);
    const AllocationCount count;
    if (kfl_test::hasHugeText) {
        EXPECT_THROW(kfl::NameValuePair("name", huge.text()), std::bad_alloc);
    } else {
        EXPECT_EQ(kfl::NameValuePair("name", huge.text()).value.length(), huge.size());
    }
    EXPECT_EQ(count.live(), 0);
}

}  // namespace
