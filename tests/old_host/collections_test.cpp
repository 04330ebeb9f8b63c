// Containers, arrays, the stack, both kinds of collections and their cursors.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/old_host/old_kfl.h"

namespace {

// A container of the host's own, which does not grow: the library must ask it.
class Fixed : public kfl::Container {
  public:
    Fixed() : Container(2, 4) {}
    void expandTo(unsigned int n) override { asked = n; }

    unsigned int asked = 0;
};

TEST(OldHost, ContainersHoldElementsOfAnyWidth) {
    kfl::Container words(2, 4);
    char text[] = "onetwo!!";
    EXPECT_EQ(words.atPut(1, text, 2), 2U);
    EXPECT_EQ(words.capacity, 3U);
    EXPECT_EQ(words.size(), 3U);
    EXPECT_EQ(words.elementSize, 4U);
    EXPECT_EQ(std::memcmp(words.data, "\0\0\0\0onetwo!!", 12), 0);
    kfl::Container copy(4);
    EXPECT_EQ(words.atGet(1, &copy, 2), 2U);
    EXPECT_EQ(copy.atPut(2, &words, 3), 3U);
    EXPECT_EQ(copy.capacity, 5U);
    char word[5] = {};
    EXPECT_EQ(copy.atGet(4, word), 1U);
    EXPECT_STREQ(word, "wo!!");
    words.expand(2);
    EXPECT_EQ(words.capacity, 5U);
    words.reset();
    EXPECT_EQ(words.data, nullptr);
    EXPECT_EQ(words.setData(new char[4]), words.data);
}

TEST(OldHost, TheLibraryAsksTheHostsContainerToGrow) {
    Fixed words;
    char word[] = "four";
    EXPECT_EQ(words.atPut(7, word), 0U);
    EXPECT_EQ(words.asked, 8U);
    EXPECT_EQ(words.capacity, 2U);
}

TEST(OldHost, ArraysFindTheirItems) {
    int items[2];
    kfl::VoidPtrArray array(1);
    array.add(&items[0]);
    array.atPutId(3, &items[1]);
    EXPECT_EQ(array.capacity, 4U);
    EXPECT_EQ(array.idAt(0), &items[0]);
    EXPECT_EQ(array.indexOfSame(&items[1]), 3);
    EXPECT_EQ(array.findSame(&items[1]), &items[1]);
    array[3] = nullptr;
    EXPECT_EQ(array.idAt(3), nullptr);
    array.reset();
    EXPECT_EQ(array.findSame(&items[0]), nullptr);
}

TEST(OldHost, StacksGiveBackInReverse) {
    int items[2];
    kfl::VoidPtrStack stack(2);
    EXPECT_TRUE(stack.push(&items[0]));
    EXPECT_TRUE(stack.push(&items[1]));
    EXPECT_EQ(stack.top, 1);
    EXPECT_EQ(stack.capacity, 2);
    EXPECT_EQ(stack.slots[1], &items[1]);
    EXPECT_EQ(stack.pop(), &items[1]);
    EXPECT_EQ(stack.pop(), &items[0]);
    EXPECT_EQ(stack.pop(), nullptr);
}

// An ordered collection that the host has extended: it counts what the library asks of it.
class Watched : public kfl::VoidPtrOrderedCollection {
  public:
    void* removeAt(unsigned int index) override {
        asked.push_back('r');
        return VoidPtrOrderedCollection::removeAt(index);
    }
    int indexOfSame(void* item) const override {
        asked.push_back('i');
        return VoidPtrOrderedCollection::indexOfSame(item);
    }
    void* idAt(unsigned int index) const override {
        asked.push_back('a');
        return VoidPtrOrderedCollection::idAt(index);
    }
    void* replaceAt(unsigned int index, void* item) override {
        asked.push_back('p');
        return VoidPtrOrderedCollection::replaceAt(index, item);
    }
    void* next(kfl::VoidPtrIterator& it) override {
        asked.push_back('n');
        return VoidPtrOrderedCollection::next(it);
    }

