// osCopyFile: what a small file holds goes through a buffer, what a large one holds is copied
// inside the kernel where the kernel can.
#include <errno.h>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "kfl/process.h"

namespace kfl {
namespace {

// Little enough for threads with small stacks.
constexpr size_t bufferSize = 4096;
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

ssize_t copyFileRange(int from, loff_t* fromAt, int to, loff_t* toAt) {
#ifdef SYS_copy_file_range
    return syscall(SYS_copy_file_range, from, fromAt, to, toAt, kernelPiece, 0U);
#else
    errno = ENOSYS;
    return -1;
#endif
}

bool moveTo(int file, off_t position) { return lseek(file, position, SEEK_SET) == position; }

// The first way: copies from the start on, by positions of its own. Returns how many bytes that was
// and tells whether it was all.
off_t copyRanges(int from, int to, bool& complete) {
    loff_t source = 0;
    loff_t target = 0;
    ssize_t copied = 0;
    while ((copied = copyFileRange(from, &source, to, &target)) > 0) {
    }
    complete = copied == 0;
    return target;
}

// Copies inside the kernel what it can, from the start on, whatever has been read of `from`
// already. Returns how many bytes that was, and `to` then stands behind them; where it was nothing,
// neither file has moved. Negative where `to` could not be put there.
off_t copyInKernel(int from, int to) {
    bool complete = false;
    off_t position = copyRanges(from, to, complete);
    if (position > 0 && !moveTo(to, position)) return -1;
    if (complete) return position;
    while (sendfile(to, from, &position, kernelPiece) > 0) {
    }
    return position;
}

// Reads on behind what was copied inside the kernel. Where the files cannot be put there the copy
// ends, as at a read error: going on from anywhere else would double what is there already.
ssize_t readBehind(off_t copied, int from, char* buffer) {
    return copied > 0 && moveTo(from, copied) ? read(from, buffer, bufferSize) : 0;
}

// A large file is left to the kernel from its first byte on: a piece written beforehand would spoil
// the alignment of all that follows. Only a read that finds nothing is the end, and a read error
// ends the copy as that does: files of the kernel claim to be empty, and a copy inside it believes
// them.
void copyContents(int from, int to) {
    char buffer[bufferSize];
    ssize_t size = read(from, buffer, sizeof buffer);
    if (size == sizeof buffer) {
        const off_t copied = copyInKernel(from, to);
        if (copied != 0) size = readBehind(copied, from, buffer);
    }
    while (size > 0) {
        writeAll(to, buffer, static_cast<size_t>(size));
        size = read(from, buffer, sizeof buffer);
    }
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
