#include "os/command_line.h"

#include <cstring>

namespace kfl::detail {

CommandLine::CommandLine(const char* line) {
    const std::size_t length = strnlen(line, longestText);
    std::memcpy(text_, line, length);
    text_[length] = '\0';

    unsigned int count = 0;
    for (char* at = text_; count < mostWords;) {
        while (*at == ' ') ++at;
        if (*at == '\0') break;
        words_[count++] = at;
        at += std::strcspn(at, " ");
        if (*at != '\0') *at++ = '\0';
    }
    words_[count] = nullptr;
}

}  // namespace kfl::detail
