#include "tools/kfl/ini_edit.h"

#include <algorithm>

#include "kfl/IniFileParser.h"
#include "tools/kfl/ini_lines.h"

namespace kfl_tool {
namespace {

bool isIn(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

bool isSameName(std::string_view a, const std::string& b) {
    return kfl::compareNoCase(std::string(a).c_str(), b.c_str()) == 0;
}

// The line's own, or where it has none that of the file's first line.
std::string_view lineEndOf(std::string_view line, std::string_view file) {
    const auto endOf = [](std::string_view text) {
        const std::size_t feed = text.find('\n');
        if (feed == std::string_view::npos) return std::string_view();
        const std::size_t begin = feed > 0 && text[feed - 1] == '\r' ? feed - 1 : feed;
        return text.substr(begin, feed + 1 - begin);
    };
    for (const std::string_view end : {endOf(line), endOf(file)}) {
        if (!end.empty()) return end;
    }
    return "\n";
}

std::string lineOf(const Setting& setting) { return setting.key + '=' + setting.value; }

bool isOf(const IniLine& line, const std::string& section) {
    return (line.fate == Fate::section || line.fate == Fate::stored) &&
           isSameName(line.section, section);
}

// Puts new text, which ends with a line end, behind the first `length` bytes.
std::string withInserted(std::string_view bytes, std::size_t length, std::string_view lineEnd,
                         const std::string& text) {
    std::string result(bytes.substr(0, length));
    if (!result.empty() && result.back() != '\n') result += lineEnd;
    return result.append(text).append(bytes.substr(length));
}

std::string withValue(std::string_view bytes, const IniLine& line, const std::string& value) {
    const auto begin = static_cast<std::size_t>(line.value.data() - bytes.data());
    const std::size_t end = line.offset + line.bytes.size();
    const std::size_t afterText = bytes.substr(0, end).find_last_not_of("\r\n") + 1;
    std::string result(bytes.substr(0, begin));
    return result.append(value).append(bytes.substr(afterText));
}

std::string withSection(std::string_view bytes, const Setting& setting) {
    const std::string lineEnd(lineEndOf("", bytes));
    const bool isAfterBlank = bytes.size() < 2 || bytes.substr(bytes.size() - 2) == "\n\n" ||
                              (bytes.size() > 3 && bytes.substr(bytes.size() - 4) == "\r\n\r\n");
    return withInserted(bytes, bytes.size(), lineEnd,
                        (isAfterBlank ? "" : lineEnd) + '[' + setting.section + ']' + lineEnd +
                            lineOf(setting) + lineEnd);
}

}  // namespace

std::string whyNotHeld(const Setting& setting) {
    const std::string& key = setting.key;
    const std::string& value = setting.value;
    const auto isPastLine = [](const std::string& text) {
        return text.find('\n') != std::string::npos;
    };
    if (isPastLine(setting.section)) return "a section's name cannot hold a line feed";
    if (isPastLine(key)) return "a key cannot hold a line feed";
    if (isPastLine(value)) return "a value cannot hold a line feed";
    if (key.empty()) return "a key cannot be empty";
    if (key.find_first_of(separators) != std::string::npos) return "a key cannot hold '=' or ':'";
    if (withoutEdges(key) != key) return "a key can neither begin nor end with a blank";
    if (isIn(key[0], "[;#")) return "a key cannot begin with '[', ';' or '#'";
    if (value.empty()) return "a value cannot be empty";
    if (isIn(value.back(), edges)) return "a value cannot end with a blank, '=' or ':'";
    const std::size_t bytes = std::max(setting.section.size() + 2, lineOf(setting).size());
    if (bytes > longestLine) {
        return "a line would have " + std::to_string(bytes) + " bytes, and 511 are read";
    }
    return "";
}

std::string withSetting(std::string_view bytes, const Setting& setting) {
    const std::vector<IniLine> lines = readLines(bytes);
    const IniLine* last = nullptr;
    const IniLine* found = nullptr;
    for (const IniLine& line : lines) {
        if (!isOf(line, setting.section)) continue;
        last = &line;
        if (line.fate == Fate::stored && isSameName(line.key, setting.key)) found = &line;
    }
    if (found) return withValue(bytes, *found, setting.value);
    if (!last && !setting.section.empty()) return withSection(bytes, setting);
    // The keys before the first header may begin the file.
    std::size_t length = 0;
    std::string_view lineEnd = lineEndOf("", bytes);
    if (last) {
        while (!last->isLast) ++last;
        length = last->offset + last->bytes.size();
        lineEnd = lineEndOf(last->bytes, bytes);
    }
    return withInserted(bytes, length, lineEnd, lineOf(setting) + std::string(lineEnd));
}

}  // namespace kfl_tool
