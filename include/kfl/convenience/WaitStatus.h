// What a raw wait status says.
//
//     const kfl::WaitStatus end(kfl::osCreateProcess("/usr/bin/tar -cf a.tar b", true, nullptr));
//     if (!end.isKnown()) return fail("tar could not be started, or its end is unknown");
//     if (end.wasKilled()) return fail("tar was ended by signal %d", end.signal());
//     if (!end.succeeded()) return fail("tar ended with %d", end.code());
#ifndef KFL_CONVENIENCE_WAITSTATUS_H
#define KFL_CONVENIENCE_WAITSTATUS_H

#include <sys/wait.h>

namespace kfl {

// Takes what osSystem returns, osCreateProcess where it waited, and waitpid where it stored a
// status. It takes no result of osKillProcess, nor of an osCreateProcess that did not wait: those
// are process numbers.
class WaitStatus {
  public:
    // `raw` is the status as the system encodes it, or -1.
    explicit WaitStatus(int raw) : raw_(raw) {}

    // False for -1: no child could be had, or somebody else took its status.
    bool isKnown() const { return raw_ != -1; }
    // The program ended by itself.
    bool exited() const { return isKnown() && WIFEXITED(raw_); }
    // The exit status, 0 to 255; -1 unless exited(). 127 is also that of a program that could not
    // be executed.
    int code() const { return exited() ? WEXITSTATUS(raw_) : -1; }
    // It exited with 0.
    bool succeeded() const { return code() == 0; }
    // A signal ended the program.
    bool wasKilled() const { return isKnown() && WIFSIGNALED(raw_); }
    // The number of that signal; 0 unless wasKilled().
    int signal() const { return wasKilled() ? WTERMSIG(raw_) : 0; }
    // What was given.
    int raw() const { return raw_; }

  private:
    int raw_;
};

}  // namespace kfl

#endif
