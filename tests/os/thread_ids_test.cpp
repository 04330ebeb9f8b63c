// Thread ids by themselves: given, found, taken back, and nothing left behind.
#include "os/thread_ids.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include "tests/support/seed.h"

namespace {

// Joins of handles that never were threads: their results, and what is going on meanwhile.
int joinResult = 0;
void (*duringJoin)() = nullptr;
long records = 0;

}  // namespace

extern "C" {

int __wrap_pthread_join(pthread_t, void**) {
    if (duringJoin) duringJoin();
    return joinResult;
}

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
    ++records;
    return __real_malloc(size);
}

void __real_free(void* memory);
void __wrap_free(void* memory) {
    if (memory) --records;
    __real_free(memory);
}

}  // extern "C"

namespace {

using kfl::detail::enterThread;
using kfl::detail::lastThreadId;
using kfl::detail::ThreadClaim;
using kfl::detail::ThreadRecord;

constexpr bool idsAreHandles = sizeof(pthread_t) == sizeof(int);

pthread_t handleOf(unsigned number) {
    pthread_t handle{};
    std::memcpy(&handle, &number, sizeof number);
    return handle;
}

int enter(unsigned number) {
    auto* const record = static_cast<ThreadRecord*>(__wrap_malloc(sizeof(ThreadRecord)));
    record->handle = handleOf(number);
    return enterThread(record);
}

int join(int id) {
    ThreadClaim claim(id);
    return claim.error() != 0 ? claim.error() : claim.join();
}

class ThreadIdsTest : public testing::Test {
  protected:
    ThreadIdsTest() {
        joinResult = 0;
        duringJoin = nullptr;
        lastThreadId = 0;
        records = 0;
    }
    // Every test joins what it entered.
    ~ThreadIdsTest() override { EXPECT_EQ(records, 0); }
};

TEST_F(ThreadIdsTest, AreHandlesOrCountUpFromOne) {
    const std::vector<int> ids = {enter(0xb7001000), enter(0xb6800000), enter(7)};
    EXPECT_EQ(ids, idsAreHandles ? (std::vector<int>{static_cast<int>(0xb7001000),
                                                     static_cast<int>(0xb6800000), 7})
                                 : (std::vector<int>{1, 2, 3}));
    for (const int id : ids) EXPECT_EQ(join(id), 0);
}

TEST_F(ThreadIdsTest, BeginAgainAtTheEndAndLeaveOutWhatIsInUse) {
    const int one = enter(1);
    const int two = enter(2);
    lastThreadId = INT_MAX - 1;
    const std::vector<int> ids = {enter(3), enter(4), enter(5)};
    if (!idsAreHandles) {
        EXPECT_EQ(ids, (std::vector<int>{INT_MAX, 3, 4}));
    }
    for (const int id : ids) EXPECT_EQ(join(id), 0);
    EXPECT_EQ(join(one), 0);
    EXPECT_EQ(join(two), 0);
}

TEST_F(ThreadIdsTest, AreNotGivenAgainSoon) {
    const int first = enter(1);
    EXPECT_EQ(join(first), 0);
    const int second = enter(2);
    EXPECT_EQ(join(first), ESRCH);
    EXPECT_EQ(join(second), 0);
}

TEST_F(ThreadIdsTest, StayAfterAJoinThatFailed) {
    const int id = enter(1);
    for (const int error : {EDEADLK, EINVAL, ESRCH}) {
        joinResult = error;
        EXPECT_EQ(join(id), error);
    }
    joinResult = 0;
    EXPECT_EQ(join(id), 0);
    EXPECT_EQ(join(id), ESRCH);
}

TEST_F(ThreadIdsTest, StayWhenAClaimIsGivenUp) {
    const int id = enter(1);
    {
        const ThreadClaim claim(id);
        EXPECT_EQ(claim.error(), 0);
        EXPECT_EQ(ThreadClaim(id).error(), EINVAL);
    }
    EXPECT_EQ(join(id), 0);
}

// Where ids are handles, the system can give one to a new thread before the join of its old owner
// has returned: both are there then, and the id means the new one.
TEST_F(ThreadIdsTest, BelongToTheNewThreadWhileTheOldJoinReturns) {
    static int second;
    const int first = enter(5);
    duringJoin = [] {
        duringJoin = nullptr;
        second = enter(5);
    };
    EXPECT_EQ(join(first), 0);
    if (idsAreHandles) {
        EXPECT_EQ(second, first);
    }
    EXPECT_EQ(join(second), 0);
    EXPECT_EQ(join(second), ESRCH);
}

TEST_F(ThreadIdsTest, MeanTheThreadThatNobodyIsJoining) {
    const int first = enter(5);
    {
        const ThreadClaim claim(first);
        if (idsAreHandles) {
            EXPECT_EQ(join(enter(5)), 0);
        }
        EXPECT_EQ(ThreadClaim(first).error(), EINVAL);
    }
    EXPECT_EQ(join(first), 0);
}

TEST_F(ThreadIdsTest, HaveNoLimit) {
    std::vector<int> ids;
    for (unsigned i = 0; i < 10000; ++i) ids.push_back(enter(0x1000 * (i + 1)));
    for (const int id : ids) EXPECT_EQ(ThreadClaim(id).error(), 0);
    std::shuffle(ids.begin(), ids.end(), kfl_test::Random().engine());
    for (const int id : ids) ASSERT_EQ(join(id), 0);
}

TEST_F(ThreadIdsTest, AgreeWithAModel) {
    kfl_test::Random random;
    std::vector<int> known;
    std::vector<int> gone;
    for (unsigned step = 1; step < 20000; ++step) {
        if (known.empty() || random.oneIn(2)) {
            const int id = enter(0x1000 * step);
            ASSERT_EQ(std::count(known.begin(), known.end(), id), 0);
            known.push_back(id);
        } else {
            const auto place =
                known.begin() + random.between(0, static_cast<int>(known.size()) - 1);
            joinResult = random.oneIn(3) ? EDEADLK : 0;
            ASSERT_EQ(join(*place), joinResult);
            if (joinResult == 0) {
                gone.push_back(*place);
                known.erase(place);
            }
        }
        joinResult = 0;
        if (!gone.empty()) {
            ASSERT_EQ(join(gone[random.below(static_cast<unsigned>(gone.size()))]), ESRCH);
        }
        ASSERT_EQ(records, static_cast<long>(known.size()));
    }
    for (const int id : known) EXPECT_EQ(join(id), 0);
}

}  // namespace
