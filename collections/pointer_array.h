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

// How many slots one step of a search takes.
constexpr unsigned int stepSlots = sizeof(void*) == 8 ? 16 : 4;

// Whether one of the slots of a step may hold `item`: false is certain. There is one branch for all
// of them. Where pointers have 64 bits two slots are compared at a time, and a lower half that is
// the item's is enough to look closer.
template <class Item>
bool mayHold(const Item* slots, Item item) {
    if constexpr (sizeof(void*) == 8) {
        using Pair = std::uint64_t __attribute__((vector_size(16)));
        using Halves = std::uint32_t __attribute__((vector_size(16)));
        const std::uint64_t value = reinterpret_cast<std::uintptr_t>(item);
        const Halves wanted = reinterpret_cast<Halves>(Pair{value, value});
        Halves hits{};
        for (unsigned int i = 0; i < stepSlots; i += 2) {
            Halves two;
            std::memcpy(&two, slots + i, sizeof two);
            hits |= reinterpret_cast<Halves>(two == wanted);
        }
        const Pair all = reinterpret_cast<Pair>(hits);
        return static_cast<std::uint32_t>(all[0] | all[1]) != 0;
    } else {
        return (slots[0] == item) | (slots[1] == item) | (slots[2] == item) | (slots[3] == item);
    }
}

// The index of the first of `count` slots with `item`, or the count. Out of line, so that it is not
// laid out anew for each step.
template <class Item>
[[gnu::noinline]] unsigned int findOneByOne(const Item* slots, unsigned int count, Item item) {
    unsigned int i = 0;
    while (i < count && slots[i] != item) ++i;
    return i;
}

// The index of the first slot with `item`, or the capacity.
template <class Item>
unsigned int findSlot(const Container& array, Item item) {
    const Item* const slots = slotsOf<Item>(array);
    const unsigned int count = array.capacity();
    if (!slots) return count;
    unsigned int i = 0;
    for (; count - i >= stepSlots; i += stepSlots) {
        if (!mayHold(slots + i, item)) continue;
        const unsigned int at = findOneByOne(slots + i, stepSlots, item);
        if (at < stepSlots) return i + at;
    }
    return i + findOneByOne(slots + i, count - i, item);
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
    putItem<Item>(array, findSlot<Item>(array, nullptr), item);
}

// Writes null into every slot.
inline void clearSlots(Container& array) {
    if (array.data()) {
        std::memset(array.data(), 0, std::size_t{array.capacity()} * sizeof(void*));
    }
}

}  // namespace kfl::detail

#endif
