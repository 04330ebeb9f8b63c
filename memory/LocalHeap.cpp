#include "kfl/LocalHeap.h"

#include <stdlib.h>

#include <cstdint>
#include <cstring>

#include "core/allocation.h"
#include "core/halt.h"
#include "core/small_code.h"

namespace {

// A pool begins with a word that points to the next pool; a slot is such a word, which points to
// the next free slot while the slot is free, and the block behind it. Odd block sizes misalign the
// words, so they are read and written bytewise.
constexpr unsigned wordSize = sizeof(void*);

void* readWord(const void* place) {
    void* word;
    std::memcpy(&word, place, wordSize);
    return word;
}

// A null block is not checked, by promise: then the place may be null as far as analysis can see.
// NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
void writeWord(void* place, void* word) { std::memcpy(place, &word, wordSize); }

// Takes the first slot off a free list, and gives the block behind its word.
void* takeBlock(void*& freeList) {
    void* const slot = freeList;
    freeList = readWord(slot);
    return static_cast<char*>(slot) + wordSize;
}

char* slotOf(void* block) {
    // cppcheck-suppress nullPointerArithmeticRedundantCheck ; only a delete asks for null
    return static_cast<char*>(block) - wordSize;
}

// Puts a slot in front of a free list.
void giveBack(void*& freeList, unsigned& blocksInUse, char* slot) {
    writeWord(slot, freeList);
    freeList = slot;
    --blocksInUse;
}

// Out of line: the usual way needs no stack.
// Kept on purpose: the release does not end the call.
[[gnu::noinline]] void giveBackForeign(void*& freeList, unsigned& blocksInUse, void* block) {
    char* const slot = slotOf(block);
    if (block) delete[] static_cast<char*>(block);
    giveBack(freeList, blocksInUse, slot);
}

// The first slot of a pool; null where there are none.
char* firstSlot(void* pool, unsigned slots) {
    return slots > 0 ? static_cast<char*>(pool) + wordSize : nullptr;
}

}  // namespace

LocalHeap::LocalHeap(unsigned blocksPerPool_, unsigned blockSize_,
                     LocalHeap::AllocateMethod method_)
    : method(method_),
      blocksPerPool(blocksPerPool_),
      blockSize(blockSize_),
      firstPool(nullptr),
      lastPool(nullptr),
      freeList(nullptr),
      blocksInUse(0),
      maxBlocksInUse(0) {
    if (method == Preallocate) initialize();
}

LocalHeap::~LocalHeap() {
    for (void* pool = firstPool; pool;) {
        void* const next = readWord(pool);
        free(pool);
        pool = next;
    }
}

[[gnu::noinline]] void LocalHeap::initialize() {
    firstPool = lastPool = createPool();
    if (firstPool) freeList = firstSlot(firstPool, blocksPerPool);
}

// Pools are made seldom: their code stays out of the way of the blocks.
[[gnu::noinline]] void* LocalHeap::createPool() {
    const std::uint64_t stride = std::uint64_t{blockSize} + wordSize;
    // The first comparison keeps the product of the second within 64 bits.
    if (stride > UINT32_MAX || stride * blocksPerPool > UINT32_MAX - wordSize) return nullptr;
    void* const pool = malloc(static_cast<std::size_t>(wordSize + stride * blocksPerPool));
    if (!pool) return nullptr;

    writeWord(pool, nullptr);
    char* slot = firstSlot(pool, blocksPerPool);
    for (unsigned i = 1; i < blocksPerPool; ++i, slot += stride) writeWord(slot, slot + stride);
    if (slot) writeWord(slot, nullptr);
    return pool;
}

[[gnu::aligned(kfl::detail::shortFunctionAlignment)]] void* LocalHeap::allocateBlock(
    unsigned size) {
    if (size != blockSize) return kfl::detail::allocateArray(size);

    // Kept on purpose: counted before it is known that there is a block.
    if (++blocksInUse > maxBlocksInUse) maxBlocksInUse = blocksInUse;
    if (firstPool && freeList) return takeBlock(freeList);

    // Out of line: the usual way needs no stack.
    constexpr auto takeFromNew = [](LocalHeap & heap) __attribute__((noinline)) {
        if (!heap.firstPool) {
            heap.initialize();
        } else if (heap.method == GrowOnDemand) {
            if (void* const pool = heap.createPool()) {
                writeWord(heap.lastPool, pool);
                heap.lastPool = pool;
                heap.freeList = firstSlot(pool, heap.blocksPerPool);
            }
        }
        if (!heap.freeList) kfl::detail::haltForever();
        return takeBlock(heap.freeList);
    };
    return takeFromNew(*this);
}

[[gnu::aligned(kfl::detail::shortFunctionAlignment)]] void LocalHeap::deallocateBlock(
    void* block, unsigned size) {
    if (size != blockSize) return giveBackForeign(freeList, blocksInUse, block);
    giveBack(freeList, blocksInUse, slotOf(block));
}
