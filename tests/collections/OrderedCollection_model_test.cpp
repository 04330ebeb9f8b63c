// The ordered collections beside a plain model: long random scripts, and every short one.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/collections/kinds.h"
#include "tests/collections/ordered_collection_model.h"
#include "tests/support/seed.h"

namespace kfl_test {
namespace {

// A collection with two cursors and its model, which are always told the same.
template <class Kind>
class Pair {
  public:
    using Item = typename Kind::Item;
    using List = typename Kind::List;
    using Model = OrderedCollectionModel<Item>;

    explicit Pair(unsigned int capacity) : list_(capacity), model_(capacity) {}

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

template <class Kind>
class OrderedCollectionModelTest : public testing::Test {
  protected:
    using Item = typename Kind::Item;
    using Tested = Pair<Kind>;

    // One of a few items, so that most are there several times; at times null.
    static Item anyItem(Random& random) {
        return random.oneIn(6) ? nullptr : thing(random.below(12));
    }

    // An index inside, at the end, or a little or far past it.
    static unsigned int anyIndex(Random& random, unsigned int count) {
        if (random.oneIn(20)) return random();
        return random.below(count + 2);
    }

    static void change(Random& random, Tested& pair) {
        const Item item = anyItem(random);
        const unsigned int index = anyIndex(random, pair.count());
        switch (random.below(8)) {
            case 0:
            case 1: pair.add(item); break;
            case 2: pair.insertAt(index, item); break;
            case 3: pair.removeAt(index); break;
            case 4: pair.removeSame(item); break;
            case 5: pair.replaceAt(index, item); break;
            case 6: pair.replaceSame(item, anyItem(random)); break;
            default:
                if (random.oneIn(30)) pair.forget();
        }
    }

    static void look(Random& random, Tested& pair) {
        const int which = static_cast<int>(random.below(2));
        switch (random.below(8)) {
            case 0: pair.start(which); break;
            case 1: pair.end(which); break;
            case 2: pair.next(which), pair.next(which); break;
            case 3: pair.next(which); break;
            case 4: pair.prev(which), pair.prev(which); break;
            case 5: pair.prev(which); break;
            case 6: pair.find(anyItem(random)), pair.ends(); break;
            default: pair.idAt(anyIndex(random, pair.count()));
        }
    }

