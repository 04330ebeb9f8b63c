#include "kfl/VoidPtrCollection.h"

#include "collections/ordered_collection.h"
#include "core/small_code.h"

namespace kfl {

VoidPtrIterator::VoidPtrIterator(VoidPtrCollection& walked) : VoidPtrIterator(&walked) {}

VoidPtrIterator::VoidPtrIterator(VoidPtrCollection* walked)
    : position(0), current(nullptr), collection(walked) {
    if (walked) walked->start(*this);
}

VoidPtrCollection::VoidPtrCollection() = default;

VoidPtrCollection::~VoidPtrCollection() = default;

void* VoidPtrCollection::first() { return detail::firstOf<VoidPtrIterator>(*this); }

void* VoidPtrCollection::last() { return detail::lastOf<VoidPtrIterator>(*this); }

VoidPtrOrderedCollection::VoidPtrOrderedCollection() : itemCount_(0) {}

VoidPtrOrderedCollection::VoidPtrOrderedCollection(unsigned int capacity)
    : items_(capacity), itemCount_(0) {}

VoidPtrOrderedCollection::~VoidPtrOrderedCollection() = default;

void* VoidPtrOrderedCollection::add(void* item) { return detail::append(items_, itemCount_, item); }

void* VoidPtrOrderedCollection::removeSame(void* item) { return detail::removeSame(*this, item); }

void* VoidPtrOrderedCollection::replaceSame(void* oldItem, void* newItem) {
    return detail::replaceSame(*this, oldItem, newItem);
}

void* VoidPtrOrderedCollection::findSame(void* item) { return items_.findSame(item); }

void VoidPtrOrderedCollection::clear() {
    items_.reset();
    itemCount_ = 0;
}

unsigned int VoidPtrOrderedCollection::count() const { return itemCount_; }

void* VoidPtrOrderedCollection::start(VoidPtrIterator& it) {
    return detail::moveTo<void*>(items_, itemCount_, it, 0);
}

void* VoidPtrOrderedCollection::end(VoidPtrIterator& it) {
    if (itemCount_ == 0) return start(it);
    return detail::moveTo<void*>(items_, itemCount_, it, itemCount_ - 1);
}

[[gnu::aligned(detail::shortFunctionAlignment)]] void* VoidPtrOrderedCollection::next(
    VoidPtrIterator& it) {
    return detail::stepOn<void*>(items_, itemCount_, it);
}

[[gnu::aligned(detail::shortFunctionAlignment)]] void* VoidPtrOrderedCollection::prev(
    VoidPtrIterator& it) {
    return detail::stepBack<void*>(items_, itemCount_, it);
}

void* VoidPtrOrderedCollection::insertAt(unsigned int index, void* item) {
    return detail::insert(items_, itemCount_, index, item);
}

void* VoidPtrOrderedCollection::removeAt(unsigned int index) {
    if (index >= count()) return nullptr;
    return detail::remove<void*>(items_, itemCount_, index);
}

void* VoidPtrOrderedCollection::replaceAt(unsigned int index, void* item) {
    if (index >= itemCount_) return nullptr;
    void* const old = idAt(index);
    items_.atPutId(index, item);
    return old;
}

int VoidPtrOrderedCollection::indexOfSame(void* item) const { return items_.indexOfSame(item); }

[[gnu::aligned(detail::shortFunctionAlignment)]] void* VoidPtrOrderedCollection::idAt(
    unsigned int index) const {
    return detail::itemBelow<void*>(items_, itemCount_, index);
}

void VoidPtrOrderedCollection::expandTo(unsigned int capacity) { items_.expandTo(capacity); }

}  // namespace kfl
