// Datagrams at full speed, both ways at once.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"
#include "tests/soak/soak.h"
#include "tests/support/temporary_folder.h"

namespace {

// A round sends so many each way.
constexpr unsigned int datagrams = 1000;

// Numbers go on from round to round, so that one that comes late is still told from its followers.
void sendNumbers(int descriptor, unsigned int first) {
    for (unsigned int i = first; i < first + datagrams; ++i) {
        int code = 0;
        EXPECT_EQ(sendToSocket(descriptor, &i, sizeof i, &code), 0) << code;
    }
}

// What arrived at one end, which must be in order.
struct Arrivals {
    unsigned long count = 0;
    long long last = -1;

    // Up to the last one of a round, or until none comes for a while.
    void receive(int descriptor, unsigned int first) {
        while (last + 1 < static_cast<long long>(first + datagrams)) {
            timeval limit{0, 50000};
            int code = 0;
            unsigned int number = 0;
            const int got = recvFromSocket(descriptor, &number, sizeof number, &limit, &code);
            if (got == 0) return;
            ASSERT_EQ(got, static_cast<int>(sizeof number)) << code;
            EXPECT_GT(static_cast<long long>(number), last);
            last = number;
            ++count;
        }
    }
};

// Two ends that send to each other at once.
class Exchange {
  public:
    Exchange(int a, int b) : a_(a), b_(b) {}

    void round() {
        std::thread threads[] = {std::thread([this] { atA_.receive(a_, sent_); }),
                                 std::thread([this] { atB_.receive(b_, sent_); }),
                                 std::thread([this] { sendNumbers(a_, sent_); }),
                                 std::thread([this] { sendNumbers(b_, sent_); })};
        for (std::thread& thread : threads) thread.join();
        sent_ += datagrams;
    }
    // Also what has come late does not count as lost.
    unsigned long lost() {
        if (sent_ == 0) return 0;
        atA_.receive(a_, sent_ - datagrams);
        atB_.receive(b_, sent_ - datagrams);
        return 2UL * sent_ - atA_.count - atB_.count;
    }

  private:
    int a_;
    int b_;
    unsigned int sent_ = 0;
    Arrivals atA_;
    Arrivals atB_;
};

void connectLocal(int descriptor, const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
}

void connectTo(int descriptor, int other) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ASSERT_EQ(getsockname(other, reinterpret_cast<sockaddr*>(&address), &size), 0);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), size), 0);
}

TEST(DatagramsSoak, LocalSocketsLoseNone) {
    const kfl_test::TemporaryFolder folder;
    std::string paths[] = {folder / "a", folder / "b"};
    IPCSocket a(paths[0].data());
    IPCSocket b(paths[1].data());
    int code = 0;
    ASSERT_TRUE(a.initialize(code) && a.bind() && b.initialize(code) && b.bind());
    connectLocal(a.descriptor(), paths[1]);
    connectLocal(b.descriptor(), paths[0]);
    Exchange exchange(a.descriptor(), b.descriptor());
    kfl_test::soak("local datagrams, both ways at once", kfl_test::rounds(10), 2UL * datagrams,
                   [&] { exchange.round(); });
    EXPECT_EQ(exchange.lost(), 0U);
    close(a.descriptor());
    close(b.descriptor());
}

// What a full queue does not take is lost, as is usual with UDP: it is counted, and what arrives is
// whole and in order.
TEST(DatagramsSoak, UDPLossIsCounted) {
    int code = 0;
    const int a = createSocket(&code);
    const int b = createSocket(&code);
    ASSERT_EQ(bindSocket(a, 0), 0);
    ASSERT_EQ(bindSocket(b, 0), 0);
    connectTo(a, b);
    connectTo(b, a);
    Exchange exchange(a, b);
    kfl_test::soak("UDP datagrams, both ways at once", kfl_test::rounds(10), 2UL * datagrams,
                   [&] { exchange.round(); });
    std::printf("soak | of these lost by full queues: %lu\n", exchange.lost());
    close(a);
    close(b);
}

}  // namespace
