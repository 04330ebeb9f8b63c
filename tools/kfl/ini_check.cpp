// kfl ini --check: shows what in a file is read in another way than it looks.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/kfl/command.h"
#include "tools/kfl/ini_file.h"
#include "tools/kfl/ini_findings.h"

namespace kfl_tool {
namespace {

std::string readWhole(const char* path) {
    requireFile(path);
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) fail("%s: %s", path, std::strerror(errno));
    std::string bytes;
    char part[4096];
    ssize_t n = 0;
    while ((n = read(descriptor, part, sizeof part)) > 0 || (n < 0 && errno == EINTR)) {
        if (n > 0) bytes.append(part, static_cast<std::size_t>(n));
    }
    const int error = errno;
    close(descriptor);
    if (n < 0) fail("%s: %s", path, std::strerror(error));
    return bytes;
}

// "1 line", "2 lines".
std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::size_t countOf(const std::vector<IniLine>& lines, Fate fate) {
    const auto has = [fate](const IniLine& line) { return line.fate == fate; };
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), has));
}

}  // namespace

int checkIniFile(const char* path) {
    const std::string bytes = readWhole(path);
    const std::vector<IniLine> lines = readLines(bytes);
    const std::vector<Finding> findings = findingsOf(lines);
    for (const Finding& finding : findings) {
        std::printf("%s:%zu: %s\n", path, finding.number, finding.text.c_str());
    }
    const auto dropped =
        static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), isDropped));
    if (!findings.empty()) {
        fail("%s: %s, %s dropped", path, counted(findings.size(), "finding").c_str(),
             counted(dropped, "line").c_str());
    }
    std::printf("%s: nothing found; %s, %s\n", path,
                counted(countOf(lines, Fate::section), "section header").c_str(),
                counted(countOf(lines, Fate::stored), "key").c_str());
    return succeeded;
}

}  // namespace kfl_tool
