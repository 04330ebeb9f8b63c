// Programs that the agent starts: kfl::osCreateProcess and a host that reaps its children itself.
//
//     agent::reapChildrenOnSignal();
//     int status = agent::runAndWait("/bin/true");
//     int pid = agent::start("/usr/sbin/helper --once", "/var/log/helper.log");
#ifndef AGENT_CHILDREN_H
#define AGENT_CHILDREN_H

namespace agent {

// From now on ended children are taken in by a SIGCHLD handler, which hands each status to the
// library first, as a host does that takes in children for others. Threads other than the main one
// must block SIGCHLD.
void reapChildrenOnSignal();

// Runs a program to its end. Returns its raw wait status, as waitpid gives it, or -1.
int runAndWait(const char* commandLine);

// Starts a program and returns its process id, or -1. With `outputFile`, its output goes there and
// it is searched along PATH; with null it must be given by its path.
int start(const char* commandLine, const char* outputFile);

// Prints what became of started programs since the last call.
void printEndedChildren();

// Stops a started program, unless it has ended already.
void stop(int pid);

// Prints a raw wait status in words.
void printStatus(const char* what, int status);

}  // namespace agent

#endif
