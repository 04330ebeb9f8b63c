// Programs run, waited for and ended.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "kfl/process.h"
#include "os/wait_table.h"
#include "tests/faults/exhaust.h"
#include "tests/faults/reported_errors.h"
#include "tests/os/children.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::Attempt;
using kfl_test::contentOf;
using kfl_test::exhaust;
using kfl_test::exited;
using kfl_test::lastError;
using kfl_test::reportedErrors;

// A descriptor that children must not have.
constexpr int keptDescriptor = 200;

class ProcessFaults : public testing::Test {
  protected:
    // Closing descriptors one by one must not take long where all other ways fail.
    ProcessFaults() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit lower = before_;
        lower.rlim_cur = 256;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &lower), 0);
        const int null = open("/dev/null", O_RDONLY);
        EXPECT_EQ(dup2(null, keptDescriptor), keptDescriptor);
        close(null);
    }
    ~ProcessFaults() override {
        close(keptDescriptor);
        setrlimit(RLIMIT_NOFILE, &before_);
    }

    // The command that runs a script of that name.
    std::string script(const std::string& name, const std::string& text) const {
        return "sh " + folder_.write(name, text);
    }

    static std::string errorOf(const std::string& command, int error) {
        return "Can't execute (" + command + "): error '" + strerror(error) + "'";
    }

    // Entries of a wait that failed stay claimed for good, which other tests are not to see.
    static void freeAllEntries() {
        for (auto& entry : kfl::detail::waitTable) entry = {kfl::detail::noPid, 0};
    }
    static bool allEntriesAreFree() {
        for (const auto& entry : kfl::detail::waitTable) {
            if (entry.waitPid != kfl::detail::noPid) return false;
        }
        return true;
    }

    kfl_test::TemporaryFolder folder_;
    rlimit before_{};
};

const std::string failsWithDescriptor =
    "[ -e /proc/self/fd/" + std::to_string(keptDescriptor) + " ] && exit 9\n";

TEST_F(ProcessFaults, ProgramIsRunAndWaitedFor) {
    const std::string command = "/bin/" + script("run", failsWithDescriptor + "exit 7");
    exhaust("processes: a program run and waited for", [&](Attempt& attempt) {
        int result = -2;
        attempt([&] { result = kfl::osCreateProcess(command.c_str(), true, nullptr); });
        if (attempt.failed("fork")) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(lastError(), "Can't create child process to run (" + command + ")");
        } else if (attempt.failed("waitpid", ECHILD)) {
            EXPECT_EQ(result, -1);
            EXPECT_FALSE(allEntriesAreFree()) << "kept on purpose";
            freeAllEntries();
        } else if (attempt.failed("execve")) {
            EXPECT_EQ(result, exited(127));
            EXPECT_EQ(lastError(), errorOf(command, attempt.error()));
        } else {
            EXPECT_EQ(result, exited(attempt.failed("sysconf") ? 9 : 7));
            EXPECT_EQ(reportedErrors(), 0U);
        }
        EXPECT_TRUE(allEntriesAreFree());
        if (attempt.failedAnywhere()) {
            EXPECT_EQ(kfl::osCreateProcess(command.c_str(), true, nullptr), exited(7));
        }
    });
}

TEST_F(ProcessFaults, OutputOfAProgramGoesToAFile) {
    const std::string command =
        script("print", failsWithDescriptor + "echo out; echo err >&2; exit 7");
    const std::string output = folder_ / "output";
    exhaust("processes: a program run with its output in a file", [&](Attempt& attempt) {
        unlink(output.c_str());
        int result = -2;
        attempt([&] { result = kfl::osCreateProcess(command.c_str(), true, output.c_str()); });
        if (attempt.failed("fork") || attempt.failed("waitpid", ECHILD)) {
            EXPECT_EQ(result, -1);
            freeAllEntries();
        } else if (attempt.failed("execvp") || attempt.failed("open")) {
            EXPECT_EQ(result, exited(127));
            EXPECT_EQ(lastError(), errorOf(command, attempt.error()));
        } else {
            EXPECT_EQ(result, exited(attempt.failed("sysconf") ? 9 : 7));
            if (attempt.failed("sysconf")) return;
            const std::string printed = contentOf(output);
            if (!attempt.failed("dup2")) {
                EXPECT_EQ(printed, "out\nerr\n");
            } else {
                // What could not be turned round went where the parent's output goes.
                EXPECT_TRUE(attempt.failedFromThenOn() || printed == "out\n" || printed == "err\n")
                    << printed;
            }
        }
    });
}

