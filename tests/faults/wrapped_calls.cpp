// Stands between the library and the system: each call goes on to the system unless it is to fail.
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "tests/faults/injection.h"
#include "tests/faults/interception.h"
// Its operators take from malloc, and so fail where malloc does.
#include "tests/support/counted_new.h"

using kfl_test::intercept;
using kfl_test::Interception;
using kfl_test::isToFail;

namespace {

std::atomic<long> blocks{0};

// What a call that does a part only is asked to do.
std::size_t partOf(std::size_t size) { return size > 1 ? size / 2 : size; }

}  // namespace

long kfl_test::liveBlocks() { return blocks; }

extern "C" {

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
    void* const block = isToFail("malloc") ? nullptr : __real_malloc(size);
    if (block) ++blocks;
    return block;
}

void __real_free(void* block);
void __wrap_free(void* block) {
    if (block) --blocks;
    __real_free(block);
}

int __real_open64(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return isToFail("open") ? -1 : __real_open64(path, flags, mode);
}

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
    const bool fails = isToFail("close");
    const int error = errno;
    const int result = __real_close(descriptor);
    if (!fails) return result;
    errno = error;
    return -1;
}

ssize_t __real_read(int from, void* buffer, std::size_t size);
ssize_t __wrap_read(int from, void* buffer, std::size_t size) {
    const Interception how = intercept("read");
    if (how == Interception::fails) return -1;
    return __real_read(from, buffer, how == Interception::isShort ? partOf(size) : size);
}

ssize_t __real_write(int to, const void* data, std::size_t size);
ssize_t __wrap_write(int to, const void* data, std::size_t size) {
    const Interception how = intercept("write");
    if (how == Interception::fails) return -1;
    return __real_write(to, data, how == Interception::isShort ? partOf(size) : size);
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) { return isToFail("fsync") ? -1 : __real_fsync(descriptor); }

off64_t __real_lseek64(int descriptor, off64_t offset, int whence);
off64_t __wrap_lseek64(int descriptor, off64_t offset, int whence) {
    return isToFail("lseek") ? -1 : __real_lseek64(descriptor, offset, whence);
}

int __real_fstat64(int descriptor, struct stat64* status);
int __wrap_fstat64(int descriptor, struct stat64* status) {
    return isToFail("fstat") ? -1 : __real_fstat64(descriptor, status);
}

ssize_t __real_sendfile64(int to, int from, off64_t* at, std::size_t size);
ssize_t __wrap_sendfile64(int to, int from, off64_t* at, std::size_t size) {
    const Interception how = intercept("sendfile");
    if (how == Interception::fails) return -1;
    return __real_sendfile64(to, from, at, how == Interception::isShort ? 1000 : size);
}

long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    long words[6];
    for (long& word : words) word = va_arg(arguments, long);
    va_end(arguments);
    if (isToFail("syscall")) return -1;
    return __real_syscall(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}

long __real_sysconf(int name);
long __wrap_sysconf(int name) { return isToFail("sysconf") ? -1 : __real_sysconf(name); }

pid_t __real_fork();
pid_t __wrap_fork() {
    if (isToFail("fork")) return -1;
    kfl_test::noteFork();
    const pid_t pid = __real_fork();
    if (pid == 0) kfl_test::noteChild();
    return pid;
}

// That there is no child to wait for is true where it fails so: somebody else has waited for it.
pid_t __real_waitpid(pid_t pid, int* status, int options);
pid_t __wrap_waitpid(pid_t pid, int* status, int options) {
    if (!isToFail("waitpid")) return __real_waitpid(pid, status, options);
    const int error = errno;
    int ignored = 0;
    if (error == ECHILD) __real_waitpid(pid, &ignored, options);
    errno = error;
    return -1;
}

int __real_kill(pid_t pid, int signal);
int __wrap_kill(pid_t pid, int signal) { return isToFail("kill") ? -1 : __real_kill(pid, signal); }

int __real_execve(const char* path, char* const* words, char* const* environment);
int __wrap_execve(const char* path, char* const* words, char* const* environment) {
    return isToFail("execve") ? -1 : __real_execve(path, words, environment);
}

int __real_execvp(const char* file, char* const* words);
int __wrap_execvp(const char* file, char* const* words) {
    return isToFail("execvp") ? -1 : __real_execvp(file, words);
}

