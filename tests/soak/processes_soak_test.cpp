// Processes, one after the other and some at once.
#include <gtest/gtest.h>

#include "kfl/process.h"
#include "tests/os/children.h"
#include "tests/soak/soak.h"

namespace {

TEST(ProcessesSoak, StartedAndWaitedFor) {
    kfl_test::clearEvents();
    kfl_test::soak("processes started and waited for", kfl_test::rounds(200), 1, [] {
        EXPECT_EQ(kfl::osCreateProcess("/bin/true", true, nullptr), 0);
        kfl_test::clearEvents();
    });
}

TEST(ProcessesSoak, StartedTogetherAndEnded) {
    kfl_test::soak("processes started, four at once, and ended", kfl_test::rounds(10), 4, [] {
        int pids[4];
        for (int& pid : pids) pid = kfl::osCreateProcess("/bin/sleep 100", false, "/dev/null");
        for (const int pid : pids) EXPECT_EQ(kfl::osKillProcess(pid), pid);
        kfl_test::clearEvents();
    });
}

}  // namespace
