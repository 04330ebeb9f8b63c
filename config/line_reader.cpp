#include "config/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace kfl::detail {

// cppcheck-suppress uninitMemberVar ; the first read fills the buffer
LineReader::LineReader(const char* path)
    : descriptor_(path ? open(path, O_RDONLY) : -1),
      ended_(false),
      begin_(0),
      end_(0),
      lineLength_(0) {}

LineReader::~LineReader() {
    if (isOpen()) close(descriptor_);
}

bool LineReader::next(TextPiece& line) {
    while (!hasWholeLine() && !ended_) refill();
    if (lineLength_ == 0) return false;
    const char* const start = buffer_ + begin_;
    line = TextPiece{start, start + strnlen(start, lineLength_)};
    begin_ += lineLength_;
    return true;
}

// Measures the line at the start of the unread bytes, as far as it has been read.
bool LineReader::hasWholeLine() {
    const unsigned int unread = end_ - begin_;
    lineLength_ = unread < longestLine ? unread : longestLine;
    if (lineLength_ == 0) return false;
    const char* const start = buffer_ + begin_;
    const void* const feed = std::memchr(start, '\n', lineLength_);
    if (feed) lineLength_ = static_cast<unsigned int>(static_cast<const char*>(feed) - start) + 1;
    return feed || lineLength_ == longestLine;
}

void LineReader::refill() {
    std::memmove(buffer_, buffer_ + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    const ssize_t n = read(descriptor_, buffer_ + end_, bufferSize - end_);
    if (n > 0) {
        end_ += static_cast<unsigned int>(n);
    } else {
        ended_ = true;
    }
}

}  // namespace kfl::detail
