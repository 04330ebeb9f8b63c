// Child processes where the system fails or interrupts: the calls that the library makes are
// answered by the test.
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>

#include <cstdarg>
#include <deque>
#include <utility>

#include "kfl/process.h"
#include "os/wait_table.h"
#include "tests/os/children.h"
#include "tests/support/marked_parms.h"

namespace {

using kfl::detail::waitTable;
using kfl_test::ChildEvents;
using kfl_test::clearEvents;
using kfl_test::contentOf;
using kfl_test::Event;
using kfl_test::events;
using kfl_test::exited;
using kfl_test::made;
using kfl_test::MarkedParms;
using Entries = std::vector<std::pair<int, int>>;

constexpr int nobody = 0x7ffffff0;  // a pid that no process has

// The answers of the wrapped calls; where there is none the system answers.
std::function<pid_t()> onFork;
std::function<pid_t(pid_t pid, int* status, int options)> onWait;
std::function<int(pid_t pid, int signal)> onKill;
std::function<int(const char* path, char* const* words, char* const* environment)> onExec;
// What a child called, in order, while that is wanted. Of opens and closes only those of the output
// file are wanted: what counts covered lines has files of its own.
std::vector<std::string>* calls = nullptr;
std::string outputFile;
int outputDescriptor = -1;

void log(const std::string& call) {
    if (calls) calls->push_back(call);
}

}  // namespace

extern "C" {

pid_t __real_fork();
pid_t __wrap_fork() { return onFork ? onFork() : __real_fork(); }

pid_t __real_waitpid(pid_t pid, int* status, int options);
pid_t __wrap_waitpid(pid_t pid, int* status, int options) {
    return onWait ? onWait(pid, status, options) : __real_waitpid(pid, status, options);
}

int __real_kill(pid_t pid, int signal);
int __wrap_kill(pid_t pid, int signal) {
    return onKill ? onKill(pid, signal) : __real_kill(pid, signal);
}

int __real_execve(const char* path, char* const* words, char* const* environment);
int __wrap_execve(const char* path, char* const* words, char* const* environment) {
    log("execve");
    return onExec ? onExec(path, words, environment) : __real_execve(path, words, environment);
}

int __real_execvp(const char* file, char* const* words);
int __wrap_execvp(const char* file, char* const* words) {
    log("execvp");
    return onExec ? onExec(file, words, environ) : __real_execvp(file, words);
}

int __real_dup2(int from, int to);
int __wrap_dup2(int from, int to) {
    log("dup2 " + std::to_string(to));
    return __real_dup2(from, to);
}

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
    if (descriptor == outputDescriptor) log("close");
    return __real_close(descriptor);
}

int __real_open(const char* path, int flags, ...);
static int loggedOpen(const char* path, int flags, mode_t mode) {
    const int descriptor = __real_open(path, flags, mode);
    if (path == outputFile) {
        log("open");
        outputDescriptor = descriptor;
    }
    return descriptor;
}
int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return loggedOpen(path, flags, mode);
}
int __wrap_open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return loggedOpen(path, flags, mode);
}

long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    const long first = va_arg(arguments, long);
    const long second = va_arg(arguments, long);
    const long third = va_arg(arguments, long);
    va_end(arguments);
    log("syscall");
    return __real_syscall(number, first, second, third);
}

}  // extern "C"

namespace {

Event trace(const std::string& text) { return {7, 900, 1, 0, text}; }
Event failure(const std::string& text) { return {3, 900, 1, 0, text}; }

Entries entries() {
    Entries found;
    for (const auto& entry : waitTable) found.emplace_back(entry.waitPid, entry.waitStatus);
    return found;
}

void setEntries(const Entries& wanted) {
    for (std::size_t i = 0; i < 5; ++i) waitTable[i] = {wanted[i].first, wanted[i].second};
}

const Entries allFree(5, {-1, 0});
const Entries allOurs(5, {nobody, -1});

// One answer of waitpid: an error or 0, the status otherwise, and what happens meanwhile.
struct Answer {
    int error;
    int status;
    std::function<void()> meanwhile;
};

void nothing() {}

class ProcessSystemTest : public testing::Test {
  protected:
    ProcessSystemTest() {
        clearEvents();
        setEntries(allFree);
    }
    ~ProcessSystemTest() override {
        onFork = nullptr;
        onWait = nullptr;
        onKill = nullptr;
        onExec = nullptr;
    }

