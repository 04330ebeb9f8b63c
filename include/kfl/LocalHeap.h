// Memory blocks of one fixed size, from pools that are allocated in one piece.
//
//     LocalHeap heap(64, sizeof(Packet), LocalHeap::GrowOnDemand);
//     void* block = heap.allocateBlock(sizeof(Packet));
//     heap.deallocateBlock(block, sizeof(Packet));
//
// Taking and giving back a block costs a pointer exchange. A new pool hands out its blocks from the
// lowest address up; blocks given back are used again first, the last one first. Pools are kept
// until the heap is destroyed. Each block has a header of one pointer in front of it, so a block is
// aligned only as `blockSize` allows: for blocks that hold more than bytes, it should be a multiple
// of a pointer's size. Blocks are not cleared. A heap is not locked: one thread at a time uses it.
#ifndef KFL_LOCALHEAP_H
#define KFL_LOCALHEAP_H

#include "kfl/export.h"

// The pools, the blocks that are free, and the counts of those in use.
class KFL_EXPORT LocalHeap {
  public:
    // When pools are made. With any other value the first allocation makes the only pool.
    enum AllocateMethod : int {
        // The first allocation makes a pool, and so does each that finds no free block.
        GrowOnDemand = 0,
        // The constructor makes the only pool.
        Preallocate = 1
    };

    // A heap of pools with `blocksPerPool` blocks of `blockSize` bytes.
    // Requires: blocksPerPool > 0; a heap without blocks halts at the first allocation.
    LocalHeap(unsigned blocksPerPool, unsigned blockSize, LocalHeap::AllocateMethod method);
    // Releases the pools; blocks still in use become invalid.
    virtual ~LocalHeap();

    LocalHeap(const LocalHeap&) = delete;
    LocalHeap& operator=(const LocalHeap&) = delete;

    // Makes the first pool. The constructor and the first allocation call it.
    // Requires: no pool yet; one that stands would be forgotten.
    void initialize();
    // Allocates and lays out a pool, and returns it; it is not yet part of the heap. Null when
    // there is no memory, or when a pool would have more than 32 bits of bytes.
    void* createPool();
    // A block of `size` bytes. Any size but the heap's own comes from array new and is not counted.
    // Kept on purpose: where no block is free and no pool can be made, the call never returns. It
    // stops the calling thread, without burning the processor.
    void* allocateBlock(unsigned size);
    // Takes a block back.
    // Requires: a block of this heap, not null, and exactly its block size.
    // Kept on purpose: a block of any other `size` is released by array delete and linked into the
    // free list all the same.
    void deallocateBlock(void* block, unsigned size);

    // Blocks handed out and not yet given back.
    unsigned inUse() const { return blocksInUse; }
    // The most that there ever were.
    unsigned maxInUse() const { return maxBlocksInUse; }

  private:
    AllocateMethod method;
    unsigned blocksPerPool;
    unsigned blockSize;
    void* firstPool;
    void* lastPool;
    void* freeList;
    unsigned blocksInUse;
    unsigned maxBlocksInUse;
};

#endif
