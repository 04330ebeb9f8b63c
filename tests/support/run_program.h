// Runs a program and keeps what it wrote and how it ended.
//
//     const ProgramResult result = runProgram({"/bin/echo", "hello"});
//     EXPECT_EQ(result.status, 0);
//     EXPECT_EQ(result.output, "hello\n");
#ifndef KFL_TESTS_RUN_PROGRAM_H
#define KFL_TESTS_RUN_PROGRAM_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kfl_test {

using Words = std::vector<std::string>;

struct ProgramResult {
    // The exit status, or 128 and the number of the signal that ended the program.
    int status;
    std::string output;
    std::string errors;
};

// The words of a command line in which they are parted by '|', as the build passes them on.
inline Words wordsOf(std::string_view line) {
    Words words(1);
    for (const char c : line) {
        if (c == '|') {
            words.emplace_back();
        } else {
            words.back() += c;
        }
    }
    return words;
}

// The command with more words behind it.
inline Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

namespace detail {

// An unnamed temporary file: a program never waits for the other end of it.
class Stream {
  public:
    explicit Stream(std::string_view text = {}) : file_(std::tmpfile()) {
        if (!file_) std::perror("tmpfile");
        if (!text.empty()) std::fwrite(text.data(), 1, text.size(), file_);
        std::rewind(file_);
    }
    ~Stream() { std::fclose(file_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void becomes(int descriptor) const { dup2(fileno(file_), descriptor); }
    std::string text() const {
        std::string text;
        std::rewind(file_);
        for (int c = std::getc(file_); c != EOF; c = std::getc(file_)) text += static_cast<char>(c);
        return text;
    }

  private:
    std::FILE* file_;
};

}  // namespace detail

// The first word is a path, or a name that is looked for in PATH. `input` is the program's standard
// input. A program that has not ended after a minute is ended by SIGALRM (status 142).
inline ProgramResult runProgram(const Words& words, std::string_view input = {}) {
    constexpr unsigned int secondsAtMost = 60;
    const detail::Stream in(input);
    const detail::Stream out;
    const detail::Stream err;
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        in.becomes(STDIN_FILENO);
        out.becomes(STDOUT_FILENO);
        err.becomes(STDERR_FILENO);
        alarm(secondsAtMost);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int ended = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return {ended, out.text(), err.text()};
}

}  // namespace kfl_test

#endif
