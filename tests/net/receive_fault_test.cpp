// The sockets between a system that records every call and fails as it is told.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <deque>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"
#include "tests/net/peer.h"

namespace {

using namespace kfl_test;

// An answer of a system call: a result, and errno where that is -1.
struct Answer {
    long result;
    int error = 0;
};

struct Call {
    std::string name;
    int descriptor = -1;
    void* buffer = nullptr;
    size_t length = 0;
    int flags = 0;
};

// What the library called, and what it is answered; without an answer the system is asked.
struct System {
    std::vector<Call> calls;
    std::deque<Answer> recv;
    std::deque<Answer> select;
    std::deque<Answer> ppoll;
    std::deque<Answer> socket;
    std::deque<Answer> bind;
    std::deque<Answer> send;
    std::deque<timespec> clock;

    int setSize = 0;
    std::vector<int> readable;
    bool otherSets = false;
    timeval* selectLimit = nullptr;
    short events = 0;
    short revents = 0;
    bool hasPollLimit = false;
    timespec pollLimit{};
    int socketArguments[3] = {};
    std::string address;

    std::string names() const {
        std::string all;
        for (const Call& call : calls) all += (all.empty() ? "" : " ") + call.name;
        return all;
    }
};

// Of this thread alone: peers on other threads are left alone.
thread_local System* recording = nullptr;

bool hasAnswer(const std::deque<Answer>& answers) { return recording && !answers.empty(); }

template <class Result>
Result give(std::deque<Answer>& answers) {
    const Answer answer = answers.front();
    answers.pop_front();
    if (answer.result < 0) errno = answer.error;
    return static_cast<Result>(answer.result);
}

}  // namespace

extern "C" {
ssize_t __real_recv(int, void*, size_t, int);
int __real_select(int, fd_set*, fd_set*, fd_set*, timeval*);
int __real_ppoll(pollfd*, nfds_t, const timespec*, const sigset_t*);
int __real_socket(int, int, int);
int __real_bind(int, const sockaddr*, socklen_t);
ssize_t __real_send(int, const void*, size_t, int);
int __real_clock_gettime(clockid_t, timespec*);

ssize_t __wrap_recv(int descriptor, void* buffer, size_t length, int flags) {
    if (recording) recording->calls.push_back({"recv", descriptor, buffer, length, flags});
    if (recording && hasAnswer(recording->recv)) return give<ssize_t>(recording->recv);
    return __real_recv(descriptor, buffer, length, flags);
}

int __wrap_select(int size, fd_set* readable, fd_set* writable, fd_set* exceptions,
                  timeval* limit) {
    if (recording) {
        recording->calls.push_back({"select"});
        recording->setSize = size;
        recording->readable.clear();
        for (int i = 0; i < FD_SETSIZE; ++i) {
            if (FD_ISSET(i, readable)) recording->readable.push_back(i);
        }
        recording->otherSets = writable || exceptions;
        recording->selectLimit = limit;
        if (hasAnswer(recording->select)) return give<int>(recording->select);
    }
    return __real_select(size, readable, writable, exceptions, limit);
}

int __wrap_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask) {
    if (recording) {
        recording->calls.push_back({"ppoll", watched->fd, nullptr, count});
        recording->events = watched->events;
        recording->hasPollLimit = limit != nullptr;
        if (limit) recording->pollLimit = *limit;
        if (hasAnswer(recording->ppoll)) {
            watched->revents = recording->revents;
            return give<int>(recording->ppoll);
        }
    }
    return __real_ppoll(watched, count, limit, mask);
}

int __wrap_socket(int domain, int type, int protocol) {
    if (recording) {
        recording->calls.push_back({"socket"});
        recording->socketArguments[0] = domain;
        recording->socketArguments[1] = type;
        recording->socketArguments[2] = protocol;
        if (hasAnswer(recording->socket)) return give<int>(recording->socket);
    }
    return __real_socket(domain, type, protocol);
}

