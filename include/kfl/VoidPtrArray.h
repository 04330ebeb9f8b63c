// An indexed array of untyped pointers; the storage of VoidPtrOrderedCollection.
#ifndef KFL_VOIDPTRARRAY_H
#define KFL_VOIDPTRARRAY_H

#include "kfl/Container.h"
#include "kfl/export.h"

namespace kfl {

// Slots of the capacity hold an item or null, the mark of an empty slot. The array never owns its
// items. A write outside the capacity grows the storage; a read there gives null. One thread at a
// time uses an array.
class KFL_EXPORT VoidPtrArray : public Container {
  public:
    // Ten empty slots.
    VoidPtrArray();
    // Exactly `capacity` empty slots; 0: no storage.
    VoidPtrArray(unsigned int capacity);
    // Leaves the items alone.
    virtual ~VoidPtrArray();

    // Stores `item` in the first empty slot; where none is, the array grows by half (or by ten
    // slots where that half is 0) and the item stands behind the old slots.
    void add(void* item);
    // The item at `index`; null past the end.
    void* idAt(unsigned int index) const;
    // The slot at `index`. An index past the end grows the array to exactly index + 1.
    // Requires: a subclass that overrides expandTo() grows when it is asked here.
    // Invalidates: slots handed out before, when the array grows.
    void*& operator[](unsigned int index);
    // Stores `item` at `index`. An index just past the end grows the array as add() does, one
    // further out to exactly index + 1.
    void atPutId(unsigned int index, void* item);
    // The index of the first slot that holds `item`, or -1; -1 for null.
    int indexOfSame(void* item) const;
    // `item`, if a slot holds it, else null.
    void* findSame(void* item);
    // Empties every slot; the storage stays. (The container's own reset() would release it.)
    void reset();
};

}  // namespace kfl

#endif