    mutable std::string asked;
};

TEST(OldHost, OrderedCollectionsAreWalked) {
    int items[3];
    kfl::VoidPtrOrderedCollection list(2);
    kfl::VoidPtrCollection& base = list;
    EXPECT_EQ(base.add(&items[0]), &items[0]);
    EXPECT_EQ(list.insertAt(0, &items[1]), &items[1]);
    EXPECT_EQ(list.itemCount, 2U);
    EXPECT_EQ(list.items.capacity, 2U);
    list.expandTo(8);
    EXPECT_EQ(list.items.capacity, 8U);
    EXPECT_EQ(base.count(), 2U);
    EXPECT_EQ(base.first(), &items[1]);
    EXPECT_EQ(base.last(), &items[0]);
    kfl::VoidPtrIterator it(base);
    EXPECT_EQ(it.current, &items[1]);
    EXPECT_EQ(it.collection, &list);
    EXPECT_EQ(base.next(it), &items[1]);
    EXPECT_EQ(it.position, 1U);
    EXPECT_EQ(base.prev(it), &items[0]);
    EXPECT_EQ(base.end(it), &items[0]);
    EXPECT_EQ(base.start(it), &items[1]);
    EXPECT_EQ(base.findSame(&items[2]), nullptr);
    base.clear();
    EXPECT_EQ(list.itemCount, 0U);
}

TEST(OldHost, TheLibraryCallsTheHostsCollection) {
    int items[3];
    Watched list;
    list.add(&items[0]);
    list.add(&items[1]);
    EXPECT_EQ(list.removeSame(&items[0]), &items[0]);
    EXPECT_EQ(list.replaceSame(&items[1], &items[2]), &items[1]);
    EXPECT_EQ(list.first(), &items[2]);
    EXPECT_EQ(list.asked.substr(0, 5), "iriap");
    EXPECT_EQ(list.asked.back(), 'n');
}

class Item : public kfl::SObject {
  public:
    explicit Item(int& destroyed) : destroyed_(destroyed) {}
    ~Item() override { ++destroyed_; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

  private:
    int& destroyed_;
};

TEST(OldHost, ObjectCollectionsDeleteTheHostsItems) {
    int destroyed = 0;
    kfl::OrdCollect list;
    for (int i = 0; i < 3; ++i) list.add(new Item(destroyed));
    kfl::SObject* const extra = new Item(destroyed);
    EXPECT_EQ(list.insertAt(1, extra), extra);
    EXPECT_EQ(list.indexOfSame(extra), 1);
    EXPECT_EQ(list.idAt(1), extra);
    kfl::Iterator it(&list);
    EXPECT_EQ(it.collection, &list);
    EXPECT_EQ(list.next(it), list.first());
    EXPECT_EQ(it.current, extra);
    EXPECT_EQ(it.position, 1U);
    EXPECT_EQ(list.removeAt(1), extra);
    delete extra;
    EXPECT_EQ(list.itemCount, 3U);
    list.freeContents();
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(list.itemCount, 0U);
    list.reset();

    kfl::SObjectArray array(2);
    array.add(new Item(destroyed));
    EXPECT_EQ(array.indexOfSame(array[0]), 0);
    array.freeContents();
    EXPECT_EQ(destroyed, 5);
    const kfl::Iterator empty;
    EXPECT_EQ(empty.collection, nullptr);
}

// A whole collection of the host's own, which the library walks for it.
class One : public kfl::Collection {
  public:
    explicit One(kfl::SObject& item) : item_(&item) {}
    kfl::SObject* add(kfl::SObject* item) override { return item_ = item; }
    kfl::SObject* removeSame(kfl::SObject* /*item*/) override { return nullptr; }
    kfl::SObject* replaceSame(kfl::SObject* /*old*/, kfl::SObject* item) override {
        return item_ = item;
    }
    kfl::SObject* findSame(kfl::SObject* item) override { return item == item_ ? item : nullptr; }
    unsigned int count() const override { return 1; }
    void freeContents() override {}
    kfl::SObject* start(kfl::Iterator& it) override { return it.current = item_; }
    kfl::SObject* end(kfl::Iterator& it) override { return it.current = item_; }
    kfl::SObject* next(kfl::Iterator& it) override { return step(it, 'n'); }
    kfl::SObject* prev(kfl::Iterator& it) override { return step(it, 'p'); }

    char asked = ' ';

  private:
    kfl::SObject* step(kfl::Iterator& it, char which) {
        asked = which;
        return it.current;
    }
    kfl::SObject* item_;
};

TEST(OldHost, TheLibraryWalksTheHostsCollection) {
    kfl::SObject item;
    One one(item);
    EXPECT_EQ(one.first(), &item);
    EXPECT_EQ(one.asked, 'n');
    EXPECT_EQ(one.last(), &item);
    EXPECT_EQ(one.asked, 'p');
}

}  // namespace
