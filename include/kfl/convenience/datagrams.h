// Datagrams to a name or an address, without connecting, and who sent one.
//
//     kfl::sendToPath(descriptor, "/run/agent.socket", "ping", 4);
//     kfl::sendToAddress(descriptor, "192.168.40.7", 7071, "ping", 4);
//
//     kfl::Sender sender;
//     const int length = kfl::receiveFrom(descriptor, message, sizeof message, 2000, sender);
//     if (length >= 0) kfl::sendBack(descriptor, sender, message, length);
//
// Descriptors belong to the caller, here as in kfl/sockets.h. After a failure errno tells the
// reason. The functions keep no state and may be called on any thread.
#ifndef KFL_CONVENIENCE_DATAGRAMS_H
#define KFL_CONVENIENCE_DATAGRAMS_H

#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <poll.h>
#include <stddef.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

namespace kfl {

// The one who sent a datagram.
struct Sender {
    Sender() : length(0), wasCut(false) { memset(&address, 0, sizeof address); }

    // As the system gave it.
    sockaddr_storage address;
    // The address's length in bytes; 0 for a sender without a name.
    socklen_t length;
    // The datagram was longer than the room for it; the rest is lost.
    bool wasCut;

    // The socket file of a local sender; "" for any other, and for one without a name.
    const char* path() const {
        return address.ss_family == AF_UNIX && length > offsetof(sockaddr_un, sun_path)
                   ? reinterpret_cast<const sockaddr_un*>(&address)->sun_path
                   : "";
    }
    // The port of a UDP sender in host byte order; 0 for any other.
    unsigned short port() const {
        return address.ss_family == AF_INET
                   ? ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port)
                   : 0;
    }
    // Writes the address of a UDP sender as text, "192.168.40.7", into `text`, which has room for
    // `size` bytes (16 are enough). Returns false for any other sender, or where there is no room.
    bool host(char* text, unsigned int size) const {
        return address.ss_family == AF_INET &&
               inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(&address)->sin_addr, text,
                         size) != nullptr;
    }
};

// Makes `address` that of a socket file. Returns false with ENAMETOOLONG for a path that is longer
// than the system's addresses hold, and with EINVAL for an empty one or null.
inline bool makeAddress(const char* path, sockaddr_un& address) {
    memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    const size_t length = path ? strlen(path) : 0;
    errno = length == 0 ? EINVAL : ENAMETOOLONG;
    if (length == 0 || length >= sizeof address.sun_path) return false;
    memcpy(address.sun_path, path, length);
    return true;
}

// Sends `length` bytes as one datagram; false where the system refused them. A signal during a wait
// for room ends that too.
inline bool sendDatagram(int descriptor, const sockaddr* address, socklen_t addressLength,
                         const void* data, size_t length) {
    return sendto(descriptor, data, length, MSG_NOSIGNAL, address, addressLength) ==
           static_cast<ssize_t>(length);
}

// The same, to the socket file `path`. `descriptor` is a local datagram socket (an IPCSocket's).
inline bool sendToPath(int descriptor, const char* path, const void* data, size_t length) {
    sockaddr_un address;
    return makeAddress(path, address) &&
           sendDatagram(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address,
                        data, length);
}

// The same, to an IPv4 address in numbers, "192.168.40.7", and a port in host byte order.
// `descriptor` is a UDP socket (createSocket's or an ISCSocket's). A text that is no such address
// is refused with EINVAL. True says that the datagram was sent, not that anybody listens.
inline bool sendToAddress(int descriptor, const char* host, unsigned short port, const void* data,
                          size_t length) {
    sockaddr_in address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    errno = EINVAL;
    return host && inet_pton(AF_INET, host, &address.sin_addr) == 1 &&
           sendDatagram(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address,
                        data, length);
}

// The same, to where a datagram came from. A sender without a name is refused with ENOTCONN.
inline bool sendBack(int descriptor, const Sender& sender, const void* data, size_t length) {
    errno = ENOTCONN;
    return sender.length > offsetof(sockaddr_un, sun_path) &&
           sendDatagram(descriptor, reinterpret_cast<const sockaddr*>(&sender.address),
                        sender.length, data, length);
}

// Waits up to `milliseconds` (0: not at all; negative: for ever) for a datagram, reads it into
// `buffer`, which has room for `length` bytes, and tells who sent it. Returns the number of bytes
// read, 0 for an empty datagram, or -1: with ETIMEDOUT when the time passed, with EINTR when a
// signal ended the wait. Unlike recvFromSocket it polls where the time is 0.
inline int receiveFrom(int descriptor, void* buffer, unsigned int length, int milliseconds,
                       Sender& sender) {
    sender = Sender();
    pollfd waited = {descriptor, POLLIN, 0};
    const int ready = poll(&waited, 1, milliseconds);
    if (ready == 0) errno = ETIMEDOUT;
    if (ready <= 0) return -1;
    iovec part = {buffer, length};
    msghdr message;
    memset(&message, 0, sizeof message);
    message.msg_name = &sender.address;
    message.msg_namelen = sizeof sender.address;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    const ssize_t read = recvmsg(descriptor, &message, MSG_DONTWAIT);
    // Somebody else was faster, or the datagram was damaged.
    if (read < 0 && errno == EAGAIN) errno = ETIMEDOUT;
    if (read < 0) return -1;
    sender.length = message.msg_namelen;
    sender.wasCut = (message.msg_flags & MSG_TRUNC) != 0;
    return static_cast<int>(read);
}

// Removes the socket file that a process left behind, so that bind can make it anew. Returns true
// when nothing of that name exists any more, or never did. Returns false, and leaves all as it was,
// with EADDRINUSE where a socket of any kind has that name, with ENOTSOCK for what is no socket
// file, and with the system's reason where that cannot be told.
// A socket that is bound between the question and the removal loses its name: processes that may
// start at once need a lock of their own around this and bind.
inline bool removeDeadSocket(const char* path) {
    sockaddr_un address;
    if (!makeAddress(path, address)) return false;
    const int probe = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (probe < 0) return false;
    const bool answers =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int error = answers || errno == EPROTOTYPE ? EADDRINUSE : errno;
    close(probe);
    if (error == ENOENT) return true;
    // The system refuses what is no socket as it refuses a dead one.
    struct stat status;
    const bool isSocket = lstat(path, &status) == 0 && S_ISSOCK(status.st_mode);
    errno = isSocket ? error : ENOTSOCK;
    return isSocket && error == ECONNREFUSED && unlink(path) == 0;
}

}  // namespace kfl

#endif
