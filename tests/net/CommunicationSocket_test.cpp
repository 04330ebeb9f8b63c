#include "kfl/CommunicationSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>

#include "kfl/sockets.h"
#include "tests/net/peer.h"

namespace {

using namespace kfl_test;

// Closes what an object was given, which the object itself does not.
template <class Socket>
class Closing : public Socket {
  public:
    using Socket::Socket;
    ~Closing() override {
        if (this->descriptor() > 2) close(this->descriptor());
    }
    bool initialize() {
        int code = 99;
        const bool result = Socket::initialize(code);
        EXPECT_EQ(code, 0);
        return result;
    }
    int receive(std::string& text) {
        char buffer[1000];
        timeval limit = timeOf(60, 0);
        int code = 99;
        const int length = Socket::receive(buffer, sizeof buffer, limit, code);
        text.assign(buffer, length > 0 ? static_cast<size_t>(length) : 0);
        return code;
    }
};

// A kind of the host's own: over IPv6, by what the base gives to those that derive from it.
class Version6Socket : public CommunicationSocket {
  public:
    Version6Socket() : CommunicationSocket(AF_INET6, SOCK_DGRAM, IPPROTO_UDP, 0) {}
    bool bind() override {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = static_cast<in_port_t>(port());
        return bindTo(descriptor(), address) >= 0;
    }
};

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

TEST(CommunicationSocketTest, KeepsWhatItIsGivenAndMakesNoSocket) {
    const int next = Descriptor(dup(0)).get();
    const ISCSocket socket(SOCK_STREAM, IPPROTO_TCP, -77);
    EXPECT_EQ(socket.domain(), AF_INET);
    EXPECT_EQ(socket.type(), SOCK_STREAM);
    EXPECT_EQ(socket.protocol(), IPPROTO_TCP);
    EXPECT_EQ(socket.port(), -77);
    EXPECT_EQ(socket.descriptor(), 0);
    EXPECT_EQ(Descriptor(dup(0)).get(), next) << "no descriptor was taken";
}

TEST(CommunicationSocketTest, InitializeMakesASocketOfTheKind) {
    struct Kind {
        int type;
        int protocol;
        int madeProtocol;
    };
    for (const Kind& kind : {Kind{SOCK_DGRAM, 0, IPPROTO_UDP}, Kind{SOCK_STREAM, 0, IPPROTO_TCP},
                             Kind{SOCK_DGRAM, IPPROTO_UDP, IPPROTO_UDP}}) {
        Closing<ISCSocket> socket(kind.type, kind.protocol, 0);
        ASSERT_TRUE(socket.initialize());
        EXPECT_EQ(socketOption(socket.descriptor(), SO_DOMAIN), AF_INET);
        EXPECT_EQ(socketOption(socket.descriptor(), SO_TYPE), kind.type);
        EXPECT_EQ(socketOption(socket.descriptor(), SO_PROTOCOL), kind.madeProtocol);
    }
}

TEST(CommunicationSocketTest, InitializeReportsThatThereIsNoSuchSocket) {
    ISCSocket socket(SOCK_DGRAM, IPPROTO_TCP, 0);
    int code = 99;
    EXPECT_FALSE(socket.initialize(code));
    EXPECT_EQ(errno, EPROTONOSUPPORT);
    EXPECT_EQ(code, 2);
    EXPECT_EQ(socket.descriptor(), -1);
}

TEST(CommunicationSocketTest, NothingWorksAfterInitializeFailed) {
    ISCSocket socket(SOCK_DGRAM, IPPROTO_TCP, 0);
    int code;
    ASSERT_FALSE(socket.initialize(code));
    EXPECT_FALSE(socket.bind());
    EXPECT_EQ(errno, EBADF);
    timeval forEver{};
    char byte;
    EXPECT_EQ(socket.receive(&byte, 1, forEver, code), -1);
    EXPECT_EQ(code, 3);
    EXPECT_EQ(errno, EBADF);
}

TEST(CommunicationSocketTest, ASecondInitializeForgetsTheFirstDescriptor) {
    Closing<ISCSocket> socket(SOCK_DGRAM, 0, 0);
    ASSERT_TRUE(socket.initialize());
    const Descriptor first(socket.descriptor());
    ASSERT_TRUE(socket.initialize());
    EXPECT_NE(socket.descriptor(), first.get());
    EXPECT_TRUE(isOpen(first));
}

TEST(CommunicationSocketTest, TheDestructorLeavesDescriptorAndFile) {
    TemporaryFolder folder;
    std::string path = folder / "socket";
    auto local = std::make_unique<IPCSocket>(path.data());
    auto udp = std::make_unique<ISCSocket>(SOCK_DGRAM, 0, 0);
    int code;
    ASSERT_TRUE(local->initialize(code) && local->bind());
    ASSERT_TRUE(udp->initialize(code) && udp->bind());
    const Descriptor localDescriptor(local->descriptor());
    const Descriptor udpDescriptor(udp->descriptor());
    local.reset();
    udp.reset();
    EXPECT_TRUE(isOpen(localDescriptor));
    EXPECT_TRUE(isOpen(udpDescriptor));
    EXPECT_EQ(access(path.c_str(), F_OK), 0);
}

TEST(CommunicationSocketTest, HostsMakeKindsOfTheirOwn) {
    Closing<Version6Socket> socket;
    // A system without IPv6 says so here, and the object then reports it.
    const Descriptor version6(::socket(AF_INET6, SOCK_DGRAM, 0));
    int code = 99;
    ASSERT_EQ(socket.CommunicationSocket::initialize(code), version6 >= 0);
    EXPECT_EQ(code, version6 >= 0 ? 0 : 2);
    CommunicationSocket& base = socket;
    EXPECT_EQ(base.bind(), version6 >= 0);
}

TEST(CommunicationSocketTest, RefusesANegativeLength) {
    Closing<ISCSocket> socket(SOCK_DGRAM, 0, 0);
    ASSERT_TRUE(socket.initialize() && socket.bind());
    sendDatagram(loopback(nameOf(socket.descriptor()).sin_port), "stays");
    for (const int length : {-1, INT_MIN}) {
        char bytes[] = "***";
        timeval limit = timeOf(60, 0);
        int code = 99;
        EXPECT_EQ(static_cast<CommunicationSocket&>(socket).receive(bytes, length, limit, code),
                  -1);
        EXPECT_EQ(code, 5);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_STREQ(bytes, "***");
    }
    std::string text;
    EXPECT_EQ(socket.receive(text), 0);
    EXPECT_EQ(text, "stays");
}

TEST(CommunicationSocketTest, ResultToStringGivesTheTextsAsTheyStand) {
    ISCSocket socket(SOCK_DGRAM, 0, 0);
    EXPECT_STREQ(socket.resultToString(0), "");
    EXPECT_STREQ(
        socket.resultToString(1),
        "Unable to initialize Windows socketUnable to initialize socketSocket has been closed");
    EXPECT_STREQ(socket.resultToString(2), "Recvfrom socket returns error");
    EXPECT_STREQ(socket.resultToString(3), "Could not parse IAD Cfg message");
}

TEST(CommunicationSocketTest, ResultToStringGivesNullForEveryOtherCode) {
    ISCSocket socket(SOCK_DGRAM, 0, 0);
    for (const int code : {4, 5, 6, 7, 100, INT_MAX, -1, -2, INT_MIN})
        EXPECT_EQ(socket.resultToString(code), nullptr) << code;
}

class IPCSocketTest : public testing::Test {
  protected:
    // Sends from a socket without a name.
    static ssize_t sendTo(const std::string& path, const std::string& text) {
        const Descriptor sender(socket(AF_UNIX, SOCK_DGRAM, 0));
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        path.copy(name.sun_path, sizeof name.sun_path);
        return sendto(sender, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&name),
                      sizeof name);
    }
    std::ptrdiff_t filesInFolder() const {
        return std::distance(std::filesystem::directory_iterator(folder_.path()), {});
    }

