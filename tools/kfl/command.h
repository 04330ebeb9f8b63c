// What the subcommands of the kfl tool share: how one is described, how it reads its arguments, and
// how it ends.
//
// A subcommand is one source file with one Command, and one line in the table of main.cpp:
//
//     int run(Arguments& arguments) {
//         static const option options[] = {{"hex", no_argument, nullptr, 'x'}, helpOption, {}};
//         while (int letter = arguments.nextOption(options)) ...
//         arguments.requireOperands(1, 2);
//         if (!open(arguments[0])) fail("%s: %s", arguments[0], strerror(errno));
//         return succeeded;
//     }
//
// Results go to standard output, messages to standard error.
#ifndef KFL_TOOLS_KFL_COMMAND_H
#define KFL_TOOLS_KFL_COMMAND_H

#include <getopt.h>

#include <string>

namespace kfl_tool {

class Arguments;

// What the tool ends with.
enum ExitStatus { succeeded = 0, failed = 1, wronglyUsed = 2 };

struct Command {
    const char* name;
    // What stands behind the name in the usage line.
    const char* usage;
    // One line for the list of subcommands.
    const char* summary;
    // The rest of the help page: paragraphs and a list of options, each line ended.
    const char* details;
    // Returns the exit status.
    int (*run)(Arguments& arguments);
};

// The subcommands, in alphabetical order.
extern const Command alarmCommand;
extern const Command decryptCommand;
extern const Command encryptCommand;
extern const Command eventCommand;
extern const Command iniCommand;
extern const Command keyvalueCommand;
extern const Command listenCommand;
extern const Command runCommand;
extern const Command sendCommand;
extern const Command uriCommand;

// Thrown by fail and usageError, and by --help; main ends the process with it.
struct Exit {
    int status;
};

// Ends the tool, because what was asked for cannot be done: the message, formatted as by printf,
// stands behind "kfl: ".
[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the tool unless there is a file of that name, or a device or pipe. The library's readers
// take a directory for an empty file.
void requireFile(const char* path);

// The entry for --help in a table of options.
constexpr option helpOption = {"help", no_argument, nullptr, 'h'};

// The words behind a subcommand's name: options first, then the operands, which may also stand
// before options. "--" ends the options.
class Arguments {
  public:
    // `words` begin with the subcommand's own name.
    Arguments(const Command& command, int count, char** words);

    // The letter of the next option, 0 when only operands are left. `options` ends with an empty
    // entry. An option that has no long name stands in `letters`, as for getopt. Answers --help,
    // and ends the tool when an option is wrong.
    int nextOption(const option* options, const char* letters = "h");
    // The argument of the option that came last.
    const char* optionValue() const { return optarg; }

    // The operands, once the options have been read; null past the last one.
    int operands() const { return count_ - optind; }
    const char* operator[](int index) const {
        return index < operands() ? words_[optind + index] : nullptr;
    }
    // Ends the tool unless there are that many operands.
    void requireOperands(int least, int most) const;

    // Ends the tool with a message, formatted as by printf, and the usage line.
    [[noreturn]] void usageError(const char* format, ...) const
        __attribute__((format(printf, 2, 3)));

  private:
    const Command& command_;
    // "kfl ini", for messages.
    std::string title_;
    int count_;
    char** words_;
};

}  // namespace kfl_tool

#endif
