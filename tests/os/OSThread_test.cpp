// Threads, and workers that are asked to stop.
#include "kfl/OSThread.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "tests/support/recording_host.h"

namespace {

using kfl::osCreateThread;
using kfl::osExitThread;
using kfl::osJoinThread;
using kfl::OSThread;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr unsigned tenthOfASecond = 100000000;

milliseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

void set(void* flag) { *static_cast<std::atomic<bool>*>(flag) = true; }

void waitFor(const std::atomic<bool>& flag) {
    while (!flag) std::this_thread::sleep_for(milliseconds(1));
}

void untilSet(void* flag) { waitFor(*static_cast<std::atomic<bool>*>(flag)); }

int start(void (*entry)(void*), void* argument) {
    const int id = osCreateThread(910, entry, argument, 0);
    EXPECT_NE(id, -1);
    return id;
}

// The free functions

TEST(OsCreateThreadTest, RunsTheEntryWithItsArgument) {
    std::atomic<bool> ran{false};
    EXPECT_EQ(osJoinThread(start(set, &ran)), 0);
    EXPECT_TRUE(ran);
}

TEST(OsCreateThreadTest, IgnoresTheLastArgument) {
    for (const int option : {0, 1, -1, INT_MAX, INT_MIN}) {
        std::atomic<bool> ran{false};
        EXPECT_EQ(osJoinThread(osCreateThread(910, set, &ran, option)), 0);
        EXPECT_TRUE(ran);
    }
}

TEST(OsCreateThreadTest, ReportsNothingWhereAllIsWell) {
    kfl_test::clearEvents();
    std::atomic<bool> ran{false};
    osJoinThread(start(set, &ran));
    osJoinThread(-1);
    EXPECT_TRUE(kfl_test::events().empty());
}

TEST(OsCreateThreadTest, RefusesANullEntryAsAThreadThatCannotBeCreated) {
    kfl_test::clearEvents();
    EXPECT_EQ(osCreateThread(77, nullptr, nullptr, 0), -1);
    EXPECT_EQ(kfl_test::events(),
              (std::vector<kfl_test::Event>{{3, 77, 0, 0, "Can't create thread"}}));
}

void storeSelf(void* self) { *static_cast<pthread_t*>(self) = pthread_self(); }

TEST(OsCreateThreadTest, GivesTheHandleWhereItFitsAndASmallNumberElsewhere) {
    pthread_t self{};
    const int id = start(storeSelf, &self);
    EXPECT_EQ(osJoinThread(id), 0);
    if (sizeof(pthread_t) == sizeof(int)) {
        int handle = 0;
        std::memcpy(&handle, &self, sizeof handle);
        EXPECT_EQ(id, handle);
    } else {
        EXPECT_GT(id, 0);
        EXPECT_LT(id, 100000);
    }
}

TEST(OsCreateThreadTest, ServesTenThousandThreadsInSequence) {
    for (int i = 0; i < 10000; ++i) {
        std::atomic<bool> ran{false};
        ASSERT_EQ(osJoinThread(start(set, &ran)), 0) << i;
        ASSERT_TRUE(ran);
    }
}

// Several hundred stacks of a PC's size do not fit into 32 bits.
class SmallStacks {
  public:
    SmallStacks() {
        pthread_getattr_default_np(&attributes_);
        pthread_attr_getstacksize(&attributes_, &usual_);
        if (sizeof(void*) == 4) setSize(1 << 18);
    }
    ~SmallStacks() {
        setSize(usual_);
        pthread_attr_destroy(&attributes_);
    }
    SmallStacks(const SmallStacks&) = delete;
    SmallStacks& operator=(const SmallStacks&) = delete;

  private:
    void setSize(std::size_t size) {
        pthread_attr_setstacksize(&attributes_, size);
        pthread_setattr_default_np(&attributes_);
    }

