// An object whose end is noted.
#ifndef KFL_TESTS_COLLECTIONS_TRACKED_H
#define KFL_TESTS_COLLECTIONS_TRACKED_H

#include <functional>
#include <string>
#include <utility>

#include "kfl/SObject.h"

namespace kfl_test {

// Writes its name into `deaths` when it is deleted, after it did what was asked of it for then.
class Tracked : public kfl::SObject {
  public:
    Tracked(char name, std::string& deaths, std::function<void()> atEnd = {})
        : name_(name), deaths_(deaths), atEnd_(std::move(atEnd)) {}
    ~Tracked() override {
        if (atEnd_) atEnd_();
        deaths_ += name_;
    }
    Tracked(const Tracked&) = delete;
    Tracked& operator=(const Tracked&) = delete;

  private:
    char name_;
    std::string& deaths_;
    std::function<void()> atEnd_;
};

}  // namespace kfl_test

#endif
