// The timed receive, through both of its interfaces and on low and high descriptors.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/un.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"
#include "tests/net/peer.h"

namespace {

using namespace std::chrono_literals;
using namespace kfl_test;

constexpr int highDescriptor = 3000;
// No machine is so busy that it takes this long.
constexpr auto farTooLong = 60s;

enum class Layer { functions, classes };

struct Way {
    const char* name;
    Layer layer;
    int lowestDescriptor;
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

// A host's own kind of socket, around any descriptor.
class AnySocket : public CommunicationSocket {
  public:
    AnySocket() : CommunicationSocket(AF_INET, SOCK_DGRAM, 0, 0) {}
    bool bind() override { return true; }
};

class ReceiveTest : public testing::TestWithParam<Way> {
  protected:
    void SetUp() override {
        bound_ = loopbackSocket();
        address_ = nameOf(bound_);
        watch(bound_);
        ASSERT_GE(watched_.get(), GetParam().lowestDescriptor);
    }

    // Receives on this one from now on, at a number as the parameter asks for.
    void watch(int other) {
        if (GetParam().layer == Layer::functions) {
            watched_.reset(fcntl(other, F_DUPFD, GetParam().lowestDescriptor));
            return;
        }
        // The class takes the lowest free number: leave it none below.
        std::vector<Descriptor> taken;
        const Descriptor spare(dup(0));
        for (int last = 0; last < GetParam().lowestDescriptor - 1; last = taken.back())
            taken.emplace_back(dup(spare));
        int code = -1;
        object_ = std::make_unique<AnySocket>();
        ASSERT_TRUE(object_->initialize(code));
        watched_.reset(object_->descriptor());
        dup2(other, watched_);
    }

    int receive(void* buffer, int length, timeval& timeOut) {
        code_ = 99;
        if (GetParam().layer == Layer::classes)
            return object_->receive(static_cast<char*>(buffer), length, timeOut, code_);
        return recvFromSocket(watched_, buffer, static_cast<unsigned>(length), &timeOut, &code_);
    }
    int receive(timeval& timeOut) { return receive(buffer_, sizeof buffer_, timeOut); }
    int receive(timeval&& timeOut) { return receive(timeOut); }

    void send(const std::string& text) {
        ASSERT_EQ(sendDatagram(address_, text), static_cast<ssize_t>(text.size()));
    }

