#include "kfl/SObject.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "kfl/AString.h"
#include "kfl/Collection.h"

namespace {

class Watched : public kfl::SObject {
  public:
    explicit Watched(int& deaths) : deaths_(deaths) {}
    ~Watched() override { ++deaths_; }

  private:
    int& deaths_;
};

TEST(SObjectTest, IsDeletedWholeThroughItsBase) {
    int deaths = 0;
    const kfl::SObject* const object = new Watched(deaths);
    delete object;
    EXPECT_EQ(deaths, 1);
}

TEST(SObjectTest, CarriesNothingButItsVirtualDestructor) {
    EXPECT_EQ(sizeof(kfl::SObject), sizeof(void*));
    EXPECT_TRUE(std::has_virtual_destructor<kfl::SObject>::value);
    EXPECT_TRUE(std::is_default_constructible<kfl::SObject>::value);
}

TEST(SObjectTest, IsTheBaseOfWhatCollectionsHoldAndOfThemselves) {
    EXPECT_TRUE((std::is_base_of<kfl::SObject, kfl::AString>::value));
    EXPECT_TRUE((std::is_base_of<kfl::SObject, kfl::Collection>::value));
    EXPECT_TRUE((std::is_base_of<kfl::SObject, kfl::Iterator>::value));
}

TEST(SObjectTest, LeadsBackToTheWholeObject) {
    kfl::AString text("whole");
    kfl::SObject* const part = &text;
    EXPECT_EQ(dynamic_cast<kfl::AString*>(part), &text);
    EXPECT_EQ(dynamic_cast<void*>(part), &text);
    int deaths = 0;
    Watched other(deaths);
    EXPECT_EQ(dynamic_cast<kfl::AString*>(static_cast<kfl::SObject*>(&other)), nullptr);
}

}  // namespace