    // A child that exists only for the caller; the waits for it are answered in order.
    void pretendChild(std::deque<Answer> answers) {
        answers_ = std::move(answers);
        onFork = [] { return nobody; };
        onWait = [this](pid_t pid, int* status, int options) {
            EXPECT_EQ(pid, nobody);
            EXPECT_EQ(options, 0);
            if (answers_.empty()) {
                ADD_FAILURE() << "one wait too many";
                errno = ECHILD;
                return -1;
            }
            const Answer answer = answers_.front();
            answers_.pop_front();
            answer.meanwhile();
            errno = answer.error;
            if (answer.error != 0) return -1;
            *status = answer.status;
            return pid;
        };
    }
    // All answers were asked for.
    bool allAsked() const { return answers_.empty(); }

    void failForks() {
        onFork = [] {
            errno = EAGAIN;
            return -1;
        };
        onWait = [](pid_t, int*, int) {
            ADD_FAILURE() << "a wait without a child";
            return -1;
        };
    }

    // Programs cannot be executed. What was to be is written to a file, a line for each part.
    void failExecs(int error) {
        onExec = [this, error](const char* path, char* const* words, char* const* environment) {
            std::ofstream file(executed_);
            file << path << '\n';
            for (; *words; ++words) file << *words << '\n';
            file << (environment == environ ? "own environment" : "another environment") << '\n';
            errno = error;
            return -1;
        };
    }
    std::vector<std::string> executed() const { return kfl_test::linesOf(contentOf(executed_)); }

    kfl_test::TemporaryFolder folder_;
    std::string executed_ = folder_ / "executed";
    ChildEvents childEvents_;

  private:
    std::deque<Answer> answers_;
};

class OsSystemTest : public ProcessSystemTest {};
class OsCreateProcessTest : public ProcessSystemTest {};
class OsKillProcessTest : public ProcessSystemTest {};

// osSystem

TEST_F(OsSystemTest, SaysNothingWhenNoChildCanBeCreated) {
    failForks();
    EXPECT_EQ(kfl::osSystem("true"), -1);
    EXPECT_EQ(events(), std::vector{trace("...osSystem: true")});
}

TEST_F(OsSystemTest, WaitsThroughInterruptions) {
    pretendChild({{EINTR, 0, nothing}, {EINTR, 0, nothing}, {0, 768, nothing}});
    EXPECT_EQ(kfl::osSystem("true"), 768);
    EXPECT_TRUE(allAsked());
}

TEST_F(OsSystemTest, GivesMinusOneWhenTheWaitFails) {
    pretendChild({{ECHILD, 0, nothing}});
    EXPECT_EQ(kfl::osSystem("true"), -1);
    pretendChild({{EINTR, 0, nothing}, {EINVAL, 0, nothing}});
    EXPECT_EQ(kfl::osSystem("true"), -1);
    EXPECT_TRUE(allAsked());
}

TEST_F(OsSystemTest, TakesNoPartInTheWaitTable) {
    pretendChild({{EINTR, 0,
                   [] {
                       EXPECT_EQ(entries(), allFree);
                       EXPECT_FALSE(kfl::osStatusReceived(nobody, 256));
                   }},
                  {0, 768, nothing}});
    EXPECT_EQ(kfl::osSystem("true"), 768);
    EXPECT_EQ(entries(), allFree);
}

TEST_F(OsSystemTest, ReportsAShellThatCannotBeExecutedFromTheChild) {
    failExecs(E2BIG);
    EXPECT_EQ(kfl::osSystem("one  two"), exited(127));
    EXPECT_EQ(executed(),
              (std::vector<std::string>{"/bin/sh", "sh", "-c", "one  two", "own environment"}));
    EXPECT_EQ(events(), std::vector{trace("...osSystem: one  two")});
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure("osSystem(one  two): error " + std::to_string(E2BIG))});
}

