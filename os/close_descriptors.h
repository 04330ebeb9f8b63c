// What a child does with the descriptors that it inherited, before it executes its program.
//
// All of this runs between fork and exec, in hosts with many threads: only system calls, no
// allocation, no lock, nothing of the C library's directory streams.
#ifndef KFL_OS_CLOSE_DESCRIPTORS_H
#define KFL_OS_CLOSE_DESCRIPTORS_H

namespace kfl::detail {

constexpr int firstClosedDescriptor = 3;

// Closes every descriptor from 3 up to the process's limit, at a cost that does not depend on that
// limit wherever the system has a way. What was opened above a limit lowered since stays open.
void closeInheritedDescriptors();

// The ways, from the best to the one that always works. Each closes from 3 up to, not including,
// `end`; the first two tell whether the system let them.

// One system call.
bool closeDescriptorRange(long end);
// A walk of what /proc says is open.
bool closeListedDescriptors(long end);
// One call for each number.
void closeEachDescriptor(long end);

}  // namespace kfl::detail

#endif
