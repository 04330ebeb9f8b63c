#include "kfl/Protectable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/seed.h"

namespace {

// Counts its own end, through the virtual destructor.
class Watched : public Protectable {
  public:
    explicit Watched(int& deaths) : deaths_(&deaths) {}
    Watched(const Watched&) = default;
    ~Watched() override { ++*deaths_; }

  private:
    int* deaths_;
};

// Holds another object, or itself, by a handle of its own.
class Holder : public Watched {
  public:
    using Watched::Watched;
    ProtectionElement held;
};

TEST(ProtectableTest, StartsUnshared) {
    int deaths = 0;
    const Watched object(deaths);
    EXPECT_EQ(object.referenceCount(), 0U);
}

TEST(ProtectableTest, CopyStartsUnsharedWhateverTheCountOfTheSource) {
    int deaths = 0;
    for (const std::size_t handles : {0U, 1U, 5U}) {
        auto* const source = new Watched(deaths);
        const std::vector<ProtectionElement> holding(handles + 1, ProtectionElement(source));
        ASSERT_EQ(source->referenceCount(), handles + 1);
        const Watched copy(*source);
        EXPECT_EQ(copy.referenceCount(), 0U);
        EXPECT_EQ(source->referenceCount(), handles + 1);
    }
}

TEST(ProtectableTest, DestructorDoesNotLookAtTheCount) {
    int deaths = 0;
    alignas(Watched) unsigned char place[sizeof(Watched)];
    auto* const object = new (place) Watched(deaths);
    alignas(ProtectionElement) unsigned char handle[sizeof(ProtectionElement)];
    // Never destroyed: it holds the count at 1.
    new (handle) ProtectionElement(object);
    EXPECT_EQ(object->referenceCount(), 1U);
    object->~Watched();
    EXPECT_EQ(deaths, 1);
}

TEST(ProtectableTest, CannotBeAssigned) {
    EXPECT_FALSE(std::is_copy_assignable<Protectable>::value);
    EXPECT_FALSE(std::is_move_assignable<Protectable>::value);
    EXPECT_TRUE(std::has_virtual_destructor<Protectable>::value);
    EXPECT_FALSE((std::is_base_of<Protectable, ProtectionElement>::value));
}

TEST(ProtectionElementTest, HoldsNothingWhenDefaultBuilt) {
    const ProtectionElement empty;
    EXPECT_EQ(empty.get(), nullptr);
}

TEST(ProtectionElementTest, HoldsNothingWhenBuiltFromNull) {
    const ProtectionElement empty(static_cast<Protectable*>(nullptr));
    EXPECT_EQ(empty.get(), nullptr);
    const ProtectionElement copy(empty);
    EXPECT_EQ(copy.get(), nullptr);
}

TEST(ProtectionElementTest, FirstHandleRaisesTheCountToOneAndDeletesAtItsEnd) {
    int deaths = 0;
    {
        auto* const object = new Watched(deaths);
        const ProtectionElement handle(object);
        EXPECT_EQ(handle.get(), object);
        EXPECT_EQ(object->referenceCount(), 1U);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(ProtectionElementTest, CountIsTheNumberOfHandles) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    {
        const ProtectionElement first(object);
        {
            const ProtectionElement second(first);
            const ProtectionElement third(object);
            EXPECT_EQ(second.get(), object);
            EXPECT_EQ(object->referenceCount(), 3U);
        }
        EXPECT_EQ(object->referenceCount(), 1U);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(ProtectionElementTest, DestructorLeavesThePointer) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    const ProtectionElement keeper(object);
    alignas(ProtectionElement) unsigned char place[sizeof(ProtectionElement)];
    auto* const handle = new (place) ProtectionElement(object);
    handle->~ProtectionElement();
    // What a host can still see in that memory; copied out, as the object itself is gone.
    Protectable* left = nullptr;
    std::memcpy(&left, place + sizeof(void*), sizeof left);
    EXPECT_EQ(left, object);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(ProtectionElementTest, AssignmentTakesTheNewObjectAndReleasesTheOldOne) {
    int oldDeaths = 0;
    int newDeaths = 0;
    ProtectionElement handle(new Watched(oldDeaths));
    const ProtectionElement other(new Watched(newDeaths));
    EXPECT_EQ(&(handle = other), &handle);
    EXPECT_EQ(oldDeaths, 1);
    EXPECT_EQ(newDeaths, 0);
    EXPECT_EQ(handle.get(), other.get());
    EXPECT_EQ(handle.get()->referenceCount(), 2U);
}

TEST(ProtectionElementTest, AssignmentOfAPointerDoesTheSame) {
    int oldDeaths = 0;
    int newDeaths = 0;
    ProtectionElement handle(new Watched(oldDeaths));
    auto* const object = new Watched(newDeaths);
    EXPECT_EQ(&(handle = object), &handle);
    EXPECT_EQ(oldDeaths, 1);
    EXPECT_EQ(newDeaths, 0);
    EXPECT_EQ(handle.get(), object);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(ProtectionElementTest, AssignmentLeavesASharedOldObjectAlive) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    const ProtectionElement keeper(object);
    ProtectionElement handle(object);
    handle = ProtectionElement();
    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(ProtectionElementTest, AssignmentToItselfKeepsObjectAndCount) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    ProtectionElement handle(object);
    const ProtectionElement& same = handle;
    handle = same;
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(handle.get(), object);
    EXPECT_EQ(object->referenceCount(), 1U);

    ProtectionElement empty;
    const ProtectionElement& sameEmpty = empty;
    empty = sameEmpty;
    EXPECT_EQ(empty.get(), nullptr);
}

TEST(ProtectionElementTest, AssignmentOfThePointerHeldKeepsObjectAndCount) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    ProtectionElement handle(object);
    handle = object;
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(handle.get(), object);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(ProtectionElementTest, AssignmentOfTheSameObjectThroughAnotherHandleKeepsTheCount) {
    int deaths = 0;
    auto* const object = new Watched(deaths);
    ProtectionElement first(object);
    const ProtectionElement second(object);
    first = second;
    EXPECT_EQ(object->referenceCount(), 2U);
    EXPECT_EQ(deaths, 0);
}

TEST(ProtectionElementTest, NullReleasesTheOnlyHandlesObject) {
    int deaths = 0;
    ProtectionElement handle(new Watched(deaths));
    handle = nullptr;
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(handle.get(), nullptr);

    ProtectionElement other(new Watched(deaths));
    other = ProtectionElement();
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(other.get(), nullptr);
}

TEST(ProtectionElementTest, NullIntoAnEmptyHandleDoesNothing) {
    ProtectionElement handle;
    handle = nullptr;
    EXPECT_EQ(handle.get(), nullptr);
    handle = ProtectionElement();
    EXPECT_EQ(handle.get(), nullptr);
}

TEST(ProtectionElementTest, EmptyHandleTakesAnObject) {
    int deaths = 0;
    {
        ProtectionElement handle;
        const ProtectionElement other(new Watched(deaths));
        handle = other;
        EXPECT_EQ(other.get()->referenceCount(), 2U);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(ProtectionElementTest, ReleasingTheOldObjectMayDestroyTheOtherHandle) {
    int outerDeaths = 0;
    int innerDeaths = 0;
    auto* const outer = new Holder(outerDeaths);
    auto* const inner = new Watched(innerDeaths);
    outer->held = inner;
    ProtectionElement handle(outer);
    // The right side is a member of what the assignment deletes.
    handle = outer->held;
    EXPECT_EQ(outerDeaths, 1);
    EXPECT_EQ(innerDeaths, 0);
    EXPECT_EQ(handle.get(), inner);
    EXPECT_EQ(inner->referenceCount(), 1U);
    handle = nullptr;
    EXPECT_EQ(innerDeaths, 1);
}

// Notes in its destructor what a handle held at that moment, and how often the new object counted.
class Witness : public Protectable {
  public:
    Witness(const ProtectionElement*& watched, const Protectable*& held, const Protectable*& taken,
            unsigned int& count)
        : watched_(watched), held_(held), taken_(taken), count_(count) {}
    ~Witness() override {
        held_ = watched_->get();
        count_ = taken_->referenceCount();
    }

  private:
    const ProtectionElement*& watched_;
    const Protectable*& held_;
    const Protectable*& taken_;
    unsigned int& count_;
};

TEST(ProtectionElementTest, TakesBeforeItReleasesAndPointsAfterwards) {
    int deaths = 0;
    for (const bool byPointer : {false, true}) {
        SCOPED_TRACE(byPointer);
        const ProtectionElement* watched = nullptr;
        const Protectable* held = nullptr;
        const Protectable* taken = nullptr;
        unsigned int count = 0;
        auto* const old = new Witness(watched, held, taken, count);
        ProtectionElement handle(old);
        auto* const next = new Watched(deaths);
        const ProtectionElement other(next);
        watched = &handle;
        taken = next;
        if (byPointer) {
            handle = next;
        } else {
            handle = other;
        }
        EXPECT_EQ(count, 2U);
        EXPECT_EQ(held, old);
        EXPECT_EQ(handle.get(), next);
    }
}

TEST(ProtectionElementTest, DeletesThroughTheVirtualDestructorOfASubclassOfTheHandleToo) {
    class Named : public ProtectionElement {
      public:
        Named(Protectable* object, int& deaths) : ProtectionElement(object), deaths_(deaths) {}
        ~Named() override { ++deaths_; }

      private:
        int& deaths_;
    };
    int handles = 0;
    int objects = 0;
    const ProtectionElement* const handle = new Named(new Watched(objects), handles);
    delete handle;
    EXPECT_EQ(handles, 1);
    EXPECT_EQ(objects, 1);
}

// Handles and objects chosen at random, against counts kept beside them.
TEST(ProtectionElementTest, CountsFollowAModelThroughRandomAssignments) {
    constexpr std::size_t places = 6;
    kfl_test::Random random;
    std::vector<int> deaths(places);
    std::vector<Watched*> objects(places);
    std::vector<unsigned int> counts(places);
    {
        // The handles; -1 in `holds` stands for null.
        std::vector<ProtectionElement> handles(places);
        std::vector<int> holds(places, -1);
        const auto release = [&](int object) {
            if (object < 0) return;
            const auto i = static_cast<std::size_t>(object);
            if (--counts[i] == 0) objects[i] = nullptr;
        };
        for (int step = 0; step < 3000; ++step) {
            const std::size_t to = random.below(places);
            const std::size_t from = random.below(places);
            const int deadBefore = deaths[from];
            if (random.oneIn(6)) {
                handles[to] = nullptr;
                release(std::exchange(holds[to], -1));
            } else if (random.oneIn(3)) {
                if (!objects[from]) objects[from] = new Watched(deaths[from]);
                ++counts[from];
                release(std::exchange(holds[to], static_cast<int>(from)));
                handles[to] = objects[from];
                ASSERT_EQ(deaths[from], deadBefore);
            } else {
                handles[to] = handles[from];
                const int taken = holds[from];
                if (taken >= 0) ++counts[static_cast<std::size_t>(taken)];
                release(std::exchange(holds[to], taken));
            }
            for (std::size_t i = 0; i < places; ++i) {
                if (objects[i]) {
                    ASSERT_EQ(objects[i]->referenceCount(), counts[i]);
                }
                const Protectable* const held =
                    holds[i] < 0 ? nullptr : objects[static_cast<std::size_t>(holds[i])];
                ASSERT_EQ(handles[i].get(), held);
            }
        }
        std::vector<int> before = deaths;
        for (std::size_t i = 0; i < places; ++i) before[i] += counts[i] > 0 ? 1 : 0;
        handles.clear();
        EXPECT_EQ(deaths, before);
    }
}

}  // namespace
