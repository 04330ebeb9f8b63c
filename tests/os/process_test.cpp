// Child processes as hosts see them: real programs, their raw statuses, and what they inherit.
#include "kfl/process.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>

#include "tests/os/children.h"

namespace {

using kfl_test::ChildEvents;
using kfl_test::clearEvents;
using kfl_test::contentOf;
using kfl_test::Event;
using kfl_test::events;
using kfl_test::exited;
using kfl_test::killed;
using kfl_test::linesAfter;
using kfl_test::TemporaryFolder;
using Clock = std::chrono::steady_clock;

const std::string probe = KFL_CHILD_PROBE;
const std::vector<std::string> standardDescriptors = {"0", "1", "2"};

Event trace(const std::string& text) { return {7, 900, 1, 0, text}; }
Event failure(const std::string& text) { return {3, 900, 1, 0, text}; }

int statusOf(pid_t pid) {
    int status = -1;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    return status;
}

bool isRunning(pid_t pid) { return kill(pid, 0) == 0; }

// A variable of the environment, put back at the end.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* const old = getenv(name)) old_ = old;
        setenv(name, value, 1);
    }
    ~Variable() { old_.empty() ? unsetenv(name_) : setenv(name_, old_.c_str(), 1); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    std::string old_;
};

// A folder, fresh events here and in children.
class ProcessTest : public testing::Test {
  protected:
    ProcessTest() { clearEvents(); }

    std::string script(const std::string& name, const std::string& text) const {
        const std::string path = folder_.write(name, text);
        chmod(path.c_str(), 0755);
        return path;
    }
    // The output of a waiting call that ended well.
    std::string outputOf(const std::string& commandLine) const {
        EXPECT_EQ(kfl::osCreateProcess(commandLine.c_str(), true, output_.c_str()), 0);
        return contentOf(output_);
    }
    std::vector<std::string> wordsOf(const std::string& commandLine) const {
        return linesAfter("word", outputOf(commandLine));
    }

    TemporaryFolder folder_;
    std::string output_ = folder_ / "output";
    ChildEvents childEvents_;
};

class OsSystemTest : public ProcessTest {};
class OsCreateProcessTest : public ProcessTest {};
class OsStatusReceivedTest : public ProcessTest {};
class OsKillProcessTest : public ProcessTest {};

// osSystem

TEST_F(OsSystemTest, ReturnsTheRawWaitStatus) {
    EXPECT_EQ(kfl::osSystem("true"), 0);
    EXPECT_EQ(kfl::osSystem("exit 3"), 768);
    EXPECT_EQ(kfl::osSystem("exit 255"), exited(255));
    EXPECT_EQ(kfl::osSystem("kill -TERM $$"), killed(SIGTERM));
    EXPECT_EQ(kfl::osSystem("kill -KILL $$"), killed(SIGKILL));
    EXPECT_EQ(kfl::osSystem(""), 0);
}

TEST_F(OsSystemTest, RunsTheCommandInAShell) {
    const std::string command = "echo one two | tr a-z A-Z > '" + output_ + "'; exit 4";
    EXPECT_EQ(kfl::osSystem(command.c_str()), exited(4));
    EXPECT_EQ(contentOf(output_), "ONE TWO\n");
}

TEST_F(OsSystemTest, HasNoLimitOfLength) {
    const std::string command = "test " + std::string(5000, 'x') + " = y || exit 9";
    EXPECT_EQ(kfl::osSystem(command.c_str()), exited(9));
}

TEST_F(OsSystemTest, CallsTheShellSh) {
    EXPECT_EQ(kfl::osSystem("test \"$0\" = sh && test $# = 0"), 0);
}

TEST_F(OsSystemTest, ReportsACommandThatTheShellCannotRunOnlyByItsStatus) {
    EXPECT_EQ(kfl::osSystem("/no/such/program 2>/dev/null"), exited(127));
    EXPECT_EQ(events(), std::vector{trace("...osSystem: /no/such/program 2>/dev/null")});
    EXPECT_TRUE(ChildEvents::events().empty());
}

TEST_F(OsSystemTest, TracesTheCommandOnEntry) {
    kfl::osSystem("exit 5");
    EXPECT_EQ(events(), std::vector{trace("...osSystem: exit 5")});
}

TEST_F(OsSystemTest, PassesTheEnvironmentOn) {
    const Variable variable("KFL_TEST_VARIABLE", "passed on");
    EXPECT_EQ(kfl::osSystem("test \"$KFL_TEST_VARIABLE\" = 'passed on'"), 0);
}

