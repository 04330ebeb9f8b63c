#include "core/owner.h"

#include <gtest/gtest.h>

namespace {

struct Counted {
    explicit Counted(int& counter) : deletions(counter) {}
    ~Counted() { ++deletions; }
    int& deletions;
};

TEST(OwnerTest, DeletesWhatWasNotReleased) {
    int deletions = 0;
    {
        const kfl::detail::Owner<Counted> owner(new Counted(deletions));
        EXPECT_EQ(&owner->deletions, &deletions);
        EXPECT_EQ(owner.get()->deletions, 0);
    }
    EXPECT_EQ(deletions, 1);
}

TEST(OwnerTest, LeavesWhatWasReleased) {
    int deletions = 0;
    Counted* object = nullptr;
    {
        kfl::detail::Owner<Counted> owner(new Counted(deletions));
        object = owner.release();
        EXPECT_EQ(owner.get(), nullptr);
    }
    EXPECT_EQ(deletions, 0);
    delete object;
}

}  // namespace
