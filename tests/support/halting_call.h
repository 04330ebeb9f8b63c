// Watches a call that must never return and must not burn the processor.
//
//     kfl_test::HaltingCall call([] { text.replace('a', 'a'); });
//     EXPECT_TRUE(call.stillRuns());
//     EXPECT_LT(call.processorMilliseconds(), 100);
#ifndef KFL_TESTS_HALTING_CALL_H
#define KFL_TESTS_HALTING_CALL_H

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace kfl_test {

// Makes the call in a child of this process at once, and ends the child when asked for the result:
// several calls can be watched at the same time.
class HaltingCall {
  public:
    // The child that is still in the call when the time has come ends with this status.
    static constexpr int neverReturned = 17;
    // How long the child is watched.
    static constexpr unsigned int milliseconds = 500;

    template <class Call>
    explicit HaltingCall(Call call) {
        std::fflush(nullptr);
        child_ = fork();
        if (child_ == 0) {
            signal(SIGTERM, endFromCall);
            call();
            _exit(0);
        }
    }
    ~HaltingCall() { finish(); }
    HaltingCall(const HaltingCall&) = delete;
    HaltingCall& operator=(const HaltingCall&) = delete;

    // Whether the child was still in its call after the time.
    bool stillRuns() {
        finish();
        return WIFEXITED(status_) && WEXITSTATUS(status_) == neverReturned;
    }
    // What the child used of the processor until then.
    long processorMilliseconds() {
        finish();
        return used_;
    }

  private:
    static void endFromCall(int /*signal*/) {
#ifdef KFL_COVERAGE
        // An ordinary exit, which writes what the child ran.
        std::exit(neverReturned);
#else
        _exit(neverReturned);
#endif
    }

    // Asked for while the child is in its call: its end may take longer, with a sanitizer, say.
    static long processorMillisecondsOf(pid_t child) {
        clockid_t clock{};
        timespec used{};
        EXPECT_EQ(clock_getcpuclockid(child, &clock), 0);
        EXPECT_EQ(clock_gettime(clock, &used), 0);
        return static_cast<long>(used.tv_sec) * 1000 + static_cast<long>(used.tv_nsec) / 1000000;
    }

    void finish() {
        if (child_ < 0) return;
        std::this_thread::sleep_until(begin_ + std::chrono::milliseconds(milliseconds));
        used_ = processorMillisecondsOf(child_);
        kill(child_, SIGTERM);
        EXPECT_EQ(waitpid(child_, &status_, 0), child_);
        child_ = -1;
    }

    pid_t child_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    int status_ = 0;
    long used_ = 0;
};

}  // namespace kfl_test

#endif
