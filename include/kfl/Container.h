// The growable block of fixed-size elements beneath the arrays and ordered collections.
//
// Elements are raw bytes, copied in and out bytewise: nothing is constructed or destroyed in them.
// New elements are zero-filled. Sizes and indexes count elements. A size that would pass 32 bits in
// bytes fails as an allocation does (std::bad_alloc from the allocator, the container as it was).
// One thread at a time uses a container.
#ifndef KFL_CONTAINER_H
#define KFL_CONTAINER_H

#include "kfl/export.h"

namespace kfl {

// Owns its storage, which is null exactly while the capacity is 0. All growth goes through the
// virtual expandTo, so a subclass can intercept it.
class KFL_EXPORT Container {
  public:
    // No storage, element size 0.
    Container();
    // One zeroed element of `elementSize` bytes.
    Container(unsigned int elementSize);
    // `capacity` zeroed elements of `elementSize` bytes.
    Container(unsigned int capacity, unsigned int elementSize);
    virtual ~Container();

    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    // The capacity: all elements there are, used or not.
    virtual unsigned int size() const;
    // Copies `n` elements from `index` on to the start of `destination`, fewer where this container
    // ends; the destination grows as needed. Returns the number copied, 0 where either has no
    // storage or a subclass refused to grow. Requires: index <= size(); equal element sizes.
    // Kept on purpose: unlike the byte form, the index is not checked.
    virtual unsigned int atGet(unsigned int index, kfl::Container* destination, unsigned int n);
    // Copies `n` elements from the start of `source` to `index` on. Returns `n`, or 0 where a
    // subclass refused to grow.
    // Requires: n <= source->size(); equal element sizes; a source with storage unless `n` is 0.
    // Kept on purpose: room is made for index + source->size() elements, whatever `n` is.
    virtual unsigned int atPut(unsigned int index, kfl::Container* source, unsigned int n);
    // Sets the capacity to exactly `n`: cuts or adds zeroed elements; 0 releases the storage.
    // Invalidates: pointers into the storage.
    virtual void expandTo(unsigned int n);

    // Grows by half the capacity, or by 10 elements where that half is 0.
    void expand();
    // Grows by `n` elements.
    void expand(unsigned int n);
    // Releases the storage; the element size stays.
    void reset();
    // Releases the storage and adopts `data`, which must come from array new; returns it. Does not
    // change the capacity: that is the caller's to set.
    char* setData(char* data);

    // Copies `n` elements from `source` to `index` on, growing to exactly index + n where they do
    // not fit. Returns `n`, or 0 where there is no room even so.
    unsigned int atPut(unsigned int index, char* source, unsigned int n);
    // The same for one element.
    unsigned int atPut(unsigned int index, char* source);
    // Copies `n` elements from `index` on to `destination`, fewer where the container ends. Returns
    // the number copied, 0 for an index past the end.
    unsigned int atGet(unsigned int index, char* destination, unsigned int n);
    // The same for one element.
    unsigned int atGet(unsigned int index, char* destination);

    // The storage, or null.
    char* data() const { return data_; }
    // The same as size(), without a virtual call.
    unsigned int capacity() const { return capacity_; }
    // Bytes per element.
    unsigned int elementSize() const { return elementSize_; }

  protected:
    // The storage, from array new, or null.
    char* data_;
    // Elements in the storage.
    unsigned int capacity_;
    // Bytes per element.
    unsigned int elementSize_;
};

}  // namespace kfl

#endif