    TemporaryFolder folder_;
    std::string path_ = folder_ / "socket";
};

TEST_F(IPCSocketTest, IsALocalDatagramSocket) {
    Closing<IPCSocket> socket(path_.data());
    EXPECT_EQ(socket.domain(), AF_UNIX);
    EXPECT_EQ(socket.type(), SOCK_DGRAM);
    EXPECT_EQ(socket.protocol(), 0);
    EXPECT_EQ(socket.port(), 0);
    EXPECT_EQ(socket.descriptor(), 0);
    EXPECT_EQ(socket.path(), path_.data()) << "the pointer itself";
    ASSERT_TRUE(socket.initialize());
    EXPECT_EQ(socketOption(socket.descriptor(), SO_DOMAIN), AF_UNIX);
    EXPECT_EQ(socketOption(socket.descriptor(), SO_TYPE), SOCK_DGRAM);
}

TEST_F(IPCSocketTest, ReceivesUnderItsName) {
    Closing<IPCSocket> socket(path_.data());
    ASSERT_TRUE(socket.initialize());
    EXPECT_EQ(filesInFolder(), 0);
    ASSERT_TRUE(socket.bind());
    struct stat state {};
    ASSERT_EQ(stat(path_.c_str(), &state), 0);
    EXPECT_TRUE(S_ISSOCK(state.st_mode));
    EXPECT_EQ(sendTo(path_, "hello"), 5);
    std::string text;
    EXPECT_EQ(socket.receive(text), 0);
    EXPECT_EQ(text, "hello");
    EXPECT_EQ(sendTo(path_, ""), 0);
    EXPECT_EQ(socket.receive(text), 4);
}

