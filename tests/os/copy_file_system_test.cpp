// File copies call by call: which calls are made, in which order, and what happens where the kernel
// refuses, stops half way or fails.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cstdarg>
#include <functional>

#include "kfl/process.h"
#include "tests/os/children.h"
#include "tests/support/seed.h"

namespace {

// The calls of the library, and answers that stand for the system's.
std::vector<std::string> calls;
std::function<bool()> rangeWorks;
std::function<bool()> sendfileWorks;
std::function<bool()> positioningWorks;
std::function<std::size_t(std::size_t)> mostToCopy;
int readsThatWork = 0;
int readError = 0;
std::function<std::size_t(std::size_t)> mostToWrite;
bool nothingIsAnError = true;  // where a write writes nothing

long refuse(int error) {
    errno = error;
    return -1;
}

}  // namespace

extern "C" {

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    calls.emplace_back("open");
    return __real_open(path, flags, 0666);
}
int __wrap_open64(const char* path, int flags, ...) { return __wrap_open(path, flags); }

ssize_t __real_read(int from, void* buffer, std::size_t size);
ssize_t __wrap_read(int from, void* buffer, std::size_t size) {
    calls.emplace_back("read");
    if (readsThatWork-- <= 0) return static_cast<ssize_t>(refuse(readError));
    return __real_read(from, buffer, size);
}

ssize_t __real_write(int to, const void* buffer, std::size_t size);
ssize_t __wrap_write(int to, const void* buffer, std::size_t size) {
    calls.emplace_back("write");
    const std::size_t most = mostToWrite(size);
    if (most == 0) return nothingIsAnError ? static_cast<ssize_t>(refuse(ENOSPC)) : 0;
    return __real_write(to, buffer, most);
}

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
    calls.emplace_back((fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY ? "close source"
                                                                            : "close target");
    return __real_close(descriptor);
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) {
    calls.emplace_back((fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDWR ? "fsync" : "fsync?");
    return __real_fsync(descriptor);
}

long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    const int from = va_arg(arguments, int);
    void* const fromAt = va_arg(arguments, void*);
    const int to = va_arg(arguments, int);
    void* const toAt = va_arg(arguments, void*);
    const std::size_t size = va_arg(arguments, std::size_t);
    const unsigned flags = va_arg(arguments, unsigned);
    va_end(arguments);
    EXPECT_EQ(number, SYS_copy_file_range);
    calls.emplace_back("copy_file_range");
    if (!rangeWorks()) return refuse(EXDEV);
    return __real_syscall(number, from, fromAt, to, toAt, mostToCopy(size), flags);
}

ssize_t __real_sendfile64(int to, int from, void* at, std::size_t size);
ssize_t __wrap_sendfile64(int to, int from, void* at, std::size_t size) {
    calls.emplace_back("sendfile");
    if (!sendfileWorks()) return static_cast<ssize_t>(refuse(EINVAL));
    return __real_sendfile64(to, from, at, mostToCopy(size));
}

off64_t __real_lseek64(int file, off64_t offset, int whence);
off64_t __wrap_lseek64(int file, off64_t offset, int whence) {
    return positioningWorks() ? __real_lseek64(file, offset, whence) : refuse(ESPIPE);
}

}  // extern "C"

namespace {

using Calls = std::vector<std::string>;

constexpr std::size_t bufferSize = 4096;

bool always() { return true; }
bool never() { return false; }
std::size_t all(std::size_t size) { return size; }

// True as many times, then false.
std::function<bool()> times(int count) {
    return [count]() mutable { return count-- > 0; };
}

std::string randomBytes(std::size_t size) {
    kfl_test::Random random;
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

class CopyFileSystemTest : public testing::Test {
  protected:
    CopyFileSystemTest() {
        rangeWorks = sendfileWorks = positioningWorks = always;
        mostToCopy = mostToWrite = all;
        readsThatWork = 1000000;
        calls.clear();
    }

    // Copies that many bytes; tells what arrived.
    std::string copy(std::size_t size, bool sync = false) {
        bytes_ = randomBytes(size);
        folder_.write("from", bytes_);
        calls.clear();
        EXPECT_EQ(kfl::osCopyFile(from_.c_str(), to_.c_str(), sync), 0);
        return kfl_test::contentOf(to_);
    }

    kfl_test::TemporaryFolder folder_;
    std::string from_ = folder_ / "from";
    std::string to_ = folder_ / "to";
    std::string bytes_;
};

TEST_F(CopyFileSystemTest, MakesTheCallsOfTheShortestLoopForATinyFile) {
    EXPECT_TRUE(copy(100) == bytes_);
    EXPECT_EQ(calls,
              (Calls{"open", "open", "read", "write", "read", "close source", "close target"}));
    EXPECT_TRUE(copy(0) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "close source", "close target"}));
}

TEST_F(CopyFileSystemTest, SyncsTheTargetBeforeItIsClosed) {
    EXPECT_TRUE(copy(100, true) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "write", "read", "close source", "fsync",
                            "close target"}));
}

