// What kfl event and kfl alarm have in common: a numbered line for the system log.
#ifndef KFL_TOOLS_KFL_LOG_LINE_H
#define KFL_TOOLS_KFL_LOG_LINE_H

#include <string>

#include "tools/kfl/command.h"

namespace kfl_tool {

struct LogLine {
    // Facility and level as for syslog.
    int priority;
    int first;
    int second;
    int third;
    std::string text;
};

// Reads the options, and FIRST SECOND THIRD TEXT... behind `operandsBefore` others. --name becomes
// the process's name.
LogLine readLogLine(Arguments& arguments, int operandsBefore);

// The help page of such a command: a line about what it does, and what both have in common.
std::string logLineDetails(const char* purpose);

}  // namespace kfl_tool

#endif
