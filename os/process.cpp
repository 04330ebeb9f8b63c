#include "kfl/process.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "events/report.h"
#include "os/close_descriptors.h"
#include "os/command_line.h"
#include "os/wait_table.h"

namespace kfl {
namespace {

using detail::priorityError;
using detail::priorityTrace;
using detail::report;

constexpr detail::EventNumber processEvent = {900, 1, 0};
constexpr detail::EventNumber noEvent = {0, 0, 0};

// How a child ends that could not become its program.
constexpr int notExecuted = 127;

// What osKillProcess answers when it could not wait: EINTR's value.
constexpr int notWaitedFor = 4;

// Waits through interruptions; what waitpid answers otherwise.
pid_t waitThroughSignals(pid_t pid, int& status) {
    pid_t waited = 0;
    do {
        waited = waitpid(pid, &status, 0);
    } while (waited < 0 && errno == EINTR);
    return waited;
}

// In the child: from here on only calls that are safe after a fork among many threads. The report
// of a failure is the one exception, and goes through the host.
[[noreturn]] void runShell(const char* command) {
    detail::closeInheritedDescriptors();
    // execve leaves the texts alone; its type only dates from before const.
    char* const words[] = {const_cast<char*>("sh"), const_cast<char*>("-c"),
                           const_cast<char*>(command), nullptr};
    execve("/bin/sh", words, environ);
    report(priorityError, processEvent, Parms("osSystem(%s): error %d", command, errno));
    exit(notExecuted);
}

bool redirectOutput(const char* path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC, 0666);
    if (file < 0) return false;
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    if (file != STDOUT_FILENO && file != STDERR_FILENO) close(file);
    return true;
}

// Returns only when the program could not be executed.
// Kept on purpose: PATH is searched only where the output goes to a file.
void executeProgram(const detail::CommandLine& command, const char* outputFile) {
    if (outputFile && !redirectOutput(outputFile)) return;
    if (!command.program()) {
        errno = EFAULT;  // as execve says of no program at all
    } else if (outputFile) {
        // The search for the program builds its paths on the stack.
        execvp(command.program(), command.words());
    } else {
        execve(command.program(), command.words(), environ);
    }
}

// In the child.
[[noreturn]] void runProgram(const char* commandLine, const detail::CommandLine& command,
                             const char* outputFile) {
    detail::closeInheritedDescriptors();
    executeProgram(command, outputFile);
    report(priorityError, processEvent,
           Parms("Can't execute (%s): error '%s'", commandLine, strerror(errno)));
    exit(notExecuted);
}

// Waits for a child whose status may also be delivered by the host's reaper. That is looked for
// only after an interruption; after any other failure the entries stay claimed.
int waitForProgram(pid_t pid) {
    int status = 0;
    detail::claimWaitEntries(pid);
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
        if (detail::takeDeliveredStatus(pid, status)) return status;
    }
    detail::freeWaitEntries(pid);
    return status;
}

}  // namespace

int osSystem(const char* command) {
    if (!command) return -1;
    report(priorityTrace, processEvent, Parms("...osSystem: %s", command));
    const pid_t pid = fork();
    if (pid < 0) return -1;
    if (pid == 0) runShell(command);
    int status = 0;
    return waitThroughSignals(pid, status) < 0 ? -1 : status;
}

int osCreateProcess(const char* commandLine, bool wait, const char* outputFile) {
    if (!commandLine) return -1;
    report(priorityTrace, processEvent, Parms("...osCreateProcess: %s", commandLine));
    const detail::CommandLine command(commandLine);
    const pid_t pid = fork();
    if (pid < 0) {
        report(priorityError, processEvent,
               Parms("Can't create child process to run (%s)", commandLine));
        return -1;
    }
    if (pid == 0) runProgram(commandLine, command, outputFile);
    return wait ? waitForProgram(pid) : pid;
}

int osKillProcess(int pid) {
    report(priorityTrace, processEvent, Parms("...osKillProcess: %d", pid));
    if (pid <= 0) {
        return report(priorityError, noEvent, Parms("kfl osKillProcess : (pid %i) is wrong.", pid));
    }
    kill(pid, SIGTERM);
    int status = 0;
    const pid_t waited = waitThroughSignals(pid, status);
    return waited < 0 ? notWaitedFor : waited;
}

}  // namespace kfl
