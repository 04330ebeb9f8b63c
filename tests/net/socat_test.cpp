// The sockets against a program that other people wrote: socat.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <csignal>
#include <cstring>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"
#include "tests/net/peer.h"

namespace {

using namespace std::chrono_literals;
using namespace kfl_test;

// socat between two addresses; "-" is a pipe to this process.
class Socat {
  public:
    Socat(std::string from, std::string to) {
        int input[2];
        int output[2];
        if (pipe2(input, O_CLOEXEC) < 0 || pipe2(output, O_CLOEXEC) < 0) return;
        input_.reset(input[1]);
        output_.reset(output[0]);
        const Descriptor itsInput(input[0]);
        const Descriptor itsOutput(output[1]);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, itsInput, 0);
        posix_spawn_file_actions_adddup2(&actions, itsOutput, 1);
        char program[] = "socat";
        char oneWay[] = "-u";
        char* arguments[] = {program, oneWay, from.data(), to.data(), nullptr};
        if (posix_spawnp(&pid_, program, &actions, nullptr, arguments, environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Socat() {
        if (pid_ < 0) return;
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    Socat(const Socat&) = delete;
    Socat& operator=(const Socat&) = delete;

    bool runs() const { return pid_ > 0; }
    void write(const std::string& text) const {
        EXPECT_EQ(::write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool hasOutput(int milliseconds) const {
        pollfd watched{output_, POLLIN, 0};
        return poll(&watched, 1, milliseconds) == 1;
    }
    std::string output() const {
        char text[1000];
        const ssize_t length = ::read(output_, text, sizeof text);
        return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
    }

  private:
    pid_t pid_ = -1;
    Descriptor input_;
    Descriptor output_;
};

std::string numberOf(in_port_t rawPort) { return std::to_string(ntohs(rawPort)); }

// Sends until socat, which may not be listening yet, passes it on.
void sendUntilHeard(int descriptor, const Socat& socat, std::string text) {
    for (int attempt = 0; attempt < 600 && !socat.hasOutput(100); ++attempt) {
        int code;
        sendToSocket(descriptor, text.data(), static_cast<unsigned>(text.size()), &code);
    }
}

TEST(SocatTest, SendsUdpToTheSocketFunctions) {
    const Descriptor descriptor(createSocket(nullptr));
    ASSERT_EQ(bindSocket(descriptor, 0), 0);
    const Socat socat("-", "UDP4-SENDTO:127.0.0.1:" + numberOf(nameOf(descriptor).sin_port));
    ASSERT_TRUE(socat.runs());
    for (const std::string& text : {std::string("hello"), std::string(1000, 'x')}) {
        socat.write(text);
        char buffer[2000];
        timeval limit = timeOf(60, 0);
        int code;
        ASSERT_EQ(recvFromSocket(descriptor, buffer, sizeof buffer, &limit, &code),
                  static_cast<int>(text.size()));
        EXPECT_EQ(std::string(buffer, text.size()), text);
    }
}

TEST(SocatTest, ReceivesUdpFromTheSocketFunctions) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        // Somebody else may take the port before socat does: then with another one.
        const in_port_t port = freePort();
        const Socat socat("UDP4-RECV:" + numberOf(port) + ",bind=127.0.0.1", "-");
        ASSERT_TRUE(socat.runs());
        const Descriptor descriptor(createSocket(nullptr));
        ASSERT_EQ(connectTo(descriptor, loopback(port)), 0);
        sendUntilHeard(descriptor, socat, "hello");
        if (socat.output().rfind("hello", 0) == 0) return;
    }
    ADD_FAILURE() << "socat heard nothing";
}

TEST(SocatTest, SendsUdpToAnISCSocket) {
    ISCSocket socket(SOCK_DGRAM, 0, 0);
    int code;
    ASSERT_TRUE(socket.initialize(code) && socket.bind());
    const Descriptor closing(socket.descriptor());
    const Socat socat("-", "UDP4-SENDTO:127.0.0.1:" + numberOf(nameOf(closing).sin_port));
    ASSERT_TRUE(socat.runs());
    socat.write("hello");
    char buffer[10];
    timeval limit = timeOf(60, 0);
    EXPECT_EQ(socket.receive(buffer, sizeof buffer, limit, code), 5);
    EXPECT_EQ(code, 0);
}

TEST(SocatTest, SendsToAnIPCSocket) {
    TemporaryFolder folder;
    std::string path = folder / "socket";
    IPCSocket socket(path.data());
    int code;
    ASSERT_TRUE(socket.initialize(code) && socket.bind());
    const Descriptor closing(socket.descriptor());
    const Socat socat("-", "UNIX-SENDTO:" + path);
    ASSERT_TRUE(socat.runs());
    socat.write("hello");
    char buffer[10];
    timeval limit = timeOf(60, 0);
    EXPECT_EQ(socket.receive(buffer, sizeof buffer, limit, code), 5);
    EXPECT_EQ(std::string(buffer, 5), "hello");
}

TEST(SocatTest, ReceivesOnALocalSocketFromTheSocketFunctions) {
    TemporaryFolder folder;
    const std::string path = folder / "socket";
    const Socat socat("UNIX-RECV:" + path, "-");
    ASSERT_TRUE(socat.runs());
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    const Descriptor descriptor(socket(AF_UNIX, SOCK_DGRAM, 0));
    for (int attempt = 0; attempt < 600 && connectTo(descriptor, name) < 0; ++attempt)
        std::this_thread::sleep_for(100ms);
    sendUntilHeard(descriptor, socat, "hello");
    EXPECT_EQ(socat.output().substr(0, 5), "hello");
}

}  // namespace
