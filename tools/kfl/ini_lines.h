// A configuration file, line by line as the library reads it, with what became of each line.
//
// IniFileParser tells what is stored in the end, not what it passed over. This is the same reading
// with a record of it: names are told apart by a parser that is filled along the way.
#ifndef KFL_TOOLS_KFL_INI_LINES_H
#define KFL_TOOLS_KFL_INI_LINES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kfl_tool {

// What the reader does with a line.
enum class Fate {
    blank,           // nothing is in it
    comment,         // passed over
    section,         // opens a new section
    repeatedHeader,  // opens nothing: keys go nowhere until a new section
    stored,          // a new key, or a new value of one
    noSeparator,     // dropped: neither '=' nor ':'
    noKey,           // dropped: nothing in front of the separator
    noValue,         // dropped: nothing behind it
    skipped          // dropped: a key below a repeated header
};

// What the reader takes for one line: up to a line feed, and at most 511 bytes.
struct IniLine {
    // Of the file's lines, from 1; the pieces of one that is too long share it.
    std::size_t number;
    // Where it begins in the file, and its bytes, line end included.
    std::size_t offset;
    std::string_view bytes;
    // The first piece of its line in the file, and the last.
    bool isFirst;
    bool isLast;
    // What the reader looks at: `bytes` up to a NUL, with both ends trimmed.
    std::string_view text;
    Fate fate;
    // Name of the section that a header names or a key line belongs to.
    std::string section;
    // Of a key line; the value is all that stands behind the separator.
    std::string_view key;
    std::string_view value;
    // Of a header or a stored key that came before: there, on that line (0: on none, for "").
    bool isRepeated;
    std::size_t firstNumber;

    // What the reader drops in front of the text, and behind it, the line end not counted.
    std::string_view front() const;
    std::string_view back() const;
};

// The most bytes that are read as one line.
constexpr std::size_t longestLine = 511;
// What the reader drops at the ends of lines and keys.
constexpr std::string_view edges = " \t\n\r=:";
constexpr std::string_view separators = "=:";

// The lines of a file that holds `bytes`, which must live as long as they do.
std::vector<IniLine> readLines(std::string_view bytes);

// `text` without what the reader drops at its ends.
std::string_view withoutEdges(std::string_view text);

}  // namespace kfl_tool

#endif
