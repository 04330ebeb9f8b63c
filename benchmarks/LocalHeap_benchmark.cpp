// Blocks of 64 bytes, a thousand at a time: LocalHeap beside malloc, std::pmr's pool and
// boost::pool (where it is installed), and beside the least that a pool of a shared library can do
// which counts. What is taken is written to once.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <memory_resource>
#include <numeric>
#include <vector>

#include "benchmarks/bare_pool.h"
#include "benchmarks/contest.h"
#include "kfl/LocalHeap.h"

#ifdef KFL_HAVE_boost_pool
#include <boost/pool/pool.hpp>
#endif

using kfl_benchmark::Contest;

namespace {

constexpr unsigned int blocks = 1000;
constexpr unsigned int blockSize = 64;

using Order = std::vector<unsigned int>;

void use(void* block) { *static_cast<char*>(block) = 1; }

// Takes all blocks and gives them back in that order.
template <class Take, class GiveBack, class Sees>
void takeAll(const Order& order, const Take& take, const GiveBack& giveBack, Sees& sees) {
    static void* taken[blocks];
    for (void*& block : taken) use(block = take());
    for (const unsigned int i : order) giveBack(taken[i]);
    sees.value(order.size());
}

template <class Take, class GiveBack, class Sees>
void takeEach(const Take& take, const GiveBack& giveBack, Sees& sees) {
    for (unsigned int i = 0; i < blocks; ++i) {
        void* const block = take();
        use(block);
        benchmark::DoNotOptimize(block);
        giveBack(block);
    }
    sees.value(blocks);
}

// An order of giving back, or none: each block goes back before the next is taken.
void enterOrder(const char* name, const Order& order) {
    Contest contest(name);
    const auto enter = [&](const char* who, auto take, auto giveBack) {
        contest.enter(who, [=](auto& sees) {
            if (order.empty()) return takeEach(take, giveBack, sees);
            takeAll(order, take, giveBack, sees);
        });
    };
    const auto heap = std::make_shared<LocalHeap>(blocks, blockSize, LocalHeap::GrowOnDemand);
    enter(
        "kfl", [heap] { return heap->allocateBlock(blockSize); },
        [heap](void* block) { heap->deallocateBlock(block, blockSize); });
    enter(
        "malloc", [] { return std::malloc(blockSize); }, [](void* block) { std::free(block); });
    const auto pmr = std::make_shared<std::pmr::unsynchronized_pool_resource>();
    enter(
        "pmr", [pmr] { return pmr->allocate(blockSize); },
        [pmr](void* block) { pmr->deallocate(block, blockSize); });
    // Blocks as far from each other as those of the heap, with their header.
    const auto bare = std::make_shared<kfl_benchmark::BarePool>(
        blocks, blockSize + static_cast<unsigned int>(sizeof(void*)));
    enter(
        "bare", [bare] { return bare->take(); }, [bare](void* block) { bare->giveBack(block); });
#ifdef KFL_HAVE_boost_pool
    const auto pool = std::make_shared<boost::pool<>>(blockSize, blocks);
    enter(
        "boost", [pool] { return pool->malloc(); }, [pool](void* block) { pool->free(block); });
#endif
}

}  // namespace

int main(int count, char** arguments) {
    Order order(blocks);
    std::iota(order.begin(), order.end(), 0U);
    enterOrder("pool: first in, first out", order);
    kfl_benchmark::Numbers numbers(1);
    Order random = order;
    for (unsigned int i = blocks; i > 1; --i) std::swap(random[i - 1], random[numbers.next(i)]);
    enterOrder("pool: random order", random);
    std::reverse(order.begin(), order.end());
    enterOrder("pool: last in, first out", order);
    enterOrder("pool: given back at once", {});
    return kfl_benchmark::runAll(count, arguments);
}
