// A source of its own: the calls cannot be seen through.
#include "benchmarks/bare_list.h"

#include <algorithm>

namespace kfl_benchmark {
namespace {

// As many as a collection begins with.
constexpr unsigned int firstRoom = 10;

// Empty slots are null.
[[gnu::noinline]] void** grown(void** slots, unsigned int& room) {
    void** const more = new void*[room + room / 2]();
    std::copy(slots, slots + room, more);
    delete[] slots;
    room += room / 2;
    return more;
}

}  // namespace

BareList::BareList() : slots_(new void*[firstRoom]()), room_(firstRoom), count_(0) {}

BareList::~BareList() { delete[] slots_; }

void BareList::add(void* item) {
    if (count_ == room_) slots_ = grown(slots_, room_);
    slots_[count_++] = item;
}

}  // namespace kfl_benchmark
