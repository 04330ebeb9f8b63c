// The wait table by itself: every claim, delivery and release, entry by entry.
#include "os/wait_table.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "kfl/process.h"

namespace {

using kfl::detail::waitTable;
using Entries = std::vector<std::pair<int, int>>;

Entries entries() {
    Entries found;
    for (const auto& entry : waitTable) found.emplace_back(entry.waitPid, entry.waitStatus);
    return found;
}

void setEntries(const Entries& wanted) {
    ASSERT_EQ(wanted.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) waitTable[i] = {wanted[i].first, wanted[i].second};
}

// Before any other test has touched it.
const Entries atStart = entries();

TEST(WaitTableTest, StartsWithFiveFreeEntriesOfStatusZero) {
    EXPECT_EQ(atStart, Entries(5, {-1, 0}));
}

TEST(WaitTableTest, ClaimsEveryFreeEntryWithoutAStatus) {
    setEntries(Entries(5, {-1, 0}));
    kfl::detail::claimWaitEntries(40);
    EXPECT_EQ(entries(), Entries(5, {40, -1}));
}

TEST(WaitTableTest, ClaimsNothingThatIsClaimed) {
    setEntries({{7, 1}, {-1, 2}, {8, -1}, {-1, -1}, {40, 3}});
    kfl::detail::claimWaitEntries(40);
    EXPECT_EQ(entries(), (Entries{{7, 1}, {40, -1}, {8, -1}, {40, -1}, {40, 3}}));
}

TEST(WaitTableTest, FreesEveryEntryOfAPidAndKeepsTheStatuses) {
    setEntries({{7, 1}, {40, 2}, {8, -1}, {40, -1}, {-1, 3}});
    kfl::detail::freeWaitEntries(40);
    EXPECT_EQ(entries(), (Entries{{7, 1}, {-1, 2}, {8, -1}, {-1, -1}, {-1, 3}}));
}

TEST(WaitTableTest, TakesTheFirstDeliveredStatusAndFreesItsEntryOnly) {
    setEntries({{7, 1}, {40, -1}, {40, 512}, {40, 768}, {-1, 3}});
    int status = 0;
    EXPECT_TRUE(kfl::detail::takeDeliveredStatus(40, status));
    EXPECT_EQ(status, 512);
    EXPECT_EQ(entries(), (Entries{{7, 1}, {40, -1}, {-1, 512}, {40, 768}, {-1, 3}}));
}

TEST(WaitTableTest, TakesNoStatusWhereNoneWasDelivered) {
    const Entries before = {{7, 1}, {40, -1}, {40, -1}, {8, 2}, {-1, 3}};
    setEntries(before);
    int status = 5;
    EXPECT_FALSE(kfl::detail::takeDeliveredStatus(40, status));
    EXPECT_FALSE(kfl::detail::takeDeliveredStatus(41, status));
    EXPECT_EQ(status, 5);
    EXPECT_EQ(entries(), before);
}

TEST(WaitTableTest, DeliversToTheFirstEntryOfAPid) {
    setEntries({{7, 1}, {40, -1}, {40, -1}, {8, 2}, {-1, 3}});
    EXPECT_TRUE(kfl::osStatusReceived(40, 256));
    EXPECT_EQ(entries(), (Entries{{7, 1}, {40, 256}, {40, -1}, {8, 2}, {-1, 3}}));
    EXPECT_TRUE(kfl::osStatusReceived(40, 512));
    EXPECT_EQ(entries(), (Entries{{7, 1}, {40, 512}, {40, -1}, {8, 2}, {-1, 3}}));
    EXPECT_TRUE(kfl::osStatusReceived(7, -1));
    EXPECT_EQ(entries(), (Entries{{7, -1}, {40, 512}, {40, -1}, {8, 2}, {-1, 3}}));
}

TEST(WaitTableTest, DeliversToTheSmallestPid) {
    setEntries({{-1, 0}, {1, -1}, {-1, 0}, {-1, 0}, {-1, 0}});
    EXPECT_TRUE(kfl::osStatusReceived(1, 256));
    EXPECT_EQ(entries(), (Entries{{-1, 0}, {1, 256}, {-1, 0}, {-1, 0}, {-1, 0}}));
}

TEST(WaitTableTest, DeliversNothingToFreeEntriesAndStrangers) {
    const Entries before = {{7, 1}, {-1, 0}, {0, -1}, {-5, 2}, {-1, 3}};
    setEntries(before);
    for (const int pid : {-1, 0, -5, 8}) EXPECT_FALSE(kfl::osStatusReceived(pid, 256)) << pid;
    EXPECT_EQ(entries(), before);
}

// A signal handler may call it: whatever it finds, the interrupted code's errno is as before.
TEST(WaitTableTest, ADeliveryLeavesErrnoAlone) {
    for (const int error : {0, EINTR, ECHILD, ESRCH}) {
        for (const int pid : {40, 41, 0, -1}) {
            setEntries({{40, -1}, {-1, 0}, {-1, 0}, {-1, 0}, {-1, 0}});
            errno = error;
            const bool delivered = kfl::osStatusReceived(pid, 256);
            const int after = errno;
            EXPECT_EQ(delivered, pid == 40);
            EXPECT_EQ(after, error) << pid;
        }
    }
}

}  // namespace
