// A host of many threads that allocate and log while others start processes: nothing may hang, get
// lost or stay behind.
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "kfl/OSThread.h"
#include "kfl/process.h"
#include "tests/os/children.h"

namespace {

using kfl_test::exited;
using Clock = std::chrono::steady_clock;

constexpr int logThreads = 64;
constexpr int startThreads = 4;

// KFL_TEST_SECONDS makes the run longer.
std::chrono::milliseconds duration() {
    const char* const seconds = std::getenv("KFL_TEST_SECONDS");
    return seconds ? std::chrono::seconds(std::atoi(seconds)) : std::chrono::milliseconds(2000);
}

// A child of a failed exec reports through the host, whose lock another thread may have held at the
// fork. A host of many threads has to be ready for that; this one ends such children at once.
pid_t parent = 0;

void endFailedChild(const kfl_test::Event&) {
    if (getpid() != parent) _exit(99);
}

class ThreadedHostTest : public testing::Test {
  protected:
    ThreadedHostTest() {
        parent = getpid();
        kfl_test::setEventHook(endFailedChild);
    }
    ~ThreadedHostTest() override {
        kfl_test::setEventHook(nullptr);
        kfl_test::clearEvents();
    }
};

struct Host {
    std::atomic<bool> stop{false};
    std::atomic<long> allocated{0};
    std::atomic<long> started{0};
    std::atomic<long> wrong{0};
};

// Allocates all the time, and logs by the way that reports nothing but goes through the host.
void allocateAndLog(void* argument) {
    auto& host = *static_cast<Host*>(argument);
    for (unsigned i = 0; !host.stop; ++i) {
        const std::string text(1 + i % 3000, 'x');
        host.allocated += static_cast<long>(text.size());
        kfl::osKillProcess(-1);
        if (i % 16 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (i % 256 == 0) kfl_test::clearEvents();
    }
}

void check(Host& host, bool right) {
    ++host.started;
    if (!right) ++host.wrong;
}

void startAndWait(Host& host, const std::string& output) {
    check(host, kfl::osSystem("exit 3") == 768);
    check(host, kfl::osCreateProcess("/bin/true", true, nullptr) == 0);
    check(host, kfl::osCreateProcess("echo a  b", true, output.c_str()) == 0 &&
                    kfl_test::contentOf(output) == "a b\n");
    check(host, kfl::osCreateProcess("/no/such/program", true, nullptr) == exited(99));
}

void startAndStop(Host& host) {
    const int pid = kfl::osCreateProcess("/bin/sleep 300", false, nullptr);
    check(host, kfl::osKillProcess(pid) == pid);
    const int other = kfl::osCreateProcess("/bin/false", false, nullptr);
    int status = 0;
    check(host, waitpid(other, &status, 0) == other && status == exited(1));
}

TEST_F(ThreadedHostTest, StartsProcessesAmongManyBusyThreads) {
    const auto before = kfl_test::openDescriptors();
    const kfl_test::TemporaryFolder folder;
    Host host;
    std::vector<int> logging;
    for (int i = 0; i < logThreads; ++i) {
        logging.push_back(kfl::osCreateThread(910, allocateAndLog, &host, 0));
    }
    std::vector<std::thread> starting;
    for (int i = 0; i < startThreads; ++i) {
        starting.emplace_back([&host, output = folder / ("output" + std::to_string(i))] {
            while (!host.stop) {
                startAndWait(host, output);
                startAndStop(host);
            }
        });
    }
    std::this_thread::sleep_for(duration());
    host.stop = true;
    for (std::thread& thread : starting) thread.join();
    for (const int id : logging) EXPECT_EQ(kfl::osJoinThread(id), 0);

    EXPECT_GT(host.started, 6 * startThreads - 1);
    EXPECT_EQ(host.wrong, 0) << "of " << host.started;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD) << "a child is left";
    EXPECT_EQ(kfl_test::openDescriptors(), before);
    std::printf("%ld processes started, %ld MB allocated\n", host.started.load(),
                host.allocated >> 20);
}

}  // namespace
