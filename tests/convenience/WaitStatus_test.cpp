#include "kfl/convenience/WaitStatus.h"
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "kfl/process.h"

namespace {

using kfl::WaitStatus;

TEST(WaitStatusTest, OfAProgramThatExited) {
    const WaitStatus end(kfl::osSystem("exit 3"));
    EXPECT_TRUE(end.isKnown());
    EXPECT_TRUE(end.exited());
    EXPECT_EQ(end.code(), 3);
    EXPECT_FALSE(end.succeeded());
    EXPECT_FALSE(end.wasKilled());
    EXPECT_EQ(end.signal(), 0);
    EXPECT_EQ(end.raw(), 768);
    EXPECT_TRUE(WaitStatus(kfl::osSystem("true")).succeeded());
}

TEST(WaitStatusTest, OfAProgramThatASignalEnded) {
    const WaitStatus end(kfl::osSystem("kill -KILL $$"));
    EXPECT_TRUE(end.isKnown());
    EXPECT_TRUE(end.wasKilled());
    EXPECT_EQ(end.signal(), SIGKILL);
    EXPECT_FALSE(end.exited());
    EXPECT_EQ(end.code(), -1);
    EXPECT_FALSE(end.succeeded());
}

TEST(WaitStatusTest, OfAProgramThatIsNone) {
    const WaitStatus end(kfl::osCreateProcess("/no/such/program", true, nullptr));
    EXPECT_EQ(end.code(), 127);
}

TEST(WaitStatusTest, OfNoProcessAtAll) {
    const WaitStatus end(kfl::osSystem(nullptr));
    EXPECT_FALSE(end.isKnown());
    EXPECT_FALSE(end.exited());
    EXPECT_FALSE(end.wasKilled());
    EXPECT_FALSE(end.succeeded());
    EXPECT_EQ(end.code(), -1);
    EXPECT_EQ(end.signal(), 0);
}

TEST(WaitStatusTest, OfAProcessThatWasStoppedIsNoEnd) {
    const pid_t child = fork();
    if (child == 0) {
        raise(SIGSTOP);
        _exit(0);
    }
    int raw = 0;
    ASSERT_EQ(waitpid(child, &raw, WUNTRACED), child);
    const WaitStatus stopped(raw);
    EXPECT_TRUE(stopped.isKnown());
    EXPECT_FALSE(stopped.exited());
    EXPECT_FALSE(stopped.wasKilled());
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, &raw, 0), child);
    EXPECT_EQ(WaitStatus(raw).signal(), SIGKILL);
}

}  // namespace
