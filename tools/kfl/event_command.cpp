// kfl event: logs a numbered event.
#include "kfl/syslog_events.h"
#include "tools/kfl/command.h"
#include "tools/kfl/log_line.h"

namespace kfl_tool {
namespace {

int run(Arguments& arguments) {
    const LogLine line = readLogLine(arguments, 0);
    raiseSyslogEvent(line.priority, line.first, line.second, line.third, "", 0, line.text.c_str());
    return succeeded;
}

const std::string details = logLineDetails("Writes \"NAME/001-02-3|TEXT\" to the system log.\n");

}  // namespace

const Command eventCommand = {"event", "[OPTION]... FIRST SECOND THIRD TEXT...",
                              "Log a numbered event", details.c_str(), run};

}  // namespace kfl_tool
