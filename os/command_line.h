// A command line cut into the words of an argument vector.
#ifndef KFL_OS_COMMAND_LINE_H
#define KFL_OS_COMMAND_LINE_H

namespace kfl::detail {

// Owns a copy of the first 200 bytes of the line. Only blanks separate words: tabs are part of
// them, and quotes mean nothing. Words after the nineteenth are dropped.
class CommandLine {
  public:
    explicit CommandLine(const char* line);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    // The words in order, ended by a null.
    char* const* words() const { return words_; }
    // The first word, or null for a line without one.
    const char* program() const { return words_[0]; }

    static constexpr unsigned int longestText = 200;
    static constexpr unsigned int mostWords = 19;

  private:
    char text_[longestText + 1];
    char* words_[mostWords + 1];
};

}  // namespace kfl::detail

#endif
