// The kfl command: what libkfl does for its hosts, for shell scripts and people on a device.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kfl/version.h"
#include "tools/kfl/command.h"

namespace kfl_tool {
namespace {

// In alphabetical order.
const Command* const commands[] = {&alarmCommand, &decryptCommand,  &encryptCommand, &eventCommand,
                                   &iniCommand,   &keyvalueCommand, &listenCommand,  &runCommand,
                                   &sendCommand,  &uriCommand};

void printHelp() {
    std::puts(
        "usage: kfl COMMAND [ARGUMENT]...\n"
        "       kfl help COMMAND\n"
        "\n"
        "Does from the command line what libkfl does for its hosts.\n"
        "\n"
        "Commands:");
    for (const Command* command : commands) {
        std::printf("  %-9s %s\n", command->name, command->summary);
    }
    std::puts(
        "\n"
        "Options:\n"
        "  -h, --help     show this page; behind a command, that command's page\n"
        "  -V, --version  show the version\n"
        "\n"
        "Exit status: 0 when done, 1 when what was asked for cannot be done, 2 for wrong\n"
        "usage. A command that differs says so on its page.");
}

[[noreturn]] void endForWrongUsage() {
    std::fputs("usage: kfl COMMAND [ARGUMENT]... (\"kfl --help\" lists the commands)\n", stderr);
    throw Exit{wronglyUsed};
}

const Command& findCommand(const char* name) {
    for (const Command* command : commands) {
        if (std::strcmp(command->name, name) == 0) return *command;
    }
    std::fprintf(stderr, "kfl: no command '%s'\n", name);
    endForWrongUsage();
}

int runCommand(const Command& command, int count, char** words) {
    Arguments arguments(command, count, words);
    return command.run(arguments);
}

[[noreturn]] void refuseSurplus(const char* title) {
    std::fprintf(stderr, "%s: too many arguments\n", title);
    endForWrongUsage();
}

bool asksForHelp(const char* word) {
    return std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0;
}

// "help" and "help COMMAND", which is the same as "COMMAND --help". There is no page on help but
// the general one.
int runHelp(int count, char** words) {
    if (count > 2) refuseSurplus("kfl help");
    if (count < 2 || asksForHelp(words[1])) {
        printHelp();
        return succeeded;
    }
    const Command& command = findCommand(words[1]);
    char help[] = "--help";
    char* askForHelp[] = {words[1], help, nullptr};
    return runCommand(command, 2, askForHelp);
}

// Reads the options in front of the command; true when one of them was all there is to do.
bool answerOptions(int count, char** words) {
    static const option options[] = {helpOption, {"version", no_argument, nullptr, 'V'}, {}};
    char title[] = "kfl";
    words[0] = title;
    const int letter = getopt_long(count, words, "+hV", options, nullptr);
    if ((letter == 'h' || letter == 'V') && optind < count) refuseSurplus(title);
    switch (letter) {
        case -1: return false;
        case 'h': printHelp(); return true;
        case 'V': std::puts("kfl " KFL_VERSION_STRING); return true;
        default: endForWrongUsage();
    }
}

int run(int count, char** words) {
    if (answerOptions(count, words)) return succeeded;
    count -= optind;
    words += optind;
    if (count == 0) endForWrongUsage();
    if (std::strcmp(words[0], "help") == 0) return runHelp(count, words);
    return runCommand(findCommand(words[0]), count, words);
}

// What was printed may not have reached its destination: a full disk, say.
int statusAfterOutput(int status) {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
    std::fprintf(stderr, "kfl: cannot write the output: %s\n", std::strerror(errno));
    return status == succeeded ? failed : status;
}

}  // namespace
}  // namespace kfl_tool

int main(int argc, char** argv) {
    try {
        return kfl_tool::statusAfterOutput(kfl_tool::run(argc, argv));
    } catch (const kfl_tool::Exit& end) {
        return kfl_tool::statusAfterOutput(end.status);
    }
}
