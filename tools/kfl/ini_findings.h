// What in a configuration file is read in another way than its writer may think.
#ifndef KFL_TOOLS_KFL_INI_FINDINGS_H
#define KFL_TOOLS_KFL_INI_FINDINGS_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/kfl/ini_lines.h"

namespace kfl_tool {

struct Finding {
    // The line of the file, from 1.
    std::size_t number;
    std::string text;
};

// In the order of the lines.
std::vector<Finding> findingsOf(const std::vector<IniLine>& lines);

// Whether the reader passes over what the line holds, which is no comment.
bool isDropped(const IniLine& line);

}  // namespace kfl_tool

#endif