TEST_F(ProcessFaults, ProgramIsStartedAndEnded) {
    const std::string command = "/bin/sleep 0.05";
    exhaust("processes: a program started", [&](Attempt& attempt) {
        int pid = -2;
        int status = -2;
        attempt([&] {
            pid = kfl::osCreateProcess(command.c_str(), false, nullptr);
            // Waited for here, so that the child's calls have all been made when this is over.
            while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
        });
        if (attempt.failed("fork")) {
            EXPECT_EQ(pid, -1);
        } else if (!attempt.failed("waitpid", ECHILD)) {
            EXPECT_EQ(status, exited(attempt.failed("execve") ? 127 : 0)) << lastError();
        }
    });
    exhaust("processes: a program ended", [&](Attempt& attempt) {
        const int pid = kfl::osCreateProcess(command.c_str(), false, nullptr);
        int result = -2;
        attempt([&] { result = kfl::osKillProcess(pid); });
        EXPECT_EQ(result, attempt.failed("waitpid", ECHILD) ? 4 : pid);
    });
}

TEST_F(ProcessFaults, CommandIsRunByTheShell) {
    const std::string command = failsWithDescriptor + "exit 7";
    exhaust("processes: a command run by the shell", [&](Attempt& attempt) {
        int result = -2;
        attempt([&] { result = kfl::osSystem(command.c_str()); });
        if (attempt.failed("fork") || attempt.failed("waitpid", ECHILD)) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(reportedErrors(), 0U) << "kept on purpose";
        } else if (attempt.failed("execve")) {
            EXPECT_EQ(result, exited(127));
            EXPECT_EQ(lastError(),
                      "osSystem(" + command + "): error " + std::to_string(attempt.error()));
        } else {
            EXPECT_EQ(result, exited(attempt.failed("sysconf") ? 9 : 7));
        }
        if (attempt.failedAnywhere()) {
            EXPECT_EQ(kfl::osSystem(command.c_str()), exited(7));
        }
    });
}

// Whether `text` is `whole` without one stretch, or with nothing missing.
bool lacksOneStretch(const std::string& text, const std::string& whole) {
    std::size_t same = 0;
    while (same < text.size() && same < whole.size() && text[same] == whole[same]) ++same;
    return text.size() <= whole.size() && kfl_test::endsWith(whole, text.substr(same));
}

// Bytes that repeat nowhere, so that each stands in one place only.
std::string distinctBytes(std::size_t size) {
    std::string bytes;
    for (unsigned int i = 0; bytes.size() < size; ++i) bytes += std::to_string(i) + ' ';
    bytes.resize(size);
    return bytes;
}

// What a failure leaves of a copy.
void checkCopy(const Attempt& attempt, const std::string& copied, const std::string& bytes) {
    if (attempt.failed("read") || attempt.failed("lseek")) {
        EXPECT_TRUE(kfl_test::beginsWith(bytes, copied)) << "ends where reading ended";
    } else if (attempt.failed("write")) {
        EXPECT_TRUE(lacksOneStretch(copied, bytes));
    } else if (!attempt.failed("open")) {
        EXPECT_TRUE(copied == bytes) << copied.size();
    }
}

TEST_F(ProcessFaults, FileIsCopied) {
    const std::string to = folder_ / "to";
    const auto tryCopies = [&](const char* name, std::size_t size, const char* refused) {
        const std::string bytes = distinctBytes(size);
        const std::string from = folder_.write("from", bytes);
        exhaust(name, [&](Attempt& attempt) {
            unlink(to.c_str());
            int result = -2;
            attempt.without(refused,
                            [&] { result = kfl::osCopyFile(from.c_str(), to.c_str(), true); });
            EXPECT_EQ(result, attempt.failed("open") ? -1 : 0);
            checkCopy(attempt, contentOf(to), bytes);
            EXPECT_EQ(kfl::osCopyFile(from.c_str(), to.c_str(), false), 0);
            EXPECT_TRUE(contentOf(to) == bytes);
        });
    };
    tryCopies("files: 100 bytes copied", 100, "");
    tryCopies("files: 40,000 bytes copied", 40000, "");
    tryCopies("files: 40,000 bytes copied without copy_file_range", 40000, "syscall");
}

}  // namespace
