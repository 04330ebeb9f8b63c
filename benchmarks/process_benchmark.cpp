// Starting /bin/true and waiting for it, at descriptor limits of 1,024 and the highest allowed,
// from a small process and from one with a GiB in use: beside the leanest fork + close_range +
// exec, posix_spawn, system, GLib and POCO (the latter two where they are installed).
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "benchmarks/contest.h"
#include "kfl/Host.h"
#include "kfl/process.h"

#ifdef KFL_HAVE_glib
#include <glib.h>
#endif
#ifdef KFL_HAVE_poco
#include <Poco/Process.h>
#endif

// A host that does nothing: what it would do is not the library's time.
const char* applicationName = "process_benchmark";

int genSyslogEvent(int, int, int, int, const char*) { return 0; }

char* Parms(const char*, ...) {
    static char text[] = "";
    return text;
}

namespace {

constexpr char program[] = "/bin/true";

int waitFor(pid_t pid) {
    int status = -1;
    waitpid(pid, &status, 0);
    return status;
}

int startLean() {
    const pid_t pid = fork();
    if (pid != 0) return waitFor(pid);
    syscall(SYS_close_range, 3U, ~0U, 0U);
    char path[] = "/bin/true";
    char* const words[] = {path, nullptr};
    execve(path, words, environ);
    _exit(127);
}

int startSpawned() {
    char path[] = "/bin/true";
    char* const words[] = {path, nullptr};
    pid_t pid = -1;
    posix_spawn(&pid, path, nullptr, nullptr, words, environ);
    return waitFor(pid);
}

#ifdef KFL_HAVE_glib
int startByGlib() {
    char path[] = "/bin/true";
    char* words[] = {path, nullptr};
    int status = -1;
    g_spawn_sync(nullptr, words, nullptr, G_SPAWN_DEFAULT, nullptr, nullptr, nullptr, nullptr,
                 &status, nullptr);
    return status;
}
#endif

struct Way {
    const char* name;
    int (*start)();
};

const Way ways[] = {
    {"kfl", [] { return kfl::osCreateProcess(program, true, nullptr); }},
    {"lean", startLean},
    {"posix_spawn", startSpawned},
    {"system", [] { return std::system(program); }},
#ifdef KFL_HAVE_glib
    {"glib", startByGlib},
#endif
#ifdef KFL_HAVE_poco
    {"poco", [] { return Poco::Process::launch(program, {}).wait(); }},
#endif
};

void setLimit(rlim_t soft) {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = soft;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void enterStarts(const char* parent, rlim_t limit) {
    kfl_benchmark::Contest contest(std::string("start: from a ") + parent + " parent, limit " +
                                   std::to_string(limit));
    for (const Way& way : ways) {
        const auto run = [way, limit](auto& sees) {
            setLimit(limit);
            sees.value(way.start());
        };
        contest.enter(way.name, run)->UseRealTime();
    }
}

// A GiB that is in use until the end.
bool grow() {
    constexpr std::size_t size = std::size_t{1} << 30U;
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    std::memset(memory, 1, size);
    return true;
}

}  // namespace

// "large" as the first argument makes the parent large.
int main(int count, char** arguments) {
    const bool large = count > 1 && std::strcmp(arguments[1], "large") == 0;
    if (large && !grow()) return 1;
    if (large) arguments[1] = arguments[0];
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const char* const parent = large ? "large" : "small";
    enterStarts(parent, 1024);
    if (limit.rlim_max > 1024) enterStarts(parent, limit.rlim_max);
    return kfl_benchmark::runAll(count - large, arguments + large);
}
