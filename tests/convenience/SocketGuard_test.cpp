#include "kfl/convenience/SocketGuard.h"
#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "kfl/CommunicationSocket.h"
#include "tests/support/temporary_folder.h"

namespace {

using kfl::SocketGuard;

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

class SocketGuardTest : public testing::Test {
  protected:
    // A descriptor that is bound to the path.
    int boundSocket() {
        IPCSocket socket(path.data());
        int code = 0;
        EXPECT_TRUE(socket.initialize(code));
        EXPECT_TRUE(socket.bind());
        return socket.descriptor();
    }
    bool exists() const { return std::filesystem::exists(path); }

    const kfl_test::TemporaryFolder folder;
    std::string path = folder / "socket";
};

TEST_F(SocketGuardTest, ClosesAndRemovesAtTheEnd) {
    const int descriptor = boundSocket();
    {
        SocketGuard guard(descriptor);
        EXPECT_TRUE(guard.ownPath(path.c_str()));
        EXPECT_EQ(guard.descriptor(), descriptor);
        EXPECT_EQ(guard.path(), path);
        EXPECT_TRUE(isOpen(descriptor));
        errno = 77;
    }
    EXPECT_EQ(errno, 77);
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(exists());
}

TEST_F(SocketGuardTest, APathThatWasNotGivenStays) {
    const int descriptor = boundSocket();
    { const SocketGuard guard(descriptor); }
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_TRUE(exists());
}

TEST_F(SocketGuardTest, TakesNoPathThatIsNoSocket) {
    SocketGuard guard;
    EXPECT_FALSE(guard.ownPath(nullptr));
    EXPECT_FALSE(guard.ownPath(path.c_str()));
    EXPECT_FALSE(guard.ownPath(folder.write("file", "").c_str()));
    EXPECT_FALSE(guard.ownPath(std::string(200, 'x').c_str()));
    EXPECT_STREQ(guard.path(), "");
}

TEST_F(SocketGuardTest, WhatTookThePlaceOfTheSocketStays) {
    const int first = boundSocket();
    int second = -1;
    {
        SocketGuard guard(first);
        ASSERT_TRUE(guard.ownPath(path.c_str()));
        // The old file still exists: its number cannot be given to the new one.
        std::filesystem::rename(path, path + ".old");
        second = boundSocket();
    }
    EXPECT_FALSE(isOpen(first));
    EXPECT_TRUE(exists());
    close(second);
}

TEST_F(SocketGuardTest, FinishesOnceAndOnDemand) {
    const int descriptor = boundSocket();
    SocketGuard guard(descriptor);
    ASSERT_TRUE(guard.ownPath(path.c_str()));
    guard.finish();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(exists());
    EXPECT_EQ(guard.descriptor(), -1);
    // The number may have been given to another, which must stay open.
    const int other = open("/dev/null", O_RDONLY | O_CLOEXEC);
    guard.finish();
    EXPECT_TRUE(isOpen(other));
    close(other);
}

TEST_F(SocketGuardTest, ReleasedItOwnsNothing) {
    const int descriptor = boundSocket();
    {
        SocketGuard guard(descriptor);
        ASSERT_TRUE(guard.ownPath(path.c_str()));
        EXPECT_EQ(guard.release(), descriptor);
        EXPECT_EQ(guard.release(), -1);
    }
    EXPECT_TRUE(isOpen(descriptor));
    EXPECT_TRUE(exists());
    close(descriptor);
}

TEST_F(SocketGuardTest, CanBeMoved) {
    const int descriptor = boundSocket();
    const int other = open("/dev/null", O_RDONLY | O_CLOEXEC);
    {
        SocketGuard first(descriptor);
        ASSERT_TRUE(first.ownPath(path.c_str()));
        SocketGuard second(std::move(first));
        EXPECT_EQ(second.descriptor(), descriptor);
        SocketGuard third(other);
        third = std::move(second);
        EXPECT_FALSE(isOpen(other));
        EXPECT_EQ(third.path(), path);
        EXPECT_TRUE(exists());
    }
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(exists());
}

}  // namespace