TEST_F(OsSystemTest, LetsTheHostMakeItsTexts) {
    const MarkedParms marked;
    failExecs(E2BIG);
    EXPECT_EQ(kfl::osSystem("a"), exited(127));
    EXPECT_EQ(events(), std::vector{trace(made("...osSystem: %s", "...osSystem: a"))});
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure(
                  made("osSystem(%s): error %d", "osSystem(a): error " + std::to_string(E2BIG)))});
}

TEST_F(OsSystemTest, TracesBeforeItForks) {
    pretendChild({{0, 0, nothing}});
    onFork = [] {
        EXPECT_EQ(events(), std::vector{trace("...osSystem: true")});
        return nobody;
    };
    EXPECT_EQ(kfl::osSystem("true"), 0);
    EXPECT_EQ(events().size(), 1U);
}

// osCreateProcess

TEST_F(OsCreateProcessTest, ReportsWhenNoChildCanBeCreated) {
    failForks();
    for (const bool wait : {false, true}) {
        clearEvents();
        EXPECT_EQ(kfl::osCreateProcess("/bin/true  a", wait, nullptr), -1);
        EXPECT_EQ(events(), (std::vector{trace("...osCreateProcess: /bin/true  a"),
                                         failure("Can't create child process to run "
                                                 "(/bin/true  a)")}));
    }
    EXPECT_EQ(entries(), allFree);
}

TEST_F(OsCreateProcessTest, ExecutesTheFirstWordWithAllWords) {
    failExecs(EPERM);
    EXPECT_EQ(kfl::osCreateProcess(" a  b c", true, nullptr), exited(127));
    EXPECT_EQ(executed(), (std::vector<std::string>{"a", "a", "b", "c", "own environment"}));
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure("Can't execute ( a  b c): error 'Operation not permitted'")});
}

TEST_F(OsCreateProcessTest, LetsTheHostMakeItsTexts) {
    const MarkedParms marked;
    const Event first = trace(made("...osCreateProcess: %s", "...osCreateProcess: a b"));
    failExecs(EPERM);
    EXPECT_EQ(kfl::osCreateProcess("a b", true, nullptr), exited(127));
    EXPECT_EQ(events(), std::vector{first});
    EXPECT_EQ(ChildEvents::events(),
              std::vector{failure(made("Can't execute (%s): error '%s'",
                                       "Can't execute (a b): error 'Operation not permitted'"))});
    clearEvents();
    failForks();
    EXPECT_EQ(kfl::osCreateProcess("a b", true, nullptr), -1);
    EXPECT_EQ(events(),
              (std::vector{first, failure(made("Can't create child process to run (%s)",
                                               "Can't create child process to run (a b)"))}));
}

TEST_F(OsCreateProcessTest, TracesBeforeItForks) {
    for (const bool wait : {false, true}) {
        clearEvents();
        pretendChild({{0, 0, nothing}});
        onFork = [] {
            EXPECT_EQ(events(), std::vector{trace("...osCreateProcess: /bin/true")});
            return nobody;
        };
        EXPECT_EQ(kfl::osCreateProcess("/bin/true", wait, nullptr), wait ? 0 : nobody);
        EXPECT_EQ(events().size(), 1U);
    }
}

// The calls of a child in their order, which it writes down when it comes to its exec.
TEST_F(OsCreateProcessTest, PreparesTheChildInOrder) {
    const struct {
        bool withOutput;
        std::vector<std::string> calls;
    } cases[] = {{false, {"syscall", "execve"}},
                 {true, {"syscall", "open", "dup2 1", "dup2 2", "close", "execvp"}}};
    const std::string log = folder_ / "log";
    onExec = [&log](const char*, char* const*, char* const*) {
        const std::vector<std::string> made = std::move(*std::exchange(calls, nullptr));
        std::ofstream file(log);
        for (const std::string& call : made) file << call << '\n';
        errno = EPERM;
        return -1;
    };
    onFork = [] {
        const pid_t pid = __real_fork();
        if (pid == 0) {
            static std::vector<std::string> made;
            calls = &made;
        }
        return pid;
    };
    for (const auto& row : cases) {
        outputFile = folder_ / "output";
        kfl::osCreateProcess("program", true, row.withOutput ? outputFile.c_str() : nullptr);
        EXPECT_EQ(kfl_test::linesOf(contentOf(log)), row.calls);
    }
}