    ManyDescriptors many_;
    Descriptor bound_;
    Descriptor watched_;
    std::unique_ptr<AnySocket> object_;
    sockaddr_in address_{};
    char buffer_[70000] = {};
    int code_ = 99;
};

INSTANTIATE_TEST_SUITE_P(Ways, ReceiveTest,
                         testing::Values(Way{"Functions", Layer::functions, 0},
                                         Way{"FunctionsHigh", Layer::functions, highDescriptor},
                                         Way{"Classes", Layer::classes, 0},
                                         Way{"ClassesHigh", Layer::classes, highDescriptor}),
                         [](const auto& way) { return way.param.name; });

TEST_P(ReceiveTest, GivesTheBytesOfADatagramThatIsThere) {
    send("hello");
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(receive(limit), 5);
    EXPECT_EQ(code_, 0);
    EXPECT_STREQ(buffer_, "hello");
    EXPECT_LT(durationOf(limit), 30s) << "as select, it leaves less than there was";
    EXPECT_GT(durationOf(limit), 0s);
}

TEST_P(ReceiveTest, GivesADatagramThatIsThereWhenWaitingForEver) {
    send("hello");
    timeval limit = timeOf(0, 0);
    EXPECT_EQ(receive(limit), 5);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(durationOf(limit), 0s);
}

TEST_P(ReceiveTest, GivesDatagramsOneByOneInOrder) {
    send("first");
    send("second one");
    EXPECT_EQ(receive(timeOf(30, 0)), 5);
    EXPECT_EQ(receive(timeOf(30, 0)), 10);
    EXPECT_STREQ(buffer_, "second one");
}

TEST_P(ReceiveTest, WaitsForALateDatagram) {
    const StopWatch watch;
    const Later sender(100ms, [this] { send("late"); });
    timeval limit = timeOf(300, 0);
    EXPECT_EQ(receive(limit), 4);
    EXPECT_EQ(code_, 0);
    EXPECT_GE(watch.passed(), 100ms);
}

TEST_P(ReceiveTest, WritesTheTimeLeftBack) {
    // A busy machine may start the call so late that there is little to wait for: then again.
    timeval limit{};
    for (int attempt = 0; attempt < 50; ++attempt) {
        const StopWatch watch;
        const Later sender(100ms, [this] { send("late"); });
        limit = timeOf(300, 0);
        ASSERT_EQ(receive(limit), 4);
        ASSERT_GE(durationOf(limit), 300s - watch.passed());
        if (durationOf(limit) < 300s - 50ms) break;
    }
    EXPECT_LT(durationOf(limit), 300s - 50ms);
}

TEST_P(ReceiveTest, WaitsForEverWithAZeroTimeOut) {
    const StopWatch watch;
    const Later sender(120ms, [this] { send("very late"); });
    timeval limit = timeOf(0, 0);
    EXPECT_EQ(receive(limit), 9);
    EXPECT_EQ(code_, 0);
    EXPECT_GE(watch.passed(), 120ms);
    EXPECT_EQ(durationOf(limit), 0s);
}

TEST_P(ReceiveTest, ReturnsZeroWhenTheTimeHasPassed) {
    for (timeval limit : {timeOf(0, 1), timeOf(0, 50000)}) {
        const auto asked = durationOf(limit);
        const StopWatch watch;
        EXPECT_EQ(receive(limit), 0);
        const auto passed = watch.passed();
        EXPECT_EQ(code_, 0);
        EXPECT_GE(passed, asked);
        EXPECT_LT(passed, asked + farTooLong);
        EXPECT_EQ(durationOf(limit), 0s) << "nothing is left";
    }
}

TEST_P(ReceiveTest, SpendsABudgetOnDatagramsThatAreThere) {
    timeval limit = timeOf(1, 3);
    for (int i = 0; i < 4; ++i) {
        send("x");
        ASSERT_EQ(receive(limit), 1);
    }
    EXPECT_LT(durationOf(limit), 1s);
    EXPECT_LT(limit.tv_usec, 1000000);
    EXPECT_GE(limit.tv_usec, 0);
}

TEST_P(ReceiveTest, ReportsAnEmptyDatagramThatIsThere) {
    send("");
    EXPECT_EQ(receive(timeOf(30, 0)), -1);
    EXPECT_EQ(code_, 4);
    EXPECT_EQ(receive(timeOf(0, 1)), 0) << "it has been taken";
}

TEST_P(ReceiveTest, ReportsALateEmptyDatagram) {
    const Later sender(20ms, [this] { send(""); });
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 4);
}

TEST_P(ReceiveTest, DropsWhatDoesNotFit) {
    send("0123456789");
    send("next");
    char small[8] = "*******";
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(receive(small, 4, limit), 4);
    EXPECT_EQ(code_, 0);
    EXPECT_STREQ(small, "0123***") << "nothing is written behind the length";
    EXPECT_EQ(receive(limit), 4);
    EXPECT_STREQ(buffer_, "next");
}

TEST_P(ReceiveTest, TakesALateDatagramThatDoesNotFit) {
    const Later sender(20ms, [this] { send("0123456789"); });
    char small[8] = "*******";
    timeval limit = timeOf(0, 0);
    EXPECT_EQ(receive(small, 4, limit), 4);
    EXPECT_STREQ(small, "0123***");
}

TEST_P(ReceiveTest, TakesTheLargestDatagram) {
    const std::string large(65507, 'L');
    send(large);
    EXPECT_EQ(receive(timeOf(30, 0)), 65507);
    EXPECT_EQ(buffer_, large);
}

TEST_P(ReceiveTest, ReadsAnyDatagramAsEmptyWithoutRoom) {
    send("hello");
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(receive(buffer_, 0, limit), -1);
    EXPECT_EQ(code_, 4);
    EXPECT_EQ(buffer_[0], '\0');
    EXPECT_EQ(receive(timeOf(0, 1)), 0);
}

TEST_P(ReceiveTest, ReportsABufferThatIsNoMemory) {
    send("hello");
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(receive(nullptr, 10, limit), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, EFAULT);
}

TEST_P(ReceiveTest, ReportsAClosedDescriptorAtOnce) {
    close(watched_);
    for (timeval limit : {timeOf(0, 0), timeOf(0, 1), timeOf(3600, 0)}) {
        EXPECT_EQ(receive(limit), -1);
        EXPECT_EQ(code_, 3);
        EXPECT_EQ(errno, EBADF);
    }
}

struct BadTime {
    long long seconds;
    long microseconds;
};

TEST_P(ReceiveTest, RefusesANegativeTimeOutAlsoWhenADatagramIsThere) {
    for (const BadTime& bad : {BadTime{-1, 0}, BadTime{0, -1}, BadTime{-1, 500000}, BadTime{5, -1},
                               BadTime{-1, 999999}}) {
        send("stays");
        timeval limit = timeOf(bad.seconds, bad.microseconds);
        timeval judged = limit;
        EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &judged), -1);
        const int expected = errno;
        EXPECT_EQ(receive(limit), -1) << bad.seconds << ' ' << bad.microseconds;
        EXPECT_EQ(code_, 3);
        EXPECT_EQ(errno, expected);
        EXPECT_EQ(receive(timeOf(30, 0)), 5);
    }
}

