// Reads a file line by line, in constant memory.
#ifndef KFL_CONFIG_LINE_READER_H
#define KFL_CONFIG_LINE_READER_H

#include "config/text_piece.h"

namespace kfl::detail {

// A line is what fgets with a 512-byte buffer takes for one: at most 511 bytes, up to and including
// a line feed, of which the text ends at the first NUL. A read error ends the file.
class LineReader {
  public:
    explicit LineReader(const char* path);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    // The next line, valid until the next call; false at the end.
    bool next(TextPiece& line);

    static constexpr unsigned int longestLine = 511;

  private:
    bool hasWholeLine();
    void refill();

    static constexpr unsigned int bufferSize = 4096;

    int descriptor_;
    bool ended_;
    // The bytes read and not yet handed out, and the length of the line at their start.
    unsigned int begin_;
    unsigned int end_;
    unsigned int lineLength_;
    char buffer_[bufferSize];
};

}  // namespace kfl::detail

#endif
