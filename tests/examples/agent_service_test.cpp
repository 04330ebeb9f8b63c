// The example agent at work: started, spoken to and stopped as on a device.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl_test::TemporaryFolder;
using kfl_test::Words;
using kfl_test::wordsOf;
using kfl_test::operator+;

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int freeUdpPort() {
    const int probe = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = loopback(0);
    bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length);
    close(probe);
    return ntohs(address.sin_port);
}

template <class Address>
void sendTo(int family, const Address& address, const std::string& text) {
    const int sender = socket(family, SOCK_DGRAM, 0);
    const ssize_t sent = sendto(sender, text.data(), text.size(), 0,
                                reinterpret_cast<const sockaddr*>(&address), sizeof address);
    EXPECT_EQ(sent, static_cast<ssize_t>(text.size())) << std::strerror(errno);
    close(sender);
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Runs the agent in a folder of its own, with a configuration of its own.
class AgentServiceTest : public testing::Test {
  protected:
    void TearDown() override {
        if (agent > 0) {
            kill(agent, SIGKILL);
            waitpid(agent, nullptr, 0);
        }
    }

    void start(const std::string& services) {
        const std::string file = folder.write(
            "test.ini", "[services]\ncontrol-socket=" + path +
                            "\ndiscovery-port=" + std::to_string(port) + "\n" + services);
        Words words = wordsOf(KFL_PROGRAM) + Words{"--serve", file};
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        agent = fork();
        if (agent != 0) return;
        const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(out, 1);
        dup2(out, 2);
        execvp(arguments[0], arguments.data());
        _exit(126);
    }

    // Waits until the agent has printed that text.
    bool hasPrinted(const std::string& text) {
        for (int i = 0; i < 1000; ++i) {
            if (contentOf(output).find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        ADD_FAILURE() << "not printed: " << text << "\nbut:\n" << contentOf(output);
        return false;
    }

    int stop(int signal = SIGTERM) {
        kill(agent, signal);
        int status = -1;
        EXPECT_EQ(waitpid(agent, &status, 0), agent);
        agent = -1;
        return status;
    }

    int helperPid() {
        const std::string text = contentOf(output);
        const std::string mark = "helper: process ";
        const std::size_t at = text.find(mark);
        return at == std::string::npos ? -1 : std::stoi(text.substr(at + mark.size()));
    }

    const TemporaryFolder folder;
    const std::string path = folder / "agent.socket";
    const std::string output = folder / "output";
    const int port = freeUdpPort();
    pid_t agent = -1;
};

TEST_F(AgentServiceTest, ReceivesOnBothSocketsAndLeavesNothingBehind) {
    start("helper=sleep 600\nhelper-output=/dev/null\n");
    ASSERT_TRUE(hasPrinted("helper: process "));
    sockaddr_un local{};
    local.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof local.sun_path);
    std::memcpy(local.sun_path, path.c_str(), path.size() + 1);
    sendTo(AF_UNIX, local, "status please");
    sendTo(AF_INET, loopback(port), "who is there");
    EXPECT_TRUE(hasPrinted("received on the local socket: status please\n"));
    EXPECT_TRUE(hasPrinted("received on the UDP socket: who is there\n"));
    const int helper = helperPid();
    ASSERT_GT(helper, 0);
    EXPECT_EQ(kill(helper, 0), 0);

    EXPECT_EQ(stop(), 0);
    EXPECT_NE(contentOf(output).find("event 010-01-2: agent is down\n"), std::string::npos);
    EXPECT_EQ(kill(helper, 0), -1) << "the helper outlived the agent";
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "the socket's path outlived the agent";
}

TEST_F(AgentServiceTest, ReapsAHelperThatEndsAndSaysHow) {
    start("helper=sh -c exit\nhelper-output=/dev/null\n");
    EXPECT_TRUE(hasPrinted(": ended with 0 (raw status 0)"));
    EXPECT_EQ(stop(SIGINT), 0);
}

// For the agents that are started while it lives. The child that cannot become the helper ends with
// exit(), where LeakSanitizer waits for ever if another thread was allocating when it was forked.
class NoLeakCheckAtExit {
  public:
    NoLeakCheckAtExit() {
        const char* const options = getenv("ASAN_OPTIONS");
        if (options) before_ = options;
        setenv("ASAN_OPTIONS", (before_ + ":leak_check_at_exit=0").c_str(), 1);
    }
    ~NoLeakCheckAtExit() { setenv("ASAN_OPTIONS", before_.c_str(), 1); }
    NoLeakCheckAtExit(const NoLeakCheckAtExit&) = delete;
    NoLeakCheckAtExit& operator=(const NoLeakCheckAtExit&) = delete;

  private:
    std::string before_;
};

TEST_F(AgentServiceTest, SaysWhenAHelperCannotBeRun) {
    const NoLeakCheckAtExit setting;
    start("helper=no-such-program\nhelper-output=" + (folder / "helper.log") + "\n");
    EXPECT_TRUE(hasPrinted(": ended with 127 (raw status 32512)"));
    EXPECT_EQ(stop(), 0);
}

TEST_F(AgentServiceTest, WaitsForItsSelfTestAndRaisesTheAlarmByItsResult) {
    start("self-test=/bin/sleep 0.1\n");
    EXPECT_TRUE(hasPrinted("self-test: ended with 0 (raw status 0)\nalarm 010-02-1 off"));
    EXPECT_EQ(stop(), 0);
    start("self-test=/bin/sleep never\n");
    EXPECT_TRUE(hasPrinted("self-test: ended with 1 (raw status 256)\nalarm 010-02-1 on"));
    EXPECT_EQ(stop(), 0);
}

TEST_F(AgentServiceTest, KeepsAnEncipheredBackupThatReadsBackTheSame) {
    const std::string backup = folder / "backup";
    start("[backup]\nenabled=yes\npath=" + backup + "\n");
    ASSERT_TRUE(hasPrinted("restored: the same\n"));
    EXPECT_EQ(stop(), 0);
    const std::string original = contentOf(folder / "test.ini");
    const std::string enciphered = contentOf(backup);
    const std::size_t size = (original.size() + 15) / 16 * 16;
    EXPECT_EQ(enciphered.size(), size);
    EXPECT_EQ(enciphered.find("control-socket"), std::string::npos);
    std::ostringstream line;
    line << "backup: " << original.size() << " bytes as " << size << " in " << backup << ", "
         << size - original.size() << " of padding; restored: the same\n";
    EXPECT_NE(contentOf(output).find(line.str()), std::string::npos) << contentOf(output);
    EXPECT_NE(access((backup + ".restored").c_str(), F_OK), 0);
}

TEST_F(AgentServiceTest, SaysWhenTheBackupCannotBeWritten) {
    start("[backup]\nenabled=yes\npath=" + folder.path() + "/none/backup\n");
    EXPECT_TRUE(hasPrinted("restored: not the same\n"));
    EXPECT_EQ(stop(), 0);
}

TEST_F(AgentServiceTest, TakesANameThatAnEarlierRunLeftBehind) {
    folder.write("agent.socket", "");
    start("");
    EXPECT_TRUE(hasPrinted("agent is up"));
    EXPECT_EQ(stop(), 0);
}

TEST_F(AgentServiceTest, EndsWithAMessageWhenAPortIsTaken) {
    const int taken = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    ASSERT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    start("");
    int status = 0;
    EXPECT_EQ(waitpid(agent, &status, 0), agent);
    agent = -1;
    close(taken);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_NE(contentOf(output).find("cannot listen on UDP: Address already in use"),
              std::string::npos);
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}

}  // namespace
