// Sockets, events, processes, threads and random numbers.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include "tests/old_host/old_kfl.h"
#include "tests/support/recording_host.h"
#include "tests/support/temporary_folder.h"

namespace {

std::string logged;
int loggedPriority = 0;

}  // namespace

// In front of the C library's: lines stay here.
extern "C" void syslog(int priority, const char* format, ...) {
    char text[200];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    logged = text;
    loggedPriority = priority;
}

namespace {

using kfl_test::TemporaryFolder;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int portOf(int descriptor) {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &length), 0);
    return name.sin_port;
}

void connectTo(int descriptor, int port) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    name.sin_port = static_cast<in_port_t>(port);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
}

TEST(OldHost, DatagramsPassBetweenFunctionsAndClasses) {
    ISCSocket receiver(SOCK_DGRAM, 0, 0);
    int code = 99;
    ASSERT_TRUE(receiver.initialize(code));
    EXPECT_EQ(code, 0);
    CommunicationSocket& base = receiver;
    ASSERT_TRUE(base.bind());
    EXPECT_EQ(receiver.domain, AF_INET);
    EXPECT_EQ(receiver.type, SOCK_DGRAM);

    const int sender = createSocket(&code);
    ASSERT_GE(sender, 0);
    EXPECT_EQ(bindSocket(sender, 0), 0);
    connectTo(sender, portOf(receiver.descriptor));
    char text[] = "hello";
    EXPECT_EQ(sendToSocket(sender, text, 5, &code), 0);
    char received[10] = {};
    timeval limit = {60, 0};
    EXPECT_EQ(receiver.receive(received, 10, limit, code), 5);
    EXPECT_STREQ(received, "hello");
    limit = {0, 1000};
    EXPECT_EQ(recvFromSocket(sender, received, 10, &limit, &code), 0);
    EXPECT_NE(socketResultToString(3), nullptr);
    EXPECT_NE(receiver.resultToString(2), nullptr);
    close(sender);
    close(receiver.descriptor);
}

// A kind of socket of the host's own.
class Nowhere : public CommunicationSocket {
  public:
    Nowhere() : CommunicationSocket(AF_UNIX, SOCK_DGRAM, 0, 17) {}
    bool bind() override { return descriptor >= 0; }
};

TEST(OldHost, HostsMakeTheirOwnSockets) {
    Nowhere nowhere;
    CommunicationSocket& base = nowhere;
    EXPECT_EQ(nowhere.port, 17);
    EXPECT_EQ(nowhere.protocol, 0);
    int code = 99;
    ASSERT_TRUE(base.initialize(code));
    EXPECT_TRUE(base.bind());
    close(nowhere.descriptor);

    const TemporaryFolder folder;
    std::string path = folder / "socket";
    IPCSocket local(path.data());
    EXPECT_EQ(local.path, path.data());
    ASSERT_TRUE(local.initialize(code));
    EXPECT_TRUE(local.bind());
    EXPECT_EQ(access(path.c_str(), F_OK), 0);
    close(local.descriptor);
}

TEST(OldHost, EventsReachTheLog) {
    applicationName = "old";
    raiseSyslogEvent(14, 7, 3, 12, "", 0, "link up");
    EXPECT_EQ(logged, "old/007-03-12|link up");
    EXPECT_EQ(loggedPriority, 14);
    raiseSyslogAlarm(11, true, 1, 2, 3, "", 0, "fan");
    EXPECT_EQ(logged, "old/001-02-3|ALARM-ON|fan");
    int filter[1] = {0};
    setExcludeFromDebugEventsFilter(filter);
    setExcludeFromDebugEventsFilter(nullptr);
    applicationName = "test";
}

TEST(OldHost, ProgramsRunAndReportToTheHost) {
    const TemporaryFolder folder;
    kfl_test::clearEvents();
    EXPECT_EQ(kfl::osSystem("exit 3"), 3 << 8);
    ASSERT_FALSE(kfl_test::events().empty());
    EXPECT_EQ(kfl_test::events().front().priority, 7);
    EXPECT_EQ(kfl_test::events().front().group, 900);
    const std::string output = folder / "output";
    EXPECT_EQ(kfl::osCreateProcess("/bin/echo two words", true, output.c_str()), 0);
    EXPECT_EQ(contentOf(output), "two words\n");
    const std::string copy = folder / "copy";
    EXPECT_EQ(kfl::osCopyFile(output.c_str(), copy.c_str(), true), 0);
    EXPECT_EQ(contentOf(copy), "two words\n");
    const int child = kfl::osCreateProcess("/bin/sleep 600", false, nullptr);
    ASSERT_GT(child, 0);
    EXPECT_FALSE(kfl::osStatusReceived(child, 0));
    EXPECT_EQ(kfl::osKillProcess(child), child);
}

void work(void* argument) {
    auto* const thread = static_cast<kfl::OSThread*>(argument);
    thread->threadHasStarted();
    while (!thread->isRequestedToStop(100000000)) {
    }
    thread->threadIsStopping();
    thread->leave();
}

void leaveAtOnce(void* argument) {
    *static_cast<bool*>(argument) = true;
    kfl::osExitThread();
}

TEST(OldHost, ThreadsAreStopped) {
    kfl::OSThread thread;
    EXPECT_EQ(sizeof thread.stopMutex + sizeof thread.stopCondition,
              static_cast<std::size_t>(reinterpret_cast<char*>(&thread.threadId) -
                                       reinterpret_cast<char*>(&thread)));
    // The worker has begun when it waits: until then it holds the mutex, and before that a request
    // is lost.
    const int id = thread.create(910, work, &thread, 0);
    ASSERT_NE(id, -1);
    EXPECT_EQ(thread.threadId, id);
    usleep(300000);
    EXPECT_EQ(thread.destroy(), 0);

    bool ran = false;
    const int other = kfl::osCreateThread(910, leaveAtOnce, &ran, 0);
    EXPECT_EQ(kfl::osJoinThread(other), 0);
    EXPECT_TRUE(ran);
    EXPECT_EQ(kfl::osJoinThread(other), ESRCH);
}

TEST(OldHost, RandomNumbersAreNotNegative) {
    const RandomNumberGenerator generator;
    EXPECT_EQ(sizeof generator, 1U);
    for (int i = 0; i < 100; ++i) EXPECT_GE(RandomNumberGenerator::getNumber(), 0);
}

}  // namespace
