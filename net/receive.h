// The timed receive that the socket functions and the socket classes share.
#ifndef KFL_NET_RECEIVE_H
#define KFL_NET_RECEIVE_H

#include <cstddef>

struct timeval;

namespace kfl::detail {

// The numbers that hosts know; 1 is never produced.
enum ResultCode : int {
    codeSuccess = 0,
    codeNoSocket = 2,
    codeWaitFailed = 3,
    codeEmptyRead = 4,
    codeReadFailed = 5,
    codeSendFailed = 6
};

// What failed operations return, and the code that tells why.
int failWith(ResultCode code, int& resultCode);

// Waits for something to read and reads it. Result, code, errno and `timeOut` are those of select
// followed by recvfrom, for every datagram socket; when a datagram waits it is one system call all
// the same. No time-out, or one of zero, waits for ever.
int receive(int descriptor, void* buffer, std::size_t size, timeval* timeOut, int& resultCode);

}  // namespace kfl::detail

#endif
