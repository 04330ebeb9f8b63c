// What the tests of collections ask of the allocator that counts and fails. To be included by one
// source of a program, since it replaces operator new and delete there.
#ifndef KFL_TESTS_COLLECTIONS_COUNTING_ALLOCATOR_H
#define KFL_TESTS_COLLECTIONS_COUNTING_ALLOCATOR_H

#include <new>

#include "tests/support/counted_new.h"

namespace kfl_test {

// Blocks that `operation` takes from the allocator.
template <class Operation>
unsigned long allocationsOf(Operation operation) {
    const AllocationCount count;
    operation();
    return count.made();
}

// Whether the allocator refused `operation`.
template <class Operation>
bool refuses(Operation operation) {
    try {
        operation();
        return false;
    } catch (const std::bad_alloc&) {
        return true;
    }
}

// Whether it does so when its `n`-th request fails.
template <class Operation>
bool refusesAt(unsigned long n, Operation operation) {
    const FailingNew failing(n);
    return refuses(operation);
}

// Tries `operation` with its first request failing, then with its second, and so on, until it goes
// through; `unchanged` looks at the object after each failure. Returns the number of failures.
template <class Operation, class Check>
unsigned int failEachRequest(Operation operation, Check unchanged) {
    unsigned int failures = 0;
    for (; refusesAt(failures + 1, operation); ++failures) unchanged();
    return failures;
}

}  // namespace kfl_test

#endif
