#include "tools/kfl/log_line.h"

#include <syslog.h>

#include <climits>
#include <string_view>

#include "kfl/Host.h"
#include "tools/kfl/parse.h"

namespace kfl_tool {
namespace {

struct Name {
    const char* name;
    int number;
};

constexpr Name facilities[] = {
    {"user", LOG_USER},     {"daemon", LOG_DAEMON}, {"local0", LOG_LOCAL0}, {"local1", LOG_LOCAL1},
    {"local2", LOG_LOCAL2}, {"local3", LOG_LOCAL3}, {"local4", LOG_LOCAL4}, {"local5", LOG_LOCAL5},
    {"local6", LOG_LOCAL6}, {"local7", LOG_LOCAL7},
};

constexpr Name levels[] = {
    {"emerg", LOG_EMERG},     {"alert", LOG_ALERT},   {"crit", LOG_CRIT}, {"err", LOG_ERR},
    {"warning", LOG_WARNING}, {"notice", LOG_NOTICE}, {"info", LOG_INFO}, {"debug", LOG_DEBUG},
};

// -1 where there is no such name.
template <std::size_t count>
int numberOf(const Name (&names)[count], std::string_view name) {
    for (const Name& entry : names) {
        if (name == entry.name) return entry.number;
    }
    return -1;
}

int parsePriority(const Arguments& arguments, const char* text) {
    std::string_view level = text;
    int facility = LOG_USER;
    const std::size_t dot = level.find('.');
    if (dot != std::string_view::npos) {
        facility = numberOf(facilities, level.substr(0, dot));
        level.remove_prefix(dot + 1);
    }
    const int number = numberOf(levels, level);
    if (facility < 0 || number < 0) arguments.usageError("no priority '%s'", text);
    return facility | number;
}

}  // namespace

LogLine readLogLine(Arguments& arguments, int operandsBefore) {
    static const option options[] = {{"name", required_argument, nullptr, 'n'},
                                     {"priority", required_argument, nullptr, 'p'},
                                     helpOption,
                                     {}};
    LogLine line{LOG_USER | LOG_INFO, 0, 0, 0, {}};
    while (const int letter = arguments.nextOption(options)) {
        if (letter == 'n') applicationName = arguments.optionValue();
        if (letter == 'p') line.priority = parsePriority(arguments, arguments.optionValue());
    }
    arguments.requireOperands(operandsBefore + 4, INT_MAX);
    const auto number = [&](const char* what, int index) {
        return parseNumber(arguments, what, arguments[operandsBefore + index], INT_MIN, INT_MAX);
    };
    line.first = number("FIRST", 0);
    line.second = number("SECOND", 1);
    line.third = number("THIRD", 2);
    line.text = joinOperands(arguments, operandsBefore + 3);
    return line;
}

std::string logLineDetails(const char* purpose) {
    return std::string(purpose) +
           "NAME is the process's name, and the TEXTs have one blank between them. Put -- in\n"
           "front of arguments that begin with -, negative numbers too.\n"
           "\n"
           "Options:\n"
           "      --name NAME          the process's name in the line (kfl)\n"
           "      --priority PRIORITY  facility and level, or a level alone (user.info):\n"
           "                           levels are emerg, alert, crit, err, warning,\n"
           "                           notice, info and debug, facilities are user,\n"
           "                           daemon and local0 to local7\n"
           "  -h, --help               show this page\n"
           "\n"
           "Exit status: 0 when handed to the log (which does not say that one listens), 2\n"
           "for wrong usage.\n";
}

}  // namespace kfl_tool
