// UDP sockets by plain functions: make one, bind it, receive with a time-out, send.
//
//     int code;
//     const int descriptor = createSocket(&code);
//     if (descriptor < 0 || bindSocket(descriptor, htons(5000)) < 0) return;
//     timeval limit = {2, 0};
//     char message[1500];
//     const int length = recvFromSocket(descriptor, message, sizeof message, &limit, &code);
//     if (length > 0) handle(message, length);
//     if (length == 0) nothingForTwoSeconds();
//     if (length < 0) log("code %d: %s", code, strerror(errno));
//     close(descriptor);
//
// Every function but bindSocket and socketResultToString writes a result code, 0 at its start:
//
//     0  success, or no datagram in time
//     2  createSocket: the system made no socket
//     3  recvFromSocket: waiting failed (a bad descriptor or time-out, or a signal)
//     4  recvFromSocket: an empty datagram, or the end of a connection
//     5  recvFromSocket: reading failed
//     6  sendToSocket: sending failed
//
// Code 1 is never produced. A null pointer to the code is allowed and nothing is written. After a
// failure errno is what the system set. Descriptors belong to the caller: no function closes one,
// and any number that the system hands out may be used, those of 1,024 and above too. The functions
// keep no state and may be called on any thread; a call blocks its own thread only.
// CommunicationSocket offers the same as a class.
#ifndef KFL_SOCKETS_H
#define KFL_SOCKETS_H

#include "kfl/export.h"

struct timeval;

// Makes a UDP socket over IPv4 and returns its descriptor; -1 with code 2 when there is none.
KFL_EXPORT int createSocket(int* resultCode);

// Binds to `port` on every interface, and returns what the system's bind returned: 0, or -1 where
// the port is in use or the descriptor is no unbound socket.
// Kept on purpose: the low 16 bits of `port` go to the system as they are, without conversion, so
// the port is given in network byte order (htons).
KFL_EXPORT int bindSocket(int descriptor, int port);

// Waits for a datagram and reads it into `buffer`, which has room for `length` bytes; what does not
// fit is lost. Returns the number of bytes read, 0 when `timeOut` passed without a datagram, or -1
// with code 3, 4 or 5. Who sent it is not told.
//
// `timeOut` is in seconds and microseconds, read and updated as the system's select does on Linux:
// afterwards it holds the time that was left, rounded down, so that a loop can spend one budget on
// many datagrams. A negative time-out is refused with code 3. A signal ends the wait with code 3.
//
// A datagram that is already there costs one system call. Requires: a datagram socket. A stream's
// bytes are read too, but its SO_RCVLOWAT is not waited for.
//
// Kept on purpose: a time-out of {0, 0}, like a null pointer, waits for ever; it never polls. So
// does a budget that was used up to the last microsecond. An empty datagram reads as code 4, like a
// closed connection.
KFL_EXPORT int recvFromSocket(int descriptor, void* buffer, unsigned int length, timeval* timeOut,
                              int* resultCode);

// Sends `length` bytes as one datagram to where `descriptor` is connected (the system's connect).
// Returns 0, not a count, on success, and -1 with code 6 otherwise, on an unconnected socket too.
KFL_EXPORT int sendToSocket(int descriptor, void* data, unsigned int length, int* resultCode);

// The text for a code: a constant, or null where there is none.
// Kept on purpose: the texts do not match the codes. 0 is "", 1 three messages run together, 2
// "Socket has been closed", 3 "Socket error (recv)", 4 "Socket error (send)"; 5, 6 and all other
// numbers have none.
KFL_EXPORT const char* socketResultToString(int code);

#endif
