#include "kfl/VoidPtrArray.h"

#include "collections/pointer_array.h"

namespace kfl {

VoidPtrArray::VoidPtrArray() : VoidPtrArray(detail::defaultSlots) {}

VoidPtrArray::VoidPtrArray(unsigned int capacity) : Container(capacity, sizeof(void*)) {}

VoidPtrArray::~VoidPtrArray() = default;

void VoidPtrArray::add(void* item) { detail::addItem(*this, item); }

void* VoidPtrArray::idAt(unsigned int index) const { return detail::itemAt<void*>(*this, index); }

void*& VoidPtrArray::operator[](unsigned int index) { return detail::slotAt<void*>(*this, index); }

void VoidPtrArray::atPutId(unsigned int index, void* item) { detail::putItem(*this, index, item); }

int VoidPtrArray::indexOfSame(void* item) const { return detail::indexOfItem(*this, item); }

void* VoidPtrArray::findSame(void* item) {
    return detail::indexOfItem(*this, item) < 0 ? nullptr : item;
}

void VoidPtrArray::reset() { detail::clearSlots(*this); }

}  // namespace kfl
