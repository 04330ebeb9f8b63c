#include "collections/find_pointer.h"

#include <cstdint>
#include <cstring>

#include "core/small_code.h"

namespace kfl::detail {
namespace {

constexpr std::ptrdiff_t slotSize = sizeof(void*);

// How many slots one step of a search takes.
constexpr unsigned int stepSlots = slotSize == 8 ? 16 : 4;
constexpr std::ptrdiff_t stepSize = stepSlots * slotSize;

std::uintptr_t valueAt(const char* slots, unsigned int index) {
    std::uintptr_t value;
    const void* const slot = __builtin_assume_aligned(slots + index * slotSize, slotSize);
    std::memcpy(&value, slot, sizeof value);
    return value;
}

// Whether one of the slots of a step may hold `wanted`: false is certain. Where pointers have 64
// bits two slots are compared at a time, with one branch for all of them, and a lower half that is
// the wanted one's is enough to look closer.
bool mayHold(const char* slots, std::uintptr_t wanted) {
    if constexpr (slotSize == 8) {
        using Pair = std::uint64_t __attribute__((vector_size(16)));
        using Halves = std::uint32_t __attribute__((vector_size(16)));
        const std::uint64_t value = wanted;
        const Halves sought = reinterpret_cast<Halves>(Pair{value, value});
        Halves hits{};
        for (unsigned int i = 0; i < stepSlots; i += 2) {
            Halves two;
            std::memcpy(&two, slots + i * slotSize, sizeof two);
            hits |= reinterpret_cast<Halves>(two == sought);
        }
        const Pair all = reinterpret_cast<Pair>(hits);
        return static_cast<std::uint32_t>(all[0] | all[1]) != 0;
    } else {
        return valueAt(slots, 0) == wanted || valueAt(slots, 1) == wanted ||
               valueAt(slots, 2) == wanted || valueAt(slots, 3) == wanted;
    }
}

// Out of line, so that it is not laid out anew for each step.
[[gnu::noinline]] const char* findOneByOne(const char* slots, const char* end,
                                           std::uintptr_t wanted) {
    while (slots != end && valueAt(slots, 0) != wanted) slots += slotSize;
    return slots;
}

}  // namespace

unsigned int findPointer(const char* slots, unsigned int count, const void* wanted) {
    const std::uintptr_t value = reinterpret_cast<std::uintptr_t>(wanted);
    const char* const end = slots + std::size_t{count} * slotSize;
    const char* const lastStep = end - count % stepSlots * slotSize;
    const char* at = slots;
    for (; !wantsSmallCode && at != lastStep; at += stepSize) {
        if (!mayHold(at, value)) continue;
        const char* const found = findOneByOne(at, at + stepSize, value);
        if (found != at + stepSize) return static_cast<unsigned int>((found - slots) / slotSize);
    }
    return static_cast<unsigned int>((findOneByOne(at, end, value) - slots) / slotSize);
}

}  // namespace kfl::detail
