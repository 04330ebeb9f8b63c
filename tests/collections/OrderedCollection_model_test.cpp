// The ordered collections beside a plain model: long random scripts, and every short one.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/collections/kinds.h"
#include "tests/collections/ordered_collection_pair.h"
#include "tests/support/seed.h"

namespace kfl_test {
namespace {

template <class Kind>
class OrderedCollectionModelTest : public testing::Test {
  protected:
    using Item = typename Kind::Item;
    using Tested = CollectionPair<Kind>;

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
        CollectionPair<TypeParam> added(capacity);
        CollectionPair<TypeParam> inserted(capacity);
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
    using Step = void (*)(CollectionPair<Kind>&);

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
            CollectionPair<Kind> pair(capacity_);
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
    using P = CollectionPair<TypeParam>;
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
    using P = CollectionPair<TypeParam>;
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
        CollectionPair<TypeParam> pair(10);
        pair.add(thing(0)), pair.add(thing(1)), pair.start(0);
        EXPECT_TRUE(pair.agrees());
        disturb(pair.list());
        EXPECT_FALSE(pair.agrees());
    }
    CollectionPair<TypeParam> pair(10);
    pair.add(thing(0));
    pair.list().replaceAt(0, nullptr);
    pair.ends();
    pair.list().replaceAt(0, thing(0));
    EXPECT_FALSE(pair.agrees()) << "a wrong result is remembered";
}

}  // namespace
}  // namespace kfl_test
