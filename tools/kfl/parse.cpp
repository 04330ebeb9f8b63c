#include "tools/kfl/parse.h"

#include <cerrno>
#include <cstdlib>

namespace kfl_tool {

int parseNumber(const Arguments& arguments, const char* what, const char* text, int least,
                int most) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || errno != 0 || number < least || number > most) {
        arguments.usageError("%s must be a number from %d to %d, not '%s'", what, least, most,
                             text);
    }
    return static_cast<int>(number);
}

std::string joinOperands(const Arguments& arguments, int first) {
    std::string text;
    for (int i = first; i < arguments.operands(); ++i) {
        if (i > first) text += ' ';
        text += arguments[i];
    }
    return text;
}

}  // namespace kfl_tool
