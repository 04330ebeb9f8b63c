// Byte streams over a string and over plain memory, and a list of texts.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/StringsContainer.h"
#include "kfl/streams.h"

namespace {

// Does not know where its bytes go.
void writeGreeting(DataOutputStream& out) {
    out.write("hello ", 6);
    out.write("world", 5);
}

// Nor this where they come from.
void show(DataInputStream& in) {
    char piece[4];
    while (const unsigned int n = in.read(piece, sizeof piece)) {
        std::printf("[%.*s]", static_cast<int>(n), piece);
    }
    std::puts("");
}

}  // namespace

int main() {
    kfl::AString text("");
    kfl::AStringOutputStream toText(text);
    writeGreeting(toText);
    kfl::AStringInputStream fromText(text);
    show(fromText);

    char array[32];
    BufferOutputStream toArray(array);
    writeGreeting(toArray);
    BufferInputStream fromArray(array, toArray.length());
    show(fromArray);

    // The container keeps the pointers; the words stay where they are.
    char up[] = "up", down[] = "down";
    StringsContainer words(2);
    words.addString(up);
    words.addString(down);
    if (words.addString(up) != 0) std::puts("full");
    for (unsigned int i = 1; i <= words.getNumberOfStrings(); ++i) {
        std::printf("%u: %s\n", i, words.getString(i));
    }
    return 0;
}
