// Work that goes on and on, with a look at what the process holds before and after.
//
//     soak("processes", rounds(200), "processes started and waited for", [] { ...one round... });
//
// KFL_TEST_ROUNDS multiplies the rounds. The first tenth is for warming up: what the C library and
// the allocator keep for later is there by then, and from there on nothing may grow.
#ifndef KFL_TESTS_SOAK_SOAK_H
#define KFL_TESTS_SOAK_SOAK_H

#include <functional>
#include <string>

namespace kfl_test {

unsigned long rounds(unsigned long usual);

// Runs the rounds and expects memory, descriptors, threads and children as before. Prints a line
// of the table of scripts/soak, in which one round counts as `each` pieces of work.
void soak(const char* work, unsigned long rounds, unsigned long each,
          const std::function<void()>& round);

}  // namespace kfl_test

#endif