TEST_F(OsSystemTest, ClosesWhatTheChildInherited) {
    const int extra = open("/dev/null", O_RDONLY);
    const std::string command = "exec " + probe + " > " + output_;
    EXPECT_EQ(kfl::osSystem(command.c_str()), 0);
    EXPECT_EQ(linesAfter("open", contentOf(output_)), standardDescriptors);
    EXPECT_NE(fcntl(extra, F_GETFD), -1);
    close(extra);
}

TEST_F(OsSystemTest, RefusesANullCommand) {
    EXPECT_EQ(kfl::osSystem(nullptr), -1);
    EXPECT_TRUE(events().empty());
}

TEST_F(OsSystemTest, GivesMinusOneWhenTheSystemReapsChildrenItself) {
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(kfl::osSystem("exit 3"), -1);
    signal(SIGCHLD, SIG_DFL);
}

// osCreateProcess: pid or status

TEST_F(OsCreateProcessTest, ReturnsThePidAtOnceWithoutWaiting) {
    const auto start = Clock::now();
    const int pid = kfl::osCreateProcess("/bin/sleep 30", false, nullptr);
    ASSERT_GT(pid, 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(15));
    EXPECT_TRUE(isRunning(pid));
    EXPECT_EQ(kfl::osKillProcess(pid), pid);
}

TEST_F(OsCreateProcessTest, LeavesAChildThatNobodyWaitsForToTheCaller) {
    const int pid = kfl::osCreateProcess("/bin/true", false, nullptr);
    ASSERT_GT(pid, 0);
    EXPECT_EQ(statusOf(pid), 0);
    EXPECT_FALSE(isRunning(pid));
}

TEST_F(OsCreateProcessTest, ReturnsTheRawWaitStatusAfterWaiting) {
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
    EXPECT_EQ(kfl::osCreateProcess("/bin/false", true, nullptr), exited(1));
    const std::string three = script("three", "#!/bin/sh\nexit 3\n");
    EXPECT_EQ(kfl::osCreateProcess(three.c_str(), true, nullptr), exited(3));
    const std::string dies = script("dies", "#!/bin/sh\nkill -KILL $$\n");
    EXPECT_EQ(kfl::osCreateProcess(dies.c_str(), true, nullptr), killed(SIGKILL));
}

TEST_F(OsCreateProcessTest, LeavesNoZombieBehindAWait) {
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(OsCreateProcessTest, TracesTheWholeCommandLineOnEntry) {
    const std::string line = "/bin/true  " + std::string(300, 'x') + " ";
    EXPECT_EQ(kfl::osCreateProcess(line.c_str(), true, nullptr), 0);
    EXPECT_EQ(events(), std::vector{trace("...osCreateProcess: " + line)});
    EXPECT_TRUE(ChildEvents::events().empty());
}

TEST_F(OsCreateProcessTest, RefusesANullCommandLine) {
    EXPECT_EQ(kfl::osCreateProcess(nullptr, true, nullptr), -1);
    EXPECT_EQ(kfl::osCreateProcess(nullptr, false, output_.c_str()), -1);
    EXPECT_TRUE(events().empty());
}

// osCreateProcess: where the program is looked for

TEST_F(OsCreateProcessTest, SearchesNoPathWithoutAnOutputFile) {
    EXPECT_EQ(kfl::osCreateProcess("true", true, nullptr), exited(127));
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure("Can't execute (true): error 'No such file or directory'")});
}

TEST_F(OsCreateProcessTest, SearchesThePathWithAnOutputFile) {
    EXPECT_EQ(kfl::osCreateProcess("true", true, output_.c_str()), 0);
    script("only-here", "#!/bin/sh\necho found\n");
    const Variable path("PATH", (folder_.path() + ":/bin:/usr/bin").c_str());
    EXPECT_EQ(outputOf("only-here"), "found\n");
}

TEST_F(OsCreateProcessTest, TakesAPathAsItIsInBothCases) {
    const std::string path = script("script", "#!/bin/sh\nexit 6\n");
    EXPECT_EQ(kfl::osCreateProcess(path.c_str(), true, nullptr), exited(6));
    EXPECT_EQ(kfl::osCreateProcess(path.c_str(), true, output_.c_str()), exited(6));
}

