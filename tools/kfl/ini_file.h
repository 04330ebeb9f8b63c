// What kfl ini does with a whole file besides showing it.
#ifndef KFL_TOOLS_KFL_INI_FILE_H
#define KFL_TOOLS_KFL_INI_FILE_H

#include "kfl/IniFileParser.h"
#include "tools/kfl/ini_edit.h"

namespace kfl_tool {

// Fills the parser; ends the tool where the file cannot be read.
void parseIniFile(kfl::IniFileParser& parser, const char* path);

// Shows what is read in another way than it looks; returns the exit status.
int checkIniFile(const char* path);

// Sets a value in the file. Ends the tool, with the file as it was, unless the library then reads
// that value and all others as before.
void setInIniFile(const char* path, const Setting& setting);

}  // namespace kfl_tool

#endif
