// kfl alarm: logs that a numbered alarm begins or ends.
#include "kfl/syslog_events.h"
#include "tools/kfl/command.h"
#include "tools/kfl/log_line.h"

namespace kfl_tool {
namespace {

int run(Arguments& arguments) {
    const LogLine line = readLogLine(arguments, 1);
    const std::string state = arguments[0];
    if (state != "on" && state != "off") {
        arguments.usageError("'%s' is neither on nor off", state.c_str());
    }
    raiseSyslogAlarm(line.priority, state == "on", line.first, line.second, line.third, "", 0,
                     line.text.c_str());
    return succeeded;
}

const std::string details =
    logLineDetails("Writes \"NAME/001-02-3|ALARM-ON|TEXT\", or OFF, to the system log.\n");

}  // namespace

const Command alarmCommand = {"alarm", "[OPTION]... on|off FIRST SECOND THIRD TEXT...",
                              "Log that a numbered alarm begins or ends", details.c_str(), run};

}  // namespace kfl_tool