TEST_F(OsCreateProcessTest, GivesATextFileToTheShellOnlyWithAnOutputFile) {
    const std::string path = script("text", "exit 6\n");
    EXPECT_EQ(kfl::osCreateProcess(path.c_str(), true, output_.c_str()), exited(6));
    EXPECT_EQ(kfl::osCreateProcess(path.c_str(), true, nullptr), exited(127));
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure("Can't execute (" + path + "): error 'Exec format error'")});
}

TEST_F(OsCreateProcessTest, RunsInTheDirectoryOfTheProcess) {
    script("here", "#!/bin/sh\nexit 8\n");
    const int old = open(".", O_RDONLY);
    ASSERT_EQ(chdir(folder_.path().c_str()), 0);
    EXPECT_EQ(kfl::osCreateProcess("./here", true, nullptr), exited(8));
    EXPECT_EQ(kfl::osCreateProcess("here", true, nullptr), exited(8));
    EXPECT_EQ(fchdir(old), 0);
    close(old);
}

// osCreateProcess: words

TEST_F(OsCreateProcessTest, MakesNoEmptyWordsOfRowsOfBlanks) {
    EXPECT_EQ(outputOf("/bin/echo a  b"), "a b\n");
    EXPECT_EQ(wordsOf("   " + probe + "   a    b   "), (std::vector<std::string>{probe, "a", "b"}));
}

TEST_F(OsCreateProcessTest, GivesNoMeaningToTabsAndQuotes) {
    EXPECT_EQ(
        wordsOf(probe + " a\tb 'c d' \"e\" \\ f * $HOME"),
        (std::vector<std::string>{probe, "a\tb", "'c", "d'", "\"e\"", "\\", "f", "*", "$HOME"}));
}

TEST_F(OsCreateProcessTest, PassesTheFirstNineteenWords) {
    for (const int count : {1, 18, 19, 20, 25}) {
        std::vector<std::string> expected = {probe};
        std::string line = probe;
        for (int i = 1; i < count; ++i) {
            const std::string word = std::to_string(i);
            line += ' ' + word;
            if (i < 19) expected.push_back(word);
        }
        EXPECT_EQ(wordsOf(line), expected) << count;
    }
}

TEST_F(OsCreateProcessTest, CutsTheLineAfterTwoHundredBytes) {
    for (const unsigned length : {198U, 199U, 200U, 201U, 208U, 300U}) {
        const std::string line = probe + ' ' + std::string(length - probe.size() - 1, 'x');
        const std::string cut = line.substr(0, 200);
        EXPECT_EQ(wordsOf(line), (std::vector<std::string>{probe, cut.substr(probe.size() + 1)}))
            << length;
    }
}

TEST_F(OsCreateProcessTest, DropsAWordThatBeginsAfterTwoHundredBytes) {
    const std::string line = probe + std::string(200 - probe.size(), ' ') + "dropped";
    EXPECT_EQ(wordsOf(line), std::vector{probe});
}

// osCreateProcess: what the child inherits

TEST_F(OsCreateProcessTest, PassesTheEnvironmentOn) {
    const Variable variable("KFL_TEST_VARIABLE", "passed on");
    const auto environment = linesAfter("env", outputOf(probe));
    EXPECT_TRUE(std::count(environment.begin(), environment.end(), "KFL_TEST_VARIABLE=passed on"));
    const std::string path =
        script("script", "#!/bin/sh\ntest \"$KFL_TEST_VARIABLE\" = 'passed on'\n");
    EXPECT_EQ(kfl::osCreateProcess(path.c_str(), true, nullptr), 0);
}

// In a child of its own, with as many descriptors as the machine allows.
TEST_F(OsCreateProcessTest, ClosesThousandsOfDescriptorsUpToTheLimit) {
    EXPECT_EQ(kfl_test::statusOfChild([this] {
                  rlimit limit = {};
                  getrlimit(RLIMIT_NOFILE, &limit);
                  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 1U << 20);
                  if (setrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
                  const int thousands = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 5000));
                  for (int i = 3; i < thousands; ++i) dup2(0, i);
                  if (dup2(0, static_cast<int>(limit.rlim_cur) - 1) < 0) return false;
                  return linesAfter("open", outputOf(probe)) == standardDescriptors;
              }),
              0);
}

TEST_F(OsCreateProcessTest, OpensNothingInTheParent) {
    const auto before = kfl_test::openDescriptors();
    kfl::osCreateProcess("true", true, output_.c_str());
    kfl::osCreateProcess("/bin/true", true, nullptr);
    kfl::osCreateProcess("none", true, nullptr);
    EXPECT_EQ(kfl_test::openDescriptors(), before);
}

