#include "tools/kfl/ini_lines.h"

#include <map>

#include "kfl/IniFileParser.h"

namespace kfl_tool {
namespace {

// Follows what the lines do, one by one.
class Reading {
  public:
    void take(IniLine& line) {
        line.section = section_;
        line.fate = fateOf(line);
    }

  private:
    Fate fateOf(IniLine& line) {
        if (line.text.empty()) return Fate::blank;
        switch (line.text.front()) {
            case '[': return takeHeader(line);
            case ';':
            case '#': return Fate::comment;
            default: return takeKey(line);
        }
    }

    Fate takeHeader(IniLine& line) {
        const std::string_view beforeBracket = line.text.substr(0, line.text.rfind(']'));
        section_ = line.section = beforeBracket.substr(1);
        isOpen_ = names_.createSection(section_.c_str()) != nullptr;
        noteFirst(line, names_.getSection(section_.c_str()), !isOpen_);
        return isOpen_ ? Fate::section : Fate::repeatedHeader;
    }

    Fate takeKey(IniLine& line) {
        const std::size_t separator = line.text.find_first_of(separators);
        if (separator == std::string_view::npos) return fateWithoutSeparator(line);
        line.key = withoutEdges(line.text.substr(0, separator));
        line.value = line.text.substr(separator + 1);
        if (!isOpen_) return Fate::skipped;
        const std::string key(line.key);
        const bool isRepeated = names_.getKey(key.c_str(), section_.c_str()) != nullptr;
        names_.setValue(key.c_str(), std::string(line.value).c_str(), section_.c_str());
        noteFirst(line, names_.getKey(key.c_str(), section_.c_str()), isRepeated);
        return Fate::stored;
    }

    // A separator at an end of the line is dropped with that end.
    static Fate fateWithoutSeparator(const IniLine& line) {
        if (hasSeparator(line.back())) return Fate::noValue;
        return hasSeparator(line.front()) ? Fate::noKey : Fate::noSeparator;
    }

    static bool hasSeparator(std::string_view text) {
        return text.find_first_of(separators) != std::string_view::npos;
    }

    void noteFirst(IniLine& line, const void* record, bool isRepeated) {
        line.isRepeated = isRepeated;
        if (!isRepeated) lineOf_[record] = line.number;
        line.firstNumber = lineOf_[record];
    }

    // Knows which names are one.
    kfl::IniFileParser names_;
    std::string section_;
    bool isOpen_ = true;
    // Where sections and keys came first, by their records.
    std::map<const void*, std::size_t> lineOf_;
};

// The first of `bytes`, as far as they are read as one line.
std::string_view firstPiece(std::string_view bytes) {
    const std::string_view most = bytes.substr(0, longestLine);
    const std::size_t feed = most.find('\n');
    return feed == std::string_view::npos ? most : most.substr(0, feed + 1);
}

std::string_view untilNul(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }

}  // namespace

std::string_view IniLine::front() const {
    return bytes.substr(0, static_cast<std::size_t>(text.data() - bytes.data()));
}

std::string_view IniLine::back() const {
    std::string_view rest = untilNul(bytes).substr(front().size() + text.size());
    while (!rest.empty() && (rest.back() == '\n' || rest.back() == '\r')) rest.remove_suffix(1);
    return rest;
}

std::string_view withoutEdges(std::string_view text) {
    const std::size_t first = text.find_first_not_of(edges);
    if (first == std::string_view::npos) return text.substr(0, 0);
    return text.substr(first, text.find_last_not_of(edges) - first + 1);
}

std::vector<IniLine> readLines(std::string_view bytes) {
    std::vector<IniLine> lines;
    Reading reading;
    std::size_t number = 1;
    bool isFirst = true;
    for (std::size_t at = 0; at < bytes.size();) {
        IniLine line{};
        line.number = number;
        line.offset = at;
        line.bytes = firstPiece(bytes.substr(at));
        at += line.bytes.size();
        line.isFirst = isFirst;
        line.isLast = line.bytes.back() == '\n' || at == bytes.size();
        line.text = withoutEdges(untilNul(line.bytes));
        reading.take(line);
        lines.push_back(line);
        isFirst = line.isLast;
        if (line.isLast) ++number;
    }
    return lines;
}

}  // namespace kfl_tool
