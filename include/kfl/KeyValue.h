// Pairs of texts, and a reader that fills them from a key/value file.
//
//     char hostKey[] = "host", hostDefault[] = "localhost";
//     kfl::KeyValuePair host(hostKey, hostDefault);
//     kfl::KeyValuePair* pairs[] = {&host, nullptr};
//     if (kfl::KeyValueParser::parse("/etc/upload.conf", pairs) == 0) warn("no upload.conf");
//     connect(host.value.c_str());
#ifndef KFL_KEYVALUE_H
#define KFL_KEYVALUE_H

#include "kfl/AString.h"
#include "kfl/Protectable.h"
#include "kfl/SObject.h"
#include "kfl/export.h"

namespace kfl {

// A key with its value, to be held in the object collections. Neither text may be null (one that is
// counts as empty).
class KFL_EXPORT KeyValuePair : public SObject {
  public:
    // Copies both texts.
    KeyValuePair(char* key, char* value);
    virtual ~KeyValuePair();

    KeyValuePair(const KeyValuePair&) = delete;
    KeyValuePair& operator=(const KeyValuePair&) = delete;

    // The key to look up.
    kfl::AString key;
    // The default, until parse() finds the key.
    kfl::AString value;
};

// A name with its value, to be shared by counted handles. Neither text may be null (one that is
// counts as empty).
class KFL_EXPORT NameValuePair : public Protectable {
  public:
    // Copies both texts; both strings have room for 100 more characters.
    NameValuePair(const char* name, const char* value);
    virtual ~NameValuePair();

    NameValuePair(const NameValuePair&) = delete;
    NameValuePair& operator=(const NameValuePair&) = delete;

    // What the pair is about.
    kfl::AString name;
    // What it says.
    kfl::AString value;
};

// Reads files of the form that kfl/IniFileParser.h describes.
class KFL_EXPORT KeyValueParser {
  public:
    KeyValueParser();
    ~KeyValueParser();

    // Sets the value of each pair whose key the file holds, ignoring case; the others keep theirs,
    // which is how defaults are given. `pairs` ends with a null pointer; null itself counts as no
    // pairs. Returns 0 when the file cannot be opened, 1 when none of the keys was found, else 2.
    // Where memory runs out the pair that was to be filled may be left with an empty value.
    // Kept on purpose: only keys in front of the file's first section header count.
    static int parse(const char* path, kfl::KeyValuePair** pairs);
};

}  // namespace kfl

#endif
