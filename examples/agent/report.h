// Shows which settings the agent will run with.
#ifndef AGENT_REPORT_H
#define AGENT_REPORT_H

#include "settings.h"

namespace agent {

// Prints every known setting with its kind, its value, and where that came from; for one that is
// missing in the file, also what the library answers when asked for it.
void printSettings(Settings& settings);

// Prints what the file holds and nobody will read: a slip of the pen shows here.
void printUnknownKeys(Settings& settings);

}  // namespace agent

#endif
