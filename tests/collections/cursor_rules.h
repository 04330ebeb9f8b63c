// The rules of the cursors of both ordered collections, and of the calls that a collection makes to
// itself through the virtual table.
#ifndef KFL_TESTS_COLLECTIONS_CURSOR_RULES_H
#define KFL_TESTS_COLLECTIONS_CURSOR_RULES_H

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

#include "tests/collections/kinds.h"

namespace kfl_test {

// A collection that writes down each virtual call, and answers as it was told to.
template <class Kind>
class Overriding : public Kind::List {
  public:
    using List = typename Kind::List;
    using Item = typename Kind::Item;
    using Cursor = typename Kind::Cursor;

    Item add(Item item) override { return noted("add"), List::add(item); }
    Item findSame(Item item) override { return noted("findSame"), List::findSame(item); }
    unsigned int count() const override {
        noted("count");
        return countGiven ? givenCount : List::count();
    }
    Item start(Cursor& it) override {
        noted("start");
        startedOn = it.collection;
        const Item item = List::start(it);
        if (!startGiven) return item;
        it.position = 1;
        return it.current = givenStart;
    }
    Item end(Cursor& it) override { return noted("end"), List::end(it); }
    Item next(Cursor& it) override { return noted("next"), List::next(it); }
    Item prev(Cursor& it) override { return noted("prev"), List::prev(it); }
    Item insertAt(unsigned int index, Item item) override {
        return noted("insertAt"), List::insertAt(index, item);
    }
    Item removeAt(unsigned int index) override {
        noted("removeAt", index);
        return removeGiven ? givenRemoved : List::removeAt(index);
    }
    Item replaceAt(unsigned int index, Item item) override {
        noted("replaceAt", index);
        return replaceGiven ? nullptr : List::replaceAt(index, item);
    }
    int indexOfSame(Item item) const override {
        noted("indexOfSame");
        return indexGiven ? givenIndex : List::indexOfSame(item);
    }
    Item idAt(unsigned int index) const override {
        noted("idAt", index);
        return itemGiven ? givenItem : List::idAt(index);
    }
    void expandTo(unsigned int capacity) override { noted("expandTo"), List::expandTo(capacity); }
    // What was called since the last time.
    std::string calls() { return std::exchange(calls_, std::string()); }

    bool countGiven = false, startGiven = false, removeGiven = false;
    bool replaceGiven = false, indexGiven = false, itemGiven = false;
    unsigned int givenCount = 0;
    int givenIndex = -1;
    Item givenStart = nullptr;
    Item givenRemoved = nullptr;
    Item givenItem = nullptr;
    // The collection of the last cursor that was to start.
    const typename Kind::Base* startedOn = nullptr;

  private:
    void noted(const char* call) const {
        calls_ += calls_.empty() ? call : std::string(" ") + call;
    }
    void noted(const char* call, unsigned int index) const {
        noted((call + std::string("(") + std::to_string(index) + ")").c_str());
    }
    mutable std::string calls_;
};

template <class Kind>
class CursorTest : public testing::Test {
  protected:
    using Item = typename Kind::Item;
    using Cursor = typename Kind::Cursor;

    CursorTest() {
        for (const Item item : {a, b, c}) list.add(item);
        for (const Item item : {a, b, c}) watched.add(item);
        watched.calls();
        list.start(it);
    }
    void expectAt(unsigned int position, Item current) const {
        EXPECT_EQ(it.position, position);
        EXPECT_EQ(it.current, current);
        EXPECT_EQ(it.collection, &list);
    }

