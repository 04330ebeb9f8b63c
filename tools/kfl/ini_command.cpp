// kfl ini: shows a configuration file as a host sees it.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kfl/IniFileParser.h"
#include "tools/kfl/command.h"

namespace kfl_tool {
namespace {

// How a single value is shown; the letters of the options.
enum Form { asText = 't', asInt = 'i', asFloat = 'f', asBool = 'b' };

void readFile(kfl::IniFileParser& parser, const char* path) {
    requireFile(path);
    if (!parser.parseFile(path)) fail("%s: %s", path, std::strerror(errno));
}

void printKeys(const kfl::st_section& section) {
    for (unsigned int i = 0; i < section.keys.count(); ++i) {
        const auto* const key = static_cast<const st_key*>(section.keys.idAt(i));
        std::printf("%s=%s\n", key->name.c_str(), key->value.c_str());
    }
}

// The keys before the first header come first and have no header here either.
void printAll(const kfl::IniFileParser& parser) {
    const kfl::VoidPtrOrderedCollection& sections = parser.sectionList();
    for (unsigned int i = 0; i < sections.count(); ++i) {
        const auto* const section = static_cast<const kfl::st_section*>(sections.idAt(i));
        if (i > 0) std::printf("[%s]\n", section->name.c_str());
        printKeys(*section);
    }
}

void printValue(kfl::IniFileParser& parser, const char* section, const char* key, Form form) {
    switch (form) {
        case asText: std::puts(parser.getValue(key, section)); break;
        case asInt: std::printf("%d\n", parser.getInt(key, section)); break;
        case asFloat:
            // Nine digits tell any two floats apart.
            std::printf("%.9g\n", static_cast<double>(parser.getFloat(key, section)));
            break;
        case asBool: std::puts(parser.getBool(key, section) ? "true" : "false"); break;
    }
}

Form readOptions(Arguments& arguments) {
    static const option options[] = {{"int", no_argument, nullptr, asInt},
                                     {"float", no_argument, nullptr, asFloat},
                                     {"bool", no_argument, nullptr, asBool},
                                     helpOption,
                                     {}};
    Form form = asText;
    while (const int letter = arguments.nextOption(options)) {
        if (form != asText && form != letter) {
            arguments.usageError("only one of --int, --float and --bool can be given");
        }
        form = static_cast<Form>(letter);
    }
    return form;
}

int run(Arguments& arguments) {
    const Form form = readOptions(arguments);
    arguments.requireOperands(1, 3);
    const char* const path = arguments[0];
    const char* const section = arguments[1];
    const char* const key = arguments[2];
    if (form != asText && !key) arguments.usageError("--int, --float and --bool need a KEY");

    kfl::IniFileParser parser;
    readFile(parser, path);
    if (!section) {
        printAll(parser);
        return succeeded;
    }
    const kfl::st_section* const found = parser.getSection(section);
    if (!found) fail("%s: no section '%s'", path, section);
    if (!key) {
        printKeys(*found);
        return succeeded;
    }
    if (!parser.getKey(key, section)) fail("%s: no key '%s' in section '%s'", path, key, section);
    printValue(parser, section, key, form);
    return succeeded;
}

}  // namespace

const Command iniCommand = {
    "ini", "[--int | --float | --bool] FILE [SECTION [KEY]]",
    "Show a configuration file as a host sees it",
    "Shows all sections and keys of FILE, the keys of SECTION, or the value of KEY.\n"
    "Names are found in any case; \"\" is the section of the keys before the first\n"
    "header. A value is shown as it is stored: with the blanks in front of it, and\n"
    "without the characters that the reader drops or cuts.\n"
    "\n"
    "Options:\n"
    "      --int    show the value as getInt reads it\n"
    "      --float  show the value as getFloat reads it\n"
    "      --bool   show the value as getBool reads it: true for every key there is,\n"
    "               whatever its value\n"
    "  -h, --help   show this page\n"
    "\n"
    "Exit status: 0 when shown, 1 when the file cannot be read or has no such section\n"
    "or key, 2 for wrong usage.\n",
    run};

}  // namespace kfl_tool