    pthread_attr_t attributes_{};
    std::size_t usual_ = 0;
};

TEST(OsCreateThreadTest, ServesSeveralHundredThreadsAtOnce) {
    const SmallStacks stacks;
    std::atomic<bool> go{false};
    std::vector<int> ids;
    for (int i = 0; i < 300; ++i) ids.push_back(start(untilSet, &go));
    EXPECT_EQ(std::set<int>(ids.begin(), ids.end()).size(), ids.size());
    go = true;
    // From both ends inwards: neither the first in nor the last in.
    for (std::size_t i = 0; i < ids.size() / 2; ++i) {
        EXPECT_EQ(osJoinThread(ids[i]), 0);
        EXPECT_EQ(osJoinThread(ids[ids.size() - 1 - i]), 0);
    }
    for (const int id : ids) EXPECT_EQ(osJoinThread(id), ESRCH);
}

TEST(OsCreateThreadTest, ServesSeveralCreatorsAtOnce) {
    std::vector<std::thread> creators;
    for (int i = 0; i < 8; ++i) {
        creators.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                std::atomic<bool> ran{false};
                ASSERT_EQ(osJoinThread(start(set, &ran)), 0);
                ASSERT_TRUE(ran);
            }
        });
    }
    for (std::thread& creator : creators) creator.join();
}

TEST(OsJoinThreadTest, WaitsForTheEnd) {
    static std::atomic<bool> ended;
    ended = false;
    const auto entry = [](void*) {
        std::this_thread::sleep_for(milliseconds(50));
        ended = true;
    };
    const int id = start(entry, nullptr);
    EXPECT_EQ(osJoinThread(id), 0);
    EXPECT_TRUE(ended);
}

TEST(OsJoinThreadTest, KnowsNoSuchThread) {
    std::atomic<bool> ran{false};
    const int joined = start(set, &ran);
    EXPECT_EQ(osJoinThread(joined), 0);
    EXPECT_EQ(osJoinThread(joined), ESRCH);
    for (const int id : {-1, 0, 1, INT_MIN, INT_MAX}) EXPECT_EQ(osJoinThread(id), ESRCH) << id;
}

TEST(OsJoinThreadTest, RefusesASecondJoinMeanwhile) {
    std::atomic<bool> go{false};
    const int id = start(untilSet, &go);
    std::atomic<int> first{-1};
    std::thread joiner([&] { first = osJoinThread(id); });
    // Either of the two may come first; the one in the way ends at once.
    int second = 0;
    std::thread other([&] { second = osJoinThread(id); });
    std::this_thread::sleep_for(milliseconds(50));
    go = true;
    joiner.join();
    other.join();
    const std::set<int> results = {first, second};
    EXPECT_TRUE(results == (std::set<int>{0, EINVAL}) || results == (std::set<int>{0, ESRCH}));
    EXPECT_EQ(osJoinThread(id), ESRCH);
}

// ThreadSanitizer takes every join for one that succeeds.
#ifndef __SANITIZE_THREAD__

struct SelfJoin {
    std::atomic<int> id{-1};
    int result = 0;
    std::atomic<bool> refused{false};
};

void joinSelf(void* argument) {
    auto& self = *static_cast<SelfJoin*>(argument);
    while (self.id == -1) std::this_thread::yield();
    self.result = osJoinThread(self.id);
    self.refused = true;
}

TEST(OsJoinThreadTest, RefusesTheCallerItselfAndKeepsItsId) {
    SelfJoin self;
    const int id = start(joinSelf, &self);
    self.id = id;
    waitFor(self.refused);
    EXPECT_EQ(osJoinThread(id), 0);
    EXPECT_EQ(self.result, EDEADLK);
    EXPECT_EQ(osJoinThread(id), ESRCH);
}

struct CancelledJoin {
    int id;
    std::atomic<bool> go;
    std::atomic<bool> unwound{false};
};

void* joinForEver(void* argument) {
    struct Unwound {
        CancelledJoin& join;
        ~Unwound() { join.unwound = true; }
    } const unwound{*static_cast<CancelledJoin*>(argument)};
    while (!unwound.join.go) std::this_thread::yield();
    osJoinThread(unwound.join.id);
    return nullptr;
}

