// A bounded list of borrowed texts.
//
//     StringsContainer words(8);
//     words.addString(first);                  // 0: stored
//     for (unsigned int i = 1; i <= words.getNumberOfStrings(); ++i) use(words.getString(i));
#ifndef KFL_STRINGSCONTAINER_H
#define KFL_STRINGSCONTAINER_H

#include "kfl/export.h"

// Stores the caller's pointers, never copies or frees the texts: the caller keeps them alive.
// Positions count from 1. Null texts may be stored but not compared or measured. One thread at a
// time uses a container.
class KFL_EXPORT StringsContainer {
  public:
    // Room for `capacity` texts. A size past 32 bits fails as an allocation does.
    StringsContainer(unsigned int capacity);
    virtual ~StringsContainer();

    StringsContainer(const StringsContainer&) = delete;
    StringsContainer& operator=(const StringsContainer&) = delete;

    // Kept on purpose: 0 is success, 1 says that the list is full.
    int addString(char* text);
    // The texts that are in the list.
    unsigned int getNumberOfStrings();
    // The text at position `index`; null for 0 and past the capacity.
    // Kept on purpose: between the number of strings and the capacity it returns what that place
    // held last, null where nothing was.
    char* getString(unsigned int index);
    // Forgets all texts.
    void clear();
    // Forgets the text at position `index` and all behind it; a position outside the list changes
    // nothing.
    void clearFromString(unsigned int index);
    // True when each text of this list equals one of `other`; an empty list is in every one. A null
    // `other` counts as empty.
    bool areAllStringsPresentInOtherContainer(StringsContainer* other);
    // True when that holds and both have the same number of texts.
    // Kept on purpose: one-sided. "a", "a" is identical to "a", "b", but not the other way round.
    bool isItIdentical(StringsContainer* other);
    // The sum of the lengths of all texts.
    unsigned int getLengthOfStrings();

    // Texts that fit.
    unsigned int capacity() const { return capacity_; }

  private:
    unsigned int capacity_;
    unsigned int count_;
    char** slots_;
};

namespace kfl {

using ::StringsContainer;

}  // namespace kfl

#endif
