// Lines collected and shown at once. Shows: a Buffer that may take only a part of a write, and the
// string that takes all its bytes.
#include "journal.h"

#include <cstdio>

#include "kfl/AString.h"

namespace agent {
namespace {

// Room for a few lines, and the step by which it grows.
constexpr unsigned int roomAtFirst = 256;
constexpr unsigned int step = 64;

// Writes a whole text. A buffer grows once for a write, and may then still be too small: the result
// tells how much went in.
void writeAll(Buffer& buffer, const kfl::AString& text) {
    // Write only reads what it is given, although its type does not say so.
    auto* from = reinterpret_cast<unsigned char*>(const_cast<char*>(text.c_str()));
    for (unsigned int left = text.length(); left > 0;) {
        const unsigned int written = buffer.Write(from, left);
        from += written;
        left -= written;
    }
}

}  // namespace

Journal::Journal() : text_(roomAtFirst, step), lines_(0) {}

void Journal::add(const StringFormat& line) {
    kfl::AString text(line);
    text.append('\n');
    writeAll(text_, text);
    ++lines_;
}

void Journal::print() {
    // The string takes what is unread, which is all.
    const kfl::AString text(&text_);
    std::fputs(text.c_str(), stdout);
    std::printf("report: %u lines, %u bytes\n", lines_, text_.Size());
    text_.Clear();
    lines_ = 0;
}

}  // namespace agent
