// A stack of untyped pointers with a fixed capacity.
#ifndef KFL_VOIDPTRSTACK_H
#define KFL_VOIDPTRSTACK_H

#include "kfl/export.h"

namespace kfl {

// Owns its slots, never the items. One thread at a time uses a stack.
class KFL_EXPORT VoidPtrStack {
  public:
    // Room for `capacity` items. A negative capacity fails as an allocation does.
    VoidPtrStack(int capacity);
    // Leaves the items alone.
    ~VoidPtrStack();

    VoidPtrStack(const VoidPtrStack&) = delete;
    VoidPtrStack& operator=(const VoidPtrStack&) = delete;

    // Puts `item` on top. Returns false when the stack is full.
    // Kept on purpose: a push onto a full stack is counted all the same.
    bool push(void* item);
    // Takes the top item; null when the stack is empty, and null for each failed push, which has a
    // place in the order although nothing was stored.
    void* pop();

    // Slots there are.
    int capacity() const { return capacity_; }
    // Items and failed pushes that pop() would give.
    int size() const { return top_ + 1; }
    // True when pop() has nothing to give.
    bool empty() const { return top_ < 0; }

  private:
    int capacity_;
    int top_;
    void** slots_;
};

}  // namespace kfl

#endif
