// Socket functions and classes.
#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"
#include "tests/faults/exhaust.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::Attempt;
using kfl_test::exhaust;

// Two sockets on the loopback address, each connected to the other.
class Pair {
  public:
    Pair() {
        for (int& end : ends_) end = socket(AF_INET, SOCK_DGRAM, 0);
        for (const int end : ends_) {
            sockaddr_in address{};
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            EXPECT_EQ(bind(end, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        }
        join(ends_[0], ends_[1]);
        join(ends_[1], ends_[0]);
    }
    ~Pair() {
        for (const int end : ends_) close(end);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    int in() const { return ends_[0]; }
    int out() const { return ends_[1]; }

  private:
    static void join(int end, int other) {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(other, reinterpret_cast<sockaddr*>(&address), &size);
        EXPECT_EQ(connect(end, reinterpret_cast<sockaddr*>(&address), size), 0);
    }

    int ends_[2];
};

TEST(NetFaults, SocketIsCreatedAndBound) {
    exhaust("sockets: created and bound", [](Attempt& attempt) {
        int code = 99;
        int descriptor = -1;
        int bound = -1;
        attempt([&] {
            descriptor = createSocket(&code);
            bound = bindSocket(descriptor, 0);
        });
        EXPECT_EQ(descriptor == -1, attempt.failed("socket"));
        EXPECT_EQ(code, attempt.failed("socket") ? 2 : 0);
        EXPECT_EQ(bound == 0, !attempt.failedAnywhere());
        if (descriptor == -1) descriptor = createSocket(&code);
        EXPECT_EQ(code, 0);
        if (bound != 0) {
            EXPECT_EQ(bindSocket(descriptor, 0), 0);
        }
        close(descriptor);
    });
}

TEST(NetFaults, SocketObjectsAreInitialisedAndBound) {
    const kfl_test::TemporaryFolder folder;
    std::string path = folder / "socket";
    exhaust("socket classes: initialised and bound", [&](Attempt& attempt) {
        IPCSocket local(path.data());
        int code = 99;
        bool made = false;
        bool bound = false;
        attempt([&] {
            made = local.initialize(code);
            bound = local.bind();
        });
        EXPECT_EQ(made, !attempt.failed("socket"));
        EXPECT_EQ(code, made ? 0 : 2);
        EXPECT_EQ(local.descriptor() == -1, !made);
        EXPECT_EQ(bound, !attempt.failedAnywhere());
        if (!made) {
            EXPECT_TRUE(local.initialize(code));
        }
        if (!bound) {
            EXPECT_TRUE(local.bind());
        }
        close(local.descriptor());
        unlink(path.c_str());
    });
}

// A datagram that waits is still there after any failure.
void receiveOne(Attempt& attempt, int in, int out) {
    char sent[] = "datagram";
    char got[20] = "";
    EXPECT_EQ(send(out, sent, 8, 0), 8);
    int code = 99;
    int result = -2;
    timeval limit{5, 0};
    attempt([&] { result = recvFromSocket(in, got, sizeof got, &limit, &code); });
    if (result == 8) {
        EXPECT_EQ(code, 0);
        EXPECT_FALSE(attempt.failedAnywhere() && !attempt.failed("recv", EAGAIN) &&
                     !attempt.failed("clock_gettime"));
        EXPECT_STREQ(got, "datagram");
        return;
    }
    EXPECT_EQ(result, -1);
    EXPECT_EQ(code, attempt.failed("recv") ? 5 : 3);
    EXPECT_EQ(errno, attempt.error()) << "errno is as the system set it";
    timeval again{5, 0};
    EXPECT_EQ(recvFromSocket(in, got, sizeof got, &again, &code), 8);
    EXPECT_STREQ(got, "datagram");
}

TEST(NetFaults, ADatagramThatWaitsIsNotLost) {
    const Pair pair;
    exhaust("sockets: a datagram received",
            [&](Attempt& attempt) { receiveOne(attempt, pair.in(), pair.out()); });
}

// Where nothing waits the call comes to its waiting.
void receiveNothing(Attempt& attempt, int in) {
    char got[20] = "";
    int code = 99;
    int result = -2;
    timeval limit{0, 1000};
    attempt([&] { result = recvFromSocket(in, got, sizeof got, &limit, &code); });
    if (attempt.failed("select") || attempt.failed("ppoll")) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(code, 3);
    } else if (attempt.failed("recv") && attempt.error() != EAGAIN) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(code, 5);
    } else {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(code, 0);
    }
    timeval again{0, 1000};
    EXPECT_EQ(recvFromSocket(in, got, sizeof got, &again, &code), 0);
}

TEST(NetFaults, AWaitThatFailsIsNoTimeOut) {
    const Pair pair;
    exhaust("sockets: nothing received",
            [&](Attempt& attempt) { receiveNothing(attempt, pair.in()); });
}

TEST(NetFaults, DescriptorsBeyondASetsEnd) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit before = limit;
    ASSERT_GT(limit.rlim_max, 1100U);
    if (limit.rlim_cur < 1100) limit.rlim_cur = 1100;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    const Pair pair;
    const int high = fcntl(pair.in(), F_DUPFD, FD_SETSIZE);
    ASSERT_GE(high, FD_SETSIZE);
    exhaust("sockets: received on a high descriptor",
            [&](Attempt& attempt) { receiveOne(attempt, high, pair.out()); });
    exhaust("sockets: nothing received on a high descriptor",
            [&](Attempt& attempt) { receiveNothing(attempt, high); });
    close(high);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(NetFaults, ADatagramIsSentOrItsFailureTold) {
    const Pair pair;
    exhaust("sockets: a datagram sent", [&](Attempt& attempt) {
        char sent[] = "datagram";
        char got[20] = "";
        int code = 99;
        int result = -2;
        attempt([&] { result = sendToSocket(pair.out(), sent, 8, &code); });
        EXPECT_EQ(result, attempt.failed("send") ? -1 : 0);
        EXPECT_EQ(code, attempt.failed("send") ? 6 : 0);
        if (result != 0) {
            EXPECT_EQ(sendToSocket(pair.out(), sent, 8, &code), 0);
        }
        EXPECT_EQ(recv(pair.in(), got, sizeof got, 0), 8);
        EXPECT_EQ(recv(pair.in(), got, sizeof got, MSG_DONTWAIT), -1) << "sent once";
    });
}

}  // namespace
