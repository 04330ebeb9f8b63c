#include "tools/kfl/command.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kfl_tool {
namespace {

void printHelp(const Command& command) {
    std::printf("usage: kfl %s %s\n\n%s.\n\n%s", command.name, command.usage, command.summary,
                command.details);
}

void printUsageLine(const Command& command) {
    std::fprintf(stderr, "usage: kfl %s %s\n", command.name, command.usage);
}

}  // namespace

void fail(const char* format, ...) {
    std::fputs("kfl: ", stderr);
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    throw Exit{failed};
}

void requireFile(const char* path) {
    struct stat status = {};
    if (stat(path, &status) != 0) fail("%s: %s", path, std::strerror(errno));
    if (S_ISDIR(status.st_mode)) fail("%s: %s", path, std::strerror(EISDIR));
}

Arguments::Arguments(const Command& command, int count, char** words)
    : command_(command), title_(std::string("kfl ") + command.name), count_(count), words_(words) {
    words_[0] = title_.data();  // getopt begins its messages with it
    optind = 0;                 // and starts anew
}

int Arguments::nextOption(const option* options, const char* letters) {
    const int letter = getopt_long(count_, words_, letters, options, nullptr);
    if (letter == 'h') {
        printHelp(command_);
        throw Exit{succeeded};
    }
    if (letter == '?') {
        printUsageLine(command_);
        throw Exit{wronglyUsed};
    }
    return letter < 0 ? 0 : letter;
}

void Arguments::requireOperands(int least, int most) const {
    if (operands() < least) usageError("too few arguments");
    if (operands() > most) usageError("too many arguments");
}

void Arguments::usageError(const char* format, ...) const {
    std::fprintf(stderr, "%s: ", title_.c_str());
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    printUsageLine(command_);
    throw Exit{wronglyUsed};
}

}  // namespace kfl_tool
