// Threads and random numbers.
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "kfl/OSThread.h"
#include "kfl/RandomNumberGenerator.h"
#include "tests/faults/exhaust.h"
#include "tests/faults/reported_errors.h"

namespace {

using kfl::OSThread;
using kfl_test::Attempt;
using kfl_test::exhaust;
using kfl_test::lastError;

// A worker that does nothing but wait for its end.
struct Worker {
    OSThread thread;
    std::atomic<bool> waits{false};
};

void waitForRequest(void* argument) {
    auto* const worker = static_cast<Worker*>(argument);
    worker->thread.threadHasStarted();
    worker->waits = true;
    while (!worker->thread.isRequestedToStop(900000000)) {
    }
    worker->thread.threadIsStopping();
}

void awaitWaiting(const Worker& worker) {
    while (!worker.waits) usleep(100);
}

class ThreadFaults : public testing::Test {
  protected:
    // With the first thread ThreadSanitizer starts one of its own.
    static void SetUpTestSuite() {
        std::thread([] {}).join();
    }
};

TEST_F(ThreadFaults, ThreadIsCreated) {
    exhaust("threads: created", [](Attempt& attempt) {
        Worker worker;
        int id = -2;
        attempt([&] { id = worker.thread.create(910, waitForRequest, &worker, 0); });
        EXPECT_FALSE(attempt.threw());
        const bool failed = attempt.failed("malloc") || attempt.failed("pthread_create");
        EXPECT_EQ(id == -1, failed);
        if (failed) {
            EXPECT_STREQ(lastError(), "Can't create thread");
            EXPECT_EQ(worker.thread.destroy(), ESRCH);
            EXPECT_NE(worker.thread.create(910, waitForRequest, &worker, 0), -1);
        }
        awaitWaiting(worker);
        EXPECT_EQ(worker.thread.destroy(), 0);
    });
}

TEST_F(ThreadFaults, ThreadIsAskedToStopAndJoined) {
    exhaust("threads: asked to stop and joined", [](Attempt& attempt) {
        Worker worker;
        worker.thread.create(910, waitForRequest, &worker, 0);
        awaitWaiting(worker);
        int result = -2;
        attempt([&] { result = worker.thread.destroy(); });
        EXPECT_EQ(result, attempt.failed("pthread_join") ? attempt.error() : 0);
        if (result != 0) {
            EXPECT_EQ(worker.thread.destroy(), 0) << "the id is as good as before";
        }
    });
}

// A worker whose own calls fail.
struct Failing {
    OSThread thread;
    Attempt* attempt;
    int started;
    bool requested;
    int stopping;
    std::atomic<bool> ended;
};

void workWithFailures(void* argument) {
    auto* const failing = static_cast<Failing*>(argument);
    (*failing->attempt)([&] {
        failing->started = failing->thread.threadHasStarted();
        failing->requested = failing->thread.isRequestedToStop(1000000);
        failing->stopping = failing->thread.threadIsStopping();
    });
    failing->ended = true;
}

TEST_F(ThreadFaults, WorkersCallsHandBackTheirFailures) {
    exhaust("threads: a worker's calls", [](Attempt& attempt) {
        Failing failing{{}, &attempt, -1, true, -1, {false}};
        ASSERT_NE(failing.thread.create(910, workWithFailures, &failing, 0), -1);
        while (!failing.ended) {
            usleep(100);
        }
        EXPECT_EQ(failing.thread.destroy(), 0);
        EXPECT_EQ(failing.started, attempt.failed("pthread_mutex_lock") ? attempt.error() : 0);
        EXPECT_EQ(failing.stopping, attempt.failed("pthread_mutex_unlock") ? attempt.error() : 0);
        EXPECT_FALSE(failing.requested) << "nobody asked";
    });
}

// The seed is set once in a process, so each try has a child of its own.
TEST_F(ThreadFaults, WithoutAClockTheSeedIs0) {
    exhaust("random numbers: the first one", [](Attempt& attempt) {
        int status = -1;
        attempt.only("gettimeofday", [&] {
            const pid_t pid = fork();
            if (pid == 0) {
                const int first = RandomNumberGenerator::getNumber();
                std::srand(0);
                _exit(first == std::rand() ? 1 : 0);
            }
            waitpid(pid, &status, 0);
        });
        EXPECT_TRUE(WIFEXITED(status));
        if (attempt.failed("gettimeofday")) {
            EXPECT_EQ(WEXITSTATUS(status), 1);
        }
    });
}

}  // namespace