TEST_F(IPCSocketTest, BindsThroughTheBase) {
    Closing<IPCSocket> socket(path_.data());
    ASSERT_TRUE(socket.initialize());
    CommunicationSocket& base = socket;
    EXPECT_TRUE(base.bind());
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(IPCSocketTest, ReadsThePathWhenItBinds) {
    const std::string other = folder_ / "second";
    std::string text = path_;
    Closing<IPCSocket> socket(text.data());
    text.replace(text.size() - 6, 6, "second");
    ASSERT_TRUE(socket.initialize() && socket.bind());
    EXPECT_EQ(access(other.c_str(), F_OK), 0);
    EXPECT_NE(access(path_.c_str(), F_OK), 0);
}

TEST_F(IPCSocketTest, TakesNoNameThatExists) {
    for (const char* kind : {"file", "folder", "socket of an earlier run"}) {
        if (*kind == 'f' && kind[1] == 'i') Descriptor(open(path_.c_str(), O_CREAT | O_RDWR, 0600));
        if (*kind == 'f' && kind[1] == 'o') mkdir(path_.c_str(), 0700);
        if (*kind == 's') {
            Closing<IPCSocket> earlier(path_.data());
            ASSERT_TRUE(earlier.initialize() && earlier.bind());
        }
        Closing<IPCSocket> socket(path_.data());
        ASSERT_TRUE(socket.initialize());
        EXPECT_FALSE(socket.bind()) << kind;
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_EQ(filesInFolder(), 1) << "it is not removed";
        remove(path_.c_str());
        EXPECT_TRUE(socket.bind()) << "once it is gone";
        remove(path_.c_str());
    }
}

TEST_F(IPCSocketTest, TakesPathsOfUpTo107Bytes) {
    for (const size_t length : {50U, 106U, 107U}) {
        std::string path = pathOfLength(folder_, length);
        Closing<IPCSocket> socket(path.data());
        ASSERT_TRUE(socket.initialize());
        EXPECT_TRUE(socket.bind()) << length;
        EXPECT_EQ(access(path.c_str(), F_OK), 0);
        EXPECT_EQ(sendTo(path, "hello"), 5);
        std::string text;
        EXPECT_EQ(socket.receive(text), 0);
        EXPECT_EQ(text, "hello");
        sockaddr_un name{};
        socklen_t nameLength = sizeof name;
        getsockname(socket.descriptor(), reinterpret_cast<sockaddr*>(&name), &nameLength);
        EXPECT_EQ(std::string(name.sun_path, strnlen(name.sun_path, sizeof name.sun_path)), path);
    }
}

TEST_F(IPCSocketTest, RefusesLongerPaths) {
    for (const size_t length : {108U, 109U, 110U, 255U, 4096U}) {
        std::string path = pathOfLength(folder_, length);
        Closing<IPCSocket> socket(path.data());
        ASSERT_TRUE(socket.initialize());
        EXPECT_FALSE(socket.bind()) << length;
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_EQ(filesInFolder(), 0) << "no shortened name either";
    }
}

TEST_F(IPCSocketTest, RefusesPathsThatCannotBe) {
    std::string missing = folder_.path() + "/missing/socket";
    Closing<IPCSocket> inMissing(missing.data());
    ASSERT_TRUE(inMissing.initialize());
    EXPECT_FALSE(inMissing.bind());
    EXPECT_EQ(errno, ENOENT);
    Closing<IPCSocket> nameless(nullptr);
    ASSERT_TRUE(nameless.initialize());
    EXPECT_FALSE(nameless.bind());
    EXPECT_EQ(errno, EFAULT);
}

TEST_F(IPCSocketTest, BindsOnceOnly) {
    std::string second = folder_ / "second";
    Closing<IPCSocket> socket(path_.data());
    ASSERT_TRUE(socket.initialize() && socket.bind());
    EXPECT_FALSE(socket.bind());
}

class ISCSocketTest : public testing::Test {
  protected:
    // Binds to some free port, given by `asInt`; gives the port.
    template <class AsInt>
    static in_port_t bindToFreePort(std::unique_ptr<Closing<ISCSocket>>& socket, AsInt asInt) {
        for (int attempt = 0; attempt < 100; ++attempt) {
            const in_port_t port = freePort();
            socket = std::make_unique<Closing<ISCSocket>>(SOCK_DGRAM, 0, asInt(port));
            if (socket->initialize() && socket->bind()) return port;
        }
        ADD_FAILURE() << "no port was free";
        return 0;
    }
};

TEST_F(ISCSocketTest, TakesThePortAsItIs) {
    std::unique_ptr<Closing<ISCSocket>> socket;
    const in_port_t port = bindToFreePort(socket, [](in_port_t free) { return int{free}; });
    const sockaddr_in name = nameOf(socket->descriptor());
    EXPECT_EQ(name.sin_family, AF_INET);
    EXPECT_EQ(name.sin_port, port);
    EXPECT_EQ(name.sin_addr.s_addr, INADDR_ANY);
}

TEST_F(ISCSocketTest, TakesTheLow16BitsOfThePort) {
    std::unique_ptr<Closing<ISCSocket>> socket;
    for (const int above : {0x12340000, -65536}) {
        const in_port_t port =
            bindToFreePort(socket, [above](in_port_t free) { return above + free; });
        EXPECT_EQ(nameOf(socket->descriptor()).sin_port, port);
        EXPECT_EQ(socket->port(), above + port) << "kept whole";
    }
}

TEST_F(ISCSocketTest, ReceivesOnEveryInterface) {
    Closing<ISCSocket> socket(SOCK_DGRAM, 0, 0);
    ASSERT_TRUE(socket.initialize() && socket.bind());
    for (const unsigned lastByte : {1U, 2U, 200U}) {
        sendDatagram(loopback(nameOf(socket.descriptor()).sin_port, lastByte), "hello");
        std::string text;
        EXPECT_EQ(socket.receive(text), 0);
        EXPECT_EQ(text, "hello");
    }
}

TEST_F(ISCSocketTest, ReportsAPortInUse) {
    Closing<ISCSocket> first(SOCK_DGRAM, 0, 0);
    ASSERT_TRUE(first.initialize() && first.bind());
    Closing<ISCSocket> second(SOCK_DGRAM, 0, nameOf(first.descriptor()).sin_port);
    ASSERT_TRUE(second.initialize());
    CommunicationSocket& base = second;
    EXPECT_FALSE(base.bind());
    EXPECT_EQ(errno, EADDRINUSE);
}

TEST_F(ISCSocketTest, TalksToTheSocketFunctions) {
    Closing<ISCSocket> socket(SOCK_DGRAM, 0, 0);
    ASSERT_TRUE(socket.initialize() && socket.bind());
    int code;
    const Descriptor sender(createSocket(&code));
    ASSERT_EQ(connectTo(sender, loopback(nameOf(socket.descriptor()).sin_port)), 0);
    char text[] = "from the other layer";
    EXPECT_EQ(sendToSocket(sender, text, sizeof text - 1, &code), 0);
    std::string received;
    EXPECT_EQ(socket.receive(received), 0);
    EXPECT_EQ(received, text);
}

}  // namespace
