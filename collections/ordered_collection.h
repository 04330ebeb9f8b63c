// The code of the two ordered collections, whose differences are the type of their items and that
// of their cursors. `items` is the slot storage of a collection, `count` its item count; slots at
// or beyond the count hold null. A storage that was cut below the count is met by reading null
// beyond its end. Nobody but the collection reaches its storage, so there is some whenever the
// capacity is not 0.
#ifndef KFL_COLLECTIONS_ORDERED_COLLECTION_H
#define KFL_COLLECTIONS_ORDERED_COLLECTION_H

#include <cstring>

#include "collections/pointer_array.h"

namespace kfl::detail {

template <class Item>
Item itemBelow(const Container& items, unsigned int count, unsigned int index) {
    return index < count && index < items.capacity() ? slotsOf<Item>(items)[index] : nullptr;
}

// Kept out of append(), which is a store and an increment where the item fits.
template <class Item>
[[gnu::noinline]] Item appendGrowing(Container& items, unsigned int& count, Item item) {
    putItem(items, count, item);
    ++count;
    return item;
}

template <class Item>
Item append(Container& items, unsigned int& count, Item item) {
    if (count >= items.capacity()) return appendGrowing(items, count, item);
    slotsOf<Item>(items)[count++] = item;
    return item;
}

template <class Item>
Item insert(Container& items, unsigned int& count, unsigned int index, Item item) {
    if (items.capacity() == count) items.expand();
    slotAt<Item>(items, count) = nullptr;
    const unsigned int pos = index < count ? index : count;
    Item* const slot = slotsOf<Item>(items) + pos;
    // cppcheck-suppress pointerSize ; what moves is pointers
    std::memmove(slot + 1, slot, std::size_t{count - pos} * sizeof(void*));
    *slot = item;
    ++count;
    return item;
}

template <class Item>
Item remove(Container& items, unsigned int& count, unsigned int index) {
    if (!items.data() || count == 0) return nullptr;
    const unsigned int end = count < items.capacity() ? count : items.capacity();
    const Item item = itemBelow<Item>(items, items.capacity(), index);
    Item* const slots = slotsOf<Item>(items);
    if (index < end) {
        std::memmove(slots + index, slots + index + 1,
                     std::size_t{end - index - 1} * sizeof(void*));
    }
    // Kept on purpose: past the last item (where a subclass counts more items than are stored) the
    // last one goes all the same.
    if (index < end || end == count) slots[end - 1] = nullptr;
    --count;
    return item;
}

// The composite operations, made of the collection's own virtual ones.

template <class Collection, class Item>
Item removeSame(Collection& collection, Item item) {
    const int index = collection.indexOfSame(item);
    return index < 0 ? nullptr : collection.removeAt(static_cast<unsigned int>(index));
}

template <class Collection, class Item>
Item replaceSame(Collection& collection, Item oldItem, Item newItem) {
    const int index = collection.indexOfSame(oldItem);
    // Asked also for an absent item: no index is that large, so the answer is null.
    const Item previous = collection.idAt(static_cast<unsigned int>(index));
    if (index >= 0) collection.replaceAt(static_cast<unsigned int>(index), newItem);
    return previous;
}

template <class Iterator, class Collection>
auto firstOf(Collection& collection) {
    Iterator it(collection);
    return collection.next(it);
}

template <class Iterator, class Collection>
auto lastOf(Collection& collection) -> decltype(firstOf<Iterator>(collection)) {
    if (collection.count() == 0) return nullptr;
    Iterator it(collection);
    collection.end(it);
    return collection.prev(it);
}

// The cursor. Each step hands out the item that the cursor stood on and then moves.

template <class Item, class Iterator>
Item moveTo(const Container& items, unsigned int count, Iterator& it, unsigned int position) {
    it.position = position;
    it.current = itemBelow<Item>(items, count, position);
    return it.current;
}

template <class Item, class Iterator>
Item stepOn(const Container& items, unsigned int count, Iterator& it) {
    const unsigned int at = it.position;
    const Item old = it.current;
    Item next = nullptr;
    if (at < count) {
        it.position = at + 1;
        next = itemBelow<Item>(items, count, at + 1);
    }
    it.current = next;
    return old;
}

template <class Item, class Iterator>
Item stepBack(const Container& items, unsigned int count, Iterator& it) {
    const Item old = it.current;
    const unsigned int at = it.position;
    Item next = nullptr;
    if (static_cast<int>(at) >= 1) {
        it.position = at - 1;
        next = itemBelow<Item>(items, count, at - 1);
    }
    it.current = next;
    return old;
}

}  // namespace kfl::detail

#endif
