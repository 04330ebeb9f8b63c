// Element container, arrays, stack, ordered collections.
#include <gtest/gtest.h>

#include "kfl/Collection.h"
#include "kfl/Container.h"
#include "kfl/SObjectArray.h"
#include "kfl/VoidPtrArray.h"
#include "kfl/VoidPtrCollection.h"
#include "kfl/VoidPtrStack.h"
#include "tests/faults/steps.h"

namespace {

using kfl_test::exhaustMaking;
using kfl_test::exhaustSteps;
using kfl_test::Steps;

// Items of both kinds, known by their numbers.
kfl::SObject items[40];
char untyped[40];

kfl::SObject* itemAt(unsigned int i, const kfl::SObject*) { return &items[i]; }
void* itemAt(unsigned int i, const void*) { return &untyped[i]; }

int numberOf(const kfl::SObject* item) { return item ? static_cast<int>(item - items) : -1; }
int numberOf(const void* item) {
    return item ? static_cast<int>(static_cast<const char*>(item) - untyped) : -1;
}

template <class Array>
std::string slotsOf(Array& array, unsigned int capacity) {
    std::string text = std::to_string(capacity) + ':';
    for (unsigned int i = 0; i < capacity; ++i)
        text += ' ' + std::to_string(numberOf(array.idAt(i)));
    return text;
}

template <class Array, class Item>
Steps<Array> arraySteps() {
    const auto item = [](unsigned int i) { return itemAt(i, static_cast<Item*>(nullptr)); };
    return {[] { return std::make_unique<Array>(1); },
            {[=](Array& a) { a.add(item(0)); }, [=](Array& a) { a.add(item(1)); },
             [=](Array& a) { a.atPutId(11, item(2)); }, [=](Array& a) { a.atPutId(30, item(3)); },
             [=](Array& a) { a[40] = item(4); }, [=](Array& a) { a.expandTo(3); }},
            [](Array& a) { return slotsOf(a, a.size()); }};
}

template <class List, class Item>
Steps<List> listSteps() {
    const auto item = [](unsigned int i) { return itemAt(i, static_cast<Item*>(nullptr)); };
    return {[] { return std::make_unique<List>(1); },
            {[=](List& l) { l.add(item(0)); }, [=](List& l) { l.add(item(1)); },
             [=](List& l) {
                 for (unsigned int i = 2; i < 11; ++i) l.add(item(i));
             },
             [=](List& l) { l.insertAt(1, item(11)); }, [=](List& l) { l.removeAt(0); },
             [](List& l) { l.expandTo(30); }},
            [](List& l) { return slotsOf(l, l.count()); }};
}

TEST(CollectionsFaults, Container) {
    exhaustSteps("container: grown by all its ways",
                 Steps<kfl::Container>{[] { return std::make_unique<kfl::Container>(4); },
                                       {[](kfl::Container& c) { c.expand(); },
                                        [](kfl::Container& c) { c.expandTo(30); },
                                        [](kfl::Container& c) { c.atPut(40, untyped, 3); },
                                        [](kfl::Container& c) { c.expandTo(2); }},
                                       [](kfl::Container& c) { return std::to_string(c.size()); }});
}

TEST(CollectionsFaults, Arrays) {
    exhaustSteps("arrays: of pointers", arraySteps<kfl::VoidPtrArray, void>());
    exhaustSteps("arrays: of objects", arraySteps<kfl::SObjectArray, kfl::SObject>());
    exhaustMaking("stack: made and filled", [] {
        kfl::VoidPtrStack stack(4);
        EXPECT_TRUE(stack.push(untyped));
        EXPECT_EQ(stack.pop(), untyped);
    });
}

TEST(CollectionsFaults, Collections) {
    exhaustSteps("collections: of pointers", listSteps<kfl::VoidPtrOrderedCollection, void>());
    exhaustSteps("collections: of objects", listSteps<kfl::OrdCollect, kfl::SObject>());
    exhaustMaking("collections: made and walked through", [] {
        kfl::VoidPtrOrderedCollection list;
        list.add(untyped);
        kfl::VoidPtrIterator walk(list);
        EXPECT_EQ(list.next(walk), untyped);
        const kfl::OrdCollect objects;
        EXPECT_EQ(objects.count(), 0U);
    });
}

}  // namespace
