// Byte streams over strings and plain memory.
//
//     kfl::AString text("");
//     kfl::AStringOutputStream out(text);
//     out.write("ab", 2);                      // returns 2, the length of the text
//     kfl::AStringInputStream in(text);
//     char bytes[16];
//     unsigned int n = in.read(bytes, sizeof bytes);
//
// Streams keep pointers to what they read and write; the caller keeps that alive. One thread at a
// time uses a stream.
#ifndef KFL_STREAMS_H
#define KFL_STREAMS_H

#include "kfl/AString.h"
#include "kfl/export.h"

// A source of bytes.
class KFL_EXPORT DataInputStream {
  public:
    DataInputStream();
    virtual ~DataInputStream();

    // Takes up to `n` bytes into `dst`; returns how many, 0 at the end.
    virtual unsigned int read(char* dst, unsigned int n) = 0;
    // Goes back to the first byte.
    virtual void rewind() = 0;
};

// A sink of bytes.
class KFL_EXPORT DataOutputStream {
  public:
    DataOutputStream();
    virtual ~DataOutputStream();

    // Writes `n` bytes; what is returned is the stream's own.
    virtual unsigned int write(const char* src, unsigned int n) = 0;
    // Writes one character. Here it writes nothing and returns 0.
    virtual unsigned int writeChar(char c);
};

namespace kfl {

// Reads a string's characters.
class KFL_EXPORT AStringInputStream : public DataInputStream {
  public:
    // Reads `s` from its first character on.
    AStringInputStream(kfl::AString& s);
    virtual ~AStringInputStream();

    // A string that became shorter than the position has nothing left.
    unsigned int read(char* dst, unsigned int n) override;
    void rewind() override;

  private:
    AString* string_;
    unsigned int position_;
};

// Appends to a string, through its virtual operations.
class KFL_EXPORT AStringOutputStream : public DataOutputStream {
  public:
    // Writes to the end of `s`.
    AStringOutputStream(kfl::AString& s);
    virtual ~AStringOutputStream();

    // Appends exactly `n` characters, as AString::append(text, n) does. Returns the string's length
    // afterwards, not `n`.
    unsigned int write(const char* src, unsigned int n) override;
    // Appends one character; returns the string's length afterwards.
    unsigned int writeChar(char c) override;

  private:
    AString* string_;
};

}  // namespace kfl

// Reads an array of bytes.
class KFL_EXPORT BufferInputStream : public DataInputStream {
  public:
    // Reads the `length` bytes at `data`.
    BufferInputStream(const char* data, unsigned int length);
    virtual ~BufferInputStream();

    unsigned int read(char* dst, unsigned int n) override;
    void rewind() override;

  private:
    const char* start_;
    unsigned int total_;
    const char* current_;
    unsigned int remaining_;
};

// Writes texts one behind the other into a caller's array.
// Requires: an array that is large enough; no bound is kept.
// Kept on purpose: writeChar() is the base's, so a character written with it is dropped.
class KFL_EXPORT BufferOutputStream : public DataOutputStream {
  public:
    // Makes the array an empty text.
    BufferOutputStream(char* array);
    virtual ~BufferOutputStream();

    // Appends `src`, at most `n` characters of it, to the text in the array; returns `n`. A null
    // `src` changes nothing and returns 0. Kept on purpose: the length grows by `n`, and the array
    // is terminated there, also where `src` is shorter; the next write goes behind the first NUL
    // all the same.
    unsigned int write(const char* src, unsigned int n) override;

    // The sum of all lengths written.
    unsigned int length() const { return length_; }

  private:
    char* array_;
    unsigned int length_;
};

#endif
