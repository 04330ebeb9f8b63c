// The binary interface of the socket classes: sizes, offsets, slots and names.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

#include "kfl/CommunicationSocket.h"
#include "kfl/sockets.h"

namespace {

constexpr bool is32Bit = sizeof(void*) == 4;
constexpr std::size_t pointerSize = sizeof(void*);

static_assert(!is32Bit || sizeof(CommunicationSocket) == 24);
static_assert(!is32Bit || sizeof(IPCSocket) == 28);
static_assert(!is32Bit || sizeof(ISCSocket) == 24);
static_assert(is32Bit || sizeof(CommunicationSocket) == 32);
static_assert(is32Bit || sizeof(IPCSocket) == 40);
static_assert(is32Bit || sizeof(ISCSocket) == 32);

template <class Field>
Field fieldAt(const void* object, std::size_t offset) {
    Field field;
    std::memcpy(&field, static_cast<const char*>(object) + offset, sizeof field);
    return field;
}

const void* symbol(const char* name) {
    const void* const address = dlsym(RTLD_DEFAULT, name);
    EXPECT_NE(address, nullptr) << name;
    return address;
}

// Field by field: the first stands behind the pointer to the virtual table, the rest follow it.
void expectFields(const CommunicationSocket& socket, int domain, int type, int protocol, int port,
                  int descriptor) {
    EXPECT_EQ(fieldAt<int>(&socket, pointerSize + 0), domain);
    EXPECT_EQ(fieldAt<int>(&socket, pointerSize + 4), type);
    EXPECT_EQ(fieldAt<int>(&socket, pointerSize + 8), protocol);
    EXPECT_EQ(fieldAt<int>(&socket, pointerSize + 12), port);
    EXPECT_EQ(fieldAt<int>(&socket, pointerSize + 16), descriptor);
}

TEST(CommunicationSocketLayoutTest, FieldsStandAtTheirOffsets) {
    ISCSocket socket(1234, 5678, 91011);
    expectFields(socket, 2, 1234, 5678, 91011, 0);
    int code;
    EXPECT_FALSE(socket.initialize(code));
    expectFields(socket, 2, 1234, 5678, 91011, -1);
}

TEST(CommunicationSocketLayoutTest, ThePathFollowsTheBase) {
    char path[] = "/tmp/name";
    const IPCSocket socket(path);
    expectFields(socket, 1, socket.type(), 0, 0, 0);
    EXPECT_EQ(fieldAt<char*>(&socket, sizeof(CommunicationSocket)), path);
}

TEST(CommunicationSocketLayoutTest, TheBaseStandsAtTheStart) {
    char path[] = "/tmp/name";
    IPCSocket local(path);
    ISCSocket udp(0, 0, 0);
    EXPECT_EQ(static_cast<void*>(static_cast<CommunicationSocket*>(&local)), &local);
    EXPECT_EQ(static_cast<void*>(static_cast<CommunicationSocket*>(&udp)), &udp);
}

// Both destructors, then bind.
void expectSlots(const void* const* table, const char* complete, const char* deleting,
                 const char* bind) {
    EXPECT_EQ(table[0], symbol(complete));
    EXPECT_EQ(table[1], symbol(deleting));
    EXPECT_EQ(table[2], symbol(bind));
}

TEST(CommunicationSocketLayoutTest, VirtualOperationsStandInTheirSlots) {
    char path[] = "/tmp/name";
    const IPCSocket local(path);
    expectSlots(fieldAt<const void* const*>(&local, 0), "_ZN9IPCSocketD1Ev", "_ZN9IPCSocketD0Ev",
                "_ZN9IPCSocket4bindEv");
    const ISCSocket udp(0, 0, 0);
    expectSlots(fieldAt<const void* const*>(&udp, 0), "_ZN9ISCSocketD1Ev", "_ZN9ISCSocketD0Ev",
                "_ZN9ISCSocket4bindEv");
}

TEST(CommunicationSocketLayoutTest, TheAbstractTableHasNoBind) {
    // Two words stand before the slots: the offset to the top and the type information.
    const auto* const table =
        static_cast<const void* const*>(symbol("_ZTV19CommunicationSocket")) + 2;
    EXPECT_EQ(table[-1], symbol("_ZTI19CommunicationSocket"));
    // What the compiler puts into the two destructor slots, which nobody can call, is its own
    // affair.
    EXPECT_EQ(table[2], symbol("__cxa_pure_virtual"));
}

TEST(CommunicationSocketLayoutTest, OperationsAreFoundUnderTheirNames) {
    for (const char* name : {
             "_Z12createSocketPi",
             "_Z10bindSocketii",
             "_Z14recvFromSocketiPvjP7timevalPi",
             "_Z12sendToSocketiPvjPi",
             "_Z20socketResultToStringi",
             "_ZN19CommunicationSocketC2Eiiii",
             "_ZN19CommunicationSocketD2Ev",
             "_ZN19CommunicationSocket10initializeERi",
             "_ZN19CommunicationSocket7receiveEPciR7timevalRi",
             "_ZN19CommunicationSocket14resultToStringEi",
             "_ZN9IPCSocketC1EPc",
             "_ZN9IPCSocketC2EPc",
             "_ZN9IPCSocketD2Ev",
             "_ZN9ISCSocketC1Eiii",
             "_ZN9ISCSocketC2Eiii",
             "_ZN9ISCSocketD2Ev",
             "_ZTI9IPCSocket",
             "_ZTI9ISCSocket",
             "_ZTS9IPCSocket",
             "_ZTS9ISCSocket",
         }) {
        EXPECT_NE(symbol(name), nullptr);
    }
}

}  // namespace
