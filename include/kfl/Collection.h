// Ordered lists of kfl::SObject pointers, walked with a cursor; the twins of the untyped ones in
// kfl/VoidPtrCollection.h, which can also delete what they hold.
//
//     kfl::OrdCollect names;
//     names.add(new kfl::AString("eth0"));
//     kfl::Iterator it(names);
//     while (kfl::SObject* name = names.next(it)) show(static_cast<kfl::AString*>(name));
//     names.freeContents();
//
// Collections store pointers and do not own the objects until freeContents() is asked to delete
// them. Items are the same when their addresses are. Null stands for "nothing" everywhere, so a
// stored null cannot be told from no item. A virtual operation may be overridden, and the composite
// operations (removeSame, replaceSame, last, ...) then use the override. One thread at a time uses
// a collection and its iterators.
#ifndef KFL_COLLECTION_H
#define KFL_COLLECTION_H

#include "kfl/SObject.h"
#include "kfl/SObjectArray.h"
#include "kfl/export.h"

namespace kfl {

class Collection;

// A cursor: holds no resources. It is not told of changes to its collection: after an insertion or
// removal, start() or end() sets it anew.
class KFL_EXPORT Iterator : public SObject {
  public:
    // Stands on nothing, all fields zero; not to be stepped.
    Iterator();
    // Stands on the first item of `walked`, through the virtual start().
    Iterator(kfl::Collection& walked);
    // The same; a null pointer gives a cursor on nothing.
    Iterator(kfl::Collection* walked);
    virtual ~Iterator();

    // The index of the current item.
    unsigned int position;
    // The item there, or null where the cursor stands outside the items.
    kfl::SObject* current;
    // The collection walked; not owned.
    kfl::Collection* collection;
};

// What every collection of objects offers.
class KFL_EXPORT Collection : public SObject {
  public:
    Collection();
    virtual ~Collection();

    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;

    // Adds an item and returns it.
    virtual kfl::SObject* add(kfl::SObject* item) = 0;
    // Removes the first occurrence of an item; returns it, or null.
    virtual kfl::SObject* removeSame(kfl::SObject* item) = 0;
    // Puts `newItem` where `oldItem` first stands; returns the one replaced, or null.
    virtual kfl::SObject* replaceSame(kfl::SObject* oldItem, kfl::SObject* newItem) = 0;
    // The item, if it is stored, else null.
    virtual kfl::SObject* findSame(kfl::SObject* item) = 0;
    // The number of items.
    virtual unsigned int count() const = 0;
    // Deletes the items and empties the collection.
    virtual void freeContents() = 0;
    // Sets the cursor on the first item and returns that item, null where there is none.
    virtual kfl::SObject* start(kfl::Iterator& it) = 0;
    // Sets the cursor on the last item and returns that item, null where there is none.
    virtual kfl::SObject* end(kfl::Iterator& it) = 0;
    // Returns the item that the cursor stood on, and moves on by one.
    virtual kfl::SObject* next(kfl::Iterator& it) = 0;
    // Returns the item that the cursor stood on, and moves back by one.
    virtual kfl::SObject* prev(kfl::Iterator& it) = 0;

    // The first item, or null.
    kfl::SObject* first();
    // The last item, or null.
    kfl::SObject* last();
};

// The list that keeps the order of insertion and is addressed by index, in a growable array.
class KFL_EXPORT OrdCollect : public Collection {
  public:
    // Empty, with room for ten items.
    OrdCollect();
    // Empty, with room for exactly `capacity` items; 0: no storage.
    OrdCollect(unsigned int capacity);
    // Leaves the items alone.
    virtual ~OrdCollect();

    // Appends. A full list grows by half its capacity, or by ten where that half is 0.
    kfl::SObject* add(kfl::SObject* item) override;
    kfl::SObject* removeSame(kfl::SObject* item) override;
    kfl::SObject* replaceSame(kfl::SObject* oldItem, kfl::SObject* newItem) override;
    kfl::SObject* findSame(kfl::SObject* item) override;
    unsigned int count() const override;
    // Deletes the items from the last to the first; the storage stays.
    // Kept on purpose: a stored null ends the deletion, items in front of it stay alive. The slots
    // keep their pointers until they are overwritten, so findSame() and indexOfSame() can still
    // report a deleted item.
    void freeContents() override;
    kfl::SObject* start(kfl::Iterator& it) override;
    kfl::SObject* end(kfl::Iterator& it) override;
    // Kept on purpose: past the last item the cursor stands at position count(), so a prev() from
    // there returns null and moves to the last item; further calls stay there and return null.
    kfl::SObject* next(kfl::Iterator& it) override;
    // Kept on purpose: in front of the first item the cursor stays at position 0, with no current
    // item, so a next() from there returns null and moves to the second item.
    kfl::SObject* prev(kfl::Iterator& it) override;

    // Inserts before position `index`, or appends where the list is shorter; returns the item.
    virtual kfl::SObject* insertAt(unsigned int index, kfl::SObject* item);
    // Removes and returns the item at `index`; null past the end. The capacity stays.
    virtual kfl::SObject* removeAt(unsigned int index);
    // Puts `item` at `index` and returns the one that stood there; past the end nothing is changed
    // and null returned.
    virtual kfl::SObject* replaceAt(unsigned int index, kfl::SObject* item);
    // The index of the first occurrence, or -1; -1 for null.
    virtual int indexOfSame(kfl::SObject* item) const;
    // The item at `index`; null past the end.
    virtual kfl::SObject* idAt(unsigned int index) const;
    // Sets the capacity to exactly `capacity` items.
    // Requires: capacity >= count(). The count is not touched: items cut off read as null.
    virtual void expandTo(unsigned int capacity);

    // Forgets all items without deleting them, and keeps the storage.
    void reset();

    // The same as count(), without a virtual call.
    unsigned int size() const { return itemCount_; }
    // The items, in order; null without storage. Invalidated by whatever grows the list.
    kfl::SObject** data() const {
        return static_cast<kfl::SObject**>(static_cast<void*>(items_.data()));
    }
    // Items that fit before the list grows.
    unsigned int capacity() const { return items_.capacity(); }

  private:
    SObjectArray items_;
    unsigned int itemCount_;
};

}  // namespace kfl

#endif
