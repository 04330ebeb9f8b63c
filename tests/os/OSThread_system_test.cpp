// Threads call by call: attributes, deadlines and failures of the system.
#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/time.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "kfl/OSThread.h"
#include "tests/support/marked_parms.h"
#include "tests/support/recording_host.h"

namespace {

std::vector<std::string> calls;
int createResult = 0;
bool allocationFails = false;
int waitResult = 0;
timeval now = {};
timespec deadline = {};
void* (*createdRoutine)(void*) = nullptr;
void* createdArgument = nullptr;

}  // namespace

extern "C" {

int __wrap_pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
    calls.emplace_back(attributes ? "create with attributes" : "create");
    createdRoutine = routine;
    createdArgument = argument;
    std::memset(handle, 1, sizeof *handle);
    return createResult;
}

int __wrap_pthread_join(pthread_t, void** value) {
    calls.emplace_back(value ? "join for a value" : "join");
    return 0;
}

int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
    calls.emplace_back(attributes ? "mutex with attributes" : "mutex");
    return __real_pthread_mutex_init(mutex, attributes);
}

int __real_pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes);
int __wrap_pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) {
    calls.emplace_back(attributes ? "condition with attributes" : "condition");
    return __real_pthread_cond_init(condition, attributes);
}

int __real_pthread_mutex_destroy(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex) {
    calls.emplace_back("destroy mutex");
    return __real_pthread_mutex_destroy(mutex);
}

int __real_pthread_cond_destroy(pthread_cond_t* condition);
int __wrap_pthread_cond_destroy(pthread_cond_t* condition) {
    calls.emplace_back("destroy condition");
    return __real_pthread_cond_destroy(condition);
}

int __real_pthread_cond_signal(pthread_cond_t* condition);
int __wrap_pthread_cond_signal(pthread_cond_t* condition) {
    calls.emplace_back("signal");
    return __real_pthread_cond_signal(condition);
}

// The locks that the library itself keeps are none of this test's.
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    calls.emplace_back("lock");
    return __real_pthread_mutex_lock(mutex);
}

int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    calls.emplace_back("unlock");
    return __real_pthread_mutex_unlock(mutex);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec* until) {
    calls.emplace_back("wait");
    deadline = *until;
    return waitResult;
}

int __wrap_gettimeofday(timeval* time, void*) {
    *time = now;
    return 0;
}

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) { return allocationFails ? nullptr : __real_malloc(size); }

}  // extern "C"

namespace {

using kfl::OSThread;
using kfl_test::Event;
using Calls = std::vector<std::string>;

void entry(void*) {}

class OSThreadSystemTest : public testing::Test {
  protected:
    OSThreadSystemTest() {
        createResult = waitResult = 0;
        allocationFails = false;
        kfl_test::clearEvents();
        calls.clear();
    }
};

TEST_F(OSThreadSystemTest, CreatesWithDefaultAttributesTheEntryAndTheArgument) {
    int argument = 0;
    const int id = kfl::osCreateThread(910, entry, &argument, 3);
    EXPECT_EQ(calls[0], "create");
    EXPECT_TRUE(reinterpret_cast<void (*)()>(createdRoutine) ==
                reinterpret_cast<void (*)()>(entry));
    EXPECT_EQ(createdArgument, &argument);
    calls.clear();
    EXPECT_EQ(kfl::osJoinThread(id), 0);
    EXPECT_EQ(calls, (Calls{"lock", "unlock", "join", "lock", "unlock"}));
}

TEST_F(OSThreadSystemTest, ReportsAThreadThatCannotBeCreatedWithTheCallersGroup) {
    for (const int group : {910, 0, -3}) {
        for (const int error : {EAGAIN, EPERM}) {
            kfl_test::clearEvents();
            createResult = error;
            EXPECT_EQ(kfl::osCreateThread(group, entry, nullptr, 0), -1);
            EXPECT_EQ(kfl_test::events(),
                      (std::vector<Event>{{3, group, 0, 0, "Can't create thread"}}));
        }
    }
}

TEST_F(OSThreadSystemTest, LetsTheHostMakeTheTextOfItsReport) {
    const kfl_test::MarkedParms marked;
    createResult = EAGAIN;
    EXPECT_EQ(kfl::osCreateThread(910, entry, nullptr, 0), -1);
    const std::string text = kfl_test::made("Can't create thread", "Can't create thread");
    EXPECT_EQ(kfl_test::events(), (std::vector<Event>{{3, 910, 0, 0, text}}));
}

TEST_F(OSThreadSystemTest, CreatesNoThreadThatItCouldNotRemember) {
    allocationFails = true;
    const int id = kfl::osCreateThread(910, entry, nullptr, 0);
    allocationFails = false;
    EXPECT_EQ(id, -1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "create"), 0);
    EXPECT_EQ(kfl_test::events(), (std::vector<Event>{{3, 910, 0, 0, "Can't create thread"}}));
}

