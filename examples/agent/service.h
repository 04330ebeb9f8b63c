// The agent at work, from its start to SIGTERM.
#ifndef AGENT_SERVICE_H
#define AGENT_SERVICE_H

#include "settings.h"

namespace agent {

// Runs what the settings' section "services" asks for, after a backup of the file at `path` where
// that is enabled, until SIGTERM or SIGINT comes, and leaves nothing behind. Returns the process's
// exit status.
int serve(Settings& settings, const char* path);

}  // namespace agent

#endif
