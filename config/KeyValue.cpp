#include "kfl/KeyValue.h"

#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "core/bases.h"
#include "kfl/IniFileParser.h"

namespace kfl {
namespace {

// The capacity of a string that was built full with a text and then filled with it anew, which grew
// it.
unsigned int refilledCapacity(const char* text) {
    const std::uint64_t length = text ? std::strlen(text) : 0;
    return detail::checkedSize(length + 100);
}

}  // namespace

KeyValuePair::KeyValuePair(char* key_, char* value_) : key(key_), value(value_) {}

KeyValuePair::~KeyValuePair() = default;

NameValuePair::NameValuePair(const char* name_, const char* value_)
    : name(refilledCapacity(name_)), value(refilledCapacity(value_)) {
    name.append(name_);
    value.append(value_);
}

NameValuePair::~NameValuePair() = default;

KeyValueParser::KeyValueParser() = default;

KeyValueParser::~KeyValueParser() = default;

int KeyValueParser::parse(const char* path, KeyValuePair** pairs) {
    IniFileParser file;
    if (!file.parseFile(path)) return 0;
    bool found = false;
    for (; pairs && *pairs; ++pairs) {
        const char* const value = file.getValue((*pairs)->key.c_str(), "");
        if (!value) continue;
        (*pairs)->value.clear();
        (*pairs)->value.append(value);
        found = true;
    }
    return found ? 2 : 1;
}

}  // namespace kfl
