#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

#include "kfl/CommunicationSocket.h"

IPCSocket::IPCSocket(char* path) : CommunicationSocket(AF_UNIX, SOCK_DGRAM, 0, 0), path_(path) {}

IPCSocket::~IPCSocket() {}

bool IPCSocket::bind() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::size_t length = path_ ? strnlen(path_, sizeof address.sun_path) : 0;
    if (!path_ || length == sizeof address.sun_path) {
        errno = path_ ? ENAMETOOLONG : EFAULT;
        return false;
    }
    std::memcpy(address.sun_path, path_, length);
    // The whole record counts, not the path's length.
    return ::bind(descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
}
