// Ordered lists of untyped pointers, walked with a cursor.
//
//     kfl::VoidPtrOrderedCollection peers;
//     peers.add(&first);
//     kfl::VoidPtrIterator it(peers);
//     while (void* peer = peers.next(it)) greet(static_cast<Peer*>(peer));
//
// Collections store pointers and never own what they point to. Items are the same when their
// addresses are. Null stands for "nothing" everywhere, so a stored null cannot be told from no
// item. A virtual operation may be overridden, and the composite operations (removeSame,
// replaceSame, last, ...) then use the override. One thread at a time uses a collection and its
// iterators.
#ifndef KFL_VOIDPTRCOLLECTION_H
#define KFL_VOIDPTRCOLLECTION_H

#include "kfl/VoidPtrArray.h"
#include "kfl/export.h"

namespace kfl {

class VoidPtrCollection;

// A cursor: a plain value that holds no resources. It is not told of changes to its collection:
// after an insertion or removal, start() or end() sets it anew.
class KFL_EXPORT VoidPtrIterator {
  public:
    // Stands on the first item of `walked`, through the virtual start().
    VoidPtrIterator(kfl::VoidPtrCollection& walked);
    // The same; a null pointer gives a cursor on nothing.
    VoidPtrIterator(kfl::VoidPtrCollection* walked);

    // The index of the current item.
    unsigned int position;
    // The item there, or null where the cursor stands outside the items.
    void* current;
    // The collection walked; not owned.
    kfl::VoidPtrCollection* collection;
};

// What every collection of untyped pointers offers.
class KFL_EXPORT VoidPtrCollection {
  public:
    VoidPtrCollection();
    virtual ~VoidPtrCollection();

    VoidPtrCollection(const VoidPtrCollection&) = delete;
    VoidPtrCollection& operator=(const VoidPtrCollection&) = delete;

    // Adds an item and returns it.
    virtual void* add(void* item) = 0;
    // Removes the first occurrence of an item; returns it, or null.
    virtual void* removeSame(void* item) = 0;
    // Puts `newItem` where `oldItem` first stands; returns the one replaced, or null.
    virtual void* replaceSame(void* oldItem, void* newItem) = 0;
    // The item, if it is stored, else null.
    virtual void* findSame(void* item) = 0;
    // Forgets all items and keeps the storage.
    virtual void clear() = 0;
    // The number of items.
    virtual unsigned int count() const = 0;
    // Sets the cursor on the first item and returns that item, null where there is none.
    virtual void* start(kfl::VoidPtrIterator& it) = 0;
    // Sets the cursor on the last item and returns that item, null where there is none.
    virtual void* end(kfl::VoidPtrIterator& it) = 0;
    // Returns the item that the cursor stood on, and moves on by one.
    virtual void* next(kfl::VoidPtrIterator& it) = 0;
    // Returns the item that the cursor stood on, and moves back by one.
    virtual void* prev(kfl::VoidPtrIterator& it) = 0;

    // The first item, or null.
    void* first();
    // The last item, or null.
    void* last();
};

// The list that keeps the order of insertion and is addressed by index, in a growable array.
class KFL_EXPORT VoidPtrOrderedCollection : public VoidPtrCollection {
  public:
    // Empty, with room for ten items.
    VoidPtrOrderedCollection();
    // Empty, with room for exactly `capacity` items; 0: no storage.
    VoidPtrOrderedCollection(unsigned int capacity);
    // Leaves the items alone.
    virtual ~VoidPtrOrderedCollection();

    // Appends. A full list grows by half its capacity, or by ten where that half is 0.
    void* add(void* item) override;
    void* removeSame(void* item) override;
    void* replaceSame(void* oldItem, void* newItem) override;
    void* findSame(void* item) override;
    void clear() override;
    unsigned int count() const override;
    void* start(kfl::VoidPtrIterator& it) override;
    void* end(kfl::VoidPtrIterator& it) override;
    // Kept on purpose: past the last item the cursor stands at position count(), so a prev() from
    // there returns null and moves to the last item; further calls stay there and return null.
    void* next(kfl::VoidPtrIterator& it) override;
    // Kept on purpose: in front of the first item the cursor stays at position 0, with no current
    // item, so a next() from there returns null and moves to the second item.
    void* prev(kfl::VoidPtrIterator& it) override;

    // Inserts before position `index`, or appends where the list is shorter; returns the item.
    virtual void* insertAt(unsigned int index, void* item);
    // Removes and returns the item at `index`; null past the end. The capacity stays.
    virtual void* removeAt(unsigned int index);
    // Puts `item` at `index` and returns the one that stood there; past the end nothing is changed
    // and null returned.
    virtual void* replaceAt(unsigned int index, void* item);
    // The index of the first occurrence, or -1; -1 for null.
    virtual int indexOfSame(void* item) const;
    // The item at `index`; null past the end.
    virtual void* idAt(unsigned int index) const;
    // Sets the capacity to exactly `capacity` items.
    // Requires: capacity >= count(). The count is not touched: items cut off read as null.
    virtual void expandTo(unsigned int capacity);

    // The same as count(), without a virtual call.
    unsigned int size() const { return itemCount_; }
    // The items, in order; null without storage. Invalidated by whatever grows the list.
    void** data() const { return static_cast<void**>(static_cast<void*>(items_.data())); }
    // Items that fit before the list grows.
    unsigned int capacity() const { return items_.capacity(); }

  private:
    VoidPtrArray items_;
    unsigned int itemCount_;
};

}  // namespace kfl

#endif