TEST_F(CopyFileSystemTest, ClosesTheSourceWhenTheTargetCannotBeOpened) {
    folder_.write("from", "content");
    EXPECT_EQ(kfl::osCopyFile(from_.c_str(), folder_.path().c_str(), true), -1);
    EXPECT_EQ(calls, (Calls{"open", "open", "close source"}));
}

TEST_F(CopyFileSystemTest, OpensNoTargetWhenTheSourceCannotBeOpened) {
    EXPECT_EQ(kfl::osCopyFile(from_.c_str(), to_.c_str(), true), -1);
    EXPECT_EQ(calls, Calls{"open"});
}

TEST_F(CopyFileSystemTest, CopiesALargeFileInsideTheKernel) {
    EXPECT_TRUE(copy(1 << 20) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "copy_file_range", "copy_file_range", "read",
                            "close source", "close target"}));
}

TEST_F(CopyFileSystemTest, GoesOnAfterAPieceInsideTheKernel) {
    mostToCopy = [](std::size_t) { return 1000; };
    EXPECT_TRUE(copy(bufferSize + 2500) == bytes_);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "copy_file_range"), 8);
}

TEST_F(CopyFileSystemTest, TriesTheNextWayWhereOneIsRefused) {
    rangeWorks = never;
    EXPECT_TRUE(copy(1 << 20) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "copy_file_range", "sendfile", "sendfile",
                            "read", "close source", "close target"}));
    sendfileWorks = never;
    EXPECT_TRUE(copy(3 * bufferSize - 1) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "copy_file_range", "sendfile", "write", "read",
                            "write", "read", "write", "read", "close source", "close target"}));
}

TEST_F(CopyFileSystemTest, GoesOnWhereOneWayStopped) {
    mostToCopy = [](std::size_t) { return 1000; };
    rangeWorks = times(2);
    sendfileWorks = times(3);
    EXPECT_TRUE(copy(4 * bufferSize) == bytes_);
    EXPECT_EQ(calls, (Calls{"open", "open", "read", "copy_file_range", "copy_file_range",
                            "copy_file_range", "sendfile", "sendfile", "sendfile", "sendfile",
                            "read", "write", "read", "write", "read", "write", "read",
                            "close source", "close target"}));
}

// Some kernels take files of their own at their word, which is that they are empty.
TEST_F(CopyFileSystemTest, ReadsOnWhereTheKernelSeesNothing) {
    mostToCopy = [](std::size_t) { return 0; };
    EXPECT_TRUE(copy(5 * bufferSize + 7) == bytes_);
    rangeWorks = never;
    EXPECT_TRUE(copy(5 * bufferSize + 7) == bytes_);
}

TEST_F(CopyFileSystemTest, EndsAtAReadErrorAsAtTheEnd) {
    rangeWorks = sendfileWorks = never;
    for (const int error : {EIO, EINTR, EISDIR}) {
        readError = error;
        for (const int reads : {0, 1, 2, 3}) {
            readsThatWork = reads;
            const std::string arrived = copy(5 * bufferSize, true);
            EXPECT_TRUE(arrived == bytes_.substr(0, static_cast<std::size_t>(reads) * bufferSize))
                << reads;
            EXPECT_EQ(std::count(calls.begin(), calls.end(), "read"), reads + 1);
            EXPECT_EQ(calls.back(), "close target");
        }
    }
}

TEST_F(CopyFileSystemTest, KeepsWhatTheKernelCopiedBeforeAReadError) {
    mostToCopy = [](std::size_t) { return 1000; };
    rangeWorks = times(2);
    sendfileWorks = never;
    readsThatWork = 1;
    readError = EIO;
    const std::string arrived = copy(5 * bufferSize);
    EXPECT_TRUE(arrived == bytes_.substr(0, 2000));
}

// Going on from anywhere else would double what is there already.
TEST_F(CopyFileSystemTest, EndsWhereAFileCannotBePutBehindWhatTheKernelCopied) {
    mostToCopy = [](std::size_t) { return 1000; };
    for (const int failing : {0, 1}) {
        rangeWorks = times(2);
        sendfileWorks = never;
        positioningWorks = [failing, call = 0]() mutable { return call++ != failing; };
        const std::string arrived = copy(5 * bufferSize);
        EXPECT_TRUE(arrived == bytes_.substr(0, 2000)) << failing;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "read"), 1);
    }
}

TEST_F(CopyFileSystemTest, WritesOnAfterAShortWrite) {
    mostToWrite = [](std::size_t size) { return std::min<std::size_t>(size, 500); };
    EXPECT_TRUE(copy(4000) == bytes_);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "write"), 8);
}

TEST_F(CopyFileSystemTest, LosesOnlyWhatCouldNotBeWritten) {
    rangeWorks = sendfileWorks = never;
    for (const bool isError : {false, true}) {
        nothingIsAnError = isError;
        int writes = 0;
        mostToWrite = [&writes](std::size_t size) { return ++writes == 2 ? 0 : size; };
        const std::string arrived = copy(3 * bufferSize);
        EXPECT_TRUE(arrived == bytes_.substr(0, bufferSize) + bytes_.substr(2 * bufferSize));
    }
}

}  // namespace
