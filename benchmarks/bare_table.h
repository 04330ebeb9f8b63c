// The least that a step and an index through a virtual table can do where both the items and the
// slots are counted, since an ordered collection may have been cut below its items.
#ifndef KFL_BENCHMARKS_BARE_TABLE_H
#define KFL_BENCHMARKS_BARE_TABLE_H

#include <memory>
#include <vector>

namespace kfl_benchmark {

struct Place {
    unsigned int position;
    void* current;
};

class Table {
  public:
    virtual ~Table();
    virtual void* at(unsigned int index) const = 0;
    // What stood at the place, which moves on.
    virtual void* next(Place& place) = 0;
};

std::shared_ptr<Table> makeBareTable(std::vector<void*> items);

}  // namespace kfl_benchmark

#endif
