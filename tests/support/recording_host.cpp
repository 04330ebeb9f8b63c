#include "tests/support/recording_host.h"

#include <ostream>

namespace kfl::recording {

void PrintTo(const Event& event, std::ostream* out) {
    *out << event.priority << " (" << event.group << ", " << event.index << ", " << event.code
         << ") \"" << event.text << '"';
}

}  // namespace kfl::recording
