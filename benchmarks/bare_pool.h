// The least that a pool can do whose operations are functions of a shared library and which counts
// its blocks: a list of free blocks, how many are in use, and how many were at most.
#ifndef KFL_BENCHMARKS_BARE_POOL_H
#define KFL_BENCHMARKS_BARE_POOL_H

namespace kfl_benchmark {

class BarePool {
  public:
    BarePool(unsigned int blocks, unsigned int blockSize);
    ~BarePool();
    BarePool(const BarePool&) = delete;
    BarePool& operator=(const BarePool&) = delete;

    // There must be one.
    void* take();
    void giveBack(void* block);

  private:
    char* const all_;
    void* free_;
    unsigned int inUse_;
    unsigned int maxInUse_;
};

}  // namespace kfl_benchmark

#endif
