#include "kfl/StringsContainer.h"

#include <cstring>

#include "core/allocation.h"

namespace {

char** newSlots(unsigned int count) {
    char* const block = kfl::detail::allocateArray(count, sizeof(char*));
    // cppcheck-suppress pointerSize ; what is cleared is pointers
    std::memset(block, 0, std::size_t{count} * sizeof(char*));
    return static_cast<char**>(static_cast<void*>(block));
}

bool contains(char* const* texts, unsigned int count, const char* text) {
    for (unsigned int i = 0; i < count; ++i) {
        if (std::strcmp(text, texts[i]) == 0) return true;
    }
    return false;
}

}  // namespace

StringsContainer::StringsContainer(unsigned int capacity)
    : capacity_(capacity), count_(0), slots_(newSlots(capacity)) {}

StringsContainer::~StringsContainer() { delete[] slots_; }

int StringsContainer::addString(char* text) {
    if (count_ == capacity_) return 1;
    slots_[count_++] = text;
    return 0;
}

unsigned int StringsContainer::getNumberOfStrings() { return count_; }

char* StringsContainer::getString(unsigned int index) {
    return index == 0 || index > capacity_ ? nullptr : slots_[index - 1];
}

void StringsContainer::clear() { count_ = 0; }

void StringsContainer::clearFromString(unsigned int index) {
    if (index != 0 && index <= count_) count_ = index - 1;
}

bool StringsContainer::areAllStringsPresentInOtherContainer(StringsContainer* other) {
    for (unsigned int i = 0; i < count_; ++i) {
        if (!other || !contains(other->slots_, other->count_, slots_[i])) return false;
    }
    return true;
}

bool StringsContainer::isItIdentical(StringsContainer* other) {
    return areAllStringsPresentInOtherContainer(other) && count_ == (other ? other->count_ : 0);
}

unsigned int StringsContainer::getLengthOfStrings() {
    unsigned int sum = 0;
    for (unsigned int i = 0; i < count_; ++i)
        sum += static_cast<unsigned int>(std::strlen(slots_[i]));
    return sum;
}
