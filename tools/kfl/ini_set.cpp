// kfl ini --set: changes one value of a file.
#include <string_view>

#include "tools/kfl/command.h"
#include "tools/kfl/file_replacement.h"
#include "tools/kfl/ini_file.h"

namespace kfl_tool {
namespace {

bool isSame(const kfl::AString& a, const kfl::AString& b) {
    return std::string_view(a.c_str(), a.length()) == std::string_view(b.c_str(), b.length());
}

bool isSame(const st_key& a, const st_key& b) {
    return isSame(a.name, b.name) && isSame(a.value, b.value);
}

bool isSame(const kfl::st_section& a, const kfl::st_section& b);

// Whether two lists hold the same records in the same order.
template <class Record>
bool areSame(const kfl::VoidPtrOrderedCollection& a, const kfl::VoidPtrOrderedCollection& b) {
    if (a.count() != b.count()) return false;
    for (unsigned int i = 0; i < a.count(); ++i) {
        const void* const left = a.idAt(i);
        const void* const right = b.idAt(i);
        if (!isSame(*static_cast<const Record*>(left), *static_cast<const Record*>(right))) {
            return false;
        }
    }
    return true;
}

bool isSame(const kfl::st_section& a, const kfl::st_section& b) {
    return isSame(a.name, b.name) && areSame<st_key>(a.keys, b.keys);
}

bool set(kfl::IniFileParser& parser, const Setting& setting) {
    return parser.setValue(setting.key.c_str(), setting.value.c_str(), setting.section.c_str());
}

bool isSet(kfl::IniFileParser& parser, const Setting& setting) {
    const char* const value = parser.getValue(setting.key.c_str(), setting.section.c_str());
    return value && value == setting.value;
}

}  // namespace

void setInIniFile(const char* path, const Setting& setting) {
    requireFile(path);
    const std::string fault = whyNotHeld(setting);
    if (!fault.empty()) fail("%s: %s", path, fault.c_str());

    FileReplacement file(path);
    kfl::IniFileParser wanted;
    parseIniFile(wanted, file.path().c_str());
    if (isSet(wanted, setting)) return;
    set(wanted, setting);

    file.write(withSetting(file.bytes(), setting));
    kfl::IniFileParser result;
    parseIniFile(result, file.newPath().c_str());
    if (!areSame<kfl::st_section>(result.sectionList(), wanted.sectionList())) {
        fail("%s: not changed: lines past 511 bytes would be read in another way", path);
    }
    file.commit();
}

}  // namespace kfl_tool
