// Every line that the library hands to syslog, before the C library changes it.
#include "kfl/syslog_events.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "events/debug_filter.h"
#include "kfl/Host.h"
#include "tests/support/recording_host.h"

namespace {

struct Line {
    int priority;
    std::string format;
    std::string text;
};

std::vector<Line> lines;

}  // namespace

extern "C" void __wrap_syslog(int priority, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

extern "C" void __wrap_syslog(int priority, const char* format, ...) {
    char text[8192];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    lines.push_back({priority, format, text});
}

namespace {

class SyslogEventsTest : public testing::Test {
  protected:
    SyslogEventsTest() {
        lines.clear();
        kfl_test::clearEvents();
        applicationName = "mgr";
    }
    ~SyslogEventsTest() override {
        applicationName = "test";
        setExcludeFromDebugEventsFilter(nullptr);
        EXPECT_TRUE(kfl_test::events().empty());
    }

    // The only line of late.
    static std::string line() {
        EXPECT_EQ(lines.size(), 1U);
        const std::string text = lines.empty() ? "" : lines.back().text;
        lines.clear();
        return text;
    }
};

struct NumberRow {
    int first;
    int second;
    int third;
    const char* shown;
};

const NumberRow numbers[] = {
    {7, 3, 12, "007-03-12"},
    {123, 4, 5, "123-04-5"},
    {0, 0, 0, "000-00-0"},
    {99, 99, 99, "099-99-99"},
    {1234, 100, 1000, "1234-100-1000"},
    {-1, -1, -1, "-01--1--1"},
    {INT_MAX, INT_MIN, INT_MAX, "2147483647--2147483648-2147483647"},
};

TEST_F(SyslogEventsTest, WritesAnEventInItsFormat) {
    for (const NumberRow& row : numbers) {
        raiseSyslogEvent(LOG_INFO, row.first, row.second, row.third, "origin", 9, "link up");
        EXPECT_EQ(line(), "mgr/" + std::string(row.shown) + "|link up");
    }
}

TEST_F(SyslogEventsTest, WritesAnAlarmInItsFormat) {
    for (const NumberRow& row : numbers) {
        raiseSyslogAlarm(LOG_ERR, true, row.first, row.second, row.third, "origin", 9, "fan");
        EXPECT_EQ(line(), "mgr/" + std::string(row.shown) + "|ALARM-ON|fan");
        raiseSyslogAlarm(LOG_ERR, false, row.first, row.second, row.third, "origin", 9, "fan");
        EXPECT_EQ(line(), "mgr/" + std::string(row.shown) + "|ALARM-OFF|fan");
    }
}

// The texts are arguments of the format, never formats themselves.
TEST_F(SyslogEventsTest, HandsFixedFormatsToSyslog) {
    raiseSyslogEvent(LOG_INFO, 1, 2, 3, "", 0, "100% of %s%n");
    raiseSyslogAlarm(LOG_INFO, true, 1, 2, 3, "", 0, "100% of %s%n");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].format, "%s/%03d-%02d-%d|%s");
    EXPECT_EQ(lines[0].text, "mgr/001-02-3|100% of %s%n");
    EXPECT_EQ(lines[1].format, "%s/%03d-%02d-%d|ALARM-%s|%s");
    EXPECT_EQ(lines[1].text, "mgr/001-02-3|ALARM-ON|100% of %s%n");
}

TEST_F(SyslogEventsTest, HandsThePriorityOnUnchanged) {
    for (const int priority : {LOG_EMERG, LOG_DEBUG, LOG_LOCAL3 | LOG_ERR, 0, -1, INT_MAX}) {
        raiseSyslogEvent(priority, 1, 2, 3, "", 0, "text");
        raiseSyslogAlarm(priority, true, 1, 2, 3, "", 0, "text");
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0].priority, priority);
        EXPECT_EQ(lines[1].priority, priority);
        lines.clear();
    }
}

TEST_F(SyslogEventsTest, ReadsTheApplicationsNameAtEveryCall) {
    for (const char* const name : {"one", "two", "", "a/b|c"}) {
        applicationName = name;
        raiseSyslogEvent(LOG_INFO, 1, 2, 3, "", 0, "text");
        EXPECT_EQ(line(), std::string(name) + "/001-02-3|text");
        raiseSyslogAlarm(LOG_INFO, false, 1, 2, 3, "", 0, "text");
        EXPECT_EQ(line(), std::string(name) + "/001-02-3|ALARM-OFF|text");
    }
}

TEST_F(SyslogEventsTest, UsesNeitherOriginNorItsNumber) {
    for (const char* const origin : {static_cast<const char*>(nullptr), "", "origin"}) {
        for (const int number : {INT_MIN, 0, 5}) {
            raiseSyslogEvent(LOG_INFO, 1, 2, 3, origin, number, "text");
            EXPECT_EQ(line(), "mgr/001-02-3|text");
            raiseSyslogAlarm(LOG_INFO, true, 1, 2, 3, origin, number, "text");
            EXPECT_EQ(line(), "mgr/001-02-3|ALARM-ON|text");
        }
    }
}

TEST_F(SyslogEventsTest, HasNoLimitOfItsOwn) {
    const std::string text(5000, 'x');
    raiseSyslogEvent(LOG_INFO, 1, 2, 3, "", 0, text.c_str());
    EXPECT_EQ(line(), "mgr/001-02-3|" + text);
    raiseSyslogAlarm(LOG_INFO, true, 1, 2, 3, "", 0, "");
    EXPECT_EQ(line(), "mgr/001-02-3|ALARM-ON|");
}

TEST_F(SyslogEventsTest, KeepsTheFilterAndLogsWhateverItHolds) {
    EXPECT_EQ(kfl::detail::excludeFromDebugEventsFilter, nullptr);
    for (int filter : {0, 1, -1, INT_MAX}) {
        setExcludeFromDebugEventsFilter(&filter);
        EXPECT_EQ(kfl::detail::excludeFromDebugEventsFilter, &filter);
        const int before = filter;
        raiseSyslogEvent(LOG_DEBUG, 1, 2, 3, "", 0, "text");
        EXPECT_EQ(line(), "mgr/001-02-3|text");
        raiseSyslogAlarm(LOG_DEBUG, true, 1, 2, 3, "", 0, "text");
        EXPECT_EQ(line(), "mgr/001-02-3|ALARM-ON|text");
        EXPECT_EQ(filter, before);
    }
    setExcludeFromDebugEventsFilter(nullptr);
    EXPECT_EQ(kfl::detail::excludeFromDebugEventsFilter, nullptr);
}

}  // namespace
