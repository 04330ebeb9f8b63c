// The search for a pointer among many.
#ifndef KFL_COLLECTIONS_FIND_POINTER_H
#define KFL_COLLECTIONS_FIND_POINTER_H

namespace kfl::detail {

// The index of the first of `count` pointers that is `wanted`, or the count. `slots` is where they
// stand, of whatever type they are.
unsigned int findPointer(const char* slots, unsigned int count, const void* wanted);

}  // namespace kfl::detail

#endif