TEST_P(ReceiveTest, TakesMoreThanAMillionMicrosecondsAsSelectDoes) {
    send("hello");
    timeval limit = timeOf(1, 2500000);
    EXPECT_EQ(receive(limit), 5);
    EXPECT_EQ(code_, 0);
    EXPECT_LT(durationOf(limit), 3500ms);
    EXPECT_LT(limit.tv_usec, 1000000) << "the time left has its seconds where they belong";
}

TEST_P(ReceiveTest, TakesTheLongestTimeOuts) {
    const auto longest = std::numeric_limits<decltype(timeval::tv_sec)>::max();
    for (const long microseconds : {0L, 999999L}) {
        const Later sender(20ms, [this] { send("hello"); });
        EXPECT_EQ(receive(timeOf(longest, microseconds)), 5);
        EXPECT_EQ(code_, 0);
    }
}

TEST_P(ReceiveTest, ReportsAnErrorThatIsPending) {
    const RefusingPort nobody;
    ASSERT_EQ(connectTo(bound_, nobody.address()), 0);
    ASSERT_EQ(::send(bound_, "x", 1, 0), 1);
    ASSERT_TRUE(becomesReadable(bound_));
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(receive(limit), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_LT(durationOf(limit), 30s);
    EXPECT_EQ(receive(timeOf(0, 1)), 0) << "it is reported once";
    EXPECT_EQ(code_, 0);
}

TEST_P(ReceiveTest, ReportsAnErrorThatComesLate) {
    const RefusingPort nobody;
    ASSERT_EQ(connectTo(bound_, nobody.address()), 0);
    const Later sender(20ms, [this] { ::send(bound_, "x", 1, 0); });
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, ECONNREFUSED);
}

TEST_P(ReceiveTest, ReportsTheEndOfASocketThatWasShutDown) {
    connectTo(bound_, address_);
    ASSERT_EQ(shutdown(bound_, SHUT_RD), 0);
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 4);
}

TEST_P(ReceiveTest, WaitsOnASocketThatIsInNonBlockingMode) {
    fcntl(bound_, F_SETFL, O_NONBLOCK);
    const StopWatch watch;
    EXPECT_EQ(receive(timeOf(0, 50000)), 0);
    EXPECT_EQ(code_, 0);
    EXPECT_GE(watch.passed(), 50ms);
    const Later sender(20ms, [this] { send("hello"); });
    EXPECT_EQ(receive(timeOf(0, 0)), 5);
}

TEST_P(ReceiveTest, TakesItsOwnTimeOutNotThatOfTheSocket) {
    const timeval brief = timeOf(0, 1000);
    ASSERT_EQ(setsockopt(bound_, SOL_SOCKET, SO_RCVTIMEO, &brief, sizeof brief), 0);
    const StopWatch watch;
    EXPECT_EQ(receive(timeOf(0, 50000)), 0);
    EXPECT_EQ(code_, 0);
    EXPECT_GE(watch.passed(), 50ms);
}

