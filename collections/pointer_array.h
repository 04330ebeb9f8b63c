// The code of the two pointer arrays, whose only difference is the type of their items.
#ifndef KFL_COLLECTIONS_POINTER_ARRAY_H
#define KFL_COLLECTIONS_POINTER_ARRAY_H

#include <cstdint>
#include <cstring>

#include "collections/find_pointer.h"
#include "core/allocation.h"
#include "kfl/Container.h"

namespace kfl::detail {

constexpr unsigned int defaultSlots = 10;

template <class Item>
Item* slotsOf(const Container& array) {
    return static_cast<Item*>(static_cast<void*>(array.data()));
}

// The index of the first slot with `item`, or the capacity.
inline unsigned int findSlot(const Container& array, const void* item) {
    return array.data() ? findPointer(array.data(), array.capacity(), item) : array.capacity();
}

template <class Item>
int indexOfItem(const Container& array, Item item) {
    if (!item) return -1;
    const unsigned int i = findSlot(array, item);
    return i < array.capacity() ? static_cast<int>(i) : -1;
}

template <class Item>
Item itemAt(const Container& array, unsigned int index) {
    const Item* const slots = slotsOf<Item>(array);
    return slots && index < array.capacity() ? slots[index] : nullptr;
}

// Makes room for exactly index + 1 slots where `index` is past the end.
inline void makeRoom(Container& array, unsigned int index) {
    if (index >= array.capacity()) array.expandTo(checkedSize(std::uint64_t{index} + 1));
}

// Writes a slot, or nothing where there is none: a subclass may have refused to grow.
template <class Item>
void writeSlot(Container& array, unsigned int index, Item item) {
    Item* const slots = slotsOf<Item>(array);
    if (slots && index < array.capacity()) slots[index] = item;
}

template <class Item>
Item& slotAt(Container& array, unsigned int index) {
    makeRoom(array, index);
    // A slot is needed also where setData(nullptr) took the storage away.
    if (!array.data()) array.expandTo(array.capacity());
    return slotsOf<Item>(array)[index];
}

template <class Item>
void putItem(Container& array, unsigned int index, Item item) {
    if (index == array.capacity()) array.expand();
    makeRoom(array, index);
    writeSlot(array, index, item);
}

template <class Item>
void addItem(Container& array, Item item) {
    putItem<Item>(array, findSlot(array, nullptr), item);
}

// Writes null into every slot.
inline void clearSlots(Container& array) {
    if (array.data()) {
        std::memset(array.data(), 0, std::size_t{array.capacity()} * sizeof(void*));
    }
}

}  // namespace kfl::detail

#endif
