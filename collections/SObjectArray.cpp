#include "kfl/SObjectArray.h"

#include "collections/pointer_array.h"

namespace kfl {

SObjectArray::SObjectArray() : SObjectArray(detail::defaultSlots) {}

SObjectArray::SObjectArray(unsigned int capacity) : Container(capacity, sizeof(void*)) {}

SObjectArray::~SObjectArray() = default;

void SObjectArray::add(SObject* item) { detail::addItem(*this, item); }

SObject* SObjectArray::idAt(unsigned int index) const {
    return detail::itemAt<SObject*>(*this, index);
}

SObject*& SObjectArray::operator[](unsigned int index) {
    return detail::slotAt<SObject*>(*this, index);
}

void SObjectArray::atPutId(unsigned int index, SObject* item) {
    detail::putItem(*this, index, item);
}

int SObjectArray::indexOfSame(SObject* item) const { return detail::indexOfItem(*this, item); }

SObject* SObjectArray::findSame(SObject* item) {
    return detail::indexOfItem(*this, item) < 0 ? nullptr : item;
}

void SObjectArray::reset() { detail::clearSlots(*this); }

void SObjectArray::freeContents() {
    // A destructor may change the array: capacity and storage are read anew for each slot.
    for (unsigned int i = 0; i < capacity_; ++i) {
        delete idAt(i);
        detail::writeSlot<SObject*>(*this, i, nullptr);
    }
}

}  // namespace kfl
