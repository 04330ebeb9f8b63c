// Copying files: osCopyFile beside std::filesystem::copy_file, the kernel's copy_file_range, a loop
// of read and write, and cp; one large file, and a folder of tiny ones.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "benchmarks/contest.h"
#include "kfl/process.h"

namespace {

using Path = std::filesystem::path;

template <class Copy>
void withBothOpen(const char* from, const char* to, const Copy& copy) {
    const int source = open(from, O_RDONLY);
    const int target = open(to, O_RDWR | O_CREAT | O_TRUNC, 0666);
    copy(source, target);
    close(source);
    close(target);
}

void copyRange(int from, int to) {
    struct stat status = {};
    fstat(from, &status);
    for (auto left = static_cast<size_t>(status.st_size); left > 0;) {
        const long n = syscall(SYS_copy_file_range, from, nullptr, to, nullptr, left, 0U);
        if (n <= 0) break;
        left -= static_cast<size_t>(n);
    }
}

void copyLoop(int from, int to) {
    char buffer[65536];
    for (ssize_t n = 0; (n = read(from, buffer, sizeof buffer)) > 0;) {
        if (write(to, buffer, static_cast<size_t>(n)) != n) break;
    }
}

struct Way {
    const char* name;
    void (*copy)(const char* from, const char* to);
};

const Way ways[] = {
    {"kfl", [](const char* from, const char* to) { kfl::osCopyFile(from, to, false); }},
    {"copy_file_range",
     [](const char* from, const char* to) { withBothOpen(from, to, copyRange); }},
    {"loop", [](const char* from, const char* to) { withBothOpen(from, to, copyLoop); }},
    {"std",
     [](const char* from, const char* to) {
         std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
     }},
};

void fill(const Path& path, size_t size) {
    kfl_benchmark::Numbers numbers(1);
    std::string content(size, '\0');
    for (char& c : content) c = static_cast<char>(numbers.next(256));
    std::ofstream(path) << content;
}

std::string contentOf(const Path& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

void showFile(kfl_benchmark::Notes& notes, const Path& path) {
    const std::string content = contentOf(path);
    notes.bytes(content.data(), content.size());
}
void showFile(kfl_benchmark::Glance&, const Path&) {}

// A round of many bytes or many files is one run: that takes long enough, and nothing has to be
// tried out beforehand.
template <class Run>
void enter(kfl_benchmark::Contest& contest, const char* who, bool isLong, Run run) {
    auto* const entered = contest.enter(who, run)->UseRealTime();
    if (isLong) entered->Iterations(1);
}

// All overwrite what the former copy left.
void enterOne(const Path& folder, const std::string& what, size_t size) {
    const Path from = folder / ("from" + std::to_string(size));
    const Path to = folder / "to";
    const bool isLong = size >= 1U << 20U;
    fill(from, size);
    kfl_benchmark::Contest contest("copy: " + what);
    for (const Way& way : ways) {
        const auto run = [way, from, to](auto& sees) {
            way.copy(from.c_str(), to.c_str());
            showFile(sees, to);
        };
        enter(contest, way.name, isLong, run);
    }
    const auto byCommand = [command = "cp " + from.string() + ' ' + to.string(), to](auto& sees) {
        if (std::system(command.c_str()) != 0) std::abort();
        showFile(sees, to);
    };
    enter(contest, "cp", isLong, byCommand);
}

void enterMany(const Path& folder, unsigned int count) {
    std::filesystem::create_directory(folder / "many");
    std::filesystem::create_directory(folder / "copies");
    std::vector<std::pair<std::string, std::string>> names;
    for (unsigned int i = 0; i < count; ++i) {
        const std::string name = std::to_string(i);
        fill(folder / "many" / name, i % 200);
        names.emplace_back(folder / "many" / name, folder / "copies" / name);
    }
    kfl_benchmark::Contest contest("copy: " + std::to_string(count) + " tiny files");
    for (const Way& way : ways) {
        const auto run = [way, names](auto& sees) {
            for (const auto& [from, to] : names) way.copy(from.c_str(), to.c_str());
            showFile(sees, names.back().second);
        };
        enter(contest, way.name, true, run);
    }
    const std::string command =
        "cp " + (folder / "many").string() + "/* " + (folder / "copies").string();
    const auto byCommand = [command, names](auto& sees) {
        if (std::system(command.c_str()) != 0) std::abort();
        showFile(sees, names.back().second);
    };
    enter(contest, "cp", true, byCommand);
}

}  // namespace

// The folder to copy in may be given in KFL_BENCHMARK_FOLDER. Without it files are kept in memory:
// a disk has a time of its own, which falls on all alike.
int main(int count, char** arguments) {
    const char* const given = std::getenv("KFL_BENCHMARK_FOLDER");
    const char* const usual = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
    std::string folder = std::string(given ? given : usual) + "/kfl-benchmark-XXXXXX";
    if (!mkdtemp(folder.data())) return 1;
    enterOne(folder, "64 MiB", std::size_t{64} << 20U);
    enterOne(folder, "64 KiB", std::size_t{64} << 10U);
    enterMany(folder, 10000);
    const int result = kfl_benchmark::runAll(count, arguments);
    std::filesystem::remove_all(folder);
    return result;
}
