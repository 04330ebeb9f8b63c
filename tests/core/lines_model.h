// The lines of an AString, from a plain second splitter.
#ifndef KFL_TESTS_CORE_LINES_MODEL_H
#define KFL_TESTS_CORE_LINES_MODEL_H

#include <cstddef>
#include <string>
#include <vector>

namespace kfl_test {

// What the lines of a text are, found in another way: the carriage returns go first, then the text
// is cut at line feeds and NULs, then each line into pieces.
inline std::vector<std::string> modelLines(const std::string& text, std::size_t lineSize) {
    std::vector<std::string> result;
    std::size_t at = 0;
    while (at < text.size() && text[at] != '\0') {
        std::size_t end = text.find_first_of(std::string("\n\0", 2), at);
        const bool lineFeed = end != std::string::npos && text[end] == '\n';
        if (end == std::string::npos) end = text.size();
        std::string line;
        for (std::size_t i = at; i < end; ++i)
            if (text[i] != '\r') line += text[i];
        if (lineFeed) line += '\n';
        at = end + 1;
        while (line.size() > lineSize) {
            result.push_back(line.substr(0, lineSize));
            line.erase(0, lineSize);
        }
        result.push_back(line);
    }
    return result;
}

}  // namespace kfl_test

#endif
