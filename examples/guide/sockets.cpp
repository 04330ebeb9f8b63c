// A local socket with a name, a message to it, and a wait that ends.
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <cstdio>
#include <cstring>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"

namespace {

char name[] = "worker.socket";

// Sending is the system's business: connect once, then sendToSocket.
void sendTo(const char* path, char* text) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    int code = 0;
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        sendToSocket(descriptor, text, static_cast<unsigned int>(std::strlen(text)), &code) == 0) {
        std::puts("sent");
    }
    close(descriptor);
}

// The time-out is used up by the wait, so each wait gets one of its own; {0, 0} would wait for
// ever.
int receive(IPCSocket& socket, char* message, int size, int& code) {
    timeval limit = {0, 100000};
    return socket.receive(message, size, limit, code);
}

}  // namespace

int main() {
    unlink(name);  // an earlier run may have left it behind
    IPCSocket socket(name);
    int code = 0;
    if (!socket.initialize(code) || !socket.bind()) return 1;
    char question[] = "status please";
    sendTo(name, question);
    char message[1500];
    int length = receive(socket, message, sizeof message, code);
    std::printf("%d bytes: %.*s\n", length, length, message);
    length = receive(socket, message, sizeof message, code);
    std::printf("then %d with code %d\n", length, code);
    close(socket.descriptor());
    unlink(name);
    return 0;
}
