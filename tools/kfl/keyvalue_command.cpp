// kfl keyvalue: looks keys up in a key/value file, as a host does that has defaults for them.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "kfl/KeyValue.h"
#include "tools/kfl/command.h"

namespace kfl_tool {
namespace {

using Pairs = std::vector<std::unique_ptr<kfl::KeyValuePair>>;

// "KEY" or "KEY=DEFAULT". No file holds an empty value, so an empty default stands for none.
std::unique_ptr<kfl::KeyValuePair> pairOf(const Arguments& arguments, const char* word) {
    const std::size_t length = std::strcspn(word, "=");
    if (length == 0) arguments.usageError("no KEY in '%s'", word);
    std::string key(word, length);
    std::string value(word[length] == '=' ? word + length + 1 : "");
    return std::make_unique<kfl::KeyValuePair>(key.data(), value.data());
}

void fill(const Pairs& pairs, const char* path) {
    std::vector<kfl::KeyValuePair*> array;
    for (const auto& pair : pairs) array.push_back(pair.get());
    array.push_back(nullptr);
    requireFile(path);
    if (kfl::KeyValueParser::parse(path, array.data()) == 0) {
        fail("%s: %s", path, std::strerror(errno));
    }
}

int run(Arguments& arguments) {
    static const option options[] = {helpOption, {}};
    arguments.nextOption(options);
    arguments.requireOperands(2, arguments.operands());
    const char* const path = arguments[0];
    Pairs pairs;
    std::vector<bool> optional;
    for (int i = 1; i < arguments.operands(); ++i) {
        pairs.push_back(pairOf(arguments, arguments[i]));
        optional.push_back(std::strchr(arguments[i], '=') != nullptr);
    }
    fill(pairs, path);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        if (pairs[i]->value.empty() && !optional[i]) {
            fail("%s: no key '%s'", path, pairs[i]->key.c_str());
        }
    }
    for (const auto& pair : pairs) std::printf("%s=%s\n", pair->key.c_str(), pair->value.c_str());
    return succeeded;
}

}  // namespace

const Command keyvalueCommand = {
    "keyvalue", "FILE KEY[=DEFAULT]...", "Look keys up in a key/value file",
    "Shows each KEY with its value in FILE, as lines of the form KEY=value. Keys are\n"
    "found in any case; only those before the first section header of FILE count.\n"
    "A KEY that FILE does not hold has the value DEFAULT, which may be empty. Values\n"
    "are shown as they are stored: with the blanks in front of them.\n"
    "\n"
    "Options:\n"
    "  -h, --help  show this page\n"
    "\n"
    "Exit status: 0 when all are shown, 1 when the file cannot be read or a KEY\n"
    "without a DEFAULT is missing, 2 for wrong usage.\n",
    run};

}  // namespace kfl_tool