TEST_F(OsCreateProcessTest, DoesNotPassTheOutputFilesOwnDescriptorOn) {
    EXPECT_EQ(linesAfter("open", outputOf(probe)), standardDescriptors);
}

// With some of 0, 1 and 2 closed the output file gets one of these numbers when it is opened.
TEST_F(OsCreateProcessTest, RedirectsAlsoWhereStandardDescriptorsAreClosed) {
    const struct {
        std::vector<int> closed;
        std::vector<std::string> open;
    } cases[] = {{{0}, {"1", "2"}},
                 {{1}, {"0", "1", "2"}},
                 {{2}, {"0", "1", "2"}},
                 {{1, 2}, {"0", "1", "2"}},
                 {{0, 1, 2}, {"1", "2"}}};
    for (const auto& row : cases) {
        EXPECT_EQ(kfl_test::statusOfChild([&] {
                      for (const int descriptor : row.closed) close(descriptor);
                      // The script keeps itself open, perhaps as 0: it does not count that.
                      return linesAfter("open", outputOf(probe)) == row.open;
                  }),
                  0)
            << row.closed.size() << " closed from " << row.closed.front();
    }
}

TEST_F(OsCreateProcessTest, LeavesTheOutputAloneWithoutAnOutputFile) {
    const std::string kept = folder_ / "kept";
    const std::string command = script("speaks", "#!/bin/sh\necho out\necho error >&2\n");
    EXPECT_EQ(kfl_test::statusOfChild([&] {
                  const int file = open(kept.c_str(), O_WRONLY | O_CREAT, 0600);
                  dup2(file, 1);
                  dup2(file, 2);
                  return kfl::osCreateProcess(command.c_str(), true, nullptr) == 0;
              }),
              0);
    EXPECT_EQ(contentOf(kept), "out\nerror\n");
}

// osCreateProcess: the output file

TEST_F(OsCreateProcessTest, SendsBothOutputsToTheFileInOrder) {
    const std::string path =
        script("speaks", "#!/bin/sh\necho one\necho two >&2\necho three\necho four >&2\n");
    EXPECT_EQ(outputOf(path), "one\ntwo\nthree\nfour\n");
}

TEST_F(OsCreateProcessTest, EmptiesTheOutputFileFirst) {
    folder_.write("output", std::string(100000, 'x'));
    EXPECT_EQ(outputOf("echo new"), "new\n");
}

TEST_F(OsCreateProcessTest, CreatesTheOutputFileUnderTheUmask) {
    for (const unsigned mask : {0U, 022U, 077U}) {
        std::filesystem::remove(output_);
        const mode_t old = umask(mask);
        kfl::osCreateProcess("true", true, output_.c_str());
        umask(old);
        struct stat status = {};
        ASSERT_EQ(stat(output_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0666U & ~mask);
    }
}

TEST_F(OsCreateProcessTest, GivesTheChildAFileThatItCanAlsoRead) {
    const std::string path = script("reads", "#!/bin/sh\necho kept\ncat <&1\n");
    EXPECT_EQ(outputOf(path), "kept\n");
}

TEST_F(OsCreateProcessTest, EmptiesTheOutputFileEvenForAMissingProgram) {
    folder_.write("output", "old");
    EXPECT_EQ(kfl::osCreateProcess("kfl-no-such-program", true, output_.c_str()), exited(127));
    EXPECT_EQ(contentOf(output_), "");
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure("Can't execute (kfl-no-such-program): error "
                                  "'No such file or directory'")});
}

TEST_F(OsCreateProcessTest, ReportsAnOutputFileThatCannotBeOpened) {
    const struct {
        std::string output;
        int error;
    } cases[] = {{"", ENOENT}, {folder_.path(), EISDIR}, {folder_ / "no/file", ENOENT}};
    const std::string line = "/bin/true  a";
    std::vector<Event> expected;
    for (const auto& row : cases) {
        EXPECT_EQ(kfl::osCreateProcess(line.c_str(), true, row.output.c_str()), exited(127));
        expected.push_back(
            failure("Can't execute (" + line + "): error '" + strerror(row.error) + "'"));
    }
    EXPECT_EQ(ChildEvents::events(), expected);
}

// osCreateProcess: programs that cannot be executed

