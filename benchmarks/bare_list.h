// The least that an append of a shared library can do where a list grows by half of its room.
#ifndef KFL_BENCHMARKS_BARE_LIST_H
#define KFL_BENCHMARKS_BARE_LIST_H

namespace kfl_benchmark {

class BareList {
  public:
    BareList();
    ~BareList();
    BareList(const BareList&) = delete;
    BareList& operator=(const BareList&) = delete;

    void add(void* item);
    void* const* slots() const { return slots_; }

  private:
    void** slots_;
    unsigned int room_;
    unsigned int count_;
};

}  // namespace kfl_benchmark

#endif
