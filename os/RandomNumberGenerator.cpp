#include "kfl/RandomNumberGenerator.h"

#include <stdlib.h>
#include <sys/time.h>

namespace {

int randomSeeded = 0;

// Kept on purpose: the microseconds alone, 0 to 999,999, are the seed.
void seed() {
    timeval now = {};
    gettimeofday(&now, nullptr);
    srand(static_cast<unsigned int>(now.tv_usec));
}

}  // namespace

RandomNumberGenerator::RandomNumberGenerator() {}

RandomNumberGenerator::~RandomNumberGenerator() {}

int RandomNumberGenerator::getNumber() {
    if (randomSeeded == 0) {
        seed();
        randomSeeded = 1;
    }
    return rand();
}
