// The agent of a network access device: a host process of libkfl, to read as a tutorial and to
// start a host from. Each part of it is a short pair of files and shows one side of the library:
//
//     settings    reads the configuration file              kfl::IniFileParser
//     report      shows what the agent will run with        its sections and keys
//
// A host supplies three names that the library uses: genSyslogEvent, Parms and applicationName
// (kfl/Host.h). This one takes the ready ones of the static library kfl-host.
//
//     agent [FILE]     FILE is agent.ini beside the program unless given
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kfl/AString.h"
#include "kfl/Host.h"
#include "report.h"
#include "settings.h"

namespace agent {
namespace {

// Appends the path of a file that lies in the program's own folder.
void appendPathBesideProgram(kfl::AString& path, const char* name) {
    char program[4096];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    program[length > 0 ? length : 0] = '\0';
    path.append(program);
    // The folder is what stands up to the last slash.
    path.erase(static_cast<unsigned int>(path.findLastOf("/") + 1), -1);
    path.append(name);
}

int run(const char* path) {
    Settings settings;
    if (!settings.read(path)) {
        std::fprintf(stderr, "%s: cannot read %s: %s\n", applicationName, path,
                     std::strerror(errno));
        return 1;
    }
    std::printf("%s: settings from %s\n", applicationName, path);
    printSettings(settings);
    printUnknownKeys(settings);
    return 0;
}

}  // namespace
}  // namespace agent

int main(int argc, char** argv) {
    if (argc > 2) {
        std::fprintf(stderr, "usage: %s [FILE]\n", applicationName);
        return 2;
    }
    kfl::AString path(argc > 1 ? argv[1] : "");
    if (argc < 2) agent::appendPathBesideProgram(path, "agent.ini");
    return agent::run(path.c_str());
}
