// The two kinds of pointer arrays and ordered collections, for tests of the rules that both keep.
#ifndef KFL_TESTS_COLLECTIONS_KINDS_H
#define KFL_TESTS_COLLECTIONS_KINDS_H

#include <gtest/gtest.h>

#include <string>

#include "kfl/Collection.h"
#include "kfl/SObjectArray.h"
#include "kfl/VoidPtrArray.h"
#include "kfl/VoidPtrCollection.h"

namespace kfl_test {

// Things whose addresses serve as items: thing(0), thing(1), ...
constexpr unsigned int thingCount = 64;
inline kfl::SObject* thing(unsigned int number) {
    static kfl::SObject things[thingCount];
    return &things[number];
}

struct Untyped {
    using Item = void*;
    using Array = kfl::VoidPtrArray;
    using Base = kfl::VoidPtrCollection;
    using List = kfl::VoidPtrOrderedCollection;
    using Cursor = kfl::VoidPtrIterator;
    // Empties a list, keeping its storage.
    static void forget(List& list) { list.clear(); }
};

struct Objects {
    using Item = kfl::SObject*;
    using Array = kfl::SObjectArray;
    using Base = kfl::Collection;
    using List = kfl::OrdCollect;
    using Cursor = kfl::Iterator;
    static void forget(List& list) { list.reset(); }
};

struct KindNames {
    template <class Kind>
    static std::string GetName(int) {
        return std::is_same<Kind, Untyped>::value ? "Untyped" : "Objects";
    }
};

}  // namespace kfl_test

#endif