int __real_dup2(int from, int to);
int __wrap_dup2(int from, int to) { return isToFail("dup2") ? -1 : __real_dup2(from, to); }

int __real_socket(int domain, int type, int protocol);
int __wrap_socket(int domain, int type, int protocol) {
    return isToFail("socket") ? -1 : __real_socket(domain, type, protocol);
}

int __real_bind(int descriptor, const sockaddr* address, socklen_t size);
int __wrap_bind(int descriptor, const sockaddr* address, socklen_t size) {
    return isToFail("bind") ? -1 : __real_bind(descriptor, address, size);
}

int __real_select(int end, fd_set* in, fd_set* out, fd_set* other, timeval* limit);
int __wrap_select(int end, fd_set* in, fd_set* out, fd_set* other, timeval* limit) {
    return isToFail("select") ? -1 : __real_select(end, in, out, other, limit);
}

int __real_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask);
int __wrap_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask) {
    return isToFail("ppoll") ? -1 : __real_ppoll(watched, count, limit, mask);
}

ssize_t __real_recv(int descriptor, void* buffer, std::size_t size, int flags);
ssize_t __wrap_recv(int descriptor, void* buffer, std::size_t size, int flags) {
    return isToFail("recv") ? -1 : __real_recv(descriptor, buffer, size, flags);
}

ssize_t __real_send(int descriptor, const void* data, std::size_t size, int flags);
ssize_t __wrap_send(int descriptor, const void* data, std::size_t size, int flags) {
    return isToFail("send") ? -1 : __real_send(descriptor, data, size, flags);
}

int __real_clock_gettime(clockid_t clock, timespec* time);
int __wrap_clock_gettime(clockid_t clock, timespec* time) {
    return isToFail("clock_gettime") ? -1 : __real_clock_gettime(clock, time);
}

int __real_gettimeofday(timeval* time, void* zone);
int __wrap_gettimeofday(timeval* time, void* zone) {
    return isToFail("gettimeofday") ? -1 : __real_gettimeofday(time, zone);
}

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument) {
    return isToFail("pthread_create") ? errno
                                      : __real_pthread_create(thread, attributes, entry, argument);
}

int __real_pthread_join(pthread_t thread, void** value);
int __wrap_pthread_join(pthread_t thread, void** value) {
    return isToFail("pthread_join") ? errno : __real_pthread_join(thread, value);
}

int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                  const timespec* deadline);
int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                  const timespec* deadline) {
    return isToFail("pthread_cond_timedwait")
               ? errno
               : __real_pthread_cond_timedwait(condition, mutex, deadline);
}

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const int error = isToFail("pthread_mutex_lock") ? errno : 0;
    const int result = __real_pthread_mutex_lock(mutex);
    return error != 0 ? error : result;
}

int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    const int error = isToFail("pthread_mutex_unlock") ? errno : 0;
    const int result = __real_pthread_mutex_unlock(mutex);
    return error != 0 ? error : result;
}

std::FILE* __real_fopen64(const char* path, const char* mode);
std::FILE* __wrap_fopen64(const char* path, const char* mode) {
    return isToFail("fopen") ? nullptr : __real_fopen64(path, mode);
}

int __real_fclose(std::FILE* stream);
int __wrap_fclose(std::FILE* stream) {
    const bool fails = isToFail("fclose");
    const int error = errno;
    const int result = __real_fclose(stream);
    if (!fails) return result;
    errno = error;
    return EOF;
}

std::size_t __real_fread(void* to, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
    const Interception how = intercept("fread");
    if (how == Interception::none) return __real_fread(to, size, count, stream);
    return how == Interception::isShort ? __real_fread(to, size, partOf(count), stream) : 0;
}

std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) {
    const Interception how = intercept("fwrite");
    if (how == Interception::none) return __real_fwrite(data, size, count, stream);
    return how == Interception::isShort ? __real_fwrite(data, size, partOf(count), stream) : 0;
}

int __real_vsnprintf(char* to, std::size_t size, const char* format, va_list arguments);
int __wrap_vsnprintf(char* to, std::size_t size, const char* format, va_list arguments) {
    return isToFail("vsnprintf") ? -1 : __real_vsnprintf(to, size, format, arguments);
}

}  // extern "C"
