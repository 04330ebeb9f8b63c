// Strings, their lines, and handles that share one.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/Protectable.h"

int main() {
    kfl::AString path("/var/log");
    path.append("/agent");
    path.append('.');
    path.append("log.old", 3);
    std::printf("%s has %u characters\n", path.c_str(), path.length());

    path.erase(0, 4);
    path.insert(0, "/tmp");
    path.replace('.', '-');
    std::printf("%s, last slash at %d\n", path.c_str(), path.findLastOf("/"));

    kfl::AString answer("220 ready\r\n250 done\r\n");
    kfl::AStringIterator lines(answer, 80);
    while (const char* line = lines.Next()) std::printf("line: %s", line);

    ProtectionElement first(new kfl::AString("shared"));
    ProtectionElement second(first);
    std::printf("%u handles\n", first.get()->referenceCount());
    first = nullptr;
    std::printf("%u handle\n", second.get()->referenceCount());
    return 0;  // and the string goes with the last one
}
