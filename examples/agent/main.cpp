// The agent of a network access device: a host process of libkfl, to read as a tutorial and to
// start a host from. Each part of it is a short pair of files and shows one side of the library:
//
//     settings    reads the configuration file              kfl::IniFileParser
//     report      shows what the agent will run with        its sections and keys
//     children    starts programs and reaps them            kfl::osCreateProcess and its kin
//     listener    receives datagrams on a thread            kfl::OSThread, IPCSocket, ISCSocket
//     backup      keeps an enciphered copy of the settings  kfl::AES::Rijndael
//     service     the agent at work, until SIGTERM          raiseSyslogEvent, raiseSyslogAlarm
//     downloads   splits locations, reads their defaults    kfl::URIParser, kfl::KeyValueParser
//     journal     collects lines to show them together      StringFormat, Buffer
//
// A host supplies three names that the library uses: genSyslogEvent, Parms and applicationName
// (kfl/Host.h). This one takes the ready ones of the static library kfl-host.
//
//     agent [--serve] [FILE]     FILE is agent.ini beside the program unless given. With --serve
//                                the agent goes to work, else it only shows its settings.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "downloads.h"
#include "journal.h"
#include "kfl/AString.h"
#include "kfl/Host.h"
#include "report.h"
#include "service.h"
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

int run(const char* path, bool serving) {
    Settings settings;
    if (!settings.read(path)) {
        std::fprintf(stderr, "%s: cannot read %s: %s\n", applicationName, path,
                     std::strerror(errno));
        return 1;
    }
    std::printf("%s: settings from %s\n", applicationName, path);
    printSettings(settings);
    Journal journal;
    reportDownloads(journal, settings, path);
    journal.print();
    printUnknownKeys(settings);
    return serving ? serve(settings, path) : 0;
}

}  // namespace
}  // namespace agent

int main(int argc, char** argv) {
    const bool serving = argc > 1 && std::strcmp(argv[1], "--serve") == 0;
    const int named = serving ? 2 : 1;
    if (argc > named + 1) {
        std::fprintf(stderr, "usage: %s [--serve] [FILE]\n", applicationName);
        return 2;
    }
    kfl::AString path(argc > named ? argv[named] : "");
    if (path.empty()) agent::appendPathBesideProgram(path, "agent.ini");
    return agent::run(path.c_str(), serving);
}