// Cancels a join, at once or while it waits; the thread can then be joined all the same.
void expectTheIdKept(bool atOnce) {
    std::atomic<bool> end{false};
    CancelledJoin cancelled{start(untilSet, &end), {!atOnce}};
    pthread_t joiner{};
    ASSERT_EQ(pthread_create(&joiner, nullptr, joinForEver, &cancelled), 0);
    if (!atOnce) std::this_thread::sleep_for(milliseconds(50));
    pthread_cancel(joiner);
    cancelled.go = true;
    pthread_join(joiner, nullptr);
    end = true;
#ifdef __mips__
    // The C library's join may have no unwind tables there: the thread just ends, and the id stays
    // claimed.
    EXPECT_EQ(osJoinThread(cancelled.id), cancelled.unwound ? 0 : EINVAL);
#else
    EXPECT_TRUE(cancelled.unwound);
    EXPECT_EQ(osJoinThread(cancelled.id), 0);
#endif
}

TEST(OsJoinThreadTest, KeepsTheIdWhenTheJoiningThreadIsCancelledAtOnce) { expectTheIdKept(true); }

// A waiting thread is cancelled by a signal, through whose frame an emulated stack is not unwound.
#ifndef KFL_EMULATED
TEST(OsJoinThreadTest, KeepsTheIdWhenTheJoiningThreadIsCancelledInItsWait) {
    expectTheIdKept(false);
}
#endif

#endif

void exitInTheMiddle(void* flag) {
    set(flag);
    osExitThread();
}

TEST(OsExitThreadTest, EndsTheCallingThreadOnly) {
    std::atomic<bool> ran{false};
    EXPECT_EQ(osJoinThread(start(exitInTheMiddle, &ran)), 0);
    EXPECT_TRUE(ran);
}

// The class

// A worker by the book, which counts its pieces of work.
struct Worker {
    OSThread thread;
    std::atomic<unsigned> timeout{tenthOfASecond};
    milliseconds workTime{0};
    std::atomic<bool> started{false};
    std::atomic<int> pieces{0};
    std::atomic<int> results{0};
    std::atomic<bool> afterLeave{false};

    static void run(void* argument) {
        auto& self = *static_cast<Worker*>(argument);
        self.results |= self.thread.threadHasStarted();
        self.started = true;
        do {
            std::this_thread::sleep_for(self.workTime);
            ++self.pieces;
        } while (!self.thread.isRequestedToStop(self.timeout));
        self.results |= self.thread.threadIsStopping();
        self.thread.leave();
        self.afterLeave = true;
    }

    int create() { return thread.create(910, run, this, 0); }
};

TEST(OSThreadTest, EndsAWorkerThatWaits) {
    Worker worker;
    const int id = worker.create();
    EXPECT_NE(id, -1);
    waitFor(worker.started);
    EXPECT_EQ(worker.thread.destroy(), 0);
    EXPECT_GE(worker.pieces, 1);
    EXPECT_EQ(worker.results, 0);
    EXPECT_FALSE(worker.afterLeave);
    EXPECT_EQ(osJoinThread(id), ESRCH);
}

TEST(OSThreadTest, LetsAPieceOfWorkEndFirst) {
    Worker worker;
    worker.workTime = milliseconds(100);
    worker.create();
    waitFor(worker.started);
    EXPECT_EQ(worker.pieces, 0);
    EXPECT_EQ(worker.thread.destroy(), 0);
    EXPECT_EQ(worker.pieces, 1);
}

TEST(OSThreadTest, RunsOnUntilItIsAskedToStop) {
    Worker worker;
    worker.timeout = 1000000;
    worker.create();
    while (worker.pieces < 20) std::this_thread::yield();
    // Nearly all of the time the worker waits: a request that is lost in the moment between a
    // time-out and the next wait would hang here for ever, so the last wait is made long.
    worker.timeout = 900000000;
    const int seen = worker.pieces;
    while (worker.pieces < seen + 2) std::this_thread::yield();
    EXPECT_EQ(worker.thread.destroy(), 0);
}

