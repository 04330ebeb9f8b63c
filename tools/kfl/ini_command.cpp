// kfl ini: shows a configuration file as a host sees it, checks it, or changes it.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/kfl/command.h"
#include "tools/kfl/ini_file.h"

namespace kfl_tool {
namespace {

// What is to be done; the letters of the options.
enum Work {
    show = 's',
    showInt = 'i',
    showFloat = 'f',
    showBool = 'b',
    check = 'c',
    setValue = 'S'
};

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

void printValue(kfl::IniFileParser& parser, const char* section, const char* key, Work form) {
    switch (form) {
        case showInt: std::printf("%d\n", parser.getInt(key, section)); break;
        case showFloat:
            // Nine digits tell any two floats apart.
            std::printf("%.9g\n", static_cast<double>(parser.getFloat(key, section)));
            break;
        case showBool: std::puts(parser.getBool(key, section) ? "true" : "false"); break;
        default: std::puts(parser.getValue(key, section));
    }
}

Work readOptions(Arguments& arguments) {
    static const option options[] = {{"int", no_argument, nullptr, showInt},
                                     {"float", no_argument, nullptr, showFloat},
                                     {"bool", no_argument, nullptr, showBool},
                                     {"check", no_argument, nullptr, check},
                                     {"set", no_argument, nullptr, setValue},
                                     helpOption,
                                     {}};
    Work work = show;
    while (const int letter = arguments.nextOption(options)) {
        if (work != show && work != letter) {
            arguments.usageError(
                "only one of --int, --float, --bool, --check and --set can be given");
        }
        work = static_cast<Work>(letter);
    }
    return work;
}

int showFile(const Arguments& arguments, Work form) {
    arguments.requireOperands(1, 3);
    const char* const path = arguments[0];
    const char* const section = arguments[1];
    const char* const key = arguments[2];
    if (form != show && !key) arguments.usageError("--int, --float and --bool need a KEY");

    kfl::IniFileParser parser;
    parseIniFile(parser, path);
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

int run(Arguments& arguments) {
    const Work work = readOptions(arguments);
    switch (work) {
        case check: arguments.requireOperands(1, 1); return checkIniFile(arguments[0]);
        case setValue:
            arguments.requireOperands(4, 4);
            setInIniFile(arguments[0], {arguments[1], arguments[2], arguments[3]});
            return succeeded;
        default: return showFile(arguments, work);
    }
}

}  // namespace

void parseIniFile(kfl::IniFileParser& parser, const char* path) {
    requireFile(path);
    if (!parser.parseFile(path)) fail("%s: %s", path, std::strerror(errno));
}

const Command iniCommand = {
    "ini",
    "[--int | --float | --bool] FILE [SECTION [KEY]]\n"
    "       kfl ini --check FILE\n"
    "       kfl ini --set FILE SECTION KEY VALUE",
    "Show, check or change a configuration file",
    "Shows all sections and keys of FILE, the keys of SECTION, or the value of KEY,\n"
    "as a host sees them. Names are found in any case; \"\" is the section of the keys\n"
    "before the first header. A value is shown as it is stored: with the blanks in\n"
    "front of it, and without the characters that the reader drops or cuts.\n"
    "\n"
    "Options:\n"
    "      --int    show the value as getInt reads it\n"
    "      --float  show the value as getFloat reads it\n"
    "      --bool   show the value as getBool reads it: true for every key there is,\n"
    "               whatever its value\n"
    "      --check  show what is read in another way than it looks, as lines of the\n"
    "               form FILE:LINE: TEXT: repeated headers and keys, lines that are\n"
    "               dropped or cut, what stays in a value or is dropped from it\n"
    "      --set    change the value in its line, or add one at the end of its\n"
    "               section, or that at the end of FILE; all other lines, mode and\n"
    "               owner stay. FILE is replaced as a whole, and only where VALUE is\n"
    "               read back and every other value as before. Put -- in front of\n"
    "               FILE when VALUE begins with -\n"
    "  -h, --help   show this page\n"
    "\n"
    "Exit status: 0 when shown, set, or nothing was found, 1 when the file cannot be\n"
    "read or written, has no such section or key, cannot hold VALUE, or something was\n"
    "found, 2 for wrong usage.\n",
    run};

}  // namespace kfl_tool
