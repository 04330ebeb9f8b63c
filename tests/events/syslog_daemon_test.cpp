// Events and alarms on their way through a real syslog daemon.
//
// The daemon needs /dev/log, so it gets a /dev of its own in a private mount namespace. Where the
// machine allows no such thing, or has no daemon, the test says so: the lines themselves are
// checked without one as well.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "kfl/Host.h"
#include "kfl/syslog_events.h"
#include "tests/support/temporary_folder.h"

namespace {

// How a child ends whose machine does not allow what it needs.
constexpr int notAllowed = 77;

bool writeTo(const char* path, const std::string& text) {
    std::ofstream file(path);
    return static_cast<bool>(file << text << std::flush);
}

// Mounts that nobody else sees; as root, or as a user who may be root in a namespace of its own.
bool unshareMounts() {
    if (unshare(CLONE_NEWNS) == 0) return true;
    const auto uid = std::to_string(getuid());
    const auto gid = std::to_string(getgid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeTo("/proc/self/setgroups", "deny") &&
           writeTo("/proc/self/uid_map", "0 " + uid + " 1") &&
           writeTo("/proc/self/gid_map", "0 " + gid + " 1");
}

bool havePrivateDev() {
    return unshareMounts() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/dev", "tmpfs", 0, nullptr) == 0;
}

pid_t startDaemon(const std::string& logFile) {
    const pid_t pid = fork();
    if (pid == 0) {
        execl("/bin/busybox", "busybox", "syslogd", "-n", "-O", logFile.c_str(), nullptr);
        _exit(notAllowed);
    }
    return pid;
}

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

// Up to ten seconds.
template <class Condition>
bool eventually(Condition condition) {
    for (int i = 0; i < 1000; ++i) {
        if (condition()) return true;
        usleep(10000);
    }
    return false;
}

void raiseEverything() {
    applicationName = "mgr";
    raiseSyslogEvent(LOG_LOCAL3 | LOG_ERR, 7, 3, 12, "origin", 9, "link up");
    raiseSyslogAlarm(LOG_USER | LOG_INFO, true, 123, 4, 5, "origin", 9, "fan");
    raiseSyslogAlarm(LOG_USER | LOG_INFO, false, 123, 4, 5, "origin", 9, "fan");
    raiseSyslogEvent(LOG_DAEMON | LOG_DEBUG, 1234, 0, 0, "", 0, "last");
}

bool appearInOrder(const std::string& log) {
    std::size_t at = 0;
    for (const char* const line :
         {"local3.err", "mgr/007-03-12|link up\n", "user.info", "mgr/123-04-5|ALARM-ON|fan\n",
          "user.info", "mgr/123-04-5|ALARM-OFF|fan\n", "daemon.debug", "mgr/1234-00-0|last\n"}) {
        at = log.find(line, at);
        if (at == std::string::npos) return false;
    }
    return true;
}

int runWithDaemon(const std::string& logFile) {
    if (access("/bin/busybox", X_OK) != 0 || !havePrivateDev()) return notAllowed;
    const pid_t daemon = startDaemon(logFile);
    int status = 0;
    const bool listening = eventually(
        [&] { return access("/dev/log", F_OK) == 0 || waitpid(daemon, &status, WNOHANG) != 0; });
    if (!listening || status != 0) return notAllowed;
    raiseEverything();
    const bool logged = eventually([&] { return appearInOrder(contentOf(logFile)); });
    if (!logged) std::fprintf(stderr, "the daemon logged:\n%s", contentOf(logFile).c_str());
    kill(daemon, SIGTERM);
    waitpid(daemon, &status, 0);
    return logged ? 0 : 1;
}

TEST(SyslogDaemonTest, LogsEventsAndAlarmsWithTheirFacilitiesAndLevels) {
    const kfl_test::TemporaryFolder folder;
    const std::string logFile = folder.write("messages", "");
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) _exit(runWithDaemon(logFile));
    int status = -1;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == notAllowed) {
        std::puts(
            "No syslog daemon could be run in a mount namespace of its own on this machine: "
            "the way through a daemon was NOT checked here.");
        std::printf("The lines are checked by syslog_events_test.\n");
        return;
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
