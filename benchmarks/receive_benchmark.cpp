// A receive with a time-out beside what hosts write themselves: recv alone, which cannot wait, and
// select followed by recvfrom; and POCO (where it is installed). Each turn sends a datagram to
// itself first, so that one waits; what that costs alone is measured too. The last pair has nothing
// to receive and a time-out of one microsecond.
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmarks/contest.h"
#include "kfl/sockets.h"

#ifdef KFL_HAVE_poco
#include <Poco/Net/DatagramSocket.h>
#endif

namespace {

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::abort();
}

// A datagram socket that is connected to itself.
int udpSocket() {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (bind(descriptor, name, length) != 0) giveUp("bind");
    getsockname(descriptor, name, &length);
    if (connect(descriptor, name, length) != 0) giveUp("connect");
    return descriptor;
}

// Two local sockets: what is sent on one is received on the other.
struct Pair {
    int ends[2];

    explicit Pair(bool local) {
        if (!local) {
            ends[0] = ends[1] = udpSocket();
        } else if (socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) != 0) {
            giveUp("socketpair");
        }
    }
    ~Pair() {
        close(ends[0]);
        if (ends[1] != ends[0]) close(ends[1]);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
};

int byRecv(int descriptor, void* buffer, std::size_t size, timeval*) {
    return static_cast<int>(recv(descriptor, buffer, size, 0));
}

int bySelect(int descriptor, void* buffer, std::size_t size, timeval* limit) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(descriptor, &readable);
    if (select(descriptor + 1, &readable, nullptr, nullptr, limit) <= 0) return 0;
    sockaddr_in sender;
    socklen_t length = sizeof sender;
    return static_cast<int>(
        recvfrom(descriptor, buffer, size, 0, reinterpret_cast<sockaddr*>(&sender), &length));
}

int byLibrary(int descriptor, void* buffer, std::size_t size, timeval* limit) {
    int code;
    return recvFromSocket(descriptor, buffer, static_cast<unsigned int>(size), limit, &code);
}

using Receive = int (*)(int descriptor, void* buffer, std::size_t size, timeval* limit);

void waiting(benchmark::State& state, bool local, Receive receive) {
    const Pair pair(local);
    char buffer[200] = {};
    for (auto _ : state) {
        if (send(pair.ends[0], buffer, 100, 0) != 100) giveUp("send");
        timeval limit = {1, 0};
        if (receive(pair.ends[1], buffer, sizeof buffer, &limit) != 100) giveUp("receive");
    }
}

// What the others measure besides the receive. Nobody reads, so the queue must not fill up: a
// receive for many, which is left out of the time.
void sendAlone(benchmark::State& state, bool local) {
    const Pair pair(local);
    char buffer[200] = {};
    while (state.KeepRunningBatch(8)) {
        for (int i = 0; i < 8; ++i) {
            if (send(pair.ends[0], buffer, 100, 0) != 100) giveUp("send");
        }
        state.PauseTiming();
        for (int i = 0; i < 8; ++i) {
            if (recv(pair.ends[1], buffer, sizeof buffer, 0) != 100) giveUp("recv");
        }
        state.ResumeTiming();
    }
}

void nothing(benchmark::State& state, bool local, Receive receive) {
    const Pair pair(local);
    char buffer[200];
    for (auto _ : state) {
        timeval limit = {0, 1};
        if (receive(pair.ends[1], buffer, sizeof buffer, &limit) != 0) giveUp("receive");
    }
}

#ifdef KFL_HAVE_poco
void waitingByPoco(benchmark::State& state) {
    Poco::Net::DatagramSocket socket(Poco::Net::SocketAddress("127.0.0.1", 0));
    socket.connect(socket.address());
    char buffer[200] = {};
    for (auto _ : state) {
        if (send(socket.impl()->sockfd(), buffer, 100, 0) != 100) giveUp("send");
        if (!socket.poll(Poco::Timespan(1, 0), Poco::Net::Socket::SELECT_READ)) giveUp("poll");
        if (socket.receiveBytes(buffer, sizeof buffer) != 100) giveUp("receive");
    }
}
#endif

void enter(const std::string& name, void (*work)(benchmark::State&, bool, Receive), bool local,
           Receive receive) {
    benchmark::RegisterBenchmark(name.c_str(), work, local, receive);
}

void enterAll() {
    for (const bool local : {false, true}) {
        const std::string kind =
            local ? "datagram: a local one waits/" : "datagram: a UDP one waits/";
        enter(kind + "kfl", waiting, local, byLibrary);
        enter(kind + "recv", waiting, local, byRecv);
        enter(kind + "select", waiting, local, bySelect);
        benchmark::RegisterBenchmark((kind + "send_alone").c_str(), sendAlone, local);
    }
#ifdef KFL_HAVE_poco
    benchmark::RegisterBenchmark("datagram: a UDP one waits/poco", waitingByPoco);
#endif
    enter("datagram: none waits/kfl", nothing, true, byLibrary);
    enter("datagram: none waits/select", nothing, true, bySelect);
}

}  // namespace

int main(int count, char** arguments) {
    enterAll();
    return kfl_benchmark::runAll(count, arguments);
}