int __wrap_bind(int descriptor, const sockaddr* address, socklen_t length) {
    if (recording) {
        recording->calls.push_back({"bind", descriptor, nullptr, length});
        recording->address.assign(reinterpret_cast<const char*>(address), length);
        if (hasAnswer(recording->bind)) return give<int>(recording->bind);
    }
    return __real_bind(descriptor, address, length);
}

ssize_t __wrap_send(int descriptor, const void* data, size_t length, int flags) {
    if (recording) {
        recording->calls.push_back({"send", descriptor, const_cast<void*>(data), length, flags});
        if (hasAnswer(recording->send)) return give<ssize_t>(recording->send);
    }
    return __real_send(descriptor, data, length, flags);
}

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    if (!recording || recording->clock.empty()) return __real_clock_gettime(clock, now);
    EXPECT_EQ(clock, CLOCK_MONOTONIC);
    *now = recording->clock.front();
    recording->clock.pop_front();
    return 0;
}
}

namespace {

constexpr int highDescriptor = 3000;

class FaultTest : public testing::Test {
  protected:
    FaultTest() { recording = &system_; }
    ~FaultTest() override { recording = nullptr; }

    // On `descriptor`, which need not exist where the answers are given.
    int receive(int descriptor, timeval& limit) {
        code_ = 99;
        errno = 0;
        return recvFromSocket(descriptor, buffer_, sizeof buffer_, &limit, &code_);
    }
    int receive(int descriptor, timeval&& limit) { return receive(descriptor, limit); }

