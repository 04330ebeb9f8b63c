// Programs and files: run, wait, stop, copy.
#include <sys/wait.h>
#include <csignal>
#include <cstdio>

#include "kfl/process.h"

int main() {
    // Statuses are raw: "exit 3" is 768.
    const int shell = kfl::osSystem("exit 3");
    std::printf("raw status %d, exit status %d\n", shell, WEXITSTATUS(shell));

    // Words part at blanks only. With an output file the program is looked for in PATH.
    const int echo = kfl::osCreateProcess("echo two  words", true, "echo.output");
    std::printf("echo: %d\n", echo);
    const int copied = kfl::osCopyFile("echo.output", "echo.copy", true);
    char line[40] = "";
    if (std::FILE* const copy = std::fopen("echo.copy", "r")) {
        if (std::fgets(line, sizeof line, copy)) std::printf("copy: %d, %s", copied, line);
        std::fclose(copy);
    }

    // Without one the first word is a path. This child is stopped before its time.
    const int pid = kfl::osCreateProcess("/bin/sleep 600", false, nullptr);
    std::printf("stopped: %s\n", kfl::osKillProcess(pid) == pid ? "yes" : "no");
    return 0;
}
