// A worker thread that receives datagrams on a local socket and on UDP until it is asked to stop:
// kfl::OSThread, IPCSocket and ISCSocket.
//
//     agent::Listener listener("/run/agent.socket", 7071);
//     if (!listener.open()) return 1;
//     ...
//     listener.close();  // ends the thread, closes the sockets, removes the path
#ifndef AGENT_LISTENER_H
#define AGENT_LISTENER_H

#include <atomic>

#include "kfl/AString.h"
#include "kfl/CommunicationSocket.h"
#include "kfl/OSThread.h"

namespace agent {

class Listener {
  public:
    // The path of the local socket, and the UDP port as people write it.
    Listener(const char* path, int udpPort);

    // Makes and binds both sockets and starts the worker. Returns false, with a message printed and
    // nothing left open, when that fails.
    bool open();
    // Requires: open() succeeded.
    void close();

  private:
    bool openSocket(CommunicationSocket& socket, const char* name);
    void closeSockets();
    static void work(void* self);
    void receiveUntilStopped();
    void receiveOne(CommunicationSocket& socket, const char* name);

    kfl::AString path_;
    IPCSocket local_;
    ISCSocket udp_;
    kfl::OSThread thread_;
    std::atomic<bool> stopping_{false};
};

}  // namespace agent

#endif