    System system_;
    char buffer_[100] = {};
    int code_ = 99;
};

class ReceiveFaultTest : public FaultTest {};

TEST_F(ReceiveFaultTest, ADatagramThatIsThereCostsOneCall) {
    const ManyDescriptors many;
    const Descriptor low = loopbackSocket();
    const Descriptor high(dup2(low, highDescriptor));
    for (const int descriptor : {low.get(), high.get()}) {
        for (timeval limit : {timeOf(0, 0), timeOf(30, 0)}) {
            sendDatagram(nameOf(low), "hello");
            system_.calls.clear();
            EXPECT_EQ(receive(descriptor, limit), 5);
            ASSERT_EQ(system_.names(), "recv");
            EXPECT_EQ(system_.calls[0].descriptor, descriptor);
            EXPECT_EQ(system_.calls[0].buffer, buffer_);
            EXPECT_EQ(system_.calls[0].length, sizeof buffer_);
            EXPECT_EQ(system_.calls[0].flags, MSG_DONTWAIT);
        }
    }
}

TEST_F(ReceiveFaultTest, WaitsOnlyWhenNothingIsThere) {
    system_.recv = {{-1, EAGAIN}, {7}};
    system_.select = {{1}};
    timeval limit = timeOf(30, 5);
    EXPECT_EQ(receive(37, limit), 7);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(errno, 0) << "of the first try nothing is left";
    ASSERT_EQ(system_.names(), "recv select recv");
    EXPECT_EQ(system_.setSize, 38);
    EXPECT_EQ(system_.readable, std::vector<int>{37});
    EXPECT_FALSE(system_.otherSets);
    EXPECT_EQ(system_.selectLimit, &limit) << "the caller's own";
    EXPECT_EQ(system_.calls[2].flags, 0) << "the last one may wait";
    EXPECT_EQ(system_.calls[2].buffer, buffer_);
    EXPECT_EQ(system_.calls[2].length, sizeof buffer_);
}

TEST_F(ReceiveFaultTest, DoesNotWaitBehindAnEmptyDatagramWhateverErrnoWas) {
    timeval limit = timeOf(1, 0);
    system_.recv = {{0}};
    errno = EAGAIN;
    EXPECT_EQ(recvFromSocket(37, buffer_, sizeof buffer_, &limit, &code_), -1);
    EXPECT_EQ(code_, 4);
    EXPECT_EQ(system_.names(), "recv");
}

TEST_F(ReceiveFaultTest, GivesSelectNoLimitForAZeroTimeOut) {
    system_.recv = {{-1, EAGAIN}, {7}};
    system_.select = {{1}};
    EXPECT_EQ(receive(37, timeOf(0, 0)), 7);
    EXPECT_EQ(system_.selectLimit, nullptr);
    EXPECT_EQ(system_.setSize, 38);
}

TEST_F(ReceiveFaultTest, DoesNotReadWhenTheTimeHasPassed) {
    system_.recv = {{-1, EAGAIN}};
    system_.select = {{0}};
    EXPECT_EQ(receive(37, timeOf(1, 0)), 0);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(system_.names(), "recv select");
}

TEST_F(ReceiveFaultTest, CountsTheTimeLeftWhereSelectKeepsItToItself) {
    for (const Answer& answer : {Answer{0}, Answer{1}, Answer{-1, EINTR}}) {
        system_.recv = {{-1, EAGAIN}, {7}};
        system_.select = {answer};
        system_.clock = {{10, 900000000}, {12, 100000000}};
        timeval limit = timeOf(5, 0);
        receive(37, limit);
        EXPECT_EQ(limit.tv_sec, 3) << answer.result;
        EXPECT_EQ(limit.tv_usec, 800000) << answer.result;
    }
}

TEST_F(ReceiveFaultTest, LeavesTheTimeAloneWhereAWaitWasRefused) {
    system_.recv = {{-1, EAGAIN}};
    system_.select = {{-1, EINVAL}};
    system_.clock = {{10, 0}};
    timeval limit = timeOf(5, 0);
    EXPECT_EQ(receive(37, limit), -1);
    EXPECT_EQ(limit.tv_sec, 5);
}

TEST_F(ReceiveFaultTest, ReportsWhySelectFailed) {
    for (const int error : {EINTR, ENOMEM, EBADF, EINVAL}) {
        system_.recv = {{-1, EAGAIN}};
        system_.select = {{-1, error}};
        EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
        EXPECT_EQ(code_, 3);
        EXPECT_EQ(errno, error);
    }
    EXPECT_EQ(system_.names(), "recv select recv select recv select recv select");
}

TEST_F(ReceiveFaultTest, ReportsPendingErrorsWithoutAWait) {
    for (const int error : {ECONNREFUSED, ECONNRESET, EHOSTUNREACH, ENETUNREACH, ENETDOWN, EMSGSIZE,
                            EPROTO, ENOMEM, EFAULT, EACCES}) {
        system_.calls.clear();
        system_.recv = {{-1, error}};
        EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
        EXPECT_EQ(code_, 5);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(system_.names(), "recv");
    }
}

TEST_F(ReceiveFaultTest, ReportsABadDescriptorAsAFailedWait) {
    system_.recv = {{-1, EBADF}};
    EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
    EXPECT_EQ(code_, 3);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(system_.names(), "recv");
}

TEST_F(ReceiveFaultTest, LeavesWhatIsNoDatagramSocketToSelect) {
    for (const int error : {ENOTSOCK, ENOTCONN, EINVAL}) {
        system_.calls.clear();
        system_.recv = {{-1, error}, {-1, error}};
        system_.select = {{1}};
        EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
        EXPECT_EQ(code_, 5);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(system_.names(), "recv select recv");
    }
}

TEST_F(ReceiveFaultTest, ReportsWhatTheReadAfterTheWaitSays) {
    // EBADF: another thread closed it in between. EAGAIN: non-blocking, and another reader was
    // faster.
    for (const int error : {EBADF, EAGAIN, ECONNREFUSED, EINTR}) {
        system_.recv = {{-1, EAGAIN}, {-1, error}};
        system_.select = {{1}};
        EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
        EXPECT_EQ(code_, 5);
        EXPECT_EQ(errno, error);
    }
    system_.recv = {{-1, EAGAIN}, {0}};
    system_.select = {{1}};
    EXPECT_EQ(receive(37, timeOf(1, 0)), -1);
    EXPECT_EQ(code_, 4);
}

TEST_F(ReceiveFaultTest, WaitsOnWhenAnotherReaderWasFaster) {
    const Descriptor bound = loopbackSocket();
    system_.calls.clear();
    system_.recv = {{-1, EAGAIN}};
    system_.select = {{1}};
    const Later sender(std::chrono::milliseconds(50),
                       [&] { sendDatagram(nameOf(bound), "hello"); });
    EXPECT_EQ(receive(bound, timeOf(0, 1)), 5) << "in the read, as there is no second wait";
    EXPECT_EQ(system_.names(), "recv select recv");
}

TEST_F(ReceiveFaultTest, AsksSelectFirstAboutUnusualTimeOuts) {
    for (const timeval& unusual :
         {timeOf(-1, 0), timeOf(0, -1), timeOf(1, -1000000), timeOf(0, 1000000)}) {
        system_.calls.clear();
        system_.recv = {{7}};
        system_.select = {{1}};
        timeval limit = unusual;
        EXPECT_EQ(receive(37, limit), 7) << "select is the judge";
        EXPECT_EQ(system_.names(), "select recv");
        EXPECT_EQ(system_.selectLimit, &limit);
        EXPECT_EQ(system_.calls[1].flags, 0);
    }
}

TEST_F(ReceiveFaultTest, TakesAMicrosecondForADatagramThatIsThere) {
    struct Charge {
        timeval before;
        timeval after;
    };
    for (const Charge& charge :
         {Charge{timeOf(5, 0), timeOf(4, 999999)}, Charge{timeOf(5, 1), timeOf(5, 0)},
          Charge{timeOf(5, 999999), timeOf(5, 999998)}, Charge{timeOf(0, 1), timeOf(0, 0)},
          Charge{timeOf(1, 0), timeOf(0, 999999)}, Charge{timeOf(0, 0), timeOf(0, 0)}}) {
        timeval limit = charge.before;
        system_.recv = {{7}};
        EXPECT_EQ(receive(37, limit), 7);
        EXPECT_EQ(durationOf(limit), durationOf(charge.after));
        EXPECT_EQ(limit.tv_usec, charge.after.tv_usec);
    }
}

TEST_F(ReceiveFaultTest, ANegativeDescriptorCostsNoCall) {
    EXPECT_EQ(receive(-1, timeOf(0, 0)), -1);
    EXPECT_EQ(code_, 3);
    EXPECT_EQ(system_.names(), "");
}

TEST_F(ReceiveFaultTest, UsesSelectBelowTheSizeOfItsSetAndPollFromThereOn) {
    for (const int descriptor : {0, 1023, 1024, std::numeric_limits<int>::max()}) {
        system_.calls.clear();
        system_.recv = {{-1, EAGAIN}};
        system_.select = {{0}};
        system_.ppoll = {{0}};
        EXPECT_EQ(receive(descriptor, timeOf(1, 0)), 0);
        EXPECT_EQ(system_.names(), descriptor < FD_SETSIZE ? "recv select" : "recv ppoll");
    }
}

class HighReceiveFaultTest : public FaultTest {
  protected:
    // Waits on a high descriptor, from `start` to `end` on the clock.
    int wait(timeval& limit, const Answer& answer, const timespec& start, const timespec& end) {
        system_.recv = {{7}};
        if (limit.tv_usec < 1000000) system_.recv.push_front({-1, EAGAIN});
        system_.ppoll = {answer};
        system_.clock = {start, end};
        return receive(highDescriptor, limit);
    }
};

TEST_F(HighReceiveFaultTest, WatchesForWhatSelectCallsReadable) {
    system_.revents = POLLIN;
    timeval limit = timeOf(2, 345);
    EXPECT_EQ(wait(limit, {1}, {100, 0}, {100, 0}), 7);
    EXPECT_EQ(errno, 0);
    ASSERT_EQ(system_.names(), "recv ppoll recv");
    EXPECT_EQ(system_.calls[1].descriptor, highDescriptor);
    EXPECT_EQ(system_.calls[1].length, 1U);
    EXPECT_EQ(system_.events, POLLIN | POLLRDNORM | POLLRDBAND);
    EXPECT_TRUE(system_.hasPollLimit);
    EXPECT_EQ(system_.pollLimit.tv_sec, 2);
    EXPECT_EQ(system_.pollLimit.tv_nsec, 345000);
    EXPECT_EQ(system_.calls[2].flags, 0);
}

TEST_F(HighReceiveFaultTest, ReadsAfterErrorsAndHangUps) {
    for (const int event : {POLLERR, POLLHUP, POLLRDNORM, POLLRDBAND}) {
        system_.revents = static_cast<short>(event);
        timeval limit = timeOf(1, 0);
        EXPECT_EQ(wait(limit, {1}, {100, 0}, {100, 0}), 7) << event;
    }
}

TEST_F(HighReceiveFaultTest, WaitsForEverWithoutALimit) {
    system_.recv = {{-1, EAGAIN}, {7}};
    system_.ppoll = {{1}};
    system_.revents = POLLIN;
    EXPECT_EQ(receive(highDescriptor, timeOf(0, 0)), 7);
    EXPECT_FALSE(system_.hasPollLimit);
}

TEST_F(HighReceiveFaultTest, WritesTheTimeLeftBack) {
    struct Wait {
        timeval limit;
        timespec start;
        timespec end;
        timeval left;
    };
    const Wait waits[] = {
        {timeOf(5, 0), {10, 0}, {10, 0}, timeOf(5, 0)},
        {timeOf(5, 0), {10, 0}, {10, 1}, timeOf(4, 999999)},
        {timeOf(5, 0), {10, 900000000}, {12, 100000000}, timeOf(3, 800000)},
        {timeOf(5, 250000), {10, 0}, {11, 500000000}, timeOf(3, 750000)},
        {timeOf(5, 250000), {10, 0}, {12, 250000000}, timeOf(3, 0)},
        {timeOf(5, 250000), {10, 0}, {15, 249999999}, timeOf(0, 0)},
        {timeOf(5, 250000), {10, 0}, {15, 249999000}, timeOf(0, 1)},
        {timeOf(5, 250000), {10, 0}, {15, 250000001}, timeOf(0, 0)},
        {timeOf(5, 250000), {10, 0}, {1000, 0}, timeOf(0, 0)},
        {timeOf(5, 2500000), {10, 0}, {11, 0}, timeOf(6, 500000)},
    };
    for (const Wait& row : waits) {
        for (const Answer& answer : {Answer{0}, Answer{1}, Answer{-1, EINTR}}) {
            system_.revents = POLLIN;
            timeval limit = row.limit;
            const int result = wait(limit, answer, row.start, row.end);
            EXPECT_EQ(result, answer.result == 1 ? 7 : answer.result);
            EXPECT_EQ(code_, answer.result < 0 ? 3 : 0);
            EXPECT_EQ(errno, answer.error);
            EXPECT_EQ(durationOf(limit), durationOf(row.left));
            EXPECT_LT(limit.tv_usec, 1000000);
        }
    }
}

TEST_F(HighReceiveFaultTest, TakesSecondsThatCannotBeCounted) {
    const auto most = std::numeric_limits<decltype(timeval::tv_sec)>::max();
    system_.revents = POLLIN;
    timeval limit = timeOf(most, 1000000);
    EXPECT_EQ(wait(limit, {1}, {10, 0}, {11, 0}), 7);
    EXPECT_EQ(system_.pollLimit.tv_sec, most);
    EXPECT_EQ(system_.pollLimit.tv_nsec, 0);
    EXPECT_EQ(limit.tv_sec, most - 1);
}

TEST_F(HighReceiveFaultTest, RefusesNegativeTimeOutsWithoutACall) {
    for (timeval limit : {timeOf(-1, 0), timeOf(0, -1), timeOf(1, -1), timeOf(-1, 999999)}) {
        EXPECT_EQ(receive(highDescriptor, limit), -1);
        EXPECT_EQ(code_, 3);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(system_.names(), "");
    }
}

TEST_F(HighReceiveFaultTest, ReportsADescriptorThatWasClosedMeanwhile) {
    system_.revents = POLLNVAL;
    timeval limit = timeOf(1, 0);
    EXPECT_EQ(wait(limit, {1}, {10, 0}, {10, 0}), -1);
    EXPECT_EQ(code_, 3);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(system_.names(), "recv ppoll");
}

TEST_F(FaultTest, CreateSocketAsksForUdpOverIPv4) {
    system_.socket = {{42}};
    EXPECT_EQ(createSocket(&code_), 42);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(system_.socketArguments[0], AF_INET);
    EXPECT_EQ(system_.socketArguments[1], SOCK_DGRAM);
    EXPECT_EQ(system_.socketArguments[2], 17);
    for (const int error : {EMFILE, ENFILE, ENOBUFS, EACCES}) {
        system_.socket = {{-1, error}};
        EXPECT_EQ(createSocket(&code_), -1);
        EXPECT_EQ(code_, 2);
        EXPECT_EQ(errno, error);
    }
}

TEST_F(FaultTest, InitializeHandsOnWhatTheObjectWasGiven) {
    class Kind : public CommunicationSocket {
      public:
        Kind() : CommunicationSocket(11, 22, 33, 44) {}
        bool bind() override { return false; }
    } object;
    system_.socket = {{42}, {-1, EMFILE}};
    EXPECT_TRUE(object.initialize(code_));
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(object.descriptor(), 42);
    EXPECT_EQ(system_.socketArguments[0], 11);
    EXPECT_EQ(system_.socketArguments[1], 22);
    EXPECT_EQ(system_.socketArguments[2], 33);
    EXPECT_FALSE(object.initialize(code_));
    EXPECT_EQ(code_, 2);
    EXPECT_EQ(object.descriptor(), -1);
}

TEST_F(FaultTest, NothingWorksOnALocalSocketWithoutADescriptor) {
    char path[] = "/tmp/never";
    IPCSocket socket(path);
    system_.socket = {{-1, EMFILE}};
    EXPECT_FALSE(socket.initialize(code_));
    EXPECT_EQ(code_, 2);
    EXPECT_EQ(socket.descriptor(), -1);
    EXPECT_FALSE(socket.bind());
    EXPECT_EQ(errno, EBADF);
    timeval limit = timeOf(30, 0);
    EXPECT_EQ(socket.receive(buffer_, sizeof buffer_, limit, code_), -1);
    EXPECT_EQ(code_, 3);
}

TEST_F(FaultTest, TheClassReceivesAsTheFunctionDoes) {
    ISCSocket socket(SOCK_DGRAM, 0, 0);
    system_.socket = {{42}};
    EXPECT_TRUE(socket.initialize(code_));
    system_.calls.clear();
    system_.recv = {{-1, EAGAIN}, {7}};
    system_.select = {{1}};
    timeval limit = timeOf(1, 0);
    EXPECT_EQ(socket.receive(buffer_, 50, limit, code_), 7);
    EXPECT_EQ(system_.names(), "recv select recv");
    EXPECT_EQ(system_.calls[0].descriptor, 42);
    EXPECT_EQ(system_.calls[2].length, 50U);
    EXPECT_EQ(system_.selectLimit, &limit);
}

// Binds with an answer, and expects that record.
class BindFaultTest : public FaultTest {
  protected:
    void expectInternetRecord(in_port_t port) const {
        ASSERT_EQ(system_.address.size(), 16U);
        sockaddr_in record{};
        std::memcpy(&record, system_.address.data(), sizeof record);
        EXPECT_EQ(record.sin_family, 2);
        EXPECT_EQ(record.sin_port, port);
        EXPECT_EQ(record.sin_addr.s_addr, 0U);
        EXPECT_EQ(system_.address.substr(8), std::string(8, '\0'));
    }
};

TEST_F(BindFaultTest, BindSocketHandsOnARecordOf16Bytes) {
    for (const long answer : {0L, -1L, 7L}) {
        system_.bind = {{answer, EACCES}};
        EXPECT_EQ(bindSocket(37, 0x12345678), answer) << "what bind returned";
        EXPECT_EQ(system_.calls.back().descriptor, 37);
        expectInternetRecord(0x5678);
    }
    EXPECT_EQ(errno, EACCES);
}

TEST_F(BindFaultTest, ISCSocketHandsOnTheSameRecord) {
    ISCSocket socket(SOCK_DGRAM, 0, 0x12345678);
    for (const long answer : {0L, -1L, 7L}) {
        system_.bind = {{answer, EACCES}};
        EXPECT_EQ(socket.bind(), answer >= 0);
        EXPECT_EQ(system_.calls.back().descriptor, 0) << "as the object has it";
        expectInternetRecord(0x5678);
    }
}

TEST_F(BindFaultTest, IPCSocketHandsOnTheWholeRecord) {
    for (const size_t length : {0U, 1U, 20U, 106U, 107U}) {
        std::string path(length, 'p');
        IPCSocket socket(path.data());
        for (const long answer : {0L, -1L, 7L}) {
            system_.bind = {{answer, EACCES}};
            EXPECT_EQ(socket.bind(), answer >= 0);
            EXPECT_EQ(system_.calls.back().length, 110U) << "not the length of the path";
            sockaddr_un record{};
            ASSERT_EQ(sizeof record, 110U);
            std::memcpy(&record, system_.address.data(), sizeof record);
            EXPECT_EQ(record.sun_family, 1);
            EXPECT_EQ(std::string(record.sun_path, 108), path + std::string(108 - length, '\0'));
        }
    }
}

TEST_F(BindFaultTest, IPCSocketHandsOnNoRecordForALongPath) {
    std::string path(108, 'p');
    IPCSocket tooLong(path.data());
    IPCSocket none(nullptr);
    EXPECT_FALSE(tooLong.bind());
    EXPECT_FALSE(none.bind());
    EXPECT_EQ(system_.names(), "");
}

TEST_F(FaultTest, SendToSocketSendsWithoutFlags) {
    system_.send = {{5}, {0}, {-1, ENOBUFS}, {-2, EIO}};
    EXPECT_EQ(sendToSocket(37, buffer_, 5, &code_), 0);
    EXPECT_EQ(code_, 0);
    ASSERT_EQ(system_.names(), "send");
    EXPECT_EQ(system_.calls[0].descriptor, 37);
    EXPECT_EQ(system_.calls[0].buffer, buffer_);
    EXPECT_EQ(system_.calls[0].length, 5U);
    EXPECT_EQ(system_.calls[0].flags, 0);
    code_ = 99;
    EXPECT_EQ(sendToSocket(37, buffer_, 5, &code_), 0);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(sendToSocket(37, buffer_, 5, &code_), -1);
    EXPECT_EQ(code_, 6);
    EXPECT_EQ(errno, ENOBUFS);
    EXPECT_EQ(sendToSocket(37, buffer_, 5, &code_), -1) << "any negative result";
    EXPECT_EQ(code_, 6);
}

}  // namespace