TEST_F(OSThreadSystemTest, InitialisesWithDefaultAttributesAndDestroysInReverse) {
    { const OSThread thread; }
    EXPECT_EQ(calls, (Calls{"mutex", "condition", "destroy condition", "destroy mutex"}));
}

TEST_F(OSThreadSystemTest, SignalsUnderTheMutexThenJoins) {
    OSThread thread;
    thread.create(910, entry, nullptr, 0);
    calls.clear();
    EXPECT_EQ(thread.destroy(), 0);
    EXPECT_EQ(calls,
              (Calls{"lock", "signal", "unlock", "lock", "unlock", "join", "lock", "unlock"}));
}

TEST_F(OSThreadSystemTest, TakesAnyFailureOfTheWaitForNoRequest) {
    OSThread thread;
    for (const int result : {0, ETIMEDOUT, EINVAL, EPERM}) {
        waitResult = result;
        EXPECT_EQ(thread.isRequestedToStop(1), result == 0) << result;
    }
}

struct DeadlineRow {
    long microseconds;
    unsigned timeout;
    // What the deadline becomes: seconds after this one, and nanoseconds as a signed number.
    int seconds;
    int nanoseconds;
};

// 4,294,967,296 is where 32 bits wrap and 2,147,483,648 where a signed number turns negative.
const DeadlineRow deadlines[] = {
    {0, 0, 0, 0},
    {0, 1, 0, 1},
    {999999, 0, 0, 999999000},
    {999999, 999, 0, 999999999},
    {999999, 1000, 1, 0},
    {500000, 499999999, 0, 999999999},
    {500000, 500000000, 1, 0},
    {0, 999999999, 0, 999999999},
    {0, 1000000000, 1, 0},
    {999999, 1000000000, 1, 999999000},
    // From here on it depends on the microseconds whether the deadline is one.
    {0, 1000000001, 1, 1},
    {999999, 1000000001, 1, 999999001},
    {999999, 1000001000, 1, 1000000000},
    {0, 1500000000, 1, 500000000},
    {499999, 1500000000, 1, 999999000},
    {500000, 1500000000, 1, 1000000000},
    {647483, 1500000000, 1, 1147483000},
    {647484, 1500000000, 0, -2147483296},
    {0, 1999999999, 1, 999999999},
    {0, 2000000000, 1, 1000000000},
    {147483, 2000000000, 1, 1147483000},
    {147484, 2000000000, 0, -2147483296},
    {0, 2147483647, 1, 1147483647},
    {0, 2147483648U, 0, INT_MIN},
    {999999, 2147483648U, 0, -1147484648},
    {999999, 3000000000U, 0, -294968296},
    {0, 4294967295U, 0, -1},
    // A sum that wraps is a time gone by.
    {1, 4294967295U, 0, 999},
    {999999, 4294967295U, 0, 999998999},
    {900000, 3500000000U, 0, 105032704},
};

TEST_F(OSThreadSystemTest, AddsTheTimeInThirtyTwoBitsWithOneCorrection) {
    OSThread thread;
    for (const DeadlineRow& row : deadlines) {
        now = {};
        now.tv_sec = 1000;
        now.tv_usec = row.microseconds;
        thread.isRequestedToStop(row.timeout);
        EXPECT_EQ(deadline.tv_sec, 1000 + row.seconds) << row.microseconds << ' ' << row.timeout;
        EXPECT_EQ(deadline.tv_nsec, row.nanoseconds) << row.microseconds << ' ' << row.timeout;
    }
}

}  // namespace
