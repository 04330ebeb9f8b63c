// The ready definitions of what a host supplies, with the calls to syslog caught.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "kfl/Host.h"

namespace {

std::vector<std::pair<int, std::string>> lines;

}  // namespace

extern "C" void __wrap_syslog(int priority, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

extern "C" void __wrap_syslog(int priority, const char* format, ...) {
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    lines.emplace_back(priority, text);
}

namespace {

TEST(KflHostTest, IsCalledAsItsProgramFile) { EXPECT_STREQ(applicationName, "kfl_host_test"); }

TEST(KflHostTest, FilesAnEventAsALineOfTheSystemLog) {
    const char* const usual = std::exchange(applicationName, "device");
    lines.clear();
    EXPECT_EQ(genSyslogEvent(3, 10, 1, 5, "100% of %s"), 0);
    EXPECT_EQ(genSyslogEvent(7, 1234, 123, -1, ""), 0);
    applicationName = usual;
    const std::vector<std::pair<int, std::string>> expected = {{3, "device/010-01-5|100% of %s"},
                                                               {7, "device/1234-123--1|"}};
    EXPECT_EQ(lines, expected);
}

TEST(KflHostTest, MakesTextsAndCutsThemBehind1023Characters) {
    EXPECT_STREQ(Parms("%d of %s", 7, "nine"), "7 of nine");
    const std::string longest(1023, 'x');
    EXPECT_EQ(Parms("%s", longest.c_str()), longest);
    EXPECT_EQ(Parms("%sy", longest.c_str()), longest);
    EXPECT_STREQ(Parms("%s", ""), "");
}

TEST(KflHostTest, KeepsATextForEachThread) {
    const char* const mine = Parms("mine");
    std::thread([] { EXPECT_STREQ(Parms("another"), "another"); }).join();
    EXPECT_STREQ(mine, "mine");
}

}  // namespace
