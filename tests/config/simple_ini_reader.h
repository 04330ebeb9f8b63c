// A second reader of INI files, written as plainly as can be: tests compare the parser with it.
#ifndef KFL_TESTS_SIMPLE_INI_READER_H
#define KFL_TESTS_SIMPLE_INI_READER_H

#include <string>
#include <vector>

#include "kfl/IniFileParser.h"

namespace kfl_test {

struct SimpleKey {
    std::string name;
    std::string value;
};

struct SimpleSection {
    std::string name;
    std::vector<SimpleKey> keys;
};

inline bool sameName(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

inline std::string withoutEdges(const std::string& text) {
    const char* const dropped = " \t\n\r=:";
    const std::size_t first = text.find_first_not_of(dropped);
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(dropped) - first + 1);
}

// What an IniFileParser holds and does, for names and values without a NUL.
class SimpleIniReader {
  public:
    static constexpr unsigned int mayCreateSections = 2;
    static constexpr unsigned int mayCreateKeys = 4;
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::vector<SimpleSection> sections{{"", {}}};
    unsigned int flags = mayCreateSections | mayCreateKeys;
    bool modified = false;

    // Reads a file that holds these bytes.
    void read(const std::string& bytes) {
        const unsigned int flagsBefore = flags;
        flags = mayCreateSections | mayCreateKeys;
        current_ = findSection("");
        for (std::size_t at = 0; at < bytes.size();) {
            std::string line = bytes.substr(at, 511);
            const std::size_t feed = line.find('\n');
            if (feed != std::string::npos) line.resize(feed + 1);
            at += line.size();
            take(withoutEdges(line.substr(0, line.find('\0'))));
        }
        flags = flagsBefore;
    }

    std::size_t findSection(const std::string& name) const {
        for (std::size_t i = 0; i < sections.size(); ++i)
            if (sameName(sections[i].name, name)) return i;
        return none;
    }

    // The index of the new section, or none.
    std::size_t createSection(const std::string& name) {
        if (findSection(name) != none) return none;
        sections.push_back({name, {}});
        modified = true;
        return sections.size() - 1;
    }

    SimpleKey* findKey(const std::string& name, const std::string& section) {
        const std::size_t index = findSection(section);
        if (index == none) return nullptr;
        for (SimpleKey& key : sections[index].keys)
            if (sameName(key.name, name)) return &key;
        return nullptr;
    }

    bool setValue(const std::string& name, const std::string& value, const std::string& section) {
        SimpleKey* const key = findKey(name, section);
        std::size_t index = findSection(section);
        if (index == none) {
            if ((flags & mayCreateSections) == 0) return false;
            index = createSection(section);
        }
        if (key) {
            key->value = value;
            modified = true;
            return true;
        }
        if (value.empty() || (flags & mayCreateKeys) == 0) return false;
        sections[index].keys.push_back({name, value});
        modified = true;
        return true;
    }

  private:
    void take(const std::string& line) {
        if (line.empty() || line[0] == ';' || line[0] == '#') return;
        if (line[0] == '[') {
            current_ = createSection(line.substr(0, line.rfind(']')).substr(1));
            return;
        }
        const std::size_t separator = line.find_first_of("=:");
        if (separator == std::string::npos || current_ == none) return;
        const std::string value = line.substr(separator + 1);
        const std::string name = withoutEdges(line.substr(0, separator));
        if (!name.empty() && !value.empty()) setValue(name, value, sections[current_].name);
    }

    // The section that key lines go to, or none.
    std::size_t current_ = 0;
};

// A text in which every character can be seen.
inline std::string visible(const std::string& text) {
    std::string shown;
    for (const char c : text) {
        const unsigned int code = static_cast<unsigned char>(c);
        if (code >= ' ' && code < 0x7F && c != '\\') {
            shown += c;
        } else {
            shown += '\\';
            for (unsigned int shift = 9; shift > 0;)
                shown += static_cast<char>('0' + ((code >> (shift -= 3)) & 7U));
        }
    }
    return shown;
}

// Everything that is held, one record a line.
inline std::string contentOf(const SimpleIniReader& reader) {
    std::string content = reader.modified ? "modified\n" : "";
    for (const SimpleSection& section : reader.sections) {
        content += '[' + visible(section.name) + "]\n";
        for (const SimpleKey& key : section.keys)
            content += visible(key.name) + '=' + visible(key.value) + '\n';
    }
    return content;
}

inline std::string textOf(const kfl::AString& text) { return {text.c_str(), text.length()}; }

inline std::string contentOf(const kfl::IniFileParser& parser) {
    std::string content = parser.modified ? "modified\n" : "";
    for (unsigned int i = 0; i < parser.sectionList().count(); ++i) {
        const auto* section = static_cast<const kfl::st_section*>(parser.sectionList().idAt(i));
        content += '[' + visible(textOf(section->name)) + "]\n";
        for (unsigned int k = 0; k < section->keys.count(); ++k) {
            const auto* key = static_cast<const st_key*>(section->keys.idAt(k));
            content += visible(textOf(key->name)) + '=' + visible(textOf(key->value)) + '\n';
        }
    }
    return content;
}

}  // namespace kfl_test

#endif
