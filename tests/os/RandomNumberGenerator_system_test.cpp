// What seeds the generator, and how often.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <cstdlib>
#include <vector>

#include "kfl/RandomNumberGenerator.h"
#include "tests/os/children.h"

namespace {

timeval now = {};
int clockReadings = 0;
std::vector<unsigned> seeds;

}  // namespace

extern "C" {

int __wrap_gettimeofday(timeval* time, void*) {
    ++clockReadings;
    *time = now;
    return 0;
}

void __real_srand(unsigned seed);
void __wrap_srand(unsigned seed) {
    seeds.push_back(seed);
    __real_srand(seed);
}

}  // extern "C"

namespace {

// In a child, which has not seeded anything yet.
bool seedsOnceWith(long microseconds, long seconds) {
    const auto child = [=] {
        now.tv_sec = seconds;
        now.tv_usec = microseconds;
        const int first = RandomNumberGenerator::getNumber();
        now.tv_usec = 5;
        const int second = RandomNumberGenerator::getNumber();
        const auto seed = static_cast<unsigned>(microseconds);
        if (clockReadings != 1 || seeds != std::vector<unsigned>{seed}) return false;
        __real_srand(seed);
        return first == std::rand() && second == std::rand();
    };
    return kfl_test::statusOfChild(child) == 0;
}

TEST(RandomNumberGeneratorTest, IsSeededOnceWithTheMicrosecondsAlone) {
    EXPECT_TRUE(seedsOnceWith(123456, 1000));
    EXPECT_TRUE(seedsOnceWith(123456, 2000));
    EXPECT_TRUE(seedsOnceWith(0, 1000));
    EXPECT_TRUE(seedsOnceWith(1, 1000));
    EXPECT_TRUE(seedsOnceWith(999999, 1000));
}

}  // namespace