TEST(OSThreadTest, ServesManyWorkersAtOnce) {
    std::vector<std::unique_ptr<Worker>> workers;
    for (int i = 0; i < 50; ++i) {
        workers.push_back(std::make_unique<Worker>());
        workers.back()->timeout = 900000000;
        EXPECT_NE(workers.back()->create(), -1);
    }
    for (const auto& worker : workers) {
        waitFor(worker->started);
        EXPECT_EQ(worker->thread.destroy(), 0);
        EXPECT_EQ(worker->results, 0);
    }
}

TEST(OSThreadTest, StopsAWorkerThatHasEndedOfItsOwnAccord) {
    std::atomic<bool> ran{false};
    OSThread thread;
    EXPECT_NE(thread.create(910, set, &ran, 0), -1);
    waitFor(ran);
    EXPECT_EQ(thread.destroy(), 0);
    EXPECT_EQ(thread.destroy(), ESRCH);
}

TEST(OSThreadTest, GivesTheJoinsErrorAfterAFailedCreate) {
    kfl_test::clearEvents();
    OSThread thread;
    EXPECT_EQ(thread.create(5, nullptr, nullptr, 0), -1);
    EXPECT_EQ(kfl_test::events(),
              (std::vector<kfl_test::Event>{{3, 5, 0, 0, "Can't create thread"}}));
    EXPECT_EQ(thread.destroy(), ESRCH);
}

TEST(OSThreadTest, NeedsNoWorker) { const OSThread thread; }

// The wait, on a thread of its own choice: this one.

TEST(OSThreadTest, WaitsUntilTheTimeIsUp) {
    OSThread thread;
    thread.threadHasStarted();
    for (const unsigned timeout : {tenthOfASecond, 1000000U, 500000000U}) {
        const auto start = Clock::now();
        EXPECT_FALSE(thread.isRequestedToStop(timeout));
        // The clock of the wait is another one than that of the test.
        EXPECT_GE(since(start) + milliseconds(5), milliseconds(timeout / 1000000));
        EXPECT_LT(since(start), milliseconds(timeout / 1000000 + 5000));
    }
    EXPECT_FALSE(thread.isRequestedToStop(0));
    thread.threadIsStopping();
}

TEST(OSThreadTest, RefusesTwoSecondsAndMoreAtOnce) {
    OSThread thread;
    thread.threadHasStarted();
    for (const unsigned timeout : {2000000000U, 2147483647U, 2147483648U, 3000000000U, UINT_MAX}) {
        const auto start = Clock::now();
        EXPECT_FALSE(thread.isRequestedToStop(timeout)) << timeout;
        EXPECT_LT(since(start), milliseconds(1000)) << timeout;
    }
    thread.threadIsStopping();
}

struct Waiter {
    OSThread thread;
    std::atomic<bool> ready{false};
    bool requested = false;
    Clock::duration waited{};

    static void run(void* argument) {
        auto& self = *static_cast<Waiter*>(argument);
        self.thread.threadHasStarted();
        self.ready = true;
        const auto start = Clock::now();
        self.requested = self.thread.isRequestedToStop(990000000);
        self.waited = Clock::now() - start;
        self.thread.threadIsStopping();
        self.thread.leave();
    }
};

TEST(OSThreadTest, TellsARequestFromATimeOut) {
    Waiter waiter;
    waiter.thread.create(910, Waiter::run, &waiter, 0);
    waitFor(waiter.ready);
    EXPECT_EQ(waiter.thread.destroy(), 0);
    EXPECT_TRUE(waiter.requested);
    EXPECT_LT(waiter.waited, milliseconds(990));
}

// The mutex is free while the worker waits and before it starts, and taken while it works.
TEST(OSThreadTest, HoldsTheMutexExceptWhileItWaits) {
    OSThread thread;
    EXPECT_EQ(thread.threadHasStarted(), 0);
    std::atomic<bool> entered{false};
    std::thread other([&] {
        thread.threadHasStarted();
        entered = true;
        thread.threadIsStopping();
    });
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_FALSE(entered);
    while (!entered) thread.isRequestedToStop(10000000);
    other.join();
    EXPECT_EQ(thread.threadIsStopping(), 0);
}

}  // namespace
