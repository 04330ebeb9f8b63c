// Child processes and file copies.
//
//     int status = kfl::osCreateProcess("/usr/bin/tar -cf /tmp/a.tar /etc", true, nullptr);
//     if (status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0) ...
//
//     kfl::osSystem("sort /tmp/a | uniq > /tmp/b");
//
// A child inherits the descriptors 0, 1 and 2, the environment and the working directory of the
// process; every other descriptor below the process's limit (RLIMIT_NOFILE) is closed in it. A
// child that cannot become its program reports that to the host (Parms and genSyslogEvent are
// called in the child), runs the host's exit handlers and ends with exit status 127, which its
// parent sees like any other.
//
// Statuses are raw: use WIFEXITED, WEXITSTATUS, WTERMSIG and their kin of <sys/wait.h>.
//
// Every call but osCopyFile and osStatusReceived first sends a trace line to the host (priority 7,
// event 900, 1, 0). A null command, command line or path is refused with -1, without a report.
//
// Threads: all functions may be called on any thread. A waiting call blocks its thread.
//
// Hosts that reap their children in a SIGCHLD handler hand over what they took:
//
//     void onChild(int) {
//         int status, saved = errno;
//         for (int pid; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
//             kfl::osStatusReceived(pid, status);
//         }
//         errno = saved;
//     }
//
// The handler must be installed without SA_RESTART, on the thread that waits, and such a host must
// not run two waiting osCreateProcess calls at once: the table between the two functions has no
// lock. Kept on purpose: only a wait that the handler interrupted looks for what was handed over. A
// child that the host reaps before the wait has begun gives -1.
#ifndef KFL_PROCESS_H
#define KFL_PROCESS_H

#include "kfl/export.h"

namespace kfl {

// Copies the bytes of the file `from` into the file `to`, which is created (mode 0666 less the
// process's umask) or emptied first. With `sync` the data has reached the storage on return.
// Returns 0, or -1 when one of the files cannot be opened; a source that cannot be opened leaves
// the target alone. Copying a file onto itself empties it. Nothing is reported. Kept on purpose:
// errors after the opens give 0 as well. A read error ends the copy as the end of the file does (so
// a directory copies as an empty file); what cannot be written is lost.
KFL_EXPORT int osCopyFile(const char* from, const char* to, bool sync);

// Runs `command` with /bin/sh -c and waits for it, through interruptions. Returns the shell's raw
// wait status ("exit 3" gives 768), or -1 when there was no child or no status of it. A host that
// reaps all children itself can take that status away: the result is -1 then.
KFL_EXPORT int osSystem(const char* command);

// Starts the program that the first word of `commandLine` names, with the words as its arguments.
// Only blanks separate words: tabs do not, and quotes have no meaning. With `wait` false the
// child's pid comes back at once, and reaping it is the caller's business; with `wait` true its raw
// wait status, or -1. Returns -1 also when no child could be created, which is reported (priority
// 3). With an `outputFile` (created or emptied, mode 0666 less the umask) the child's standard
// output and standard error go there; null leaves them as they are. An output file that cannot be
// opened ends the child like a program that cannot be executed. Requires: a line below 200 bytes
// with at most 19 words. Of a longer one the child gets the first 200 bytes, and of more words the
// first 19. Kept on purpose: PATH is searched only where `outputFile` is given. Without one the
// first word must be the path of the program.
KFL_EXPORT int osCreateProcess(const char* commandLine, bool wait, const char* outputFile);

// Hands over the raw wait status of a child that the host's own code has reaped. True when a call
// of osCreateProcess waits for `pid`, which then returns `status` if its wait is interrupted; false
// otherwise. Safe in signal handlers: it calls nothing and leaves errno alone.
// Kept on purpose: a status of -1 counts as none.
KFL_EXPORT bool osStatusReceived(int pid, int status);

// Sends SIGTERM to the child `pid` and waits until it has ended, through interruptions. Returns
// `pid`, or 4 when there is no such child to wait for (the signal is sent all the same). A `pid` of
// 0 or below gets no signal; that is reported (priority 3, event 0, 0, 0), and the result is what
// the host's genSyslogEvent returned.
KFL_EXPORT int osKillProcess(int pid);

}  // namespace kfl

#endif
