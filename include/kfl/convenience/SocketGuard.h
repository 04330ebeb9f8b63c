// Closes a socket at the end of a scope, and removes its name.
//
//     IPCSocket socket(name);
//     int code;
//     if (!socket.initialize(code)) return;
//     kfl::SocketGuard guard(socket.descriptor());
//     if (!socket.bind()) return;                       // the descriptor is closed
//     guard.ownPath(socket.path());                     // from here on the name is removed too
#ifndef KFL_CONVENIENCE_SOCKETGUARD_H
#define KFL_CONVENIENCE_SOCKETGUARD_H

#include <errno.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace kfl {

// Owns a descriptor, and a socket file where one was given. errno stays as it is. It can be moved,
// and is then empty.
class SocketGuard {
  public:
    // A negative descriptor counts as none. Requires: nobody else closes it.
    explicit SocketGuard(int descriptor = -1) : descriptor_(descriptor), device_(0), file_(0) {
        path_[0] = '\0';
    }
    // Takes what `other` owns.
    SocketGuard(SocketGuard&& other) noexcept
        : descriptor_(other.descriptor_), device_(other.device_), file_(other.file_) {
        memcpy(path_, other.path_, sizeof path_);
        other.forget();
    }
    // Finishes with its own, then takes what `other` owns.
    SocketGuard& operator=(SocketGuard&& other) noexcept {
        if (this == &other) return *this;
        finish();
        descriptor_ = other.descriptor_;
        device_ = other.device_;
        file_ = other.file_;
        memcpy(path_, other.path_, sizeof path_);
        other.forget();
        return *this;
    }
    SocketGuard(const SocketGuard&) = delete;
    SocketGuard& operator=(const SocketGuard&) = delete;
    ~SocketGuard() { finish(); }

    // Takes the socket file `path` as well; the text is copied. A relative path is one of the
    // working directory at the end. Returns false, and takes nothing, where there is no such socket
    // file, or for a path that no socket can have.
    bool ownPath(const char* path) {
        struct stat status;
        if (!path || strlen(path) >= sizeof path_) return false;
        if (lstat(path, &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
        memcpy(path_, path, strlen(path) + 1);
        device_ = status.st_dev;
        file_ = status.st_ino;
        return true;
    }

    // -1 where there is none.
    int descriptor() const { return descriptor_; }
    // "" where there is none.
    const char* path() const { return path_; }
    // Removes the name, then closes the descriptor, now. A file that meanwhile took the place of
    // the socket's stays.
    void finish() {
        const int error = errno;
        struct stat status;
        if (path_[0] != '\0' && lstat(path_, &status) == 0 && status.st_dev == device_ &&
            status.st_ino == file_) {
            unlink(path_);
        }
        if (descriptor_ >= 0) close(descriptor_);
        forget();
        errno = error;
    }
    // Leaves both to the caller: the descriptor comes back, or -1.
    int release() {
        const int descriptor = descriptor_;
        forget();
        return descriptor;
    }

  private:
    void forget() {
        descriptor_ = -1;
        path_[0] = '\0';
    }

    int descriptor_;
    dev_t device_;
    ino_t file_;
    char path_[sizeof(sockaddr_un().sun_path)];
};

}  // namespace kfl

#endif
