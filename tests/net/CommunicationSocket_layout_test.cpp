// The socket classes and functions as an already compiled host knows them. A reference is handed
// over as a pointer.
#include "kfl/CommunicationSocket.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include "kfl/sockets.h"
#include "tests/net/peer.h"
#include "tests/support/layout.h"

using namespace kfl_test;

namespace {

constexpr std::size_t baseSize = bits(24, 32);
constexpr std::size_t domainOffset = pointerSize;
constexpr std::size_t typeOffset = pointerSize + 4;
constexpr std::size_t protocolOffset = pointerSize + 8;
constexpr std::size_t portOffset = pointerSize + 12;
constexpr std::size_t descriptorOffset = pointerSize + 16;
constexpr std::size_t pathOffset = baseSize;
constexpr std::size_t bindSlot = 2;

void expectFields(const void* object, int domain, int type, int protocol, int port,
                  int descriptor) {
    EXPECT_EQ(fieldAt<int>(object, domainOffset), domain);
    EXPECT_EQ(fieldAt<int>(object, typeOffset), type);
    EXPECT_EQ(fieldAt<int>(object, protocolOffset), protocol);
    EXPECT_EQ(fieldAt<int>(object, portOffset), port);
    EXPECT_EQ(fieldAt<int>(object, descriptorOffset), descriptor);
}

TEST(CommunicationSocketLayoutTest, SizesAreThoseOfTheFields) {
    EXPECT_EQ(sizeof(CommunicationSocket), baseSize);
    EXPECT_EQ(sizeof(ISCSocket), baseSize);
    EXPECT_EQ(sizeof(IPCSocket), bits(28, 40));
}

TEST(CommunicationSocketLayoutTest, FieldsStandInOrder) {
    Room<baseSize> socket;
    call<void, void*, int, int, int>("_ZN9ISCSocketC1Eiii", socket, 1234, 5678, 91011);
    expectFields(socket, 2, 1234, 5678, 91011, 0);
    int code = 99;
    EXPECT_FALSE(
        (call<bool, void*, int*>("_ZN19CommunicationSocket10initializeERi", socket, &code)));
    EXPECT_EQ(code, 2);
    expectFields(socket, 2, 1234, 5678, 91011, -1);
    call<void, void*>("_ZN9ISCSocketD1Ev", socket);
    EXPECT_TRUE(socket.intact());
}

TEST(CommunicationSocketLayoutTest, ThePathFollowsTheBase) {
    Room<bits(28, 40)> socket;
    char path[] = "/tmp/name";
    call<void, void*, char*>("_ZN9IPCSocketC1EPc", socket, path);
    expectFields(socket, 1, SOCK_DGRAM, 0, 0, 0);
    EXPECT_EQ(socket.pointer(pathOffset), path);
    call<void, void*>("_ZN9IPCSocketD1Ev", socket);
    EXPECT_TRUE(socket.intact());
}

TEST(CommunicationSocketLayoutTest, AHostWorksThroughNamesSlotsAndOffsets) {
    Room<baseSize> socket;
    call<void, void*, int, int, int>("_ZN9ISCSocketC1Eiii", socket, SOCK_DGRAM, 0, 0);
    int code = 99;
    ASSERT_TRUE(
        (call<bool, void*, int*>("_ZN19CommunicationSocket10initializeERi", socket, &code)));
    const Descriptor descriptor(fieldAt<int>(socket, descriptorOffset));
    ASSERT_TRUE(callSlot<bool>(bindSlot, static_cast<void*>(socket)));

    const Descriptor sender = udpSocket();
    ASSERT_EQ(connectTo(sender, loopback(nameOf(descriptor).sin_port)), 0);
    char text[] = "hello";
    EXPECT_EQ((call<int, int, void*, unsigned int, int*>("_Z12sendToSocketiPvjPi", sender.get(),
                                                         text, 5U, &code)),
              0);
    timeval limit = timeOf(60, 0);
    char received[10] = {};
    EXPECT_EQ((call<int, void*, char*, int, timeval*, int*>(
                  "_ZN19CommunicationSocket7receiveEPciR7timevalRi", socket, received, 10, &limit,
                  &code)),
              5);
    EXPECT_STREQ(received, "hello");
    EXPECT_STREQ(
        (call<const char*, void*, int>("_ZN19CommunicationSocket14resultToStringEi", socket, 2)),
        "Recvfrom socket returns error");
}

TEST(CommunicationSocketLayoutTest, VirtualOperationsStandInTheirSlots) {
    char path[] = "/tmp/name";
    const IPCSocket local(path);
    expectTable(&local, 0, "_ZTI9IPCSocket",
                {"_ZN9IPCSocketD1Ev", "_ZN9IPCSocketD0Ev", "_ZN9IPCSocket4bindEv"});
    const ISCSocket udp(0, 0, 0);
    expectTable(&udp, 0, "_ZTI9ISCSocket",
                {"_ZN9ISCSocketD1Ev", "_ZN9ISCSocketD0Ev", "_ZN9ISCSocket4bindEv"});
    expectAbstractTable("_ZTV19CommunicationSocket", "_ZTI19CommunicationSocket", 1);
    for (const char* table : {"_ZTV19CommunicationSocket", "_ZTV9IPCSocket", "_ZTV9ISCSocket"})
        expectTableWords(table, 5);
}

TEST(CommunicationSocketLayoutTest, AllOperationsAreExported) {
    // Those that hosts call, and those that classes derived from these call.
    for (const char* name :
         {"_Z12createSocketPi", "_Z10bindSocketii", "_Z14recvFromSocketiPvjP7timevalPi",
          "_Z12sendToSocketiPvjPi", "_Z20socketResultToStringi", "_ZN19CommunicationSocketC2Eiiii",
          "_ZN19CommunicationSocketD0Ev", "_ZN19CommunicationSocketD1Ev",
          "_ZN19CommunicationSocketD2Ev", "_ZN9IPCSocketC2EPc", "_ZN9IPCSocketD2Ev",
          "_ZN9ISCSocketC2Eiii", "_ZN9ISCSocketD2Ev"}) {
        EXPECT_NE(exported(name), nullptr);
    }
}

}  // namespace
