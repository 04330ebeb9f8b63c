// A receive with a time-out beside what hosts write themselves: recv alone, which cannot wait, and
// select followed by recvfrom. Each turn sends a datagram to itself first, so that one waits; what
// that costs alone is measured too. The last pair has nothing to receive and a time-out of one
// microsecond.
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "kfl/sockets.h"

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

BENCHMARK_CAPTURE(waiting, udp_recv, false, byRecv);
BENCHMARK_CAPTURE(waiting, udp_kfl, false, byLibrary);
BENCHMARK_CAPTURE(waiting, udp_select, false, bySelect);
BENCHMARK_CAPTURE(sendAlone, udp, false);
BENCHMARK_CAPTURE(waiting, local_recv, true, byRecv);
BENCHMARK_CAPTURE(waiting, local_kfl, true, byLibrary);
BENCHMARK_CAPTURE(waiting, local_select, true, bySelect);
BENCHMARK_CAPTURE(sendAlone, local, true);
BENCHMARK_CAPTURE(nothing, local_kfl, true, byLibrary);
BENCHMARK_CAPTURE(nothing, local_select, true, bySelect);

}  // namespace

BENCHMARK_MAIN();
