#include "kfl/AString.h"

#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "core/bases.h"
#include "core/bounded_output.h"
#include "core/char_set.h"
#include "core/equal_bytes.h"
#include "core/halt.h"
#include "core/is_within.h"
#include "core/retired.h"
#include "core/set_text.h"
#include "core/small_code.h"

namespace kfl {
namespace {

using detail::allocateArray;
using detail::CharSet;
using detail::checkedSize;
using detail::Retired;
using detail::wantsSmallCode;

// Copies a string's characters with their terminator, also those that stand behind a NUL inside the
// text and those that were put behind the length by hand.
void copyText(char* to, const char* from, unsigned int length) {
    std::size_t size = length;
    if (from[size] != '\0') size += std::strlen(from + size);
    std::memcpy(to, from, size + 1);
}

char* copyOf(const char* text, unsigned int length) {
    char* data = allocateArray(std::uint64_t{length} + 1);
    std::memcpy(data, text, length);
    data[length] = '\0';
    return data;
}

const char* orEmpty(const char* text) { return text ? text : ""; }

// The capacity after growth to `n` characters, which do not fit.
std::uint64_t grownCapacity(unsigned int capacity, unsigned int increment, unsigned int n) {
    return n - capacity < increment ? std::uint64_t{capacity} + increment : n;
}

bool startsWith(const char* text, const char* start) {
    for (; *start != '\0'; ++text, ++start) {
        if (*text != *start) return false;
    }
    return true;
}

// Out of line: the usual way of a comparison needs no stack.
[[gnu::noinline]] bool equalTexts(const char* a, const char* b) {
    return *a == *b && std::strcmp(a, b) == 0;
}

// What strstr finds. A rare first character is found sooner by itself; where it turns out to be a
// frequent one, the rest is left to strstr.
const char* findText(const char* text, const char* needle) {
    if (*needle == '\0') return text;
    for (unsigned int tries = wantsSmallCode ? 0 : 3; tries > 0; --tries, ++text) {
        text = std::strchr(text, *needle);
        if (!text || startsWith(text, needle)) return text;
    }
    return std::strstr(text, needle);
}

// Copies to places that may overlap the text.
inline void moveText(char* to, const char* text, std::size_t n) {
    if (n <= detail::shortLength) {
        detail::copyShort(to, text, n);
    } else {
        std::memmove(to, text, n);
    }
}

// Moves a string of `length` characters to an array with room for `n`; returns the old array.
[[gnu::noinline]] char* grow(char*& data, unsigned int& capacity, unsigned int length,
                             unsigned int increment, std::uint64_t n) {
    const std::uint64_t grown = grownCapacity(capacity, increment, checkedSize(n));
    char* const room = allocateArray(grown + 1);
    copyText(room, data, length);
    char* const old = data;
    data = room;
    capacity = static_cast<unsigned int>(grown);
    return old;
}

// Makes room for `n` characters; returns the array that is no longer needed, or null.
inline char* makeRoom(char*& data, unsigned int& capacity, unsigned int length,
                      unsigned int increment, std::uint64_t n) {
    return capacity > n ? nullptr : grow(data, capacity, length, increment, n);
}

// Writes a character behind the text, where there is room.
inline int putCharacter(char* data, unsigned int& length, unsigned int at, char c) {
    length = at + 1;
    data[at] = c;
    data[at + 1] = '\0';
    return 1;
}

[[gnu::noinline]] int appendGrowing(char*& data, unsigned int& capacity, unsigned int& length,
                                    unsigned int increment, char c) {
    const Retired<char> old(makeRoom(data, capacity, length, increment, std::uint64_t{length} + 1));
    return putCharacter(data, length, length, c);
}

// Writes a text behind the text, where there is room.
inline int putText(char* data, unsigned int& length, const char* text, std::size_t n) {
    char* const to = data + length;
    length += static_cast<unsigned int>(n);
    moveText(to, text, n);
    to[n] = '\0';
    return 1;
}

// Copies a piece of a string's own text into the gap of `n` characters just opened in it: what
// stood behind the gap has moved up by as much.
void copyParted(char* gap, const char* text, std::size_t n) {
    const std::size_t before = text < gap ? static_cast<std::size_t>(gap - text) : 0;
    const std::size_t front = before < n ? before : n;
    std::memcpy(gap, text, front);
    std::memcpy(gap + front, text + n + front, n - front);
}

}  // namespace

AString::AString(unsigned int capacity, unsigned int increment)
    : data_(allocateArray(std::uint64_t{capacity} + 1)),
      capacity_(capacity),
      length_(0),
      increment_(increment) {
    data_[0] = '\0';
}

AString::AString(const char* text, unsigned int increment)
    : capacity_(checkedSize(std::strlen(orEmpty(text)))),
      length_(capacity_),
      increment_(increment) {
    data_ = copyOf(orEmpty(text), length_);
}

AString::AString(const AString& other)
    : Protectable(other),
      SObject(other),
      data_(allocateArray(std::uint64_t{other.capacity_} + 1)),
      capacity_(other.capacity_),
      length_(other.length_),
      increment_(other.increment_) {
    copyText(data_, other.data_, length_);
}

AString::~AString() { delete[] data_; }

int AString::append(const char* text) {
    if (!text) return 1;
    const std::size_t n = std::strlen(text);
    const std::uint64_t total = std::uint64_t{length_} + n;
    // Said for fast code alone, which has nothing to release where there is room.
    if (!wantsSmallCode && total < capacity_) return putText(data_, length_, text, n);
    const Retired<char> old(makeRoom(data_, capacity_, length_, increment_, total));
    return putText(data_, length_, text, n);
}

int AString::append(const char* text, unsigned int n) {
    if (!text) return 1;
    const std::size_t visible = strnlen(text, n);
    const Retired<char> old(
        makeRoom(data_, capacity_, length_, increment_, std::uint64_t{length_} + n));
    std::memmove(data_ + length_, text, visible);
    std::memset(data_ + length_ + visible, 0, n - visible + 1);
    length_ += n;
    return 1;
}

void detail::setText(AString& string, const char* text, unsigned int n) {
    const Retired<char> old(
        makeRoom(string.data_, string.capacity_, string.length_, string.increment_, n));
    std::memmove(string.data_, text, n);
    string.data_[n] = '\0';
    string.length_ = n;
}

int AString::append(const AString& s) { return append(s.data_); }

[[gnu::aligned(detail::shortFunctionAlignment)]] int AString::append(char c) {
    const unsigned int at = length_;
    if (capacity_ - at < 2) return appendGrowing(data_, capacity_, length_, increment_, c);
    return putCharacter(data_, length_, at, c);
}

int AString::append(unsigned char c) { return append(static_cast<char>(c)); }

[[gnu::aligned(detail::shortFunctionAlignment)]] int AString::insert(unsigned int pos,
                                                                     const char* text) {
    if (!text) return 1;
    const std::size_t n = std::strlen(text);
    const Retired<char> old(
        makeRoom(data_, capacity_, length_, increment_, std::uint64_t{length_} + n));
    char* const gap = data_ + pos;
    // With the terminator: whoever reads it next would wait for a store of its own.
    std::memmove(gap + n, gap, std::size_t{length_ - pos} + 1);
    if (detail::isWithin(text, data_, length_)) {
        copyParted(gap, text, n);
    } else {
        moveText(gap, text, n);
    }
    length_ += static_cast<unsigned int>(n);
    // A character may have been put there by hand.
    if (data_[length_] != '\0') data_[length_] = '\0';
    return 1;
}

[[gnu::aligned(detail::shortFunctionAlignment)]] int AString::erase(unsigned int pos, int count) {
    if (count == 0 || pos >= length_) return 1;
    const unsigned int rest = length_ - pos;
    const unsigned int wanted = static_cast<unsigned int>(count);
    const unsigned int n = count < 0 || wanted > rest ? rest : wanted;
    std::memmove(data_ + pos, data_ + pos + n, rest - n + 1);
    length_ -= n;
    return 1;
}

int AString::trimRight(unsigned int n) {
    length_ -= n;
    data_[length_] = '\0';
    return 1;
}

int AString::replace(char from, char to) {
    // Kept on purpose: these searches would find the same place again and again.
    if (from == '\0') detail::haltForever();
    char* found = std::strchr(data_, from);
    if (found && from == to) detail::haltForever();
    for (; found; found = std::strchr(found, from)) *found = to;
    return 1;
}

int AString::expandTo(unsigned int n) {
    const Retired<char> old(makeRoom(data_, capacity_, length_, increment_, n));
    return 1;
}

[[gnu::aligned(detail::shortFunctionAlignment)]] bool AString::operator==(
    const AString& other) const {
    if (length_ != other.length_) return false;
    // Bytes behind a NUL may differ: the texts are equal all the same.
    if (data_[length_] == '\0' &&
        detail::equalBytes(data_, other.data_, std::size_t{length_} + 1)) {
        return true;
    }
    return equalTexts(data_, other.data_);
}

int AString::find(const char* needle, int /*start*/) {
    const char* const found = needle ? findText(data_, needle) : nullptr;
    return found ? static_cast<int>(found - data_) : -1;
}

int AString::findFirstOf(const char* set, int start) {
    const unsigned int from = static_cast<unsigned int>(start);
    if (!set || from >= length_) return -1;
    const std::size_t n = std::strcspn(data_ + from, set);
    return n > length_ - from ? -1 : static_cast<int>(n);
}

int AString::findFirstNotOf(const char* set, int start) {
    const unsigned int from = static_cast<unsigned int>(start);
    if (!set || from >= length_) return -1;
    const CharSet members(set);
    unsigned int at = from;
    while (at < length_ && members.contains(data_[at])) ++at;
    return static_cast<int>(at - from);
}

int AString::findLastOf(const char* set) {
    if (!set) return -1;
    const CharSet members(set);
    unsigned int end = length_;
    while (end > 0 && !members.contains(data_[end - 1])) --end;
    return static_cast<int>(end) - 1;
}

int AString::findLastNotOf(const char* set) {
    if (!set) return -1;
    const CharSet members(set);
    unsigned int end = length_;
    while (end > 0 && members.contains(data_[end - 1])) --end;
    return static_cast<int>(end) - 1;
}

}  // namespace kfl
