// Buffers as texts, for tests.
#ifndef KFL_TESTS_BUFFER_TEXT_H
#define KFL_TESTS_BUFFER_TEXT_H

#include <gtest/gtest.h>

#include <string>

#include "kfl/Buffer.h"

namespace kfl_test {

inline unsigned char* bytesOf(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

// Writes a text; returns what Write does.
inline unsigned write(Buffer& buffer, std::string text) {
    return buffer.Write(bytesOf(text), static_cast<unsigned>(text.size()));
}

// What Read hands out of at most `count` bytes, which must be as many as it says.
inline std::string read(Buffer& buffer, unsigned count) {
    std::string text(count, '?');
    const unsigned n = buffer.Read(bytesOf(text), count);
    EXPECT_LE(n, count);
    EXPECT_EQ(text.substr(n), std::string(count - n, '?')) << "written behind the result";
    return text.substr(0, n);
}

// All bytes written, read or not.
inline std::string written(Buffer& buffer) {
    if (buffer.Size() == 0) return {};
    return {reinterpret_cast<const char*>(buffer.bytes()), buffer.Size()};
}

// A growable buffer that holds a text.
class TextBuffer : public Buffer {
  public:
    explicit TextBuffer(const std::string& text) : Buffer(static_cast<unsigned>(text.size()), 1) {
        write(*this, text);
    }
};

}  // namespace kfl_test

#endif
