// Reads INI-style configuration files and answers look-ups in them.
//
//     kfl::IniFileParser config;
//     if (!config.parseFile("/etc/agent.ini")) return fail("cannot read /etc/agent.ini");
//     int interval = config.getInt("interval", "timers");        // key first, section second
//     if (interval == INT_MIN) interval = 30;                    // the mark of a missing key
//     const char* peer = config.getString("address", "peer");    // null when missing
//
// The file, line by line; blanks, tabs, '=' and ':' at either end of a line are dropped first:
//
//     ; comment          also '#'; only at the start of a line
//     [section]          up to the last ']', blanks inside the brackets kept
//     key = value        or key: value; split at the first '=' or ':'
//
// The key is trimmed; the value keeps the blanks in front of it and all further '=' and ':'. There
// is no quoting, escaping, continuation or comment behind a value. Keys before the first
// header belong to the section "". A repeated key keeps its first spelling and takes the last
// value. Names are compared ignoring case. A line without separator, key or value stores nothing. A
// line is read 511 bytes at a time; a longer one arrives in pieces, each a line of its own.
//
// Requires: no section header twice, in any spelling. Kept on purpose: a repeated header does not
// reopen its section; the keys below it are skipped up to the next header that makes a new section.
//
// The parser owns its sections, and they own their keys; both live as long as the parser. Look-ups
// walk the records one by one. One thread at a time uses a parser.
#ifndef KFL_INIFILEPARSER_H
#define KFL_INIFILEPARSER_H

#include "kfl/AString.h"
#include "kfl/VoidPtrCollection.h"
#include "kfl/export.h"

// A key with its value.
struct KFL_EXPORT st_key {
    // Two empty strings with room for 80 characters each.
    st_key();
    ~st_key();

    st_key(const st_key&) = delete;
    st_key& operator=(const st_key&) = delete;

    // As first written. Requires: no NUL inside.
    kfl::AString name;
    // As last set.
    kfl::AString value;
};

namespace kfl {

using ::st_key;

// A named list of keys.
struct KFL_EXPORT st_section {
    // An empty section of that name.
    st_section(const char* name);
    // Deletes the keys.
    ~st_section();

    st_section(const st_section&) = delete;
    st_section& operator=(const st_section&) = delete;

    // As first written. Requires: no NUL inside.
    kfl::AString name;
    // Pointers to st_key, in order of creation; owned.
    kfl::VoidPtrOrderedCollection keys;
};

// Removes blanks, tabs, line ends, '=' and ':' from both ends of `s`.
KFL_EXPORT void trim(kfl::AString& s);

// Splits `line` at its first '=' or ':': the part before it goes to `word`, trimmed; the part
// behind it stays in `line`. Without a separator `word` gets everything and `line` is left empty.
// Kept on purpose: what stays in `line` is not trimmed.
KFL_EXPORT void getNextWord(kfl::AString& line, kfl::AString& word);

// The platform's strcasecmp: 0 when the two are equal ignoring ASCII case, else negative or
// positive. Requires: neither is null.
KFL_EXPORT int compareNoCase(const char* a, const char* b);

// In all operations a null name, value or path is one that does not exist and cannot be made.
class KFL_EXPORT IniFileParser {
  public:
    // The bits of `flags`: what setValue may create.
    enum : unsigned int { iniCreateSections = 2, iniCreateKeys = 4 };

    // Holds the section "" and nothing else; both create bits are set.
    IniFileParser();
    // Deletes the sections with their keys.
    virtual ~IniFileParser();

    IniFileParser(const IniFileParser&) = delete;
    IniFileParser& operator=(const IniFileParser&) = delete;

    // Adds what the file holds to what the parser holds. Returns false, and changes nothing, when
    // the file cannot be opened; a later read error ends the reading as the end of the file does.
    // Creates sections and keys whatever `flags` says.
    bool parseFile(const char* path);

    // Stores a value. Returns false when the section or key is missing and may not be created, and
    // for an empty value of a new key; an existing key takes an empty value. A section that had to
    // be made for a key which then could not be stored stays. Invalidates: what getValue returned
    // for that key.
    bool setValue(const char* key, const char* value, const char* section);

    // The value, or null when key or section is missing. The text belongs to the parser and stays
    // valid until the key is set again.
    const char* getValue(const char* key, const char* section);
    // The same.
    const char* getString(const char* key, const char* section);
    // The value as atoi reads it; -2147483648 for a missing key.
    int getInt(const char* key, const char* section);
    // The value as atof reads it, narrowed to float; 1.17549435e-38 (FLT_MIN) for a missing key.
    float getFloat(const char* key, const char* section);
    // Kept on purpose: true for every key that exists, "0", "false", "no" and an empty value
    // included.
    bool getBool(const char* key, const char* section);

    // The key's record, or null.
    st_key* getKey(const char* key, const char* section);
    // The section's record, or null.
    kfl::st_section* getSection(const char* name);
    // Appends an empty section; null when there is one of that name already.
    kfl::st_section* createSection(const char* name);

    // The sections (pointers to st_section), in order of creation; the first is "".
    const kfl::VoidPtrOrderedCollection& sectionList() const { return sections; }

    // Create bits, for the host to set.
    unsigned int flags;

  private:
    kfl::VoidPtrOrderedCollection sections;

  public:
    // Set whenever a section is created or a value is stored; for the host to read and clear.
    bool modified;
};

}  // namespace kfl

#endif
