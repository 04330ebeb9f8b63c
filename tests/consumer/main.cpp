#include <cstdio>

#include "kfl/kfl.h"

static_assert(KFL_VERSION >= 10000, "the first release or later");

int main(int argc, char** argv) {
    kfl::IniFileParser config;
    if (argc != 2 || !config.parseFile(argv[1])) return 1;
    std::printf("%s %d\n", config.getString("name", "device"), config.getInt("port", "device"));
    return 0;
}
