#include "crypto/cipher_event.h"

#include "events/report.h"

namespace kfl::detail {

void reportCipherError(const char* text) { report(priorityError, EventNumber{950, 0, 0}, text); }

}  // namespace kfl::detail
