// kfl uri, run as people and scripts run it.
#include "tests/tools/kfl_tool.h"

namespace {

using kfl_test::expectFailure;
using kfl_test::expectWrongUsage;
using kfl_test::outputOfKfl;

const std::string usageLine = "usage: kfl uri [--host] URI";

TEST(KflUriTest, ShowsThePartsOfALocation) {
    EXPECT_EQ(outputOfKfl({"uri", "tftp://10.0.0.1:69/boot/img"}),
              "protocol=TFTP\nhost=10.0.0.1\nport=69\npath=boot/img\n");
    EXPECT_EQ(outputOfKfl({"uri", "hTTps://h/x:80?y=z"}),
              "protocol=HTTPS\nhost=h\nport=0\npath=x:80?y=z\n");
}

TEST(KflUriTest, KnowsAllSchemes) {
    for (const std::string scheme : {"TFTP", "FTP", "HTTP", "HTTPS", "MMDDF"}) {
        EXPECT_EQ(outputOfKfl({"uri", scheme + "://h/x"}),
                  "protocol=" + scheme + "\nhost=h\nport=0\npath=x\n");
    }
}

TEST(KflUriTest, ALocationWithoutSchemeHasAnEmptyProtocol) {
    EXPECT_EQ(outputOfKfl({"uri", "h:70000/x"}), "protocol=\nhost=h\nport=4464\npath=x\n");
}

TEST(KflUriTest, ShowsAHostWithItsPort) {
    EXPECT_EQ(outputOfKfl({"uri", "--host", "h:8080"}), "host=h\nport=8080\n");
    EXPECT_EQ(outputOfKfl({"uri", "h", "--host"}), "host=h\nport=0\n");
    EXPECT_EQ(outputOfKfl({"uri", "--ho", "--host", ":80"}), "host=\nport=80\n");
    EXPECT_EQ(outputOfKfl({"uri", "--host", "--", "-h:1"}), "host=-h\nport=1\n");
}

TEST(KflUriTest, WhatIsNoLocationIsAFailure) {
    for (const std::string uri :
         {"", "/x", "h", "h/", "sftp://h/x", "http://h", "http:///x", "ftp://:21/x", "%s%n"}) {
        expectFailure({"uri", uri}, "not a file-transfer location: '" + uri + "'");
    }
    expectFailure({"uri", "--host", ""}, "no host in ''");
}

TEST(KflUriTest, OneLocationMustBeGiven) {
    expectWrongUsage({"uri"}, "kfl uri: too few arguments", usageLine);
    expectWrongUsage({"uri", "--host"}, "kfl uri: too few arguments", usageLine);
    expectWrongUsage({"uri", "h/x", "h/y"}, "kfl uri: too many arguments", usageLine);
}

TEST(KflUriTest, UnknownOptionIsWrongUsage) {
    expectWrongUsage({"uri", "--port", "h/x"}, "--port", usageLine);
    expectWrongUsage({"uri", "--host=h", "h/x"}, "--host", usageLine);
    expectWrongUsage({"uri", "-H", "h/x"}, "'H'", usageLine);
}

TEST(KflUriTest, HelpIsAnsweredBeforeAnythingElseIsChecked) {
    EXPECT_EQ(outputOfKfl({"uri", "a", "b", "--help"}), outputOfKfl({"help", "uri"}));
}

}  // namespace
