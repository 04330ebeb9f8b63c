// osCopyFile: what a small file holds goes through a buffer, what a large one holds is copied
// inside the kernel where the kernel can.
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "kfl/process.h"

namespace kfl {
namespace {

constexpr size_t bufferSize = 16384;
// The most that one call inside the kernel is asked for; it is fewer than a signed size can count.
constexpr size_t kernelPiece = 1U << 30;

int openSource(const char* path) { return path ? open(path, O_RDONLY) : -1; }

int openTarget(const char* path) {
    return path ? open(path, O_RDWR | O_CREAT | O_TRUNC, 0666) : -1;
}

// A write error is not looked at: what could not be written is lost, and the copy goes on.
void writeAll(int to, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = write(to, data, size);
        if (written <= 0) return;
        data += written;
        size -= static_cast<size_t>(written);
    }
}

// Copies one bufferful; tells how much there was. A read error ends the copy as the end does.
size_t copyPiece(int from, int to) {
    char buffer[bufferSize];
    const ssize_t size = read(from, buffer, sizeof buffer);
    if (size <= 0) return 0;
    writeAll(to, buffer, static_cast<size_t>(size));
    return static_cast<size_t>(size);
}

ssize_t copyFileRange(int from, int to) {
#ifdef SYS_copy_file_range
    return syscall(SYS_copy_file_range, from, nullptr, to, nullptr, kernelPiece, 0U);
#else
    return sendfile(to, from, nullptr, kernelPiece);
#endif
}

// Both calls move the descriptors' own positions, so whatever they leave undone, at their end or
// where they refuse, is found there by the next read.
void copyInKernel(int from, int to) {
    ssize_t copied = 0;
    while ((copied = copyFileRange(from, to)) > 0) {
    }
    if (copied == 0) return;
    while (sendfile(to, from, nullptr, kernelPiece) > 0) {
    }
}

// Only a read that finds nothing is the end: files of the kernel claim to be empty, and a call
// inside the kernel believes them.
void copyContents(int from, int to) {
    size_t size = copyPiece(from, to);
    if (size == bufferSize) copyInKernel(from, to);
    while (size > 0) size = copyPiece(from, to);
}

}  // namespace

int osCopyFile(const char* from, const char* to, bool sync) {
    const int source = openSource(from);
    if (source < 0) return -1;
    const int target = openTarget(to);
    if (target < 0) {
        close(source);
        return -1;
    }
    copyContents(source, target);
    close(source);
    if (sync) fsync(target);
    close(target);
    return 0;
}

}  // namespace kfl
