#include "kfl/Collection.h"

#include "collections/ordered_collection.h"
#include "core/bases.h"
#include "core/small_code.h"

namespace kfl {

Iterator::Iterator() : position(0), current(nullptr), collection(nullptr) {}

Iterator::Iterator(Collection& walked) : Iterator(&walked) {}

Iterator::Iterator(Collection* walked) : position(0), current(nullptr), collection(walked) {
    if (walked) walked->start(*this);
}

Iterator::~Iterator() = default;

Collection::Collection() = default;

Collection::~Collection() = default;

SObject* Collection::first() { return detail::firstOf<Iterator>(*this); }

SObject* Collection::last() { return detail::lastOf<Iterator>(*this); }

OrdCollect::OrdCollect() : itemCount_(0) {}

OrdCollect::OrdCollect(unsigned int capacity) : items_(capacity), itemCount_(0) {}

OrdCollect::~OrdCollect() = default;

SObject* OrdCollect::add(SObject* item) { return detail::append(items_, itemCount_, item); }

SObject* OrdCollect::removeSame(SObject* item) { return detail::removeSame(*this, item); }

SObject* OrdCollect::replaceSame(SObject* oldItem, SObject* newItem) {
    return detail::replaceSame(*this, oldItem, newItem);
}

SObject* OrdCollect::findSame(SObject* item) { return items_.findSame(item); }

void OrdCollect::reset() {
    items_.reset();
    itemCount_ = 0;
}

void OrdCollect::freeContents() {
    Iterator it(*this);
    end(it);
    while (SObject* const item = prev(it)) delete item;
    itemCount_ = 0;
}

unsigned int OrdCollect::count() const { return itemCount_; }

SObject* OrdCollect::start(Iterator& it) {
    return detail::moveTo<SObject*>(items_, itemCount_, it, 0);
}

SObject* OrdCollect::end(Iterator& it) {
    if (itemCount_ == 0) return start(it);
    return detail::moveTo<SObject*>(items_, itemCount_, it, itemCount_ - 1);
}

[[gnu::aligned(detail::shortFunctionAlignment)]] SObject* OrdCollect::next(Iterator& it) {
    return detail::stepOn<SObject*>(items_, itemCount_, it);
}

[[gnu::aligned(detail::shortFunctionAlignment)]] SObject* OrdCollect::prev(Iterator& it) {
    return detail::stepBack<SObject*>(items_, itemCount_, it);
}

SObject* OrdCollect::insertAt(unsigned int index, SObject* item) {
    return detail::insert(items_, itemCount_, index, item);
}

SObject* OrdCollect::removeAt(unsigned int index) {
    if (index >= count()) return nullptr;
    return detail::remove<SObject*>(items_, itemCount_, index);
}

SObject* OrdCollect::replaceAt(unsigned int index, SObject* item) {
    if (index >= itemCount_) return nullptr;
    SObject* const old = idAt(index);
    items_.atPutId(index, item);
    return old;
}

int OrdCollect::indexOfSame(SObject* item) const { return items_.indexOfSame(item); }

[[gnu::aligned(detail::shortFunctionAlignment)]] SObject* OrdCollect::idAt(
    unsigned int index) const {
    return detail::itemBelow<SObject*>(items_, itemCount_, index);
}

void OrdCollect::expandTo(unsigned int capacity) { items_.expandTo(capacity); }

}  // namespace kfl
