// A growable character string, and an iterator over its lines.
//
//     kfl::AString path("/var/log");
//     path.append("/agent");
//     path.append('.');
//     std::puts(path.c_str());
//
//     kfl::AStringIterator lines(text, 200);
//     while (char* line = lines.Next()) handle(line);
//
// A string owns its characters. It can be shared by ProtectionElement handles and held in the
// object collections. One thread at a time uses a string and its iterators.
#ifndef KFL_ASTRING_H
#define KFL_ASTRING_H

#include "kfl/Protectable.h"
#include "kfl/SObject.h"
#include "kfl/export.h"

class Buffer;
class StringFormat;

namespace kfl {

class AString;
namespace detail {
// For the library's own use.
void setText(AString& string, const char* text, unsigned int n);
}  // namespace detail

// Always NUL-terminated. The length is kept beside the text; append(text, n) can make it larger
// than the visible text, which ends at the first NUL. Capacity grows by at least a fixed increment,
// so memory stays tight: who knows the final size builds the string with it or calls expandTo once.
//
// All modifiers return 1. A size that would pass 32 bits fails as an allocation does
// (std::bad_alloc from the allocator), and a failed allocation leaves the string as it was. A text
// argument may be (a piece of) the string's own text: the result is as if it had been copied
// beforehand.
class KFL_EXPORT AString : public Protectable, public SObject {
  public:
    // An empty string with room for `capacity` characters.
    AString(unsigned int capacity, unsigned int increment = 100);
    // A copy of `text`; null gives an empty string. Built exactly full: the first append grows it.
    AString(const char* text, unsigned int increment = 100);
    // Copies text, length, capacity and increment. The copy's reference count is 0.
    AString(const kfl::AString& other);
    // A copy of the formatted text. Capacity and length are its length; the increment is 100.
    AString(const StringFormat& format);
    // Reads the buffer's unread bytes into a new string of increment 100. `buffer` must not be
    // null. Kept on purpose: capacity and length are buffer->Size(), all bytes ever written, so a
    // buffer that was read in part leaves the rest of the characters unset.
    AString(Buffer* buffer);
    virtual ~AString();

    AString& operator=(const AString&) = delete;

    // Appends a text. Null appends nothing.
    // Invalidates: pointers into the text, and line iterators until their Reset().
    virtual int append(const char* text);
    // Appends exactly `n` characters: those of `text`, then NULs where it is shorter. Null appends
    // nothing.
    // Kept on purpose: the length grows by `n` also where the text is shorter.
    // Invalidates: as append(text).
    virtual int append(const char* text, unsigned int n);
    // Reads the buffer's unread bytes onto the end. Null appends nothing.
    // Kept on purpose: the length grows by buffer->Size(), all bytes ever written.
    // Invalidates: as append(text).
    virtual int append(Buffer* buffer);
    // Appends the text of `s` up to its first NUL, through append(char const*).
    // Invalidates: as append(text).
    virtual int append(const kfl::AString& s);
    // Appends one character, NUL included.
    // Invalidates: as append(text).
    virtual int append(char c);
    // The same, through append(char).
    virtual int append(unsigned char c);

    // Inserts a text before position `pos`. Null inserts nothing.
    // Requires: pos <= length().
    // Invalidates: as append(text).
    int insert(unsigned int pos, const char* text);
    // Removes `count` characters from `pos` on; any negative count, or one that reaches past the
    // end, removes to the end. A `pos` at or past the end changes nothing.
    int erase(unsigned int pos, int count);
    // Drops the last `n` characters.
    // Requires: n <= length().
    int trimRight(unsigned int n);
    // Replaces every `from` in the visible text by `to`. A replacement by NUL ends the visible text
    // there; the length stays.
    // Kept on purpose: replacing a character by itself where it occurs, or replacing NUL, never
    // returns.
    int replace(char from, char to);
    // Makes room for `n` characters.
    // Kept on purpose: a request for exactly the capacity grows the string too. Growth is by the
    // increment, or to exactly `n` where that is at least an increment more.
    // Invalidates: as append(text).
    int expandTo(unsigned int n);

    // True when lengths are equal and the visible texts are.
    bool operator==(const kfl::AString& other) const;
    // The position of the first `needle` in the visible text, or -1; -1 for null.
    // Kept on purpose: `start` is ignored, the search begins at position 0.
    int find(const char* needle, int start);
    // The next four test characters against a set, given as a text; a NUL inside the text counts as
    // a member of every set. A null set gives -1.
    //
    // The number of characters from `start` to the first one in the set; -1 where start >=
    // length(). Kept on purpose: an offset from `start`, and length() - start where none is in the
    // set.
    int findFirstOf(const char* set, int start);
    // The same for the first character that is not in the set.
    int findFirstNotOf(const char* set, int start);
    // The position of the last character in the set, or -1.
    int findLastOf(const char* set);
    // The position of the last character not in the set, or -1.
    int findLastNotOf(const char* set);

    // The text, NUL-terminated; valid until the next growth.
    const char* c_str() const { return data_; }
    // Characters in use.
    unsigned int length() const { return length_; }
    // Characters that fit, the terminator not counted.
    unsigned int capacity() const { return capacity_; }
    // The step by which the capacity grows at least.
    unsigned int increment() const { return increment_; }
    // True when no characters are in use.
    bool empty() const { return length_ == 0; }
    // Empties the string and keeps its room.
    void clear() {
        length_ = 0;
        data_[0] = '\0';
    }

  private:
    friend void detail::setText(AString& string, const char* text, unsigned int n);

    // Where none is given.
    enum : unsigned int { defaultIncrement = 100 };

    char* data_;
    unsigned int capacity_;
    unsigned int length_;
    unsigned int increment_;
};

// Walks a string line by line. It keeps a pointer to the string and one into its text: after the
// string has grown, Reset() comes before the next Next().
class KFL_EXPORT AStringIterator {
  public:
    // Lines of up to `lineSize` characters, their line feed counted, come whole; longer ones arrive
    // in pieces of that size, nothing is lost. A size of 0 counts as 1.
    AStringIterator(kfl::AString& s, unsigned int lineSize);
    ~AStringIterator();

    AStringIterator(const AStringIterator&) = delete;
    AStringIterator& operator=(const AStringIterator&) = delete;

    // Back to the first line of the string as it is now.
    void Reset();
    // The next line, with its line feed and without carriage returns; null at the end. The result
    // is the iterator's own array, valid until the next call.
    char* Next();

  private:
    AString* string_;
    char* position_;
    char* line_;
};

}  // namespace kfl

#endif
