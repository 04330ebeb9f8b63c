// Datagram sockets as objects: local ones with a path for a name, and UDP.
//
//     char name[] = "/var/run/worker.socket";
//     unlink(name);                            // bind takes no name that exists
//     IPCSocket socket(name);
//     int code;
//     if (!socket.initialize(code) || !socket.bind()) return;
//     timeval limit = {2, 0};
//     char message[1500];
//     const int length = socket.receive(message, sizeof message, limit, code);
//     if (length > 0) handle(message, length);
//     close(socket.descriptor());
//
// The order of calls is: construct, initialize, bind, then receive as often as needed. Sending is
// not part of the classes: use the descriptor. Nobody but the caller closes the descriptor or
// removes the path. Result codes are those of kfl/sockets.h (0 success or time-out, 2 no socket,
// 3 waiting failed, 4 empty datagram, 5 reading failed); after a failure errno is what the system
// set. One thread at a time uses an object; receive blocks its own thread only.
#ifndef KFL_COMMUNICATIONSOCKET_H
#define KFL_COMMUNICATIONSOCKET_H

#include "kfl/export.h"

struct timeval;

// What the two kinds share; hosts derive from it for others.
class KFL_EXPORT CommunicationSocket {
  public:
    // Keeps what the system's socket() will be given, and the local port (in network byte order).
    // Makes no socket yet: the descriptor is 0.
    CommunicationSocket(int domain, int type, int protocol, int port);
    // Kept on purpose: does not close the descriptor.
    virtual ~CommunicationSocket();

    // Gives the socket its name. Returns false when the system refused it, with no code.
    virtual bool bind() = 0;

    // Makes the socket. Returns false with code 2, and the descriptor -1, when there is none. A
    // descriptor from an earlier call is forgotten, not closed.
    bool initialize(int& resultCode);
    // Waits for a datagram and reads it into `buffer`, which has room for `length` bytes. Result,
    // codes and `timeOut` as with recvFromSocket: the number of bytes, 0 when the time passed, -1
    // with code 3, 4 or 5. A negative length is refused with code 5.
    // Kept on purpose: a time-out of {0, 0} waits for ever.
    int receive(char* buffer, int length, timeval& timeOut, int& resultCode);
    // The text for a code: a constant, or null where there is none.
    // Kept on purpose: the texts do not match the codes, nor those of socketResultToString. 0 is
    // "", 1 three messages run together, 2 "Recvfrom socket returns error", 3 "Could not parse IAD
    // Cfg message"; all other numbers, 4 and 5 among them, have none.
    const char* resultToString(int code);

    // The domain that the constructor was given, such as AF_INET.
    int domain() const { return domain_; }
    // The type that it was given, such as SOCK_DGRAM.
    int type() const { return type_; }
    // The protocol that it was given.
    int protocol() const { return protocol_; }
    // The port that it was given, in network byte order.
    int port() const { return port_; }
    // 0 before initialize, -1 after one that failed.
    int descriptor() const { return descriptor_; }

  private:
    int domain_;
    int type_;
    int protocol_;
    int port_;
    int descriptor_;
};

// A local datagram socket with a name in the file system, for messages on one device.
class KFL_EXPORT IPCSocket : public CommunicationSocket {
  public:
    // Keeps the pointer, not the text: `path` must live as long as the object.
    IPCSocket(char* path);
    ~IPCSocket() override;

    // Makes the file `path`. Returns false where something of that name exists, also when an
    // earlier run left it: remove it first. Returns false for a path of 108 bytes or more, and for
    // null. Kept on purpose: an empty path is handed on, and is a nameless address without a file.
    bool bind() override;

    // The pointer that the constructor was given.
    const char* path() const { return path_; }

  private:
    char* path_;
};

// A UDP socket (or another kind over IPv4) on a port of every interface, for messages between
// systems.
class KFL_EXPORT ISCSocket : public CommunicationSocket {
  public:
    // A type such as SOCK_DGRAM, a protocol (0: the type's own), and the port.
    ISCSocket(int type, int protocol, int port);
    ~ISCSocket() override;

    // Takes the port on every interface; returns false where it is in use.
    // Kept on purpose: the low 16 bits of the port go to the system as they are, without
    // conversion, so the port is given in network byte order (htons).
    bool bind() override;
};

#endif
