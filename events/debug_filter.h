// The filter of debug events that a host registered.
#ifndef KFL_EVENTS_DEBUG_FILTER_H
#define KFL_EVENTS_DEBUG_FILTER_H

namespace kfl::detail {

// Null until the host sets one. Kept on purpose: only kept, never read.
extern int* excludeFromDebugEventsFilter;

}  // namespace kfl::detail

#endif
