// Threads that are started, asked to stop and joined.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>

#include "kfl/OSThread.h"
#include "tests/soak/soak.h"

namespace {

struct Worker {
    kfl::OSThread thread;
    std::atomic<bool> waits{false};
};

void work(void* argument) {
    auto* const worker = static_cast<Worker*>(argument);
    worker->thread.threadHasStarted();
    worker->waits = true;
    while (!worker->thread.isRequestedToStop(900000000)) {
    }
    worker->thread.threadIsStopping();
}

TEST(ThreadsSoak, StartedAskedToStopAndJoined) {
    kfl_test::soak("threads started, asked to stop and joined", kfl_test::rounds(50), 8, [] {
        Worker workers[8];
        for (Worker& worker : workers) EXPECT_NE(worker.thread.create(1, work, &worker, 0), -1);
        for (Worker& worker : workers) {
            while (!worker.waits) usleep(10);
            EXPECT_EQ(worker.thread.destroy(), 0);
        }
    });
}

}  // namespace