    // `capacity` gives the next capacity to set, where one is to be set.
    template <class Capacity>
    static void run(Random& random, unsigned int steps, Capacity capacity) {
        Tested pair(random.below(14));
        for (unsigned int step = 0; step < steps; ++step) {
            if (random.oneIn(40)) {
                pair.expandTo(capacity(pair));
            } else if (random.oneIn(2)) {
                change(random, pair);
            } else {
                look(random, pair);
            }
            ASSERT_TRUE(pair.agrees()) << "after step " << step;
        }
    }
};

using Kinds = testing::Types<Untyped, Objects>;
TYPED_TEST_SUITE(OrderedCollectionModelTest, Kinds, KindNames);

TYPED_TEST(OrderedCollectionModelTest, LongScriptsAgree) {
    Random random;
    for (int round = 0; round < 100; ++round) {
        this->run(random, 2000, [&](auto& pair) { return pair.count() + random.below(20); });
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(OrderedCollectionModelTest, ScriptsThatShrinkBelowTheCountAgree) {
    Random random(1);
    for (int round = 0; round < 300; ++round) {
        this->run(random, 300, [&](auto&) { return random.below(25); });
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(OrderedCollectionModelTest, GrowthAgreesOverManyItems) {
    for (unsigned int capacity = 0; capacity < 20; ++capacity) {
        Pair<TypeParam> added(capacity);
        Pair<TypeParam> inserted(capacity);
        for (unsigned int i = 0; i < 300; ++i) {
            added.add(thing(i % thingCount));
            inserted.insertAt(i / 2, thing(i % thingCount));
            ASSERT_TRUE(added.agrees() && inserted.agrees()) << i << " items from " << capacity;
        }
    }
}

// All scripts of six steps over eight steps, so all shorter ones too, as long as the collection has
// at most three items; a script is cut where a fourth would come.
template <class Kind>
class AllShortScripts {
  public:
    using Step = void (*)(Pair<Kind>&);

    AllShortScripts(unsigned int capacity, const std::vector<Step>& steps)
        : capacity_(capacity), steps_(steps) {}

    // The first script after which collection and model disagree, or "".
    std::string disagreement() { return below(0) ? std::string() : script(); }
    unsigned int scripts() const { return scripts_; }

  private:
    static constexpr unsigned int longest = 6;

    bool below(unsigned int length) {
        if (length == longest) return true;
        for (unsigned int step = 0; step < steps_.size(); ++step) {
            script_[length] = step;
            length_ = length + 1;
            Pair<Kind> pair(capacity_);
            for (unsigned int i = 0; i < length_; ++i) steps_[script_[i]](pair);
            ++scripts_;
            if (!pair.agrees()) return false;
            if (pair.count() <= 3 && !below(length + 1)) return false;
        }
        return true;
    }

    std::string script() const {
        std::string text = "capacity " + std::to_string(capacity_) + ", steps";
        for (unsigned int i = 0; i < length_; ++i) text += " " + std::to_string(script_[i]);
        return text;
    }

    unsigned int capacity_;
    std::vector<Step> steps_;
    unsigned int script_[longest] = {};
    unsigned int length_ = 0;
    unsigned int scripts_ = 0;
};

TYPED_TEST(OrderedCollectionModelTest, AllShortScriptsOfChangesAgree) {
    using P = Pair<TypeParam>;
    for (const unsigned int capacity : {0U, 2U}) {
        AllShortScripts<TypeParam> all(
            capacity,
            {[](P& pair) { pair.add(thing(0)); }, [](P& pair) { pair.insertAt(0, thing(1)); },
             [](P& pair) { pair.insertAt(1, nullptr); }, [](P& pair) { pair.removeAt(0); },
             [](P& pair) { pair.removeSame(thing(0)); },
             [](P& pair) { pair.replaceSame(thing(1), thing(0)); },
             [](P& pair) { pair.replaceAt(1, thing(1)); }, [](P& pair) { pair.expandTo(1); }});
        EXPECT_EQ(all.disagreement(), "");
        EXPECT_GT(all.scripts(), 100000U);
    }
}

TYPED_TEST(OrderedCollectionModelTest, AllShortScriptsOfCursorsAgree) {
    using P = Pair<TypeParam>;
    AllShortScripts<TypeParam> all(
        3, {[](P& pair) { pair.add(thing(0)); }, [](P& pair) { pair.insertAt(0, thing(1)); },
            [](P& pair) { pair.removeAt(0); }, [](P& pair) { pair.start(0); },
            [](P& pair) { pair.end(0); }, [](P& pair) { pair.next(0), pair.prev(1); },
            [](P& pair) { pair.prev(0), pair.next(1); }, [](P& pair) { pair.forget(); }});
    EXPECT_EQ(all.disagreement(), "");
    EXPECT_GT(all.scripts(), 100000U);
}

TYPED_TEST(OrderedCollectionModelTest, ADisagreementIsSeen) {
    using Change = void (*)(typename TypeParam::List&);
    const Change changes[] = {
        [](auto& list) { list.add(thing(2)); }, [](auto& list) { list.replaceAt(0, thing(2)); },
        [](auto& list) { list.removeAt(1); }, [](auto& list) { list.expandTo(11); }};
    for (const Change disturb : changes) {
        Pair<TypeParam> pair(10);
        pair.add(thing(0)), pair.add(thing(1)), pair.start(0);
        EXPECT_TRUE(pair.agrees());
        disturb(pair.list());
        EXPECT_FALSE(pair.agrees());
    }
    Pair<TypeParam> pair(10);
    pair.add(thing(0));
    pair.list().replaceAt(0, nullptr);
    pair.ends();
    pair.list().replaceAt(0, thing(0));
    EXPECT_FALSE(pair.agrees()) << "a wrong result is remembered";
}

}  // namespace
}  // namespace kfl_test
