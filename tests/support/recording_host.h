// The host of the tests, kfl/RecordingHost.h, under the names that they use.
#ifndef KFL_TESTS_RECORDING_HOST_H
#define KFL_TESTS_RECORDING_HOST_H

#include <iosfwd>

#include "kfl/RecordingHost.h"

namespace kfl_test {

using kfl::recording::clearEvents;
using kfl::recording::Event;
using kfl::recording::events;
using kfl::recording::setEventHook;
using kfl::recording::setEventResult;

}  // namespace kfl_test

namespace kfl::recording {

// How GoogleTest shows an event.
void PrintTo(const Event& event, std::ostream* out);

}  // namespace kfl::recording

#endif
