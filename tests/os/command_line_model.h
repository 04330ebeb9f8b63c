// The words of a command line, from the library and from a plain model.
#ifndef KFL_TESTS_OS_COMMAND_LINE_MODEL_H
#define KFL_TESTS_OS_COMMAND_LINE_MODEL_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "os/command_line.h"

namespace kfl_test {

using CommandWords = std::vector<std::string>;

inline CommandWords wordsOf(const char* line) {
    const kfl::detail::CommandLine command(line);
    CommandWords words;
    for (char* const* word = command.words(); *word; ++word) words.emplace_back(*word);
    EXPECT_EQ(command.program(), command.words()[0]);
    return words;
}

inline CommandWords wordsOf(const std::string& line) { return wordsOf(line.c_str()); }

inline CommandWords modelWordsOf(std::string line) {
    line = line.substr(0, 200) + ' ';
    CommandWords words;
    std::string word;
    for (const char c : line) {
        if (c != ' ') {
            word += c;
        } else if (!word.empty()) {
            if (words.size() < 19) words.push_back(word);
            word.clear();
        }
    }
    return words;
}

}  // namespace kfl_test

#endif
