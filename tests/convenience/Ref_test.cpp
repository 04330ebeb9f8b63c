#include "kfl/convenience/Ref.h"
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "kfl/AString.h"
#include "kfl/KeyValue.h"

namespace {

using kfl::Ref;

// Counts its ends.
class Counted : public Protectable {
  public:
    explicit Counted(int& ended) : ended_(ended) {}
    ~Counted() override { ++ended_; }

  private:
    int& ended_;
};

class Derived : public Counted {
  public:
    using Counted::Counted;
    int number = 5;
};

TEST(RefTest, TheLastOneDeletesTheObject) {
    int ended = 0;
    {
        const Ref<Counted> first(new Counted(ended));
        EXPECT_EQ(first.referenceCount(), 1U);
        Ref<Counted> second(first);
        const Ref<Counted> third = second;
        EXPECT_EQ(first.referenceCount(), 3U);
        EXPECT_EQ(second, first);
        second = nullptr;
        EXPECT_EQ(first.referenceCount(), 2U);
        EXPECT_NE(second, first);
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
}

TEST(RefTest, HoldsNothingAtFirst) {
    const Ref<Counted> none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_EQ(none.referenceCount(), 0U);
    EXPECT_EQ(none.element().get(), nullptr);
    EXPECT_FALSE(Ref<Counted>(nullptr));
}

TEST(RefTest, LeadsToTheObject) {
    Ref<kfl::NameValuePair> pair(new kfl::NameValuePair("a", "b"));
    pair->value.append("c");
    EXPECT_STREQ((*pair).value.c_str(), "bc");
    // Assigned to itself, it stays.
    pair = pair.get();
    const Ref<kfl::NameValuePair>& same = pair;
    pair = same;
    EXPECT_EQ(pair.referenceCount(), 1U);
}

TEST(RefTest, SharesWithUntypedHandles) {
    int ended = 0;
    {
        Ref<Derived> typed(new Derived(ended));
        const ProtectionElement untyped = typed.element();
        EXPECT_EQ(typed.referenceCount(), 2U);
        typed = nullptr;
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
}

TEST(RefTest, ConvertsToABaseAndNotBack) {
    int ended = 0;
    const Ref<Derived> derived(new Derived(ended));
    const Ref<Counted> base = derived;
    EXPECT_EQ(base, derived);
    EXPECT_EQ(derived.referenceCount(), 2U);
    EXPECT_EQ(derived->number, 5);
    EXPECT_FALSE((std::is_convertible<Counted*, Ref<Counted>>::value));
    EXPECT_FALSE((std::is_convertible<Ref<Counted>, ProtectionElement>::value));
}

TEST(RefTest, TakesTheOldObjectAwayAtAnAssignment) {
    int ended = 0;
    Ref<Counted> ref(new Counted(ended));
    ref = new Counted(ended);
    EXPECT_EQ(ended, 1);
    Ref<Counted> other;
    other = std::move(ref);
    EXPECT_TRUE(other);
}

}  // namespace
