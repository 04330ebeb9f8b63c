#include <sys/socket.h>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"

ISCSocket::ISCSocket(int type, int protocol, int port)
    : CommunicationSocket(AF_INET, type, protocol, port) {}

ISCSocket::~ISCSocket() {}

bool ISCSocket::bind() { return bindSocket(descriptor(), port()) >= 0; }
