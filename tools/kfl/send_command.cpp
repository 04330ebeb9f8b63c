// kfl send: sends a datagram.
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "kfl/sockets.h"
#include "tools/kfl/command.h"
#include "tools/kfl/parse.h"

namespace kfl_tool {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return number_; }

  private:
    int number_;
};

std::string readInput() {
    // More than a datagram can hold: the system will say so.
    constexpr std::size_t enough = 1 << 24;
    std::string text;
    char part[4096];
    while (text.size() < enough) {
        const std::size_t count = std::fread(part, 1, sizeof part, stdin);
        if (count == 0) break;
        text.append(part, count);
    }
    if (std::ferror(stdin)) fail("cannot read the input: %s", std::strerror(errno));
    return text;
}

// The words from `first` on, or the standard input where there are none.
std::string textToSend(const Arguments& arguments, int first) {
    return arguments.operands() > first ? joinOperands(arguments, first) : readInput();
}

// `name` is for the message.
// cppcheck-suppress passedByValue ; what is sent is an array that could be changed
void sendText(int descriptor, const char* name, std::string text) {
    int code = 0;
    if (sendToSocket(descriptor, text.data(), static_cast<unsigned int>(text.size()), &code) != 0)
        fail("%s: %s", name, std::strerror(errno));
}

int sendToPath(const Arguments& arguments) {
    const char* const path = arguments[1];
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (std::strlen(path) >= sizeof address.sun_path) {
        fail("%s: %s", path, std::strerror(ENAMETOOLONG));
    }
    std::memcpy(address.sun_path, path, std::strlen(path) + 1);
    const std::string text = textToSend(arguments, 2);
    const Descriptor descriptor(socket(AF_UNIX, SOCK_DGRAM, 0));
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("%s: %s", path, std::strerror(errno));
    sendText(descriptor, path, text);
    return succeeded;
}

sockaddr_in findHost(const char* host, int port) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (const int error = getaddrinfo(host, nullptr, &hints, &found)) {
        fail("%s: %s", host, gai_strerror(error));
    }
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    freeaddrinfo(found);
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

int sendToPort(const Arguments& arguments) {
    const char* const host = arguments[1];
    const int port = parseNumber(arguments, "PORT", arguments[2], 1, 65535);
    const sockaddr_in address = findHost(host, port);
    const std::string text = textToSend(arguments, 3);
    int code = 0;
    const Descriptor descriptor(createSocket(&code));
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("%s: %s", host, std::strerror(errno));
    sendText(descriptor, host, text);
    return succeeded;
}

int run(Arguments& arguments) {
    static const option options[] = {helpOption, {}};
    while (arguments.nextOption(options)) {
    }
    arguments.requireOperands(2, INT_MAX);
    const std::string kind = arguments[0];
    if (kind == "unix") return sendToPath(arguments);
    if (kind != "udp") arguments.usageError("'%s' is neither unix nor udp", kind.c_str());
    arguments.requireOperands(3, INT_MAX);
    return sendToPort(arguments);
}

}  // namespace

const Command sendCommand = {
    "send", "unix PATH|udp HOST PORT [TEXT]...", "Send a datagram",
    "Sends the TEXTs, one blank between them, as one datagram, or all of the standard\n"
    "input where there are none. Put -- in front of a TEXT that begins with -.\n"
    "\n"
    "Options:\n"
    "  -h, --help  show this page\n"
    "\n"
    "Exit status: 0 when sent (which for udp does not say that anybody listens), 1\n"
    "when it cannot be sent, 2 for wrong usage.\n",
    run};

}  // namespace kfl_tool