TEST_P(ReceiveTest, LeavesErrnoAloneWithoutAFailure) {
    errno = ERANGE;
    EXPECT_EQ(receive(timeOf(0, 1)), 0);
    EXPECT_EQ(errno, ERANGE);
    send("hello");
    errno = ERANGE;
    EXPECT_EQ(receive(timeOf(30, 0)), 5);
    EXPECT_EQ(errno, ERANGE);
}

// What is no datagram socket is waited for and read all the same.

TEST_P(ReceiveTest, WaitsForAPipeBeforeItReportsThatItIsNoSocket) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const Descriptor reading(ends[0]);
    const Descriptor writing(ends[1]);
    watch(reading);
    EXPECT_EQ(receive(timeOf(0, 1000)), 0);
    EXPECT_EQ(code_, 0);
    ASSERT_EQ(write(writing, "x", 1), 1);
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, ENOTSOCK);
    EXPECT_EQ(read(reading, buffer_, 10), 1) << "the byte is still there";
}

TEST_P(ReceiveTest, ReportsThatAFileIsNoSocket) {
    const Descriptor file(open("/proc/self/exe", O_RDONLY));
    watch(file);
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, ENOTSOCK);
}

TEST_P(ReceiveTest, WaitsForAListeningStreamBeforeItReportsIt) {
    const Descriptor listening(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(bindTo(listening, loopback(0)), 0);
    ASSERT_EQ(listen(listening, 1), 0);
    watch(listening);
    EXPECT_EQ(receive(timeOf(0, 1000)), 0);
    EXPECT_EQ(code_, 0);
    const Descriptor caller(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(connectTo(caller, nameOf(listening)), 0);
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 5);
    EXPECT_EQ(errno, ENOTCONN);
}

TEST_P(ReceiveTest, WaitsForAListeningLocalStream) {
    TemporaryFolder folder;
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::strcpy(name.sun_path, (folder / "stream").c_str());
    const Descriptor listening(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bindTo(listening, name), 0);
    ASSERT_EQ(listen(listening, 1), 0);
    watch(listening);
    EXPECT_EQ(receive(timeOf(0, 1000)), 0);
    EXPECT_EQ(code_, 0);
}

TEST_P(ReceiveTest, ReadsAStreamToItsEnd) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const Descriptor near(ends[0]);
    Descriptor far(ends[1]);
    watch(near);
    ASSERT_EQ(write(far, "bytes", 5), 5);
    EXPECT_EQ(receive(timeOf(30, 0)), 5);
    EXPECT_EQ(receive(timeOf(0, 1000)), 0);
    far.reset(-1);
    EXPECT_EQ(receive(timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 4);
}

// Signals: one after the other, so that one of them meets the wait. The handler stays, as the last
// one may come late.
class Signals {
  public:
    explicit Signals(int flags) {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        action.sa_flags = flags;
        sigaction(SIGUSR1, &action, nullptr);
    }
    ~Signals() {
        done_ = true;
        sender_.join();
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    std::atomic<bool> done_{false};
    pthread_t target_ = pthread_self();
    std::thread sender_{[this] {
        while (!done_) {
            std::this_thread::sleep_for(5ms);
            pthread_kill(target_, SIGUSR1);
        }
    }};
};

TEST_P(ReceiveTest, ReportsAnInterruptedWait) {
    for (const int flags : {0, SA_RESTART}) {
        for (timeval limit : {timeOf(0, 0), timeOf(300, 0)}) {
            const auto asked = durationOf(limit);
            const Signals signals(flags);
            EXPECT_EQ(receive(limit), -1);
            EXPECT_EQ(code_, 3);
            EXPECT_EQ(errno, EINTR);
            EXPECT_LE(durationOf(limit), asked);
        }
    }
}

TEST_P(ReceiveTest, IsNotDisturbedBySignalsWhenADatagramIsThere) {
    const Signals signals(0);
    for (int i = 0; i < 100; ++i) {
        send("hello");
        ASSERT_EQ(receive(timeOf(300, 0)), 5);
    }
}

// Arguments that the class cannot be given.

TEST(RecvFromSocketTest, RefusesNegativeDescriptorsAtOnce) {
    char byte;
    int code;
    for (const int descriptor : {-1, -2, -1024, INT_MIN}) {
        for (timeval limit : {timeOf(0, 0), timeOf(3600, 0), timeOf(-1, 0)}) {
            code = 99;
            EXPECT_EQ(recvFromSocket(descriptor, &byte, 1, &limit, &code), -1);
            EXPECT_EQ(code, 3);
            EXPECT_EQ(errno, EBADF);
        }
    }
}

TEST(RecvFromSocketTest, RefusesDescriptorsThatNobodyHasAtOnce) {
    char byte;
    int code;
    for (const int descriptor : {900, 1022, 1023, 1024, 1025, 65536, INT_MAX}) {
        timeval limit = timeOf(0, 0);
        EXPECT_EQ(recvFromSocket(descriptor, &byte, 1, &limit, &code), -1) << descriptor;
        EXPECT_EQ(code, 3);
        EXPECT_EQ(errno, EBADF);
    }
}

TEST(RecvFromSocketTest, WorksOnBothSidesOfTheSizeOfSelectsSet) {
    const ManyDescriptors many;
    const Descriptor bound = loopbackSocket();
    rlimit allowed{};
    getrlimit(RLIMIT_NOFILE, &allowed);
    const int highest = static_cast<int>(std::min<rlim_t>(allowed.rlim_cur, 1000000)) - 1;
    for (const int number : {1022, 1023, 1024, 1025, 1087, 1088, highest}) {
        const Descriptor there(dup2(bound, number));
        ASSERT_EQ(there.get(), number);
        char text[10];
        int code;
        timeval limit = timeOf(0, 1000);
        EXPECT_EQ(recvFromSocket(number, text, sizeof text, &limit, &code), 0) << number;
        const Later sender(10ms, [&] { sendDatagram(nameOf(bound), "hello"); });
        limit = timeOf(300, 0);
        EXPECT_EQ(recvFromSocket(number, text, sizeof text, &limit, &code), 5) << number;
        EXPECT_EQ(code, 0);
    }
}

// On threads, because it takes a second.
TEST(RecvFromSocketTest, CountsSecondsAndMicroseconds) {
    const ManyDescriptors many;
    std::vector<std::thread> threads;
    for (const int number : {0, highDescriptor}) {
        for (const timeval asked : {timeOf(1, 0), timeOf(0, 1100000), timeOf(1, 100000)}) {
            threads.emplace_back([number, asked] {
                const Descriptor bound = loopbackSocket();
                const Descriptor there(fcntl(bound, F_DUPFD, number));
                const StopWatch watch;
                timeval limit = asked;
                char byte;
                int code;
                EXPECT_EQ(recvFromSocket(there, &byte, 1, &limit, &code), 0);
                EXPECT_GE(watch.passed(), durationOf(asked));
                EXPECT_LT(watch.passed(), durationOf(asked) + farTooLong);
                EXPECT_EQ(durationOf(limit), 0s);
            });
        }
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(RecvFromSocketTest, WaitsForEverWithoutATimeOut) {
    const Descriptor bound = loopbackSocket();
    const StopWatch watch;
    const Later sender(120ms, [&] { sendDatagram(nameOf(bound), "hello"); });
    char text[10];
    int code;
    EXPECT_EQ(recvFromSocket(bound, text, sizeof text, nullptr, &code), 5);
    EXPECT_GE(watch.passed(), 120ms);
}

TEST(RecvFromSocketTest, NeedsNoPlaceForTheCode) {
    const Descriptor bound = loopbackSocket();
    sendDatagram(nameOf(bound), "hello");
    char text[10];
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(recvFromSocket(bound, text, sizeof text, &limit, nullptr), 5);
    limit = timeOf(30, 0);
    EXPECT_EQ(recvFromSocket(-1, text, sizeof text, &limit, nullptr), -1);
}

// No state is shared: each thread talks to itself.
TEST(RecvFromSocketTest, WorksOnManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> received{0};
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&received, thread] {
            const Descriptor bound = loopbackSocket();
            for (int i = 0; i < 50; ++i) {
                const std::string text = std::to_string(thread * 1000 + i);
                sendDatagram(nameOf(bound), text);
                char buffer[10];
                int code;
                timeval limit = timeOf(300, 0);
                const int length = recvFromSocket(bound, buffer, sizeof buffer, &limit, &code);
                if (length > 0 && text == std::string(buffer, static_cast<size_t>(length)))
                    ++received;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(received, 400);
}

}  // namespace
