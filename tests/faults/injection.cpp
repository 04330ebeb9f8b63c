#include "tests/faults/injection.h"

#include <errno.h>
#include <sys/mman.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "tests/faults/interception.h"

namespace kfl_test {
namespace {

// What parent and children share.
struct Shared {
    std::atomic<unsigned long> calls;
    std::atomic<int> call;  // index of the one that failed; -1: none
    std::atomic<int> error;
    std::atomic<bool> forked;
    std::atomic<unsigned long> injected[64];
};

Shared& shared() {
    static Shared* const page = [] {
        void* const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        return new (memory) Shared{};
    }();
    return *page;
}

Fault plan{};
char onlyCall[32] = "";
char refusedCall[32] = "";
bool isChild = false;
thread_local bool armed = false;

int indexOf(const char* name) {
    const auto& calls = fallibleCalls();
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (std::strcmp(calls[i].name, name) == 0) return static_cast<int>(i);
    }
    std::abort();
}

// Whether the call that is being made is one to fail.
bool isDue(int index) {
    Shared& now = shared();
    if (onlyCall[0] != '\0' &&
        std::strcmp(onlyCall, fallibleCalls()[static_cast<unsigned int>(index)].name) != 0) {
        return false;
    }
    const unsigned long number = ++now.calls;
    if (plan.at == 0) return false;
    return number == plan.at || (plan.lasts && number > plan.at && now.call == index);
}

Interception failWith(int index) {
    const FallibleCall& call = fallibleCalls()[static_cast<unsigned int>(index)];
    Shared& now = shared();
    const std::size_t variants = call.errors.size() + (call.canBeShort ? 1 : 0);
    if (plan.variant >= variants) {
        // There is no such way to fail: the caller tells by the number of variants.
        return Interception::none;
    }
    now.call = index;
    ++now.injected[index];
    if (plan.variant == call.errors.size()) {
        now.error = 0;
        return Interception::isShort;
    }
    errno = call.errors[plan.variant];
    now.error = errno;
    return Interception::fails;
}

}  // namespace

const std::vector<FallibleCall>& fallibleCalls() {
    static const std::vector<FallibleCall> calls{
        {"malloc", {ENOMEM}, false, false},
        {"open", {EACCES, EINTR, EMFILE, ENFILE, ENOMEM, ENOSPC, EIO}, false, false},
        {"close", {EINTR, EIO, ENOSPC}, false, true},
        {"read", {EINTR, EIO, EAGAIN}, true, false},
        {"write", {EINTR, EIO, ENOSPC, EFBIG}, true, false},
        {"fsync", {EIO, EINTR, EINVAL, ENOSPC}, false, false},
        {"lseek", {ESPIPE, EINVAL, EOVERFLOW}, false, false},
        {"fstat", {EIO, ENOMEM, EOVERFLOW}, false, false},
        {"sendfile", {EINVAL, ENOSYS, EIO, EINTR, ENOSPC}, true, false},
        {"syscall", {ENOSYS, EPERM, EINTR, EIO, EXDEV, EINVAL, ENOSPC}, false, false},
        {"sysconf", {EINVAL}, false, false},
        {"fork", {EAGAIN, ENOMEM, ENOSYS}, false, false},
        {"waitpid", {ECHILD, EINTR}, false, false},
        {"kill", {ESRCH, EPERM}, false, false},
        {"execve", {ENOENT, EACCES, ENOEXEC, ENOMEM, E2BIG, EIO, ETXTBSY, EMFILE}, false, false},
        {"execvp", {ENOENT, EACCES, ENOEXEC, ENOMEM, E2BIG, EIO, ETXTBSY, EMFILE}, false, false},
        {"dup2", {EBUSY, EINTR, EMFILE}, false, false},
        {"socket", {EMFILE, ENFILE, ENOBUFS, ENOMEM, EACCES, EAFNOSUPPORT}, false, false},
        {"bind", {EADDRINUSE, EACCES, EADDRNOTAVAIL, ENOMEM, EROFS}, false, false},
        {"select", {EINTR, ENOMEM, EBADF}, false, false},
        {"ppoll", {EINTR, ENOMEM}, false, false},
        {"recv", {EINTR, EAGAIN, ECONNREFUSED, ENOMEM}, false, false},
        {"send",
         {EINTR, EAGAIN, ECONNREFUSED, EMSGSIZE, ENOBUFS, ENOMEM, EPERM, EHOSTUNREACH},
         false,
         false},
        {"clock_gettime", {EINVAL}, false, false},
        {"gettimeofday", {EINVAL}, false, false},
        {"pthread_create", {EAGAIN, EPERM}, false, false},
        {"pthread_join", {EINVAL, ESRCH, EDEADLK}, false, false},
        {"pthread_cond_timedwait", {ETIMEDOUT, EINVAL, EPERM}, false, false},
        {"pthread_mutex_lock", {EINVAL, EAGAIN, EDEADLK}, false, true},
        {"pthread_mutex_unlock", {EINVAL, EPERM}, false, true},
        {"fopen", {EACCES, EINTR, EMFILE, ENFILE, ENOMEM, EROFS}, false, false},
        {"fclose", {EIO, ENOSPC, EINTR}, false, true},
        {"fread", {EIO, EINTR}, true, false},
        {"fwrite", {EIO, ENOSPC, EINTR, EFBIG}, true, false},
        {"vsnprintf", {ENOMEM, EOVERFLOW}, false, false},
    };
    return calls;
}

Interception intercept(const char* name) {
    if (!armed) return Interception::none;
    if (std::strcmp(name, refusedCall) == 0) {
        errno = ENOSYS;
        return Interception::fails;
    }
    if (plan.inChild != isChild) return Interception::none;
    // Looking up what fails must not itself be looked at.
    armed = false;
    const int errorBefore = errno;
    const int index = indexOf(name);
    Interception result = Interception::none;
    if (isDue(index)) result = failWith(index);
    if (result == Interception::none) errno = errorBefore;
    armed = true;
    return result;
}

void noteChild() { isChild = true; }

void noteFork() {
    if (armed) shared().forked = true;
}

Injection::Injection(const Fault& fault, const std::string& only, const std::string& refused) {
    plan = fault;
    std::strncpy(refusedCall, refused.c_str(), sizeof refusedCall - 1);
    std::strncpy(onlyCall, only.c_str(), sizeof onlyCall - 1);
    shared().calls = 0;
    shared().call = -1;
    shared().error = 0;
    shared().forked = false;
    armed = true;
}

Injection::~Injection() { armed = false; }

Injected Injection::result() {
    const Shared& seen = shared();
    const int index = seen.call;
    return {index < 0 ? nullptr : &fallibleCalls()[static_cast<unsigned int>(index)], seen.error,
            seen.calls, seen.forked};
}

std::vector<unsigned long> injectedByCall() {
    std::vector<unsigned long> counts;
    for (std::size_t i = 0; i < fallibleCalls().size(); ++i) {
        counts.push_back(shared().injected[i]);
    }
    return counts;
}

}  // namespace kfl_test
