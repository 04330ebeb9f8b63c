// The code of the two pointer arrays, whose only difference is the type of their items.
#ifndef KFL_COLLECTIONS_POINTER_ARRAY_H
#define KFL_COLLECTIONS_POINTER_ARRAY_H

#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "kfl/Container.h"

namespace kfl::detail {

constexpr unsigned int defaultSlots = 10;

template <class Item>
Item* slotsOf(const Container& array) {
    return static_cast<Item*>(static_cast<void*>(array.data()));
}

// The index of the first slot with `item`, or the capacity.
template <class Item>
unsigned int findSlot(const Container& array, Item item) {
    const Item* const slots = slotsOf<Item>(array);
    const unsigned int count = array.capacity();
    unsigned int i = 0;
    // Four slots a step: one branch for all of them until one fits.
    for (; count - i >= 4; i += 4) {
        const bool hit = (slots[i] == item) | (slots[i + 1] == item) | (slots[i + 2] == item) |
                         (slots[i + 3] == item);
        if (hit) break;
    }
    while (i < count && slots[i] != item) ++i;
    return i;
}

template <class Item>
int indexOfItem(const Container& array, Item item) {
    if (!item) return -1;
    const unsigned int i = findSlot(array, item);
    return i < array.capacity() ? static_cast<int>(i) : -1;
}

template <class Item>
Item itemAt(const Container& array, unsigned int index) {
    return index < array.capacity() ? slotsOf<Item>(array)[index] : nullptr;
}

// The slot at `index`, after growth to exactly index + 1 where it is needed.
template <class Item>
Item& slotAt(Container& array, unsigned int index) {
    if (index >= array.capacity()) array.expandTo(checkedSize(std::uint64_t{index} + 1));
    return slotsOf<Item>(array)[index];
}

template <class Item>
void putItem(Container& array, unsigned int index, Item item) {
    if (index == array.capacity()) array.expand();
    slotAt<Item>(array, index) = item;
}

template <class Item>
void addItem(Container& array, Item item) {
    putItem<Item>(array, findSlot<Item>(array, nullptr), item);
}

// Writes null into `count` slots from `first` on.
inline void clearSlots(Container& array, unsigned int first, unsigned int count) {
    if (count > 0) {
        std::memset(array.data() + std::size_t{first} * sizeof(void*), 0,
                    std::size_t{count} * sizeof(void*));
    }
}

}  // namespace kfl::detail

#endif
