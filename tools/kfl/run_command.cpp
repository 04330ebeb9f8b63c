// kfl run: starts a program as a host does.
#include <sys/wait.h>

#include <climits>
#include <cstdio>
#include <string>

#include "kfl/process.h"
#include "tools/kfl/command.h"
#include "tools/kfl/parse.h"

namespace kfl_tool {
namespace {

struct Options {
    bool wait = false;
    const char* output = nullptr;
};

Options readOptions(Arguments& arguments) {
    static const option table[] = {{"wait", no_argument, nullptr, 'w'},
                                   {"output", required_argument, nullptr, 'o'},
                                   helpOption,
                                   {}};
    Options options;
    // The command's own options, behind its first word, are left to it.
    while (const int letter = arguments.nextOption(table, "+h")) {
        if (letter == 'w') options.wait = true;
        if (letter == 'o') options.output = arguments.optionValue();
    }
    return options;
}

// What the library takes without cutting anything off.
void checkLine(const std::string& line) {
    constexpr std::size_t longest = 199;
    constexpr int mostWords = 19;
    if (line.size() > longest) fail("the command line has more than %zu bytes", longest);
    int words = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != ' ' && (i == 0 || line[i - 1] == ' ')) ++words;
    }
    if (words > mostWords) fail("the command line has more than %d words", mostWords);
}

int exitStatusOf(int status) {
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

int run(Arguments& arguments) {
    const Options options = readOptions(arguments);
    arguments.requireOperands(1, INT_MAX);
    const std::string line = joinOperands(arguments, 0);
    checkLine(line);
    const int result = kfl::osCreateProcess(line.c_str(), options.wait, options.output);
    if (result == -1) fail("no process could be started");
    if (options.wait) return exitStatusOf(result);
    std::printf("%d\n", result);
    return succeeded;
}

}  // namespace

const Command runCommand = {
    "run", "[--wait] [--output FILE] -- COMMAND LINE", "Start a program as a host does",
    "Starts the program and shows its process number, or waits for its end. The\n"
    "arguments are joined with blanks, and the line is then split at blanks again:\n"
    "quotes have no meaning. It has at most 199 bytes and 19 words. Without --output\n"
    "the first word must be the program's path; with it PATH is searched.\n"
    "\n"
    "Options:\n"
    "      --wait         wait for the program and end with its exit status\n"
    "      --output FILE  send output and errors to FILE, made or emptied first\n"
    "  -h, --help         show this page\n"
    "\n"
    "Exit status: 0 when started, 1 when not, 2 for wrong usage; with --wait that of\n"
    "the program: 127 when it cannot be executed or FILE cannot be opened, 128 and\n"
    "more when a signal ended it. Without --wait a program that cannot be executed is\n"
    "started, too: its number is shown and the status 0. Why it cannot be executed\n"
    "stands in the system log alone, with --wait as without.\n",
    run};

}  // namespace kfl_tool
