#include "kfl/convenience/datagrams.h"
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <string>

#include "kfl/CommunicationSocket.h"
#include "kfl/convenience/SocketGuard.h"
#include "kfl/sockets.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::receiveFrom;
using kfl::removeDeadSocket;
using kfl::sendBack;
using kfl::Sender;
using kfl::sendToAddress;
using kfl::sendToPath;
using kfl::SocketGuard;

class DatagramsTest : public testing::Test {
  protected:
    // A local datagram socket, named where a name is given.
    static SocketGuard local(std::string name = "", int type = SOCK_DGRAM) {
        SocketGuard guard(socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
        sockaddr_un address;
        if (!name.empty() && kfl::makeAddress(name.c_str(), address)) {
            EXPECT_EQ(bind(guard.descriptor(), reinterpret_cast<const sockaddr*>(&address),
                           sizeof address),
                      0);
        }
        return guard;
    }
    // A UDP socket, and the port that it got.
    static SocketGuard udp(unsigned short& port) {
        SocketGuard guard(createSocket(nullptr));
        EXPECT_EQ(bindSocket(guard.descriptor(), 0), 0);
        sockaddr_in address;
        socklen_t length = sizeof address;
        getsockname(guard.descriptor(), reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(address.sin_port);
        return guard;
    }

    const kfl_test::TemporaryFolder folder;
    const std::string path = folder / "here";
    char message[16] = {};
    Sender sender;
};

TEST_F(DatagramsTest, GoToAPathAndBack) {
    const SocketGuard here = local(path);
    const SocketGuard there = local(folder / "there");
    ASSERT_TRUE(sendToPath(there.descriptor(), path.c_str(), "ping", 4));
    ASSERT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 5000, sender), 4);
    EXPECT_STREQ(message, "ping");
    EXPECT_EQ(sender.path(), folder / "there");
    EXPECT_EQ(sender.port(), 0);
    EXPECT_FALSE(sender.host(message, sizeof message));
    EXPECT_FALSE(sender.wasCut);
    ASSERT_TRUE(sendBack(here.descriptor(), sender, "pong", 4));
    ASSERT_EQ(receiveFrom(there.descriptor(), message, sizeof message, 5000, sender), 4);
    EXPECT_EQ(sender.path(), path);
}

TEST_F(DatagramsTest, GoToAnAddressAndBack) {
    unsigned short herePort = 0;
    unsigned short therePort = 0;
    const SocketGuard here = udp(herePort);
    const SocketGuard there = udp(therePort);
    ASSERT_TRUE(sendToAddress(there.descriptor(), "127.0.0.1", herePort, "ping", 4));
    ASSERT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 5000, sender), 4);
    EXPECT_EQ(sender.port(), therePort);
    EXPECT_STREQ(sender.path(), "");
    char host[16];
    ASSERT_TRUE(sender.host(host, sizeof host));
    EXPECT_STREQ(host, "127.0.0.1");
    EXPECT_FALSE(sender.host(host, 5));
    ASSERT_TRUE(sendBack(here.descriptor(), sender, "pong", 4));
    EXPECT_EQ(receiveFrom(there.descriptor(), message, sizeof message, 5000, sender), 4);
}

TEST_F(DatagramsTest, ASenderWithoutANameCannotBeAnswered) {
    const SocketGuard here = local(path);
    const SocketGuard nameless = local();
    ASSERT_TRUE(sendToPath(nameless.descriptor(), path.c_str(), "x", 1));
    ASSERT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 5000, sender), 1);
    EXPECT_STREQ(sender.path(), "");
    EXPECT_FALSE(sendBack(here.descriptor(), sender, "y", 1));
    EXPECT_EQ(errno, ENOTCONN);
}

TEST_F(DatagramsTest, AnEmptyOneAndOneThatIsTooLong) {
    const SocketGuard here = local(path);
    ASSERT_TRUE(sendToPath(here.descriptor(), path.c_str(), "", 0));
    EXPECT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 5000, sender), 0);
    ASSERT_TRUE(sendToPath(here.descriptor(), path.c_str(), "0123456789", 10));
    EXPECT_EQ(receiveFrom(here.descriptor(), message, 4, 5000, sender), 4);
    EXPECT_TRUE(sender.wasCut);
    EXPECT_STREQ(message, "0123");
}

TEST_F(DatagramsTest, TheTimeWithoutOneIsTold) {
    const SocketGuard here = local(path);
    EXPECT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 0, sender), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 50, sender), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(45));
}

TEST_F(DatagramsTest, ASignalEndsTheWait) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &before);
    const SocketGuard here = local(path);
    alarm(1);
    EXPECT_EQ(receiveFrom(here.descriptor(), message, sizeof message, 20000, sender), -1);
    EXPECT_EQ(errno, EINTR);
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(DatagramsTest, WhatCannotBeSentIsTold) {
    const SocketGuard here = local();
    EXPECT_FALSE(sendToPath(here.descriptor(), path.c_str(), "x", 1));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(sendToPath(here.descriptor(), std::string(108, 'x').c_str(), "x", 1));
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_FALSE(sendToPath(here.descriptor(), "", "x", 1));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(sendToPath(here.descriptor(), nullptr, "x", 1));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(sendToPath(-1, path.c_str(), "x", 1));
    EXPECT_EQ(errno, EBADF);
    EXPECT_FALSE(sendToAddress(here.descriptor(), "localhost", 1, "x", 1));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(sendToAddress(here.descriptor(), nullptr, 1, "x", 1));
    EXPECT_EQ(errno, EINVAL);
    // A closed descriptor is seen by poll as an event.
    EXPECT_EQ(receiveFrom(1 << 20, message, sizeof message, 20000, sender), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(DatagramsTest, ADeadSocketIsRemoved) {
    EXPECT_TRUE(removeDeadSocket(path.c_str()));
    { const SocketGuard left = local(path); }
    ASSERT_TRUE(std::filesystem::exists(path));
    EXPECT_TRUE(removeDeadSocket(path.c_str()));
    EXPECT_FALSE(std::filesystem::exists(path));
    const SocketGuard again = local(path);
}

TEST_F(DatagramsTest, ASocketThatSomebodyHasStays) {
    const SocketGuard alive = local(path);
    EXPECT_FALSE(removeDeadSocket(path.c_str()));
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_TRUE(std::filesystem::exists(path));
    // One of another kind, too.
    const std::string streamPath = folder / "stream";
    const SocketGuard stream = local(streamPath, SOCK_STREAM);
    ASSERT_EQ(listen(stream.descriptor(), 1), 0);
    EXPECT_FALSE(removeDeadSocket(streamPath.c_str()));
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_TRUE(std::filesystem::exists(streamPath));
}

TEST_F(DatagramsTest, WhatIsNoSocketStays) {
    const std::string file = folder.write("file", "text");
    EXPECT_FALSE(removeDeadSocket(file.c_str()));
    EXPECT_EQ(errno, ENOTSOCK);
    EXPECT_FALSE(removeDeadSocket(folder.path().c_str()));
    EXPECT_EQ(errno, ENOTSOCK);
    // A link to a dead socket is no socket itself.
    { const SocketGuard left = local(path); }
    const std::string link = folder / "link";
    std::filesystem::create_symlink(path, link);
    EXPECT_FALSE(removeDeadSocket(link.c_str()));
    EXPECT_EQ(errno, ENOTSOCK);
    EXPECT_TRUE(std::filesystem::exists(file) && std::filesystem::is_symlink(link));
    EXPECT_FALSE(removeDeadSocket(""));
    EXPECT_EQ(errno, EINVAL);
}

}  // namespace
