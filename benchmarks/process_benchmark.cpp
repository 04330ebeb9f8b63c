// Programs started and files copied, each beside the leanest code that does the same, call by call
// in turn, so that what else the machine does falls on both.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "kfl/Host.h"
#include "kfl/process.h"

// A host that does nothing: what it would do is not the library's time.
const char* applicationName = "process_benchmark";

int genSyslogEvent(int, int, int, int, const char*) { return 0; }

char* Parms(const char*, ...) {
    static char text[] = "";
    return text;
}

namespace {

template <class Work>
double microseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Ours, class Peer>
void compare(const std::string& name, int rounds, const Ours& ours, const Peer& peer) {
    std::vector<double> times;
    std::vector<double> peerTimes;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        // Who begins changes: the first finds colder caches.
        const bool first = round % 2 == 0;
        const double before = first ? microseconds(ours) : microseconds(peer);
        const double after = first ? microseconds(peer) : microseconds(ours);
        times.push_back(first ? before : after);
        peerTimes.push_back(first ? after : before);
        ratios.push_back(times.back() / peerTimes.back());
    }
    std::printf("%-48s %11.1f %11.1f %9.3f %9.3f\n", name.c_str(), median(times), median(peerTimes),
                median(times) / median(peerTimes), median(ratios));
    std::fflush(stdout);
}

void startLean() {
    const pid_t pid = fork();
    if (pid == 0) {
        syscall(SYS_close_range, 3U, ~0U, 0U);
        char path[] = "/bin/true";
        char* const words[] = {path, nullptr};
        execve(path, words, environ);
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
}

void compareStarts() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (const rlim_t soft : {rlim_t{1024}, limit.rlim_max}) {
        limit.rlim_cur = std::min(soft, limit.rlim_max);
        setrlimit(RLIMIT_NOFILE, &limit);
        for (const int open : {0, 1000}) {
            for (int i = 3; i < 3 + open; ++i) dup2(0, i);
            compare(
                "start /bin/true, limit " + std::to_string(limit.rlim_cur) + ", " +
                    std::to_string(open) + " open",
                500, [] { kfl::osCreateProcess("/bin/true", true, nullptr); }, startLean);
            for (int i = 3; i < 3 + open; ++i) close(i);
        }
    }
}

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

void compareCopies(const std::string& folder) {
    const std::string from = folder + "/kfl-benchmark-from";
    const std::string to = folder + "/kfl-benchmark-to";
    const std::pair<size_t, int> sizes[] = {{0, 1000},     {100, 1000},  {4096, 1000},
                                            {15000, 1000}, {65536, 300}, {1 << 20, 100},
                                            {64 << 20, 15}};
    for (const auto& [size, rounds] : sizes) {
        std::string content(size, '\0');
        for (size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 2654435761U >> 13U);
        std::FILE* const file = std::fopen(from.c_str(), "w");
        std::fwrite(content.data(), 1, size, file);
        std::fclose(file);
        const auto ours = [&] { kfl::osCopyFile(from.c_str(), to.c_str(), false); };
        const std::string name = folder + ", " + std::to_string(size) + " bytes, beside ";
        if (size < 1 << 20) {
            compare(name + "read/write", rounds, ours,
                    [&] { withBothOpen(from.c_str(), to.c_str(), copyLoop); });
        }
        if (size > 1 << 14) {
            compare(name + "copy_file_range", rounds, ours,
                    [&] { withBothOpen(from.c_str(), to.c_str(), copyRange); });
        }
    }
    unlink(from.c_str());
    unlink(to.c_str());
}

}  // namespace

// Folders to copy in may be given; /tmp and /dev/shm otherwise.
int main(int count, char** arguments) {
    std::printf("%-48s %11s %11s %9s %9s\n", "medians in microseconds", "kfl", "leanest", "ratio",
                "of pairs");
    compareStarts();
    if (count == 1) {
        compareCopies("/tmp");
        compareCopies("/dev/shm");
    }
    for (int i = 1; i < count; ++i) compareCopies(arguments[i]);
    return 0;
}
