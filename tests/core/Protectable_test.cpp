#include "kfl/Protectable.h"

#include <gtest/gtest.h>

namespace {

// Counts its own end, through the virtual destructor.
class Watched : public Protectable {
  public:
    explicit Watched(int& deaths) : deaths_(deaths) {}
    ~Watched() override { ++deaths_; }

  private:
    int& deaths_;
};

TEST(ProtectableTest, StartsUnshared) {
    int deaths = 0;
    const Watched object(deaths);
    EXPECT_EQ(object.referenceCount(), 0U);
}

}  // namespace
