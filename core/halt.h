// The end of a call that is promised never to return.
#ifndef KFL_CORE_HALT_H
#define KFL_CORE_HALT_H

namespace kfl::detail {

// Stops the calling thread for good. Each turn is a system call, which no compiler may remove and
// which does not burn the processor.
[[noreturn]] void haltForever();

}  // namespace kfl::detail

#endif