    const Item a = thing(40);
    const Item b = thing(41);
    const Item c = thing(42);
    const Item d = thing(43);
    typename Kind::List list;
    Cursor it{list};
    Overriding<Kind> watched;
    Overriding<Kind> nothing;
};

TYPED_TEST_SUITE_P(CursorTest);

TYPED_TEST_P(CursorTest, NewOneStandsOnTheFirstItem) {
    const typename TypeParam::Cursor byReference(this->list);
    EXPECT_EQ(byReference.position, 0U);
    EXPECT_EQ(byReference.current, this->a);
    EXPECT_EQ(byReference.collection, &this->list);
    const typename TypeParam::Cursor byPointer(&this->list);
    EXPECT_EQ(byPointer.position, 0U);
    EXPECT_EQ(byPointer.current, this->a);
    EXPECT_EQ(byPointer.collection, &this->list);
}

TYPED_TEST_P(CursorTest, NewOneKnowsItsCollectionWhenThatStartsIt) {
    auto& own = this->watched;
    const typename TypeParam::Cursor byReference(own);
    EXPECT_EQ(own.startedOn, &own);
    own.startedOn = nullptr;
    const typename TypeParam::Cursor byPointer(&own);
    EXPECT_EQ(own.startedOn, &own);
}

TYPED_TEST_P(CursorTest, NewOneOnAnEmptyCollectionStandsOnNothing) {
    const typename TypeParam::Cursor on(this->nothing);
    EXPECT_EQ(on.position, 0U);
    EXPECT_EQ(on.current, nullptr);
    EXPECT_EQ(on.collection, &this->nothing);
}

TYPED_TEST_P(CursorTest, NullCollectionGivesACursorOnNothing) {
    typename TypeParam::Base* const none = nullptr;
    const typename TypeParam::Cursor on(none);
    EXPECT_EQ(on.position, 0U);
    EXPECT_EQ(on.current, nullptr);
    EXPECT_EQ(on.collection, nullptr);
}

TYPED_TEST_P(CursorTest, ForwardWalkGivesEachItemThenNullForEver) {
    EXPECT_EQ(this->list.next(this->it), this->a);
    this->expectAt(1, this->b);
    EXPECT_EQ(this->list.next(this->it), this->b);
    EXPECT_EQ(this->list.next(this->it), this->c);
    this->expectAt(3, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(this->list.next(this->it), nullptr);
        this->expectAt(3, nullptr);
    }
}

TYPED_TEST_P(CursorTest, BackwardWalkGivesEachItemThenNullForEver) {
    EXPECT_EQ(this->list.end(this->it), this->c);
    this->expectAt(2, this->c);
    EXPECT_EQ(this->list.prev(this->it), this->c);
    EXPECT_EQ(this->list.prev(this->it), this->b);
    this->expectAt(0, this->a);
    EXPECT_EQ(this->list.prev(this->it), this->a);
    for (int i = 0; i < 3; ++i) {
        this->expectAt(0, nullptr);
        EXPECT_EQ(this->list.prev(this->it), nullptr);
    }
}

TYPED_TEST_P(CursorTest, AfterTheFrontNextGivesNullAndMovesToTheSecondItem) {
    this->list.prev(this->it);
    this->expectAt(0, nullptr);
    EXPECT_EQ(this->list.next(this->it), nullptr);
    this->expectAt(1, this->b);
    EXPECT_EQ(this->list.next(this->it), this->b);
}

TYPED_TEST_P(CursorTest, AfterTheEndPrevGivesNullAndMovesToTheLastItem) {
    for (int i = 0; i < 5; ++i) this->list.next(this->it);
    EXPECT_EQ(this->list.prev(this->it), nullptr);
    this->expectAt(2, this->c);
    EXPECT_EQ(this->list.prev(this->it), this->c);
}

TYPED_TEST_P(CursorTest, StartAndEndSetTheCursorAnew) {
    this->list.next(this->it);
    EXPECT_EQ(this->list.start(this->it), this->a);
    this->expectAt(0, this->a);
    EXPECT_EQ(this->list.end(this->it), this->c);
    this->expectAt(2, this->c);
    TypeParam::forget(this->list);
    EXPECT_EQ(this->list.end(this->it), nullptr);
    this->expectAt(0, nullptr);
    this->it.position = 7;
    EXPECT_EQ(this->list.start(this->it), nullptr);
    this->expectAt(0, nullptr);
}

TYPED_TEST_P(CursorTest, AStepGivesWhatTheCursorStoodOnWhateverHappenedSince) {
    this->list.removeAt(0);
    EXPECT_EQ(this->list.next(this->it), this->a) << "gone from the list, not from the cursor";
    this->expectAt(1, this->c);
    this->list.insertAt(0, this->d);
    EXPECT_EQ(this->list.prev(this->it), this->c);
    this->expectAt(0, this->d);
}

TYPED_TEST_P(CursorTest, PastAListThatBecameShorter) {
    this->list.end(this->it);
    this->list.removeAt(0);
    this->list.removeAt(0);
    EXPECT_EQ(this->list.next(this->it), this->c);
    this->expectAt(2, nullptr);
    EXPECT_EQ(this->list.prev(this->it), nullptr);
    this->expectAt(1, nullptr);
    EXPECT_EQ(this->list.prev(this->it), nullptr);
    this->expectAt(0, this->c);
}

TYPED_TEST_P(CursorTest, AListThatBecameLongerGoesOn) {
    for (int i = 0; i < 4; ++i) this->list.next(this->it);
    this->list.add(this->d);
    this->expectAt(3, nullptr);
    EXPECT_EQ(this->list.next(this->it), nullptr);
    this->expectAt(4, nullptr);
}

TYPED_TEST_P(CursorTest, AStoredNullLooksLikeTheEndButIsPassed) {
    this->list.replaceAt(1, nullptr);
    EXPECT_EQ(this->list.next(this->it), this->a);
    EXPECT_EQ(this->list.next(this->it), nullptr);
    EXPECT_EQ(this->list.next(this->it), this->c);
}

TYPED_TEST_P(CursorTest, PrevAtANegativePositionLeavesThePosition) {
    for (const unsigned int position : {0x80000000U, 0x80000001U, UINT_MAX}) {
        this->it.position = position;
        this->it.current = this->b;
        EXPECT_EQ(this->list.prev(this->it), this->b);
        this->expectAt(position, nullptr);
        EXPECT_EQ(this->list.prev(this->it), nullptr);
        this->expectAt(position, nullptr);
    }
}

TYPED_TEST_P(CursorTest, FarOutPositionsReadNull) {
    this->it.position = INT_MAX;
    EXPECT_EQ(this->list.prev(this->it), this->a);
    this->expectAt(INT_MAX - 1, nullptr);
    this->it.position = UINT_MAX;
    EXPECT_EQ(this->list.next(this->it), nullptr);
    this->expectAt(UINT_MAX, nullptr);
}

TYPED_TEST_P(CursorTest, TwoCursorsDoNotDisturbEachOther) {
    typename TypeParam::Cursor other(this->list);
    this->list.next(this->it);
    this->list.end(other);
    this->expectAt(1, this->b);
    EXPECT_EQ(this->list.prev(other), this->c);
    typename TypeParam::Cursor copy(this->it);
    EXPECT_EQ(this->list.next(copy), this->b);
    this->expectAt(1, this->b);
}

TYPED_TEST_P(CursorTest, FirstAndLastGiveTheOutermostItems) {
    typename TypeParam::Base& base = this->list;
    EXPECT_EQ(base.first(), this->a);
    EXPECT_EQ(base.last(), this->c);
    this->list.removeAt(2);
    this->list.removeAt(0);
    EXPECT_EQ(base.first(), this->b);
    EXPECT_EQ(base.last(), this->b);
}

TYPED_TEST_P(CursorTest, EachOperationCallsItselfAsPromised) {
    auto& own = this->watched;
    typename TypeParam::Cursor on(own);
    EXPECT_EQ(own.calls(), "start");
    typename TypeParam::Cursor byPointer(&own);
    EXPECT_EQ(own.calls(), "start");
    own.first();
    EXPECT_EQ(own.calls(), "start next");
    own.last();
    EXPECT_EQ(own.calls(), "count start end prev");
    own.end(on), own.next(on), own.prev(on);
    EXPECT_EQ(own.calls(), "end next prev");
    own.replaceSame(this->b, this->d);
    EXPECT_EQ(own.calls(), "indexOfSame idAt(1) replaceAt(1) idAt(1)");
    own.replaceSame(this->b, this->d);
    EXPECT_EQ(own.calls(), "indexOfSame idAt(4294967295)") << "asked for an absent item too";
    own.replaceAt(3, this->d);
    EXPECT_EQ(own.calls(), "replaceAt(3)");
    own.removeSame(this->d);
    EXPECT_EQ(own.calls(), "indexOfSame removeAt(1) count");
    own.removeSame(this->d);
    EXPECT_EQ(own.calls(), "indexOfSame");
    own.add(this->b), own.insertAt(0, this->b), own.findSame(this->b), own.expandTo(2);
    for (int i = 0; i < 30; ++i) own.add(this->b);
    EXPECT_EQ(own.calls().substr(0, 36), "add insertAt findSame expandTo add a");
    TypeParam::forget(own);
    EXPECT_EQ(own.calls(), "");
}

TYPED_TEST_P(CursorTest, AnEmptyCollectionCallsItselfAsPromised) {
    auto& own = this->nothing;
    typename TypeParam::Cursor on(own);
    own.calls();
    own.end(on);
    EXPECT_EQ(own.calls(), "end start");
    own.last();
    EXPECT_EQ(own.calls(), "count");
    own.first();
    EXPECT_EQ(own.calls(), "start next");
}

TYPED_TEST_P(CursorTest, AnOverriddenCountBoundsRemoveAtAndLast) {
    auto& own = this->watched;
    own.countGiven = true;
    EXPECT_EQ(own.removeAt(0), nullptr);
    EXPECT_EQ(own.last(), nullptr);
    own.givenCount = 1;
    EXPECT_EQ(own.removeAt(1), nullptr);
    EXPECT_EQ(own.last(), this->c) << "end goes by the items stored";
    EXPECT_EQ(own.removeSame(this->c), nullptr);
    EXPECT_EQ(own.idAt(2), this->c) << "nothing else asks for the count";
    EXPECT_EQ(own.removeAt(0), this->a);
}

TYPED_TEST_P(CursorTest, AnOverriddenCountBeyondTheItemsRemovesTheLastOne) {
    auto& own = this->watched;
    own.countGiven = true;
    own.givenCount = 100;
    EXPECT_EQ(own.removeAt(5), nullptr);
    own.countGiven = false;
    EXPECT_EQ(own.count(), 2U);
    EXPECT_EQ(own.idAt(1), this->b);
    EXPECT_EQ(own.data()[2], nullptr);
    own.countGiven = true;
    EXPECT_EQ(own.removeAt(50), nullptr) << "past the capacity as well";
    EXPECT_EQ(own.removeAt(0), this->a);
    EXPECT_EQ(own.removeAt(0), nullptr);
    EXPECT_EQ(own.removeAt(7), nullptr);
    own.countGiven = false;
    EXPECT_EQ(own.count(), 0U) << "an empty one stays empty";
}

TYPED_TEST_P(CursorTest, AnOverriddenIndexOfSameLeadsRemoveSameAndReplaceSame) {
    auto& own = this->watched;
    own.indexGiven = true;
    own.givenIndex = 2;
    EXPECT_EQ(own.replaceSame(this->a, this->d), this->c);
    EXPECT_EQ(own.idAt(2), this->d);
    own.givenIndex = 1;
    EXPECT_EQ(own.removeSame(nullptr), this->b);
    own.givenIndex = -5;
    EXPECT_EQ(own.removeSame(this->a), nullptr);
    own.calls();
    EXPECT_EQ(own.replaceSame(this->a, this->b), nullptr);
    EXPECT_EQ(own.calls(), "indexOfSame idAt(4294967291)");
    EXPECT_EQ(own.findSame(this->a), this->a) << "findSame does not ask it";
}

TYPED_TEST_P(CursorTest, AnOverriddenIdAtAnswersForReplaceAtAndReplaceSame) {
    auto& own = this->watched;
    own.itemGiven = true;
    own.givenItem = this->d;
    EXPECT_EQ(own.replaceAt(0, this->b), this->d);
    EXPECT_EQ(own.data()[0], this->b);
    EXPECT_EQ(own.replaceSame(this->c, this->a), this->d);
    EXPECT_EQ(own.data()[2], this->a);
    EXPECT_EQ(own.replaceSame(thing(0), this->a), this->d) << "also for an absent item";
    EXPECT_EQ(own.replaceAt(3, this->a), nullptr) << "not asked past the end";
    EXPECT_EQ(own.removeAt(0), this->b) << "removal reads the slot";
    EXPECT_EQ(own.first(), this->b) << "so does the cursor";
    EXPECT_EQ(own.last(), this->a);
}

TYPED_TEST_P(CursorTest, AnOverriddenRemoveAtDoesTheWorkOfRemoveSame) {
    auto& own = this->watched;
    own.removeGiven = true;
    own.givenRemoved = this->d;
    EXPECT_EQ(own.removeSame(this->b), this->d);
    EXPECT_EQ(own.count(), 3U);
    EXPECT_EQ(own.removeSame(this->d), nullptr);
}

TYPED_TEST_P(CursorTest, AnOverriddenReplaceAtDoesTheWorkOfReplaceSame) {
    auto& own = this->watched;
    own.replaceGiven = true;
    EXPECT_EQ(own.replaceSame(this->b, this->d), this->b) << "the result is idAt's";
    EXPECT_EQ(own.idAt(1), this->b);
}

TYPED_TEST_P(CursorTest, AnOverriddenStartLeadsFirstAndAnEmptyEnd) {
    auto& own = this->watched;
    own.startGiven = true;
    own.givenStart = this->d;
    EXPECT_EQ(own.first(), this->d);
    EXPECT_EQ(own.last(), this->c);
    typename TypeParam::Cursor on(own);
    EXPECT_EQ(on.current, this->d);
    EXPECT_EQ(own.next(on), this->d);
    EXPECT_EQ(on.current, this->c) << "the override stands at position 1";
    TypeParam::forget(own);
    EXPECT_EQ(own.end(on), this->d);
    EXPECT_EQ(on.position, 1U);
}

REGISTER_TYPED_TEST_SUITE_P(
    CursorTest, NewOneStandsOnTheFirstItem, NewOneKnowsItsCollectionWhenThatStartsIt,
    NewOneOnAnEmptyCollectionStandsOnNothing, NullCollectionGivesACursorOnNothing,
    ForwardWalkGivesEachItemThenNullForEver, BackwardWalkGivesEachItemThenNullForEver,
    AfterTheFrontNextGivesNullAndMovesToTheSecondItem,
    AfterTheEndPrevGivesNullAndMovesToTheLastItem, StartAndEndSetTheCursorAnew,
    AStepGivesWhatTheCursorStoodOnWhateverHappenedSince, PastAListThatBecameShorter,
    AListThatBecameLongerGoesOn, AStoredNullLooksLikeTheEndButIsPassed,
    PrevAtANegativePositionLeavesThePosition, FarOutPositionsReadNull,
    TwoCursorsDoNotDisturbEachOther, FirstAndLastGiveTheOutermostItems,
    EachOperationCallsItselfAsPromised, AnEmptyCollectionCallsItselfAsPromised,
    AnOverriddenCountBoundsRemoveAtAndLast, AnOverriddenCountBeyondTheItemsRemovesTheLastOne,
    AnOverriddenIndexOfSameLeadsRemoveSameAndReplaceSame,
    AnOverriddenIdAtAnswersForReplaceAtAndReplaceSame, AnOverriddenRemoveAtDoesTheWorkOfRemoveSame,
    AnOverriddenReplaceAtDoesTheWorkOfReplaceSame, AnOverriddenStartLeadsFirstAndAnEmptyEnd);

}  // namespace kfl_test

#endif
