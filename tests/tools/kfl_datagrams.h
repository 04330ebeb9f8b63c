// What the tests of kfl listen and kfl send share.
#ifndef KFL_TESTS_KFL_DATAGRAMS_H
#define KFL_TESTS_KFL_DATAGRAMS_H

#include <sys/un.h>

#include <functional>
#include <future>

#include "tests/net/peer.h"
#include "tests/tools/kfl_tool.h"

namespace kfl_test {

inline sockaddr_un localName(const std::string& path) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    return name;
}

// A local socket with a name.
inline Descriptor localSocket(const std::string& path) {
    Descriptor made(socket(AF_UNIX, SOCK_DGRAM, 0));
    EXPECT_EQ(bindTo(made, localName(path)), 0);
    return made;
}

// Sends as soon as somebody listens at the path.
inline void sendLocally(const std::string& path, const std::string& text) {
    const Descriptor sender(socket(AF_UNIX, SOCK_DGRAM, 0));
    const sockaddr_un name = localName(path);
    const auto* const address = reinterpret_cast<const sockaddr*>(&name);
    for (int attempt = 0; attempt < 600; ++attempt) {
        if (sendto(sender, text.data(), text.size(), 0, address, sizeof name) >= 0) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ADD_FAILURE() << "nobody listens at " << path;
}

// A datagram that is there or comes within a minute.
inline std::string received(int descriptor) {
    if (!becomesReadable(descriptor)) return "nothing came";
    std::string text(300000, '\0');
    const ssize_t length = recv(descriptor, text.data(), text.size(), 0);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

// Does something while the command runs; `action` may look whether it has ended.
inline ProgramResult kflWhile(const Words& arguments,
                              const std::function<void(std::future<ProgramResult>&)>& action) {
    std::future<ProgramResult> running =
        std::async(std::launch::async, [&] { return kfl(arguments); });
    action(running);
    return running.get();
}

}  // namespace kfl_test

#endif
