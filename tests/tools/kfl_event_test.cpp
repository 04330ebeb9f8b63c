// kfl event and kfl alarm, run as people and scripts run them. The system log is a socket of this
// test, which stands at /dev/log in a mount namespace of the command's own.
#include <syslog.h>

#include "tests/tools/kfl_datagrams.h"

namespace {

using namespace kfl_test;

const std::string eventUsage = "usage: kfl event [OPTION]... FIRST SECOND THIRD TEXT...";
const std::string alarmUsage = "usage: kfl alarm [OPTION]... on|off FIRST SECOND THIRD TEXT...";

class KflEventTest : public testing::Test {
  protected:
    // What the command logs, without the time.
    std::string logged(const Words& arguments) {
        const Words unshare = geteuid() == 0 ? Words{"unshare", "-m"} : Words{"unshare", "-rm"};
        const ProgramResult result = runProgram(
            unshare + Words{"sh", "-c", "mount --bind \"$0\" /dev && exec \"$@\"", folder.path()} +
            wordsOf(KFL_PROGRAM) + arguments);
        if (result.status != 0) return "no command with a /dev of its own: " + result.errors;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "");
        // "<14>Nov 21 12:00:00 kfl: ...", as the C library sends it.
        const std::string line = received(log);
        const std::size_t priority = line.find('>') + 1;
        const std::string time = "Nov 21 12:00:00 ";
        return line.substr(0, priority) + line.substr(priority + time.size());
    }
    static std::string withPriority(int priority, const std::string& text) {
        // The C library names the program as it was called.
        return "<" + std::to_string(priority) + ">kfl: " + text;
    }

    const TemporaryFolder folder;
    const Descriptor log = localSocket(folder / "log");
};

TEST_F(KflEventTest, LogsAnEvent) {
    EXPECT_EQ(logged({"event", "7", "3", "12", "link up"}),
              withPriority(LOG_USER | LOG_INFO, "kfl/007-03-12|link up"));
}

TEST_F(KflEventTest, LogsAnAlarm) {
    EXPECT_EQ(logged({"alarm", "on", "123", "4", "5", "fan"}),
              withPriority(LOG_USER | LOG_INFO, "kfl/123-04-5|ALARM-ON|fan"));
    EXPECT_EQ(logged({"alarm", "off", "123", "4", "5", "fan"}),
              withPriority(LOG_USER | LOG_INFO, "kfl/123-04-5|ALARM-OFF|fan"));
}

TEST_F(KflEventTest, JoinsTheTexts) {
    EXPECT_EQ(logged({"event", "1234", "567", "8", "100%", "%s", "of it"}),
              withPriority(LOG_USER | LOG_INFO, "kfl/1234-567-8|100% %s of it"));
    EXPECT_EQ(logged({"event", "0", "0", "0", ""}),
              withPriority(LOG_USER | LOG_INFO, "kfl/000-00-0|"));
}

TEST_F(KflEventTest, TakesNegativeNumbersBehindTwoDashes) {
    EXPECT_EQ(logged({"event", "--", "-1", "-2", "-3", "-x"}),
              withPriority(LOG_USER | LOG_INFO, "kfl/-01--2--3|-x"));
}

TEST_F(KflEventTest, TakesAName) {
    EXPECT_EQ(logged({"event", "--name", "mgr", "1", "2", "3", "x"}),
              withPriority(LOG_USER | LOG_INFO, "mgr/001-02-3|x"));
    EXPECT_EQ(logged({"alarm", "--name=", "on", "1", "2", "3", "x"}),
              withPriority(LOG_USER | LOG_INFO, "/001-02-3|ALARM-ON|x"));
}

TEST_F(KflEventTest, TakesAPriority) {
    struct Row {
        const char* name;
        int number;
    };
    for (const Row& row : {Row{"err", LOG_USER | LOG_ERR}, Row{"user.debug", LOG_USER | LOG_DEBUG},
                           Row{"daemon.warning", LOG_DAEMON | LOG_WARNING},
                           Row{"local0.emerg", LOG_LOCAL0 | LOG_EMERG},
                           Row{"local7.notice", LOG_LOCAL7 | LOG_NOTICE}}) {
        EXPECT_EQ(logged({"event", "--priority", row.name, "1", "2", "3", "x"}),
                  withPriority(row.number, "kfl/001-02-3|x"));
    }
    EXPECT_EQ(logged({"alarm", "--priority", "local3.crit", "on", "1", "2", "3", "x"}),
              withPriority(LOG_LOCAL3 | LOG_CRIT, "kfl/001-02-3|ALARM-ON|x"));
}

TEST_F(KflEventTest, APriorityThatIsNoneIsWrongUsage) {
    for (const std::string name : {"", "loud", "user.", "user.loud", ".err", "users.err", "7"}) {
        expectWrongUsage({"event", "--priority", name, "1", "2", "3", "x"},
                         "kfl event: no priority '" + name + "'", eventUsage);
    }
}

TEST_F(KflEventTest, WrongArgumentsAreWrongUsage) {
    expectWrongUsage({"event"}, "kfl event: too few arguments", eventUsage);
    expectWrongUsage({"event", "1", "2", "3"}, "kfl event: too few arguments", eventUsage);
    expectWrongUsage({"alarm", "1", "2", "3", "x"}, "kfl alarm: too few arguments", alarmUsage);
    expectWrongUsage({"alarm", "up", "1", "2", "3", "x"}, "kfl alarm: 'up' is neither on nor off",
                     alarmUsage);
    expectWrongUsage({"event", "one", "2", "3", "x"}, "kfl event: FIRST must be a number",
                     eventUsage);
    expectWrongUsage({"event", "1", "", "3", "x"}, "kfl event: SECOND must be a number",
                     eventUsage);
    expectWrongUsage({"alarm", "on", "1", "2", "2147483648", "x"},
                     "kfl alarm: THIRD must be a number", alarmUsage);
    expectWrongUsage({"event", "--loud", "1", "2", "3", "x"}, "--loud", eventUsage);
}

}  // namespace
