// The three names that a host process supplies and libkfl uses but never defines.
//
// A program that links libkfl.so defines all three, or links the static library kfl-host, which
// holds ready definitions (events to syslog, texts in per-thread storage, the program's own name).
// Tests of a host may link kfl-recording-host instead (kfl/RecordingHost.h).
//
// Process functions report a failed exec from the child that they forked: there, too, Parms and
// genSyslogEvent are called, and exit(127) then runs the host's exit handlers in that child.
#ifndef KFL_HOST_H
#define KFL_HOST_H

#include "kfl/export.h"

// Files an event of the library. `priority` is a syslog priority (3 for errors, 7 for trace lines);
// `eventGroup`, `eventIndex` and `eventCode` identify the event. The library calls it
// unconditionally: any filtering by level is the host's business. The result is handed on by
// osKillProcess alone. Requires: safe on every thread that calls the library; `text` is not kept.
KFL_EXPORT int genSyslogEvent(int priority, int eventGroup, int eventIndex, int eventCode,
                              const char* text);

// Formats a message by the printf conventions and returns its text, which the library passes on at
// once and never frees.
KFL_EXPORT char* Parms(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The process's name, the first word of every syslog line; read anew at every call.
KFL_EXPORT extern const char* applicationName;

#endif
