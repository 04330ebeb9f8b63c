// What several subcommands read from their arguments.
#ifndef KFL_TOOLS_KFL_PARSE_H
#define KFL_TOOLS_KFL_PARSE_H

#include <string>

#include "tools/kfl/command.h"

namespace kfl_tool {

// A decimal number from `least` to `most`; anything else is wrong usage. `what` names it, "PORT".
int parseNumber(const Arguments& arguments, const char* what, const char* text, int least,
                int most);

// The operands from `first` on, one blank between them.
std::string joinOperands(const Arguments& arguments, int first);

}  // namespace kfl_tool

#endif
