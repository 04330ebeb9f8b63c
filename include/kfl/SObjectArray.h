// An indexed array of object pointers; the storage of OrdCollect.
#ifndef KFL_SOBJECTARRAY_H
#define KFL_SOBJECTARRAY_H

#include "kfl/Container.h"
#include "kfl/SObject.h"
#include "kfl/export.h"

namespace kfl {

// Slots of the capacity hold an item or null, the mark of an empty slot. The array never owns its
// items; only freeContents() deletes them. A write outside the capacity grows the storage; a read
// there gives null. One thread at a time uses an array.
class KFL_EXPORT SObjectArray : public Container {
  public:
    // Ten empty slots.
    SObjectArray();
    // Exactly `capacity` empty slots; 0: no storage.
    SObjectArray(unsigned int capacity);
    // Leaves the items alone.
    virtual ~SObjectArray();

    // Stores `item` in the first empty slot; where none is, the array grows by half (or by ten
    // slots where that half is 0) and the item stands behind the old slots.
    void add(kfl::SObject* item);
    // The item at `index`; null past the end.
    kfl::SObject* idAt(unsigned int index) const;
    // The slot at `index`. An index past the end grows the array to exactly index + 1.
    // Requires: a subclass that overrides expandTo() grows when it is asked here.
    // Invalidates: slots handed out before, when the array grows.
    kfl::SObject*& operator[](unsigned int index);
    // Stores `item` at `index`. An index just past the end grows the array as add() does, one
    // further out to exactly index + 1.
    void atPutId(unsigned int index, kfl::SObject* item);
    // The index of the first slot that holds `item`, or -1; -1 for null.
    int indexOfSame(kfl::SObject* item) const;
    // `item`, if a slot holds it, else null.
    kfl::SObject* findSame(kfl::SObject* item);
    // Empties every slot; the storage stays. (The container's own reset() would release it.)
    void reset();
    // Deletes the items from index 0 upward and empties their slots; the storage stays.
    void freeContents();
};

}  // namespace kfl

#endif
