#include "tools/kfl/ini_findings.h"

namespace kfl_tool {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool hasSeparator(std::string_view text) {
    return text.find_first_of(separators) != std::string_view::npos;
}

// Quoted, cut where it is long, and with every byte to be seen.
std::string inQuotes(std::string_view text) {
    constexpr std::size_t most = 40;
    static const char digits[] = "0123456789abcdef";
    std::string shown = "'";
    for (const char c : text.substr(0, most)) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= ' ' && code != 0x7F) {
            shown += c;
        } else {
            shown += {'\\', 'x', digits[code / 16], digits[code % 16]};
        }
    }
    return shown + (text.size() > most ? "...'" : "'");
}

// Gathers what is found on one line.
class Finder {
  public:
    Finder(const IniLine& line, std::vector<Finding>& findings)
        : line_(line), findings_(findings) {}

    void find() {
        findInBytes();
        if (isDropped(line_)) findWhyDropped();
        if (line_.fate == Fate::section) findInHeader();
        if (line_.fate == Fate::stored) findInKey();
        if (line_.fate == Fate::section || line_.fate == Fate::stored) findAtEdges();
    }

  private:
    void add(const std::string& text) { findings_.push_back({line_.number, text}); }

    // What lies in the line whatever it says.
    void findInBytes() {
        if (line_.offset == 0 && line_.bytes.substr(0, byteOrderMark.size()) == byteOrderMark) {
            add("a byte order mark, which is read as text");
        }
        if (!line_.isFirst && line_.fate != Fate::blank) {
            add("longer than 511 bytes: " + inQuotes(line_.text) +
                " is read as a line of its own, " + kind());
        }
        if (line_.bytes.find('\0') != std::string_view::npos) {
            add("a NUL byte: it and the rest of the line are dropped");
        }
    }

    const char* kind() const {
        switch (line_.fate) {
            case Fate::comment: return "a comment";
            case Fate::section:
            case Fate::repeatedHeader: return "a section header";
            case Fate::stored: return "a key with its value";
            default: return "which is dropped";
        }
    }

    void findWhyDropped() {
        switch (line_.fate) {
            case Fate::repeatedHeader: addRepeatedHeader(); break;
            case Fate::noSeparator:
                add("neither '=' nor ':': " + inQuotes(line_.text) + " is dropped");
                break;
            case Fate::noKey: add("no key: " + inQuotes(line_.text) + " is dropped"); break;
            case Fate::noValue: add("no value: key " + inQuotes(line_.text) + " is dropped"); break;
            case Fate::skipped:
                add("key " + inQuotes(line_.key) +
                    " is dropped: its section header is a repeated one");
                break;
            default: add("nothing but separators: dropped");
        }
    }

    void addRepeatedHeader() {
        if (line_.firstNumber == 0) {
            add("a header without a name: the keys below it are dropped");
            return;
        }
        add("section " + inQuotes(line_.section) + " again, first on line " +
            std::to_string(line_.firstNumber) + ": the keys below it are dropped");
    }

    void findInHeader() {
        const std::string name = inQuotes(line_.section);
        const std::size_t bracket = line_.text.rfind(']');
        if (bracket == std::string_view::npos) {
            add("no ']': the section's name is all of " + name);
        } else if (bracket + 1 < line_.text.size()) {
            add(inQuotes(line_.text.substr(bracket + 1)) + " behind the header is dropped");
        }
        if (line_.section.find(']') != std::string::npos) {
            add("the name of section " + name + " goes to the last ']'");
        }
        if (!line_.section.empty() &&
            (isBlank(line_.section.front()) || isBlank(line_.section.back()))) {
            add("blanks belong to the name of section " + name);
        }
    }

    void findInKey() {
        const std::string key = inQuotes(line_.key);
        if (line_.section.empty()) add("key " + key + " in front of the first section header");
        if (line_.isRepeated) {
            add("key " + key + " again, first on line " + std::to_string(line_.firstNumber) +
                ": this value replaces the one before");
        }
        findInValue("the value of key " + key);
    }

    void findInValue(const std::string& value) {
        const std::string_view text = line_.value;
        if (isBlank(text.front())) add(value + " keeps the blank in front of it");
        for (std::size_t i = 1; i < text.size(); ++i) {
            if (!isBlank(text[i - 1]) || (text[i] != ';' && text[i] != '#')) continue;
            add(value + " includes " + inQuotes(text.substr(i)) + ", which is no comment there");
            break;
        }
        const std::string_view bare = withoutEdges(text);
        if (bare.size() > 1 && bare.front() == bare.back() &&
            (bare.front() == '"' || bare.front() == '\'')) {
            add(value + " keeps its quotes");
        }
    }

    // What is dropped at the ends of the line, indents apart, and what is not.
    void findAtEdges() {
        if (line_.text.find('\r') != std::string_view::npos) {
            add("a carriage return inside the line stays");
        }
        if (hasSeparator(line_.front())) {
            add(inQuotes(line_.front()) + " in front of the line is dropped");
        }
        if (!line_.back().empty())
            add(inQuotes(line_.back()) + " at the end of the line is dropped");
    }

    const IniLine& line_;
    std::vector<Finding>& findings_;
};

}  // namespace

std::vector<Finding> findingsOf(const std::vector<IniLine>& lines) {
    std::vector<Finding> findings;
    for (const IniLine& line : lines) Finder(line, findings).find();
    return findings;
}

bool isDropped(const IniLine& line) {
    switch (line.fate) {
        case Fate::blank: return hasSeparator(line.front()) || hasSeparator(line.back());
        case Fate::comment:
        case Fate::section:
        case Fate::stored: return false;
        default: return true;
    }
}

}  // namespace kfl_tool
