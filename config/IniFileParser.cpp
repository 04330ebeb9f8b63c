#include "kfl/IniFileParser.h"

#include <float.h>
#include <stdlib.h>

#include <climits>
#include <cstring>

#include "config/ini_names.h"
#include "config/line_reader.h"
#include "config/text_piece.h"
#include "core/allocation.h"
#include "core/owner.h"
#include "core/set_text.h"

namespace kfl {
namespace {

using detail::findRecord;
using detail::Owner;
using detail::TextPiece;

// Empty keys and values are made with this much room.
constexpr unsigned int recordCapacity = 80;

// Adds a section to the list; the list must have none of that name.
st_section* addSection(VoidPtrOrderedCollection& sections, const char* name) {
    Owner<st_section> section(new st_section(name));
    sections.add(section.get());
    return section.release();
}

// Text of more than 32 bits fails as an allocation does.
void append(AString& text, TextPiece piece) {
    text.append(piece.begin, detail::checkedSize(piece.length()));
}

void addKey(st_section& section, TextPiece name, TextPiece value) {
    Owner<st_key> key(new st_key);
    append(key->name, name);
    append(key->value, value);
    section.keys.add(key.get());
    key.release();
}

// Stores a value under a key, which is made where it may be; an empty value makes none.
bool store(st_section& section, TextPiece name, TextPiece value, bool mayCreate) {
    if (st_key* const key = findRecord<st_key>(section.keys, name)) {
        detail::setText(key->value, value.begin, detail::checkedSize(value.length()));
        return true;
    }
    if (value.empty() || !mayCreate) return false;
    addKey(section, name, value);
    return true;
}

TextPiece pieceOf(const char* text) { return TextPiece{text, text + std::strlen(text)}; }

// The name in a header line, which begins with '['.
TextPiece headerName(TextPiece line) {
    return TextPiece{line.begin + 1, detail::findLastBracket(line)};
}

// Takes the lines of a file one by one.
class Filler {
  public:
    explicit Filler(IniFileParser& parser) : parser_(parser), current_(parser.getSection("")) {}

    void take(TextPiece line) {
        line = detail::trimmed(line);
        if (line.empty()) return;
        switch (*line.begin) {
            case '[': return openSection(headerName(line));
            case ';':
            case '#': return;
            default: return storeKey(line);
        }
    }

  private:
    // Kept on purpose: a repeated name opens no section, and the keys that follow have nowhere to
    // go.
    void openSection(TextPiece name) {
        char text[detail::LineReader::longestLine + 1] = {};
        std::memcpy(text, name.begin, name.length());
        current_ = parser_.createSection(text);
    }

    void storeKey(TextPiece line) {
        const char* const separator = detail::findSeparator(line);
        if (!current_ || separator == line.end) return;
        const TextPiece key = detail::trimmed(TextPiece{line.begin, separator});
        // The value is not empty, so it is stored: a line ends neither in blanks nor in separators.
        store(*current_, key, TextPiece{separator + 1, line.end}, true);
        parser_.modified = true;
    }

    IniFileParser& parser_;
    st_section* current_;
};

template <class Record>
void deleteRecords(const VoidPtrOrderedCollection& records) {
    const unsigned int count = records.count();
    for (unsigned int i = 0; i < count; ++i) delete static_cast<Record*>(records.idAt(i));
}

}  // namespace

}  // namespace kfl

st_key::st_key() : name(kfl::recordCapacity), value(kfl::recordCapacity) {}

st_key::~st_key() = default;

namespace kfl {

st_section::st_section(const char* sectionName) : name(sectionName) {}

st_section::~st_section() { deleteRecords<st_key>(keys); }

IniFileParser::IniFileParser() : flags(iniCreateSections | iniCreateKeys), modified(false) {
    addSection(sections, "");
}

IniFileParser::~IniFileParser() { deleteRecords<st_section>(sections); }

bool IniFileParser::parseFile(const char* path) {
    detail::LineReader reader(path);
    if (!reader.isOpen()) return false;
    // The create bits need not be set for this: nothing that fills the parser from a file asks
    // them.
    Filler filler(*this);
    TextPiece line{};
    while (reader.next(line)) filler.take(line);
    return true;
}

bool IniFileParser::setValue(const char* key, const char* value, const char* section) {
    if (!key || !value || !section) return false;
    st_section* found = getSection(section);
    if (!found && (flags & iniCreateSections) != 0) found = createSection(section);
    if (!found) return false;
    const bool stored = store(*found, pieceOf(key), pieceOf(value), (flags & iniCreateKeys) != 0);
    modified = modified || stored;
    return stored;
}

const char* IniFileParser::getValue(const char* key, const char* section) {
    const st_key* const record = getKey(key, section);
    return record ? record->value.c_str() : nullptr;
}

const char* IniFileParser::getString(const char* key, const char* section) {
    return getValue(key, section);
}

int IniFileParser::getInt(const char* key, const char* section) {
    const char* const value = getValue(key, section);
    return value ? atoi(value) : INT_MIN;
}

float IniFileParser::getFloat(const char* key, const char* section) {
    const char* const value = getValue(key, section);
    return value ? static_cast<float>(atof(value)) : FLT_MIN;
}

bool IniFileParser::getBool(const char* key, const char* section) {
    // Kept on purpose: a value is true unless it is "1" and "true" and "yes" at once, so every one
    // is.
    return getKey(key, section) != nullptr;
}

st_key* IniFileParser::getKey(const char* key, const char* section) {
    st_section* const found = key ? getSection(section) : nullptr;
    return found ? findRecord<st_key>(found->keys, pieceOf(key)) : nullptr;
}

st_section* IniFileParser::getSection(const char* name) {
    return name ? findRecord<st_section>(sections, pieceOf(name)) : nullptr;
}

st_section* IniFileParser::createSection(const char* name) {
    if (!name || getSection(name)) return nullptr;
    st_section* const section = addSection(sections, name);
    modified = true;
    return section;
}

}  // namespace kfl
