// The other end of a socket under test, by plain system calls.
#ifndef KFL_TESTS_NET_PEER_H
#define KFL_TESTS_NET_PEER_H

#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace kfl_test {

// A descriptor that is closed at the end.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { reset(-1); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset(std::exchange(other.number_, -1));
        return *this;
    }

    int get() const { return number_; }
    operator int() const { return number_; }
    void reset(int number) {
        if (number_ >= 0) close(number_);
        number_ = number;
    }

  private:
    int number_;
};

inline Descriptor udpSocket() { return Descriptor(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)); }

inline sockaddr_in loopback(in_port_t rawPort, unsigned lastByte = 1) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = rawPort;
    address.sin_addr.s_addr = htonl(0x7f000000U + lastByte);
    return address;
}

template <class Address>
int bindTo(int descriptor, const Address& address) {
    return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

template <class Address>
int connectTo(int descriptor, const Address& address) {
    return connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

inline sockaddr_in nameOf(int descriptor) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
    return address;
}

inline int socketOption(int descriptor, int option) {
    int value = -1;
    socklen_t length = sizeof value;
    getsockopt(descriptor, SOL_SOCKET, option, &value, &length);
    return value;
}

// A UDP socket on a free loopback port.
inline Descriptor loopbackSocket() {
    Descriptor made = udpSocket();
    bindTo(made, loopback(0));
    return made;
}

// A port, in network byte order, that nobody has just now; others on the machine may take it.
inline in_port_t freePort() { return nameOf(loopbackSocket()).sin_port; }

// An address at which nobody listens, for as long as this lives: its port is held on another one.
class RefusingPort {
  public:
    sockaddr_in address() const { return loopback(nameOf(holder_).sin_port, 2); }

  private:
    Descriptor holder_ = loopbackSocket();
};

// Waits until there is something to read or an error.
inline bool becomesReadable(int descriptor) {
    pollfd watched{descriptor, POLLIN, 0};
    return poll(&watched, 1, 60000) == 1;
}

// Sends one datagram from a socket of its own.
inline ssize_t sendDatagram(const sockaddr_in& to, const std::string& text) {
    const Descriptor sender = udpSocket();
    return sendto(sender, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&to),
                  sizeof to);
}

// The path of a file in a folder, with that many bytes.
inline std::string pathOfLength(const TemporaryFolder& folder, std::size_t length) {
    return folder / std::string(length - folder.path().size() - 1, 'x');
}

// Does something after a while, on a thread of its own.
class Later {
  public:
    Later(std::chrono::milliseconds delay, std::function<void()> action)
        : thread_([delay, action = std::move(action)] {
              std::this_thread::sleep_for(delay);
              action();
          }) {}
    ~Later() { thread_.join(); }
    Later(const Later&) = delete;
    Later& operator=(const Later&) = delete;

  private:
    std::thread thread_;
};

// Time that passed since it was made.
class StopWatch {
  public:
    std::chrono::microseconds passed() const {
        return std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now() - start_);
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

inline timeval timeOf(long long seconds, long microseconds) {
    timeval time{};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds);
    time.tv_usec = static_cast<decltype(time.tv_usec)>(microseconds);
    return time;
}

inline std::chrono::microseconds durationOf(const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

// Allows as many descriptors as the system lets this process have, until the end.
class ManyDescriptors {
  public:
    ManyDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit all = before_;
        all.rlim_cur = all.rlim_max;
        setrlimit(RLIMIT_NOFILE, &all);
    }
    ~ManyDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    ManyDescriptors(const ManyDescriptors&) = delete;
    ManyDescriptors& operator=(const ManyDescriptors&) = delete;

  private:
    rlimit before_{};
};

}  // namespace kfl_test

#endif