TEST_F(OsCreateProcessTest, ClaimsEveryFreeEntryAndFreesThemAfterTheWait) {
    pretendChild({{0, 768, [] { EXPECT_EQ(entries(), allOurs); }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 768);
    EXPECT_EQ(entries(), Entries(5, {-1, -1}));
    EXPECT_TRUE(allAsked());
}

TEST_F(OsCreateProcessTest, ClaimsNothingWithoutWaiting) {
    pretendChild({});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", false, nullptr), nobody);
    EXPECT_EQ(entries(), allFree);
}

TEST_F(OsCreateProcessTest, LeavesEntriesOfOthersAlone) {
    setEntries({{7, 1}, {-1, 2}, {8, -1}, {-1, 3}, {9, 4}});
    pretendChild(
        {{0, 0, [] {
              EXPECT_EQ(entries(), (Entries{{7, 1}, {nobody, -1}, {8, -1}, {nobody, -1}, {9, 4}}));
          }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
    EXPECT_EQ(entries(), (Entries{{7, 1}, {-1, -1}, {8, -1}, {-1, -1}, {9, 4}}));
}

TEST_F(OsCreateProcessTest, WaitsAgainAfterAnInterruptionWithoutAStatus) {
    pretendChild({{EINTR, 0, nothing}, {EINTR, 0, nothing}, {0, 256, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 256);
    EXPECT_EQ(entries(), Entries(5, {-1, -1}));
    EXPECT_TRUE(allAsked());
}

TEST_F(OsCreateProcessTest, TakesTheStatusThatTheInterruptionDelivered) {
    pretendChild({{EINTR, 0, [] { EXPECT_TRUE(kfl::osStatusReceived(nobody, 1792)); }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 1792);
    EXPECT_EQ(entries(),
              (Entries{{-1, 1792}, {nobody, -1}, {nobody, -1}, {nobody, -1}, {nobody, -1}}));
    EXPECT_TRUE(allAsked());
}

TEST_F(OsCreateProcessTest, TakesADeliveredStatusOfZero) {
    pretendChild({{EINTR, 0, [] { EXPECT_TRUE(kfl::osStatusReceived(nobody, 0)); }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
}

TEST_F(OsCreateProcessTest, CountsADeliveredStatusOfMinusOneAsNone) {
    pretendChild(
        {{EINTR, 0, [] { EXPECT_TRUE(kfl::osStatusReceived(nobody, -1)); }}, {0, 256, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 256);
    EXPECT_TRUE(allAsked());
}

TEST_F(OsCreateProcessTest, PrefersTheStatusOfItsOwnWait) {
    pretendChild({{0, 256, [] { EXPECT_TRUE(kfl::osStatusReceived(nobody, 512)); }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 256);
    EXPECT_EQ(entries(), (Entries{{-1, 512}, {-1, -1}, {-1, -1}, {-1, -1}, {-1, -1}}));
}

TEST_F(OsCreateProcessTest, KeepsItsEntriesWhenTheWaitFails) {
    pretendChild({{ECHILD, 0, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), -1);
    EXPECT_EQ(entries(), allOurs);
    EXPECT_TRUE(kfl::osStatusReceived(nobody, 256));
}

TEST_F(OsCreateProcessTest, LooksForADeliveredStatusOnlyAfterAnInterruption) {
    pretendChild({{ECHILD, 0, [] { EXPECT_TRUE(kfl::osStatusReceived(nobody, 256)); }}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), -1);
    pretendChild({{EINTR, 0, nothing}, {ECHILD, 0, nothing}});
    setEntries(allFree);
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), -1);
    EXPECT_EQ(entries(), allOurs);
}

TEST_F(OsCreateProcessTest, FreesWhatAnEarlierCallLeftForTheSamePid) {
    pretendChild({{ECHILD, 0, nothing}, {0, 256, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), -1);
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 256);
    EXPECT_EQ(entries(), Entries(5, {-1, -1}));
}

// An old delivery is taken for the new child's where pids come around: the table knows no more.
TEST_F(OsCreateProcessTest, TakesAnOldDeliveryForTheSamePid) {
    setEntries({{nobody, 512}, {7, -1}, {7, -1}, {7, -1}, {7, -1}});
    pretendChild({{EINTR, 0, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 512);
    EXPECT_EQ(entries()[0], std::make_pair(-1, 512));
}

TEST_F(OsCreateProcessTest, WaitsWithoutAnEntryWhenTheTableIsFull) {
    const Entries full(5, {7, -1});
    setEntries(full);
    pretendChild(
        {{EINTR, 0, [] { EXPECT_FALSE(kfl::osStatusReceived(nobody, 512)); }}, {0, 256, nothing}});
    EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 256);
    EXPECT_EQ(entries(), full);
}

// osKillProcess

TEST_F(OsKillProcessTest, SendsSigtermAndWaitsThroughInterruptions) {
    std::vector<std::pair<int, int>> sent;
    pretendChild({{EINTR, 0, nothing}, {EINTR, 0, nothing}, {0, 15, nothing}});
    onKill = [&sent](pid_t pid, int signal) {
        sent.emplace_back(pid, signal);
        return 0;
    };
    EXPECT_EQ(kfl::osKillProcess(nobody), nobody);
    EXPECT_EQ(sent, (std::vector{std::make_pair(nobody, 15)}));
    EXPECT_TRUE(allAsked());
}

TEST_F(OsKillProcessTest, WaitsAlsoWhenTheSignalCannotBeSent) {
    pretendChild({{0, 0, nothing}});
    onKill = [](pid_t, int) {
        errno = EPERM;
        return -1;
    };
    EXPECT_EQ(kfl::osKillProcess(nobody), nobody);
    EXPECT_TRUE(allAsked());
}

TEST_F(OsKillProcessTest, GivesFourWhenTheWaitFails) {
    onKill = [](pid_t, int) { return 0; };
    for (const int error : {ECHILD, EINVAL}) {
        pretendChild({{EINTR, 0, nothing}, {error, 0, nothing}});
        EXPECT_EQ(kfl::osKillProcess(nobody), 4);
        EXPECT_TRUE(allAsked());
    }
}

TEST_F(OsKillProcessTest, CallsNothingForAPidThatIsNotPositive) {
    pretendChild({});
    onKill = [](pid_t, int) {
        ADD_FAILURE() << "a signal";
        return 0;
    };
    EXPECT_EQ(kfl::osKillProcess(0), 0);
    EXPECT_EQ(kfl::osKillProcess(-5), 0);
}

TEST_F(OsKillProcessTest, LetsTheHostMakeItsTexts) {
    const MarkedParms marked;
    pretendChild({{0, 15, nothing}});
    onKill = [](pid_t, int) { return 0; };
    EXPECT_EQ(kfl::osKillProcess(nobody), nobody);
    EXPECT_EQ(events(), std::vector{trace(made("...osKillProcess: %d",
                                               "...osKillProcess: " + std::to_string(nobody)))});
    clearEvents();
    kfl::osKillProcess(-5);
    EXPECT_EQ(events(), (std::vector{trace(made("...osKillProcess: %d", "...osKillProcess: -5")),
                                     Event{3, 0, 0, 0,
                                           made("kfl osKillProcess : (pid %i) is wrong.",
                                                "kfl osKillProcess : (pid -5) is wrong.")}}));
}

TEST_F(OsKillProcessTest, TracesBeforeItSendsTheSignalAndWaits) {
    const std::vector<Event> traced{trace("...osKillProcess: " + std::to_string(nobody))};
    bool sent = false;
    pretendChild({{0, 15, [&] {
                       EXPECT_TRUE(sent);
                       EXPECT_EQ(events(), traced);
                   }}});
    onKill = [&](pid_t, int) {
        EXPECT_EQ(events(), traced);
        sent = true;
        return 0;
    };
    EXPECT_EQ(kfl::osKillProcess(nobody), nobody);
    EXPECT_EQ(events(), traced);
}

}  // namespace
