#include "net/receive.h"

#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/types.h>
#include <time.h>

#include <cerrno>
#include <climits>

namespace kfl::detail {
namespace {

constexpr long microsecondsPerSecond = 1000000;
constexpr long nanosecondsPerSecond = 1000000000;

// A time-out that select takes without a second thought.
bool isOrdinary(const timeval& time) {
    return time.tv_sec >= 0 && time.tv_usec >= 0 && time.tv_usec < microsecondsPerSecond;
}

// Takes off what select takes when it finds something at once: it rounds the time left down. A
// caller who spends a budget in a loop comes to its end even if there is always something to read.
void chargeShortestWait(timeval& time) {
    if (time.tv_usec > 0) {
        --time.tv_usec;
    } else {
        --time.tv_sec;
        time.tv_usec = microsecondsPerSecond - 1;
    }
}

// Tells whether a receive failed in a way that select would not have noticed at once. Besides an
// empty queue these are what is no socket (it may still have to be waited for) and a stream that
// listens. All others are errors that were pending on the socket, for which select does not wait.
bool isForSelect(int error) {
    return error == EAGAIN || error == ENOTSOCK || error == ENOTCONN || error == EINVAL;
}

timespec difference(const timespec& a, const timespec& b) {
    timespec result{};
    result.tv_sec = a.tv_sec - b.tv_sec;
    result.tv_nsec = a.tv_nsec - b.tv_nsec;
    if (result.tv_nsec < 0) {
        --result.tv_sec;
        result.tv_nsec += nanosecondsPerSecond;
    }
    return result;
}

// The same with whole seconds where they belong; seconds beyond what the type holds are left out.
timespec normalised(const timeval& time) {
    timespec result{};
    if (__builtin_add_overflow(time.tv_sec, time.tv_usec / microsecondsPerSecond, &result.tv_sec)) {
        result.tv_sec = time.tv_sec;
    }
    result.tv_nsec = static_cast<long>(time.tv_usec % microsecondsPerSecond) * 1000;
    return result;
}

void storeTimeLeft(timespec left, timeval& time) {
    if (left.tv_sec < 0) left = timespec{};
    time.tv_sec = left.tv_sec;
    time.tv_usec = left.tv_nsec / 1000;
}

int selectReadable(int descriptor, timeval* limit) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(descriptor, &readable);
    return select(descriptor + 1, &readable, nullptr, nullptr, limit);
}

// select for a descriptor that has no place in its set; it leaves the time alone.
int pollReadable(int descriptor, const timeval* limit) {
    if (limit && (limit->tv_sec < 0 || limit->tv_usec < 0)) {
        errno = EINVAL;
        return -1;
    }
    const timespec time = limit ? normalised(*limit) : timespec{};
    pollfd watched{};
    watched.fd = descriptor;
    // With errors and hang-ups, which come unasked, what select takes for readable.
    watched.events = POLLIN | POLLRDNORM | POLLRDBAND;
    const int ready = ppoll(&watched, 1, limit ? &time : nullptr, nullptr);
    if (ready <= 0 || (watched.revents & POLLNVAL) == 0) return ready;
    errno = EBADF;
    return -1;
}

int waitReadable(int descriptor, timeval* limit) {
    return descriptor < FD_SETSIZE ? selectReadable(descriptor, limit)
                                   : pollReadable(descriptor, limit);
}

// Waits, and leaves in `limit` what is left of the time.
int waitReadableWithin(int descriptor, timeval& limit) {
    const timeval before = limit;
    timespec start{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    const int ready = waitReadable(descriptor, &limit);
    // Some C libraries keep to themselves what the system wrote.
    const bool isKept = limit.tv_sec == before.tv_sec && limit.tv_usec == before.tv_usec;
    if (isKept && (ready >= 0 || errno == EINTR)) {
        timespec end{};
        clock_gettime(CLOCK_MONOTONIC, &end);
        storeTimeLeft(difference(normalised(before), difference(end, start)), limit);
    }
    return ready;
}

int judgeRead(ssize_t count, int& resultCode) {
    if (count == 0) return failWith(codeEmptyRead, resultCode);
    if (count < 0) return failWith(codeReadFailed, resultCode);
    return static_cast<int>(count);
}

}  // namespace

int failWith(ResultCode code, int& resultCode) {
    resultCode = code;
    return -1;
}

int receive(int descriptor, void* buffer, std::size_t size, timeval* timeOut, int& resultCode) {
    resultCode = codeSuccess;
    if (descriptor < 0) {
        errno = EBADF;
        return failWith(codeWaitFailed, resultCode);
    }
    timeval* const limit = timeOut && (timeOut->tv_sec || timeOut->tv_usec) ? timeOut : nullptr;

    if (!limit || isOrdinary(*limit)) {
        const int errorBefore = errno;
        const ssize_t count = recv(descriptor, buffer, size, MSG_DONTWAIT);
        if (count < 0 && errno == EBADF) return failWith(codeWaitFailed, resultCode);
        if (count >= 0 || !isForSelect(errno)) {
            if (limit) chargeShortestWait(*limit);
            return judgeRead(count, resultCode);
        }
        errno = errorBefore;
    }

    const int ready =
        limit ? waitReadableWithin(descriptor, *limit) : waitReadable(descriptor, nullptr);
    if (ready < 0) return failWith(codeWaitFailed, resultCode);
    if (ready == 0) return 0;
    // This one may wait: another reader may have taken what was there.
    return judgeRead(recv(descriptor, buffer, size, 0), resultCode);
}

}  // namespace kfl::detail
