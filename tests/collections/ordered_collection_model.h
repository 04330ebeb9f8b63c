// What the ordered collections promise, written down as plainly as it goes: a vector of slots, a
// count, and one loop per rule. Null is what stands where there is no slot.
#ifndef KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_MODEL_H
#define KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_MODEL_H

#include <cstdint>
#include <vector>

namespace kfl_test {

template <class Item>
class OrderedCollectionModel {
  public:
    struct Cursor {
        unsigned int position = 0;
        Item current = nullptr;
    };

    explicit OrderedCollectionModel(unsigned int capacity) : slots_(capacity) {}

    unsigned int count() const { return count_; }
    const std::vector<Item>& slots() const { return slots_; }

    Item add(Item item) {
        if (count_ == slots_.size()) grow();
        if (count_ >= slots_.size()) slots_.resize(count_ + 1);
        slots_[count_++] = item;
        return item;
    }

    Item insertAt(unsigned int index, Item item) {
        const unsigned int pos = index < count_ ? index : count_;
        if (count_ == slots_.size()) grow();
        if (count_ >= slots_.size()) slots_.resize(count_ + 1);
        for (unsigned int i = count_; i > pos; --i) slots_[i] = slots_[i - 1];
        slots_[pos] = item;
        ++count_;
        return item;
    }

    Item removeAt(unsigned int index) {
        if (index >= count_ || slots_.empty()) return nullptr;
        const Item item = slot(index);
        for (unsigned int i = index; i < count_; ++i)
            if (i < slots_.size()) slots_[i] = i + 1 < count_ ? slot(i + 1) : nullptr;
        --count_;
        return item;
    }

    Item removeSame(Item item) {
        const int index = indexOfSame(item);
        return index < 0 ? nullptr : removeAt(static_cast<unsigned int>(index));
    }

    Item replaceAt(unsigned int index, Item item) {
        if (index >= count_) return nullptr;
        const Item old = slot(index);
        if (index == slots_.size()) grow();
        if (index >= slots_.size()) slots_.resize(index + 1);
        slots_[index] = item;
        return old;
    }

    Item replaceSame(Item oldItem, Item newItem) {
        const int index = indexOfSame(oldItem);
        if (index < 0) return nullptr;
        const Item old = idAt(static_cast<unsigned int>(index));
        replaceAt(static_cast<unsigned int>(index), newItem);
        return old;
    }

    int indexOfSame(Item item) const {
        for (unsigned int i = 0; item && i < slots_.size(); ++i)
            if (slots_[i] == item) return static_cast<int>(i);
        return -1;
    }

    Item findSame(Item item) const { return indexOfSame(item) < 0 ? nullptr : item; }
    Item idAt(unsigned int index) const { return index < count_ ? slot(index) : nullptr; }
    void expandTo(unsigned int capacity) { slots_.resize(capacity); }
    Item first() const { return idAt(0); }
    Item last() const { return count_ == 0 ? nullptr : idAt(count_ - 1); }

    void forget() {
        slots_.assign(slots_.size(), nullptr);
        count_ = 0;
    }

    Item start(Cursor& it) const {
        it.position = 0;
        return it.current = idAt(0);
    }

    Item end(Cursor& it) const {
        it.position = count_ == 0 ? 0 : count_ - 1;
        return it.current = idAt(it.position);
    }

    // Past the last item the cursor stands at the count.
    Item next(Cursor& it) const {
        const Item old = it.current;
        if (it.position < count_) ++it.position;
        it.current = idAt(it.position);
        return old;
    }

    // In front of the first item it stands at 0, with nothing current.
    Item prev(Cursor& it) const {
        const Item old = it.current;
        const bool atFront = static_cast<std::int32_t>(it.position) < 1;
        if (!atFront) --it.position;
        it.current = atFront ? nullptr : idAt(it.position);
        return old;
    }

  private:
    Item slot(unsigned int index) const { return index < slots_.size() ? slots_[index] : nullptr; }
    void grow() {
        const std::size_t half = slots_.size() / 2;
        slots_.resize(slots_.size() + (half > 0 ? half : 10));
    }

    std::vector<Item> slots_;
    unsigned int count_ = 0;
};

}  // namespace kfl_test

#endif
