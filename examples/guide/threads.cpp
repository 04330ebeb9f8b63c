// A worker thread that works until it is asked to stop.
#include <atomic>
#include <cstdio>

#include "kfl/OSThread.h"
#include "kfl/RandomNumberGenerator.h"

namespace {

struct Worker {
    kfl::OSThread thread;
    std::atomic<int> rounds{0};
    // The request to stop is a signal, which can be lost; this is not.
    std::atomic<bool> stopping{false};
};

void work(void* argument) {
    Worker& worker = *static_cast<Worker*>(argument);
    worker.thread.threadHasStarted();
    do {
        ++worker.rounds;
    } while (!worker.thread.isRequestedToStop(1000000) && !worker.stopping);  // up to 1 ms
    worker.thread.threadIsStopping();
    worker.thread.leave();
}

}  // namespace

int main() {
    Worker worker;
    if (worker.thread.create(910, work, &worker, 0) == -1) return 1;
    while (worker.rounds < 3) {
    }
    worker.stopping = true;
    std::printf("joined: %d\n", worker.thread.destroy());
    std::printf("worked: %s\n", worker.rounds >= 3 ? "yes" : "no");
    std::printf("random: %s\n", RandomNumberGenerator::getNumber() >= 0 ? "some number" : "never");
    return 0;
}
