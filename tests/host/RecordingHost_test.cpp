// The host that keeps what the library reports, as the tests of a host use it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "kfl/Host.h"
#include "kfl/process.h"
#include "tests/support/recording_host.h"

namespace {

using kfl::recording::clearEvents;
using kfl::recording::Event;
using kfl::recording::events;
using kfl::recording::setEventHook;
using kfl::recording::setEventResult;
using kfl::recording::waitForEvents;

// Before any test has set another one.
const int resultAtStart = genSyslogEvent(3, 0, 0, 0, "");

class RecordingHostTest : public testing::Test {
  protected:
    RecordingHostTest() { clearEvents(); }
    ~RecordingHostTest() override {
        setEventHook(nullptr);
        setEventResult(0);
        clearEvents();
    }
};

TEST_F(RecordingHostTest, EventsHaveTheResultZeroAtFirst) { EXPECT_EQ(resultAtStart, 0); }

TEST_F(RecordingHostTest, KeepsClassNumbersAndTextInOrder) {
    genSyslogEvent(3, 1, 2, 4, "first");
    genSyslogEvent(7, -1, 0, 99, "");
    EXPECT_EQ(events(), (std::vector<Event>{{3, 1, 2, 4, "first"}, {7, -1, 0, 99, ""}}));
    EXPECT_NE(events()[0], events()[1]);
}

TEST_F(RecordingHostTest, EventsDifferInEachField) {
    const Event event{3, 1, 2, 4, "text"};
    EXPECT_EQ(event, (Event{3, 1, 2, 4, "text"}));
    for (const Event& other :
         {Event{4, 1, 2, 4, "text"}, Event{3, 2, 2, 4, "text"}, Event{3, 1, 3, 4, "text"},
          Event{3, 1, 2, 5, "text"}, Event{3, 1, 2, 4, "Text"}}) {
        EXPECT_NE(event, other);
    }
}

TEST_F(RecordingHostTest, ATextIsCopiedAndNullIsEmpty) {
    char text[] = "before";
    genSyslogEvent(3, 0, 0, 0, text);
    text[0] = 'B';
    genSyslogEvent(3, 0, 0, 0, nullptr);
    EXPECT_EQ(events()[0].text, "before");
    EXPECT_EQ(events()[1].text, "");
}

TEST_F(RecordingHostTest, ClearingForgetsAll) {
    genSyslogEvent(3, 0, 0, 0, "gone");
    clearEvents();
    EXPECT_TRUE(events().empty());
    genSyslogEvent(3, 0, 0, 0, "new");
    EXPECT_EQ(events().size(), 1U);
}

TEST_F(RecordingHostTest, KeepsWhatTheLibraryReports) {
    setEventResult(42);
    EXPECT_EQ(kfl::osKillProcess(0), 42);
    const std::vector<Event> reported = events();
    ASSERT_EQ(reported.size(), 2U);
    EXPECT_EQ(reported[0].priority, 7);
    EXPECT_EQ(reported[0].group, 900);
    EXPECT_EQ(reported[1].priority, 3);
}

TEST_F(RecordingHostTest, FormatsTextsPerThread) {
    char* const mine = Parms("%d %s", 1, "one");
    std::thread([] { Parms("another"); }).join();
    EXPECT_STREQ(mine, "1 one");
    EXPECT_EQ(std::string(Parms("%5000s", "x")).size(), 4095U);
    EXPECT_STREQ(applicationName, "test");
}

TEST_F(RecordingHostTest, WaitsUntilThereAreEnough) {
    EXPECT_TRUE(waitForEvents(0, 0));
    EXPECT_FALSE(waitForEvents(1, 0));
    EXPECT_FALSE(waitForEvents(1, -5));
    genSyslogEvent(3, 0, 0, 0, "first");
    EXPECT_TRUE(waitForEvents(1, 0));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(waitForEvents(2, 60));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(60));
    std::thread later([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        genSyslogEvent(3, 0, 0, 0, "second");
    });
    EXPECT_TRUE(waitForEvents(2, 20000));
    later.join();
}

TEST_F(RecordingHostTest, NoEventOfManyThreadsIsLost) {
    constexpr int threads = 4;
    constexpr int each = 250;
    std::vector<std::thread> reporters;
    for (int t = 0; t < threads; ++t) {
        reporters.emplace_back([t] {
            for (int i = 0; i < each; ++i) genSyslogEvent(7, t, i, 0, Parms("%d of %d", i, t));
        });
    }
    EXPECT_TRUE(waitForEvents(threads * each, 20000));
    for (std::thread& reporter : reporters) reporter.join();
    // Each thread's own events are in its order.
    int next[threads] = {};
    for (const Event& event : events()) {
        int& expected = next[event.group];
        EXPECT_EQ(event.text, std::to_string(expected) + " of " + std::to_string(event.group));
        EXPECT_EQ(event.index, expected++);
    }
    for (const int count : next) EXPECT_EQ(count, each);
}

TEST_F(RecordingHostTest, AHookSeesEachEventBeforeItIsKept) {
    static std::vector<std::string> seen;
    setEventHook([](const Event& event) {
        EXPECT_TRUE(events().empty());
        seen.push_back(event.text);
    });
    genSyslogEvent(3, 0, 0, 0, "hooked");
    setEventHook(nullptr);
    genSyslogEvent(3, 0, 0, 0, "not hooked");
    EXPECT_EQ(seen, std::vector<std::string>{"hooked"});
    EXPECT_EQ(events().size(), 2U);
}

// A child forked while another thread reports can report itself, and its parent does not see it.
TEST_F(RecordingHostTest, AForkedChildReportsIntoItsOwnCopy) {
    std::atomic<bool> ends{false};
    std::thread busy([&ends] {
        while (!ends) {
            genSyslogEvent(7, 0, 0, 0, "busy");
            clearEvents();
        }
    });
    for (int i = 0; i < 200; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            clearEvents();
            genSyslogEvent(3, 0, 0, 0, "child");
            _exit(events().size() == 1 && events()[0].text == "child" ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        if (status != 0) break;
    }
    ends = true;
    busy.join();
    EXPECT_TRUE(events().empty());
}

}  // namespace
