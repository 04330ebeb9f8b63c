#include "kfl/sockets.h"

#include <gtest/gtest.h>
#include <sys/un.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "tests/net/peer.h"

namespace {

using namespace kfl_test;

// Leaves the process no descriptor to open until the end.
class NoDescriptors {
  public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit none = before_;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

  private:
    rlimit before_{};
};

TEST(CreateSocketTest, MakesAUdpSocket) {
    int code = 99;
    const Descriptor made(createSocket(&code));
    ASSERT_GE(made.get(), 0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(socketOption(made, SO_DOMAIN), AF_INET);
    EXPECT_EQ(socketOption(made, SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(socketOption(made, SO_PROTOCOL), IPPROTO_UDP);
    EXPECT_EQ(nameOf(made).sin_port, 0) << "not bound yet";
}

TEST(CreateSocketTest, ReportsThatThereIsNone) {
    const NoDescriptors limit;
    int code = 99;
    EXPECT_EQ(createSocket(&code), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_EQ(code, 2);
}

TEST(CreateSocketTest, NeedsNoPlaceForTheCode) {
    const Descriptor made(createSocket(nullptr));
    EXPECT_GE(made.get(), 0);
    const NoDescriptors limit;
    EXPECT_EQ(createSocket(nullptr), -1);
}

class BindSocketTest : public testing::Test {
  protected:
    // Binds to some free port by `asInt`, which makes the argument of it; gives the port.
    template <class AsInt>
    in_port_t bindToFreePort(AsInt asInt) {
        for (int attempt = 0; attempt < 100; ++attempt) {
            const in_port_t port = freePort();
            if (bindSocket(descriptor_, asInt(port)) == 0) return port;
        }
        ADD_FAILURE() << "no port was free";
        return 0;
    }

    Descriptor descriptor_ = udpSocket();
};

TEST_F(BindSocketTest, TakesThePortAsItIs) {
    const in_port_t port = bindToFreePort([](in_port_t free) { return int{free}; });
    const sockaddr_in name = nameOf(descriptor_);
    EXPECT_EQ(name.sin_family, AF_INET);
    EXPECT_EQ(name.sin_port, port) << "the bytes of the record are those of the argument";
    EXPECT_EQ(name.sin_addr.s_addr, INADDR_ANY);
}

TEST_F(BindSocketTest, TakesTheLow16BitsOfThePort) {
    const in_port_t port = bindToFreePort([](in_port_t free) { return 0x7abc0000 | free; });
    EXPECT_EQ(nameOf(descriptor_).sin_port, port);
}

TEST_F(BindSocketTest, TakesTheLow16BitsOfANegativePort) {
    const in_port_t port = bindToFreePort([](in_port_t free) { return free - 65536; });
    EXPECT_EQ(nameOf(descriptor_).sin_port, port);
}

TEST_F(BindSocketTest, LetsTheSystemChooseForPortZero) {
    EXPECT_EQ(bindSocket(descriptor_, 0x10000), 0);
    EXPECT_NE(nameOf(descriptor_).sin_port, 0);
}

TEST_F(BindSocketTest, ReceivesOnEveryInterface) {
    ASSERT_EQ(bindSocket(descriptor_, 0), 0);
    for (const unsigned lastByte : {1U, 2U, 77U}) {
        sendDatagram(loopback(nameOf(descriptor_).sin_port, lastByte), "hello");
        char text[10];
        timeval limit = timeOf(60, 0);
        int code;
        EXPECT_EQ(recvFromSocket(descriptor_, text, sizeof text, &limit, &code), 5);
    }
}

TEST_F(BindSocketTest, ReportsAPortInUse) {
    ASSERT_EQ(bindSocket(descriptor_, 0), 0);
    const Descriptor second = udpSocket();
    EXPECT_EQ(bindSocket(second, nameOf(descriptor_).sin_port), -1);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(nameOf(second).sin_port, 0);
}

TEST_F(BindSocketTest, ReportsASocketThatIsBoundAlready) {
    ASSERT_EQ(bindSocket(descriptor_, 0), 0);
    EXPECT_EQ(bindSocket(descriptor_, 0), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(BindSocketTest, ReportsWhatIsNoSocket) {
    EXPECT_EQ(bindSocket(-1, 0), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(bindSocket(INT_MAX, 0), -1);
    EXPECT_EQ(errno, EBADF);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const Descriptor reading(ends[0]);
    const Descriptor writing(ends[1]);
    EXPECT_EQ(bindSocket(reading, 0), -1);
    EXPECT_EQ(errno, ENOTSOCK);
}

class SendToSocketTest : public testing::Test {
  protected:
    int send(int descriptor, const std::string& text) {
        code_ = 99;
        std::string copy = text;
        return sendToSocket(descriptor, copy.data(), static_cast<unsigned>(copy.size()), &code_);
    }
    std::string received() {
        char text[70000];
        const ssize_t length = recv(peer_, text, sizeof text, 0);
        return length < 0 ? "nothing" : std::string(text, static_cast<size_t>(length));
    }

    Descriptor peer_ = loopbackSocket();
    Descriptor descriptor_ = udpSocket();
    int code_ = 99;
};

TEST_F(SendToSocketTest, SendsToWhereTheSocketIsConnected) {
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    EXPECT_EQ(send(descriptor_, "hello"), 0) << "no byte count";
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(received(), "hello");
}

TEST_F(SendToSocketTest, SendsBytesOfAnyValue) {
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    const std::string bytes("a\0b\xff\n", 5);
    EXPECT_EQ(send(descriptor_, bytes), 0);
    EXPECT_EQ(received(), bytes);
}

TEST_F(SendToSocketTest, SendsAnEmptyDatagram) {
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    EXPECT_EQ(sendToSocket(descriptor_, nullptr, 0, &code_), 0);
    EXPECT_EQ(code_, 0);
    EXPECT_EQ(received(), "");
}

TEST_F(SendToSocketTest, SendsTheLargestDatagramAndNoLarger) {
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    EXPECT_EQ(send(descriptor_, std::string(65507, 'L')), 0);
    EXPECT_EQ(received(), std::string(65507, 'L'));
    EXPECT_EQ(send(descriptor_, std::string(65508, 'L')), -1);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_EQ(code_, 6);
}

TEST_F(SendToSocketTest, FailsOnAnUnconnectedSocket) {
    EXPECT_EQ(send(descriptor_, "hello"), -1);
    EXPECT_EQ(errno, EDESTADDRREQ);
    EXPECT_EQ(code_, 6);
}

TEST_F(SendToSocketTest, FailsOnWhatIsNoSocket) {
    for (const int descriptor : {-1, INT_MIN, 1023, INT_MAX}) {
        EXPECT_EQ(send(descriptor, "hello"), -1);
        EXPECT_EQ(errno, EBADF);
        EXPECT_EQ(code_, 6);
    }
}

TEST_F(SendToSocketTest, ReportsThatNobodyListens) {
    const RefusingPort nobody;
    ASSERT_EQ(connectTo(descriptor_, nobody.address()), 0);
    EXPECT_EQ(send(descriptor_, "hello"), 0) << "nobody knows yet";
    ASSERT_TRUE(becomesReadable(descriptor_));
    EXPECT_EQ(send(descriptor_, "hello"), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(code_, 6);
}

TEST_F(SendToSocketTest, SendsOnALocalSocket) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
    const Descriptor sending(ends[0]);
    peer_.reset(ends[1]);
    EXPECT_EQ(send(sending, "hello"), 0);
    EXPECT_EQ(received(), "hello");
}

TEST_F(SendToSocketTest, WorksOnHighDescriptors) {
    const ManyDescriptors many;
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    const Descriptor high(dup2(descriptor_, 2500));
    EXPECT_EQ(send(high, "hello"), 0);
    EXPECT_EQ(received(), "hello");
}

TEST_F(SendToSocketTest, NeedsNoPlaceForTheCode) {
    ASSERT_EQ(connectTo(descriptor_, nameOf(peer_)), 0);
    char text[] = "hello";
    EXPECT_EQ(sendToSocket(descriptor_, text, 5, nullptr), 0);
    EXPECT_EQ(sendToSocket(-1, text, 5, nullptr), -1);
}

TEST(SocketResultToStringTest, GivesTheTextsAsTheyStand) {
    EXPECT_STREQ(socketResultToString(0), "");
    EXPECT_STREQ(
        socketResultToString(1),
        "Socket version negotiation errorUnable to initialize socketSocket error (select)");
    EXPECT_EQ(std::strlen(socketResultToString(1)), 80U);
    EXPECT_STREQ(socketResultToString(2), "Socket has been closed");
    EXPECT_STREQ(socketResultToString(3), "Socket error (recv)");
    EXPECT_STREQ(socketResultToString(4), "Socket error (send)");
}

TEST(SocketResultToStringTest, GivesNullForEveryOtherCode) {
    for (const int code : {5, 6, 7, 8, 100, INT_MAX, -1, -2, INT_MIN})
        EXPECT_EQ(socketResultToString(code), nullptr) << code;
}

TEST(SocketResultToStringTest, GivesTheSameConstantEachTime) {
    for (int code = 0; code < 5; ++code)
        EXPECT_EQ(socketResultToString(code), socketResultToString(code));
}

}  // namespace
