// Runs the kfl command of this build.
#ifndef KFL_TESTS_KFL_TOOL_H
#define KFL_TESTS_KFL_TOOL_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/run_program.h"

namespace kfl_test {

inline ProgramResult kfl(const Words& arguments, std::string_view input = {}) {
    return runProgram(wordsOf(KFL_PROGRAM) + arguments, input);
}

// The output of a command that must succeed and say nothing else.
inline std::string outputOfKfl(const Words& arguments, std::string_view input = {}) {
    const ProgramResult result = kfl(arguments, input);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

// What kfl ini shows where it is wrongly used.
inline const std::string iniUsage =
    "usage: kfl ini [--int | --float | --bool] FILE [SECTION [KEY]]\n"
    "       kfl ini --check FILE\n"
    "       kfl ini --set FILE SECTION KEY VALUE";

// Asserts that a command cannot be carried out, and what it says about that.
inline void expectFailure(const Words& arguments, const std::string& message) {
    const ProgramResult result = kfl(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "kfl: " + message + "\n");
}

// Asserts that a command is refused with a line that holds `complaint` (of which the C library may
// have chosen the words) and then the usage line.
inline void expectWrongUsage(const Words& arguments, const std::string& complaint,
                             const std::string& usageLine) {
    const ProgramResult result = kfl(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    const std::size_t firstLine = result.errors.find('\n');
    ASSERT_NE(firstLine, std::string::npos);
    EXPECT_NE(result.errors.substr(0, firstLine).find(complaint), std::string::npos)
        << result.errors;
    EXPECT_EQ(result.errors.substr(firstLine + 1), usageLine + "\n");
}

}  // namespace kfl_test

#endif
