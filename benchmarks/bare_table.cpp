// A source of its own: the calls cannot be seen through.
#include "benchmarks/bare_table.h"

#include <utility>

namespace kfl_benchmark {

Table::~Table() = default;

namespace {

class BareTable final : public Table {
  public:
    explicit BareTable(std::vector<void*> items)
        : items_(std::move(items)),
          slots_(items_.data()),
          room_(static_cast<unsigned int>(items_.size())),
          count_(room_) {}

    void* at(unsigned int index) const override {
        return index < count_ && index < room_ ? slots_[index] : nullptr;
    }

    void* next(Place& place) override {
        void* const old = place.current;
        if (place.position < count_) {
            ++place.position;
            place.current = at(place.position);
        } else {
            place.current = nullptr;
        }
        return old;
    }

  private:
    std::vector<void*> items_;
    void** slots_;
    unsigned int room_;
    unsigned int count_;
};

}  // namespace

std::shared_ptr<Table> makeBareTable(std::vector<void*> items) {
    return std::make_shared<BareTable>(std::move(items));
}

}  // namespace kfl_benchmark
