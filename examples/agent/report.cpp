// All that the parser holds. Shows: the marks of missing keys, and a walk over sections and keys.
#include "report.h"

#include <cstdio>
#include <cstring>

namespace agent {
namespace {

// Room for one value or origin in the report.
using Cell = char[64];

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::text: return "text";
        case Kind::number: return "number";
        case Kind::decimal: return "decimal";
        case Kind::onOff: return "on/off";
    }
    return "?";
}

// The value that the agent will use.
void writeValue(Settings& settings, const Setting& setting, Cell& cell) {
    const char* const section = setting.section;
    const char* const key = setting.key;
    const char* text = nullptr;
    switch (setting.kind) {
        case Kind::text:
            text = settings.text(section, key);
            std::snprintf(cell, sizeof cell, "%s", text ? text : "(none)");
            break;
        case Kind::number:
            std::snprintf(cell, sizeof cell, "%d", settings.number(section, key));
            break;
        case Kind::decimal:
            std::snprintf(cell, sizeof cell, "%g",
                          static_cast<double>(settings.decimal(section, key)));
            break;
        case Kind::onOff:
            std::snprintf(cell, sizeof cell, "%s", settings.isOn(section, key) ? "on" : "off");
            break;
    }
}

// The library's answer for a key that is missing: its mark of "not found".
void writeMark(kfl::IniFileParser& file, const Setting& setting, Cell& cell) {
    const char* const section = setting.section;
    const char* const key = setting.key;
    const char* text = nullptr;
    switch (setting.kind) {
        case Kind::text:
            text = file.getString(key, section);
            std::snprintf(cell, sizeof cell, "getString: %s", text ? text : "null");
            break;
        case Kind::number:
            std::snprintf(cell, sizeof cell, "getInt: %d", file.getInt(key, section));
            break;
        case Kind::decimal:
            std::snprintf(cell, sizeof cell, "getFloat: %.9g",
                          static_cast<double>(file.getFloat(key, section)));
            break;
        case Kind::onOff:
            std::snprintf(cell, sizeof cell, "getBool: %s",
                          file.getBool(key, section) ? "true" : "false");
            break;
    }
}

void printSetting(Settings& settings, const Setting& setting) {
    Cell value;
    writeValue(settings, setting, value);
    std::printf("  %-18s %-8s %-28s ", setting.key, nameOf(setting.kind), value);
    if (settings.file().getKey(setting.key, setting.section)) {
        std::puts("file");
        return;
    }
    Cell mark;
    writeMark(settings.file(), setting, mark);
    std::printf("%s (%s)\n", setting.builtIn ? "built in" : "not set", mark);
}

void printUnknownKeysOf(const kfl::st_section& section) {
    for (unsigned int i = 0; i < section.keys.count(); ++i) {
        const st_key& key = *static_cast<const st_key*>(section.keys.idAt(i));
        if (findSetting(section.name.c_str(), key.name.c_str())) continue;
        std::printf("unknown: [%s] %s\n", section.name.c_str(), key.name.c_str());
    }
}

}  // namespace

void printSettings(Settings& settings) {
    const char* section = nullptr;
    for (unsigned int i = 0; i < knownSettingCount; ++i) {
        const Setting& setting = knownSettings[i];
        if (!section || std::strcmp(section, setting.section) != 0) {
            section = setting.section;
            std::printf("[%s]\n", section);
        }
        printSetting(settings, setting);
    }
}

void printUnknownKeys(Settings& settings) {
    // The records belong to the parser; a host may look at them and change their text.
    const kfl::VoidPtrOrderedCollection& sections = settings.file().sectionList();
    for (unsigned int i = 0; i < sections.count(); ++i) {
        printUnknownKeysOf(*static_cast<const kfl::st_section*>(sections.idAt(i)));
    }
}

}  // namespace agent
