#include "kfl/sockets.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>

#include "net/receive.h"
#include "net/result_text.h"

namespace {

using kfl::detail::failWith;

// Kept on purpose: three texts run together in entry 1, and so the others stand at codes that they
// do not describe.
const char* const resultTexts[] = {
    "",
    "Socket version negotiation errorUnable to initialize socketSocket error (select)",
    "Socket has been closed",
    "Socket error (recv)",
    "Socket error (send)",
};

}  // namespace

int createSocket(int* resultCode) {
    int ignored = 0;
    int& code = resultCode ? *resultCode : ignored;
    code = kfl::detail::codeSuccess;
    const int descriptor = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    return descriptor == -1 ? failWith(kfl::detail::codeNoSocket, code) : descriptor;
}

int bindSocket(int descriptor, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    // Kept on purpose: no conversion, the caller gives network byte order.
    address.sin_port = static_cast<std::uint16_t>(port);
    address.sin_addr.s_addr = INADDR_ANY;
    return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

int recvFromSocket(int descriptor, void* buffer, unsigned int length, timeval* timeOut,
                   int* resultCode) {
    int ignored = 0;
    return kfl::detail::receive(descriptor, buffer, length, timeOut,
                                resultCode ? *resultCode : ignored);
}

int sendToSocket(int descriptor, void* data, unsigned int length, int* resultCode) {
    int ignored = 0;
    int& code = resultCode ? *resultCode : ignored;
    code = kfl::detail::codeSuccess;
    if (send(descriptor, data, length, 0) < 0) return failWith(kfl::detail::codeSendFailed, code);
    return 0;
}

const char* socketResultToString(int code) { return kfl::detail::resultText(resultTexts, code); }
