// The agent at work. Shows: events and alarms, the order of starting and stopping, and a main
// thread that sleeps until a signal comes.
#include "service.h"

#include <syslog.h>
#include <csignal>
#include <cstdio>

#include "backup.h"
#include "children.h"
#include "kfl/syslog_events.h"
#include "listener.h"

namespace agent {
namespace {

volatile sig_atomic_t stopRequested = 0;

void requestStop(int /*signal*/) { stopRequested = 1; }

void stopOnSignals() {
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

// The agent's own numbers for its events and alarms.
void event(int third, const char* text) {
    raiseSyslogEvent(LOG_DAEMON | LOG_INFO, 10, 1, third, "agent", 0, text);
    std::printf("event 010-01-%d: %s\n", third, text);
}

void alarm(bool on, const char* text) {
    raiseSyslogAlarm(LOG_DAEMON | LOG_ERR, on, 10, 2, 1, "agent", 0, text);
    std::printf("alarm 010-02-1 %s: %s\n", on ? "on" : "off", text);
}

void runSelfTest(const char* commandLine) {
    const int status = runAndWait(commandLine);
    printStatus("self-test", status);
    alarm(status != 0, "self-test failed");
}

// Sleeps until a signal has come, and reports the children that ended meanwhile.
void waitForStop() {
    sigset_t blocked;
    sigset_t open;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    sigaddset(&blocked, SIGTERM);
    sigaddset(&blocked, SIGINT);
    // Between the look at the flag and the sleep no signal may slip through.
    pthread_sigmask(SIG_BLOCK, &blocked, &open);
    for (;;) {
        printEndedChildren();
        std::fflush(stdout);
        if (stopRequested) break;
        sigsuspend(&open);
    }
    pthread_sigmask(SIG_SETMASK, &open, nullptr);
}

}  // namespace

int serve(Settings& settings, const char* path) {
    stopOnSignals();
    reapChildrenOnSignal();
    Listener listener(settings.text("services", "control-socket"),
                      settings.number("services", "discovery-port"));
    if (!listener.open()) return 1;
    event(1, "agent is up");

    if (settings.isOn("backup", "enabled")) backUp(path, settings.text("backup", "path"));

    if (const char* const selfTest = settings.text("services", "self-test")) runSelfTest(selfTest);
    int helper = -1;
    if (const char* const commandLine = settings.text("services", "helper")) {
        helper = start(commandLine, settings.text("services", "helper-output"));
        std::printf("helper: process %d\n", helper);
    }

    waitForStop();
    if (helper > 0) stop(helper);
    printEndedChildren();
    listener.close();
    event(2, "agent is down");
    return 0;
}

}  // namespace agent
