#include "tools/kfl/file_replacement.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tools/kfl/command.h"

namespace kfl_tool {
namespace {

std::string resolved(const char* path) {
    char* const real = realpath(path, nullptr);
    if (!real) fail("%s: %s", path, std::strerror(errno));
    // cppcheck-suppress nullPointerRedundantCheck ; fail does not return
    std::string result = real;
    std::free(real);
    return result;
}

bool isUnchanged(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

bool writeAll(int descriptor, const std::string& bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t n = write(descriptor, bytes.data() + at, bytes.size() - at);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        at += static_cast<std::size_t>(n);
    }
    return true;
}

// Neither a signal nor a full disk may end the tool with its file lying about: the first waits, the
// second is told by write.
sigset_t holdSignals() {
    sigset_t ends;
    sigset_t before;
    sigemptyset(&ends);
    for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) sigaddset(&ends, number);
    sigprocmask(SIG_BLOCK, &ends, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    return before;
}

[[noreturn]] void failFor(const std::string& path) {
    fail("%s: %s", path.c_str(), std::strerror(errno));
}

}  // namespace

FileReplacement::FileReplacement(const char* path) : name_(path), path_(resolved(path)) {
    openLocked();
    readOld();
    signals_ = holdSignals();
}

FileReplacement::~FileReplacement() {
    if (!newPath_.empty()) unlink(newPath_.c_str());
    close(old_);
    sigprocmask(SIG_SETMASK, &signals_, nullptr);
}

// While one waits for the lock, the other may put a new file in the place of the locked one.
void FileReplacement::openLocked() {
    for (;;) {
        old_ = open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
        if (old_ < 0 || fstat(old_, &status_) != 0) failFor(name_);
        if (!S_ISREG(status_.st_mode)) fail("%s: not a regular file", name_.c_str());
        if (status_.st_nlink > 1) fail("%s: has more than one name (hard links)", name_.c_str());
        if (flock(old_, LOCK_EX) != 0) failFor(name_);
        struct stat named = {};
        if (stat(path_.c_str(), &named) != 0) failFor(name_);
        fstat(old_, &status_);
        if (isUnchanged(named, status_)) return;
        close(old_);
    }
}

void FileReplacement::readOld() {
    char part[4096];
    for (;;) {
        const ssize_t n = read(old_, part, sizeof part);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) failFor(name_);
        if (n == 0) return;
        bytes_.append(part, static_cast<std::size_t>(n));
    }
}

void FileReplacement::write(const std::string& bytes) {
    std::string pattern = folder() + "/.kfl-XXXXXX";
    const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0) failFor(folder());
    newPath_ = pattern;
    takeOverRights(descriptor);
    const bool isWritten = writeAll(descriptor, bytes) && fsync(descriptor) == 0;
    const int error = errno;
    close(descriptor);
    errno = error;
    if (!isWritten) failNotWritten();
}

// The mode comes last: a change of the owner may take bits away.
void FileReplacement::takeOverRights(int descriptor) const {
    struct stat made = {};
    if (fstat(descriptor, &made) != 0) failNotWritten();
    const bool isOwned = made.st_uid == status_.st_uid && made.st_gid == status_.st_gid;
    if (!isOwned && fchown(descriptor, status_.st_uid, status_.st_gid) != 0) {
        fail("%s: its owner cannot be kept: %s", name_.c_str(), std::strerror(errno));
    }
    if (fchmod(descriptor, status_.st_mode & 07777U) != 0) failNotWritten();
}

void FileReplacement::commit() {
    struct stat now = {};
    if (stat(path_.c_str(), &now) != 0) failFor(name_);
    if (!isUnchanged(now, status_)) fail("%s: changed by another meanwhile", name_.c_str());
    if (rename(newPath_.c_str(), path_.c_str()) != 0) failFor(name_);
    newPath_.clear();
    syncFolder();
}

void FileReplacement::syncFolder() const {
    const int descriptor = open(folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isSynced = descriptor >= 0 && fsync(descriptor) == 0;
    const int error = errno;
    if (descriptor >= 0) close(descriptor);
    if (isSynced) return;
    fail("%s: changed, but may be as before after a loss of power: %s", name_.c_str(),
         std::strerror(error));
}

std::string FileReplacement::folder() const {
    const std::size_t slash = path_.rfind('/');
    return slash == 0 ? "/" : path_.substr(0, slash);
}

void FileReplacement::failNotWritten() const {
    fail("%s: not written: %s", name_.c_str(), std::strerror(errno));
}

}  // namespace kfl_tool
