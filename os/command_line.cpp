#include "os/command_line.h"

#include <cstring>

namespace kfl::detail {

CommandLine::CommandLine(const char* line) {
    const std::size_t length = strnlen(line, longestText);
    std::memcpy(text_, line, length);
    text_[length] = '\0';

    unsigned int count = 0;
    char* rest = nullptr;
    char* word = strtok_r(text_, " ", &rest);
    while (word && count < mostWords) {
        words_[count++] = word;
        word = strtok_r(nullptr, " ", &rest);
    }
    words_[count] = nullptr;
}

}  // namespace kfl::detail
