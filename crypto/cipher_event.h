// The cipher's reports to the host.
#ifndef KFL_CRYPTO_CIPHER_EVENT_H
#define KFL_CRYPTO_CIPHER_EVENT_H

#include "events/report.h"

namespace kfl::detail {

inline void reportCipherError(const char* text) {
    report(priorityError, EventNumber{950, 0, 0}, text);
}

}  // namespace kfl::detail

#endif
