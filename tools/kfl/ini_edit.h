// Changing one line of a configuration file.
#ifndef KFL_TOOLS_KFL_INI_EDIT_H
#define KFL_TOOLS_KFL_INI_EDIT_H

#include <string>
#include <string_view>

namespace kfl_tool {

// A value, and where it is to be found.
struct Setting {
    std::string section;
    std::string key;
    std::string value;
};

// Why no file can hold that; "" where one can.
std::string whyNotHeld(const Setting& setting);

// The bytes of a file with the setting in it: in the line that counts where there is one, else as a
// new line at the end of the section, else in a new section at the end. All other bytes stay, but
// that a line end is added to a last line without one. What is read from the result is the caller's
// to check: lines that are too long can have it otherwise.
std::string withSetting(std::string_view bytes, const Setting& setting);

}  // namespace kfl_tool

#endif