TEST_F(OsCreateProcessTest, ReportsAProgramThatCannotBeExecutedFromTheChild) {
    const std::string plain = folder_.write("plain", "#!/bin/sh\n");
    const struct {
        std::string line;
        int error;
    } cases[] = {{"/no/such/program with words", ENOENT},
                 {folder_.path(), EACCES},
                 {plain, EACCES},
                 {plain + "/below", ENOTDIR},
                 {"/" + std::string(5000, 'x'), ENOENT}};
    std::vector<Event> inChildren;
    std::vector<Event> here;
    for (const auto& row : cases) {
        // Of the longest line only 200 bytes are tried; the message shows it whole.
        EXPECT_EQ(kfl::osCreateProcess(row.line.c_str(), true, nullptr), exited(127)) << row.line;
        const std::string text =
            "Can't execute (" + row.line + "): error '" + strerror(row.error) + "'";
        inChildren.push_back(failure(text.substr(0, 4095)));
        here.push_back(trace(("...osCreateProcess: " + row.line).substr(0, 4095)));
    }
    EXPECT_EQ(ChildEvents::events(), inChildren);
    EXPECT_EQ(events(), here);
}

TEST_F(OsCreateProcessTest, ReportsALineWithoutAWord) {
    std::vector<Event> expected;
    for (const char* const line : {"", " ", "     "}) {
        for (const char* const output : {static_cast<const char*>(nullptr), output_.c_str()}) {
            EXPECT_EQ(kfl::osCreateProcess(line, true, output), exited(127));
            expected.push_back(
                failure("Can't execute (" + std::string(line) + "): error 'Bad address'"));
        }
    }
    EXPECT_EQ(ChildEvents::events(), expected);
}

TEST_F(OsCreateProcessTest, EndsAFailedChildThroughTheHostsExitHandlers) {
    static std::string mark;
    mark = folder_ / "mark";
    static const pid_t parent = getpid();
    std::atexit([] {
        if (getpid() != parent) std::ofstream(mark) << "handled";
    });
    EXPECT_EQ(kfl::osCreateProcess("/no/such/program", true, nullptr), exited(127));
    EXPECT_EQ(contentOf(mark), "handled");
}

TEST_F(OsCreateProcessTest, GivesTheStatusOfAFailedChildToACallerThatWaitsItself) {
    const int pid = kfl::osCreateProcess("/no/such/program", false, nullptr);
    ASSERT_GT(pid, 0);
    EXPECT_EQ(statusOf(pid), exited(127));
}

// osStatusReceived

TEST_F(OsStatusReceivedTest, KnowsNoPidThatNobodyWaitsFor) {
    EXPECT_FALSE(kfl::osStatusReceived(getpid(), 0));
    EXPECT_FALSE(kfl::osStatusReceived(1, 0));
    EXPECT_FALSE(kfl::osStatusReceived(INT_MAX, 0));
}

TEST_F(OsStatusReceivedTest, KnowsNoPidThatIsNotPositive) {
    for (const int pid : {0, -1, -5, INT_MIN}) EXPECT_FALSE(kfl::osStatusReceived(pid, 0)) << pid;
}

// A host that reaps its children in a SIGCHLD handler. The handler stays until the child has ended,
// so it is always the one that gets the status, and the wait that it interrupted never does.
volatile sig_atomic_t statusesTaken = 0;
volatile sig_atomic_t statusesWanted = 0;

void reapChildren(int) {
    const int saved = errno;
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, 0)) > 0;) {
        statusesTaken = statusesTaken + 1;
        if (kfl::osStatusReceived(pid, status)) statusesWanted = statusesWanted + 1;
    }
    errno = saved;
}

class Reaper {
  public:
    Reaper() {
        statusesTaken = statusesWanted = 0;
        struct sigaction action = {};
        action.sa_handler = reapChildren;
        sigaction(SIGCHLD, &action, &old_);
    }
    ~Reaper() { sigaction(SIGCHLD, &old_, nullptr); }
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;

  private:
    struct sigaction old_ = {};
};

// The child waits until its parent sleeps in the wait, wakes its handler, and ends while that
// waits.
TEST_F(OsStatusReceivedTest, DeliversAStatusThatTheHostsHandlerTook) {
    const std::string path = script("child",
                                    "#!/bin/sh\n"
                                    "state=R\n"
                                    "while [ $state != S ]; do\n"
                                    "  sleep 0.02\n"
                                    "  read pid name state rest < /proc/$PPID/stat\n"
                                    "done\n"
                                    "kill -CHLD $PPID\n"
                                    "sleep 0.1\n"
                                    "exit $1\n");
    for (const int code : {7, 0, 255}) {
        const Reaper reaper;
        const std::string line = path + ' ' + std::to_string(code);
        EXPECT_EQ(kfl::osCreateProcess(line.c_str(), true, nullptr), exited(code));
        EXPECT_EQ(statusesTaken, 1);
        EXPECT_EQ(statusesWanted, 1);
    }
    // What such a wait leaves claimed takes nothing away from later ones.
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
}

