// kfl listen: receives datagrams and shows them.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <vector>

#include "kfl/CommunicationSocket.h"
#include "tools/kfl/command.h"
#include "tools/kfl/parse.h"

namespace kfl_tool {
namespace {

// More than any datagram has that the system lets through by default.
constexpr int largestDatagram = 256 * 1024;

struct Limits {
    // 0 for no end.
    int count = 0;
    int milliseconds = 0;
};

Limits readOptions(Arguments& arguments) {
    static const option options[] = {{"count", required_argument, nullptr, 'c'},
                                     {"timeout", required_argument, nullptr, 't'},
                                     helpOption,
                                     {}};
    Limits limits;
    while (const int letter = arguments.nextOption(options)) {
        const char* const value = arguments.optionValue();
        if (letter == 'c') limits.count = parseNumber(arguments, "--count", value, 1, INT_MAX);
        if (letter == 't')
            limits.milliseconds = parseNumber(arguments, "--timeout", value, 1, INT_MAX);
    }
    return limits;
}

// A datagram is a line; one that ends with a line feed has its own.
void show(const char* datagram, int length) {
    std::fwrite(datagram, 1, static_cast<std::size_t>(length), stdout);
    if (length == 0 || datagram[length - 1] != '\n') std::putchar('\n');
    std::fflush(stdout);
}

// One datagram; false when none came in time.
bool listenOnce(CommunicationSocket& socket, std::vector<char>& buffer, const Limits& limits) {
    timeval time{};
    time.tv_sec = limits.milliseconds / 1000;
    time.tv_usec = suseconds_t{limits.milliseconds % 1000} * 1000;
    int code = 0;
    const int length = socket.receive(buffer.data(), largestDatagram, time, code);
    // Code 4 is an empty datagram.
    if (length < 0 && code != 4) fail("cannot receive: %s", std::strerror(errno));
    if (length == 0) return false;
    show(buffer.data(), length < 0 ? 0 : length);
    return true;
}

int listen(CommunicationSocket& socket, const Limits& limits) {
    std::vector<char> buffer(largestDatagram);
    for (int received = 0; limits.count == 0 || received < limits.count; ++received) {
        if (std::ferror(stdout)) return failed;
        if (!listenOnce(socket, buffer, limits)) {
            std::fprintf(stderr, "kfl: nothing came for %d milliseconds\n", limits.milliseconds);
            return failed;
        }
    }
    return succeeded;
}

void open(CommunicationSocket& socket, const char* name) {
    int code = 0;
    if (!socket.initialize(code) || !socket.bind()) fail("%s: %s", name, std::strerror(errno));
}

// The socket file, which must not be left behind.
const char* fileToRemove = nullptr;

extern "C" void removeFileAndEnd(int number) {
    unlink(fileToRemove);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

// A socket that has its name; the file is removed at the end, also when a signal is the end.
class NamedSocket {
  public:
    explicit NamedSocket(char* path) : socket_(path) {
        sigset_t ends;
        sigemptyset(&ends);
        for (const int number : endingSignals) sigaddset(&ends, number);
        // None may come between the making of the file and the handler that removes it.
        sigprocmask(SIG_BLOCK, &ends, nullptr);
        open(socket_, path);
        fileToRemove = path;
        for (const int number : endingSignals) std::signal(number, removeFileAndEnd);
        sigprocmask(SIG_UNBLOCK, &ends, nullptr);
    }
    ~NamedSocket() { unlink(fileToRemove); }
    NamedSocket(const NamedSocket&) = delete;
    NamedSocket& operator=(const NamedSocket&) = delete;

    CommunicationSocket& socket() { return socket_; }

  private:
    static constexpr int endingSignals[] = {SIGHUP, SIGINT, SIGPIPE, SIGTERM};

    IPCSocket socket_;
};

int listenOnPath(char* path, const Limits& limits) {
    NamedSocket named(path);
    return listen(named.socket(), limits);
}

int listenOnPort(const Arguments& arguments, const char* port, const Limits& limits) {
    const int number = parseNumber(arguments, "PORT", port, 1, 65535);
    ISCSocket socket(SOCK_DGRAM, 0, htons(static_cast<in_port_t>(number)));
    open(socket, port);
    return listen(socket, limits);
}

int run(Arguments& arguments) {
    const Limits limits = readOptions(arguments);
    arguments.requireOperands(2, 2);
    const std::string kind = arguments[0];
    if (kind == "udp") return listenOnPort(arguments, arguments[1], limits);
    if (kind != "unix") arguments.usageError("'%s' is neither unix nor udp", kind.c_str());
    std::string path = arguments[1];
    if (path.empty()) arguments.usageError("PATH must not be empty");
    return listenOnPath(path.data(), limits);
}

}  // namespace

const Command listenCommand = {
    "listen", "unix PATH|udp PORT [--count N] [--timeout MS]", "Receive datagrams and show them",
    "Shows each datagram as a line, and as it is where it ends with a line feed.\n"
    "PATH is made as a socket file and removed at the end; it must not exist. PORT is\n"
    "taken on every interface.\n"
    "\n"
    "Options:\n"
    "      --count N     end after N datagrams\n"
    "      --timeout MS  end when none came for that many milliseconds\n"
    "  -h, --help        show this page\n"
    "\n"
    "Exit status: 0 when N datagrams came, 1 when the time passed or PATH or PORT\n"
    "cannot be had, 2 for wrong usage.\n",
    run};

}  // namespace kfl_tool
