// An ordered collection beside its model, and steps that both take together.
#ifndef KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_PAIR_H
#define KFL_TESTS_COLLECTIONS_ORDERED_COLLECTION_PAIR_H

#include <algorithm>

#include "tests/collections/kinds.h"
#include "tests/collections/ordered_collection_model.h"
#include "tests/support/choices.h"

namespace kfl_test {

// A collection with two cursors and its model, which are always told the same.
template <class Kind>
class CollectionPair {
  public:
    using Item = typename Kind::Item;
    using List = typename Kind::List;
    using Model = OrderedCollectionModel<Item>;

    explicit CollectionPair(unsigned int capacity) : list_(capacity), model_(capacity) {}

    void add(Item item) { same(list_.add(item), model_.add(item)); }
    void insertAt(unsigned int index, Item item) {
        same(list_.insertAt(index, item), model_.insertAt(index, item));
    }
    void removeAt(unsigned int index) { same(list_.removeAt(index), model_.removeAt(index)); }
    void removeSame(Item item) { same(list_.removeSame(item), model_.removeSame(item)); }
    void replaceAt(unsigned int index, Item item) {
        same(list_.replaceAt(index, item), model_.replaceAt(index, item));
    }
    void replaceSame(Item item, Item other) {
        same(list_.replaceSame(item, other), model_.replaceSame(item, other));
    }
    void find(Item item) {
        same(list_.findSame(item), model_.findSame(item));
        agree(list_.indexOfSame(item) == model_.indexOfSame(item));
    }
    void idAt(unsigned int index) { same(list_.idAt(index), model_.idAt(index)); }
    void ends() {
        same(list_.first(), model_.first());
        same(list_.last(), model_.last());
    }
    void forget() { Kind::forget(list_), model_.forget(); }
    void expandTo(unsigned int capacity) { list_.expandTo(capacity), model_.expandTo(capacity); }
    void start(int which) { same(list_.start(its_[which]), model_.start(modelIts_[which])); }
    void end(int which) { same(list_.end(its_[which]), model_.end(modelIts_[which])); }
    void next(int which) { same(list_.next(its_[which]), model_.next(modelIts_[which])); }
    void prev(int which) { same(list_.prev(its_[which]), model_.prev(modelIts_[which])); }

    // The collection alone.
    List& list() { return list_; }
    unsigned int count() const { return model_.count(); }
    unsigned int capacity() const { return static_cast<unsigned int>(model_.slots().size()); }

    // Whether results, slots, count, capacity and both cursors have agreed so far.
    bool agrees() {
        agree(list_.count() == model_.count());
        agree(list_.capacity() == capacity());
        agree((list_.data() == nullptr) == model_.slots().empty());
        if (agreed_) agree(std::equal(model_.slots().begin(), model_.slots().end(), list_.data()));
        for (int i = 0; i < 2; ++i) {
            agree(its_[i].position == modelIts_[i].position);
            agree(its_[i].current == modelIts_[i].current);
        }
        return agreed_;
    }

  private:
    void agree(bool equal) { agreed_ = agreed_ && equal; }
    void same(Item actual, Item expected) { agree(actual == expected); }

    List list_;
    Model model_;
    typename Kind::Cursor its_[2] = {{list_}, {list_}};
    typename Model::Cursor modelIts_[2];
    bool agreed_ = true;
};

// One of a few items, so that most are there several times; at times null.
template <class Item>
Item anyItem(Choices& random) {
    return random.oneIn(6) ? nullptr : thing(random.below(12));
}

// An index inside, at the end, or a little or far past it.
inline unsigned int anyIndex(Choices& random, unsigned int count) {
    if (random.oneIn(20)) return random();
    return random.below(count + 2);
}

template <class Kind>
void change(Choices& random, CollectionPair<Kind>& pair) {
    const typename Kind::Item item = anyItem<typename Kind::Item>(random);
    const unsigned int index = anyIndex(random, pair.count());
    switch (random.below(8)) {
        case 0:
        case 1: pair.add(item); break;
        case 2: pair.insertAt(index, item); break;
        case 3: pair.removeAt(index); break;
        case 4: pair.removeSame(item); break;
        case 5: pair.replaceAt(index, item); break;
        case 6: pair.replaceSame(item, anyItem<typename Kind::Item>(random)); break;
        default:
            if (random.oneIn(30)) pair.forget();
    }
}

template <class Kind>
void look(Choices& random, CollectionPair<Kind>& pair) {
    const int which = static_cast<int>(random.below(2));
    switch (random.below(8)) {
        case 0: pair.start(which); break;
        case 1: pair.end(which); break;
        case 2: pair.next(which), pair.next(which); break;
        case 3: pair.next(which); break;
        case 4: pair.prev(which), pair.prev(which); break;
        case 5: pair.prev(which); break;
        case 6: pair.find(anyItem<typename Kind::Item>(random)), pair.ends(); break;
        default: pair.idAt(anyIndex(random, pair.count()));
    }
}

}  // namespace kfl_test

#endif