TEST_F(OsStatusReceivedTest, RefusesTheStatusOfAChildThatNobodyWaitsFor) {
    const int pid = kfl::osCreateProcess("/bin/true", false, nullptr);
    const int status = statusOf(pid);
    EXPECT_FALSE(kfl::osStatusReceived(pid, status));
}

// osKillProcess

TEST_F(OsKillProcessTest, StopsAChildWithSigterm) {
    const std::string path = script("child",
                                    "#!/bin/sh\n"
                                    "trap 'echo asked > $1; exit 0' TERM\n"
                                    "echo ready > $2\n"
                                    "while :; do sleep 0.02; done\n");
    const std::string asked = folder_ / "asked";
    const std::string ready = folder_ / "ready";
    const int pid =
        kfl::osCreateProcess((path + ' ' + asked + ' ' + ready).c_str(), false, nullptr);
    ASSERT_GT(pid, 0);
    while (contentOf(ready).empty()) usleep(1000);
    clearEvents();
    EXPECT_EQ(kfl::osKillProcess(pid), pid);
    EXPECT_EQ(contentOf(asked), "asked\n");
    EXPECT_FALSE(isRunning(pid));
    EXPECT_EQ(events(), std::vector{trace("...osKillProcess: " + std::to_string(pid))});
}

TEST_F(OsKillProcessTest, ReapsAChildThatHasEndedAlready) {
    const int pid = kfl::osCreateProcess("/bin/true", false, nullptr);
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(kfl::osKillProcess(pid), pid);
    EXPECT_FALSE(isRunning(pid));
}

TEST_F(OsKillProcessTest, GivesFourForAPidThatIsNobodys) {
    const int pid = kfl::osCreateProcess("/bin/true", false, nullptr);
    statusOf(pid);
    clearEvents();
    EXPECT_EQ(kfl::osKillProcess(pid), 4);
    EXPECT_EQ(events(), std::vector{trace("...osKillProcess: " + std::to_string(pid))});
}

// A grandchild: the signal reaches it, but waiting for it is its parent's business.
TEST_F(OsKillProcessTest, SignalsAStrangerAndGivesFour) {
    const std::string path = script("parent",
                                    "#!/bin/sh\n"
                                    "sleep 300 &\n"
                                    "echo $! > $1.new\n"
                                    "mv $1.new $1\n"
                                    "wait $!\n"
                                    "exit $?\n");
    const std::string file = folder_ / "pid";
    const int child = kfl::osCreateProcess((path + ' ' + file).c_str(), false, nullptr);
    while (contentOf(file).empty()) usleep(1000);
    EXPECT_EQ(kfl::osKillProcess(std::stoi(contentOf(file))), 4);
    EXPECT_EQ(statusOf(child), exited(128 + SIGTERM));
}

TEST_F(OsKillProcessTest, RefusesAPidThatIsNotPositiveAndReturnsTheHostsResult) {
    for (const int pid : {0, -1, -5, INT_MIN}) {
        clearEvents();
        kfl_test::setEventResult(pid / 2 - 42);
        EXPECT_EQ(kfl::osKillProcess(pid), pid / 2 - 42);
        const std::string number = std::to_string(pid);
        EXPECT_EQ(events(),
                  (std::vector<Event>{
                      trace("...osKillProcess: " + number),
                      {3, 0, 0, 0, "kfl osKillProcess : (pid " + number + ") is wrong."}}));
    }
    kfl_test::setEventResult(0);
}

// Pid 0 would be this process and its group, which a child makes its own.
TEST_F(OsKillProcessTest, SendsNoSignalForAPidThatIsNotPositive) {
    EXPECT_EQ(kfl_test::statusOfChild([] {
                  setpgid(0, 0);
                  static volatile sig_atomic_t signals = 0;
                  signal(SIGTERM, [](int) { signals = signals + 1; });
                  kfl::osKillProcess(0);
                  kfl::osKillProcess(-getpid());
                  return signals == 0;
              }),
              0);
}

}  // namespace
