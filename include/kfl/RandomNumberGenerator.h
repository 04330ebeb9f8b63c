// Pseudo-random numbers from the C library's generator, seeded by the clock on first use.
//
//     int delay = RandomNumberGenerator::getNumber() % 1000;
//
// The numbers are easy to guess: they are no keys and no secrets. The generator is the one behind
// rand() and srand(), which any code of the process shares and disturbs: a host that calls srand(1)
// after the first getNumber gets the numbers of seed 1 from then on.
//
// Threads: callers that share it across threads lock around it.
#ifndef KFL_RANDOMNUMBERGENERATOR_H
#define KFL_RANDOMNUMBERGENERATOR_H

#include "kfl/export.h"

// Has no state of its own; there is no need for an object.
class KFL_EXPORT RandomNumberGenerator {
  public:
    RandomNumberGenerator();
    ~RandomNumberGenerator();

    // The next number, 0 to RAND_MAX. The first call of a process seeds the generator first.
    // Kept on purpose: with the microseconds of the clock alone, so there are a million sequences.
    static int getNumber();
};

#endif
