// What stands in front of the blocks of a LocalHeap, read as a host would find it in memory.
#ifndef KFL_TESTS_HEAP_WORDS_H
#define KFL_TESTS_HEAP_WORDS_H

#include <cstring>
#include <vector>

#include "kfl/LocalHeap.h"

namespace kfl_test {

// Bytes of a header word.
constexpr int wordSize = sizeof(void*);

inline void* wordAtPlace(const void* place) {
    void* word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

inline char* moved(void* place, int bytes) { return static_cast<char*>(place) + bytes; }

// The header in front of a block.
inline char* headerOf(void* block) { return moved(block, -wordSize); }

// The i-th block of a pool.
inline char* blockOf(void* pool, unsigned i, unsigned blockSize) {
    return moved(pool,
                 2 * wordSize + static_cast<int>(i) * (static_cast<int>(blockSize) + wordSize));
}

inline std::vector<void*> take(LocalHeap& heap, unsigned count, unsigned size) {
    std::vector<void*> blocks;
    for (unsigned i = 0; i < count; ++i) blocks.push_back(heap.allocateBlock(size));
    return blocks;
}

}  // namespace kfl_test

#endif
