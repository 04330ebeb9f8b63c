// Two sockets and a thread. Shows: what is removed and closed by the host, ports in network byte
// order, waits that end, a request to stop with a flag beside it, and signals kept away from
// workers.
#include "listener.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>

#include <cerrno>
#include <cstring>

namespace agent {
namespace {

constexpr int threadEventGroup = 910;
constexpr unsigned int oneMillisecond = 1000000;  // in nanoseconds

// The library keeps the path's pointer and wants the port in network byte order.
char* mutableText(const kfl::AString& text) { return const_cast<char*>(text.c_str()); }

// The descriptor is 0 before initialize and -1 after one that failed. A socket is never 0 here:
// that is standard input, which this host never closes.
bool isOpen(const CommunicationSocket& socket) { return socket.descriptor() > 0; }

// Signals go to the main thread alone: the handler is to interrupt its wait, not the worker's.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_;
};

}  // namespace

Listener::Listener(const char* path, int udpPort)
    : path_(path),
      local_(mutableText(path_)),
      udp_(SOCK_DGRAM, 0, htons(static_cast<unsigned short>(udpPort))) {}

bool Listener::openSocket(CommunicationSocket& socket, const char* name) {
    int code = 0;
    if (socket.initialize(code) && socket.bind()) return true;
    std::fprintf(stderr, "cannot listen on %s: %s\n", name, std::strerror(errno));
    return false;
}

bool Listener::open() {
    // A name that an earlier run left behind would be refused.
    unlink(path_.c_str());
    if (openSocket(local_, path_.c_str()) && openSocket(udp_, "UDP")) {
        const SignalsBlocked inTheWorker;
        if (thread_.create(threadEventGroup, work, this, 0) != -1) return true;
    }
    closeSockets();
    return false;
}

void Listener::close() {
    // The request itself can be lost in the moment when a wait has just timed out.
    stopping_ = true;
    thread_.destroy();
    closeSockets();
}

// Nobody but the owner closes a socket or removes its path.
void Listener::closeSockets() {
    if (isOpen(local_)) {
        ::close(local_.descriptor());
        unlink(path_.c_str());
    }
    if (isOpen(udp_)) ::close(udp_.descriptor());
}

void Listener::work(void* self) {
    Listener& listener = *static_cast<Listener*>(self);
    listener.thread_.threadHasStarted();
    listener.receiveUntilStopped();
    listener.thread_.threadIsStopping();
    listener.thread_.leave();
}

void Listener::receiveUntilStopped() {
    do {
        receiveOne(local_, "local");
        receiveOne(udp_, "UDP");
    } while (!thread_.isRequestedToStop(oneMillisecond) && !stopping_);
}

void Listener::receiveOne(CommunicationSocket& socket, const char* name) {
    char message[1500];
    // Never {0, 0}: that waits for ever.
    timeval limit = {0, 50000};
    int code = 0;
    const int length = socket.receive(message, sizeof message, limit, code);
    if (length > 0) {
        std::printf("received on the %s socket: %.*s\n", name, length, message);
        std::fflush(stdout);
    } else if (code != 0) {
        // An empty datagram has the code of a closed socket, and not every code has a text.
        const char* const text = socket.resultToString(code);
        std::printf("nothing read on the %s socket: code %d%s%s\n", name, code, text ? ", " : "",
                    text ? text : "");
    }
}

}  // namespace agent
