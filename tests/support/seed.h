// Random numbers for tests, from a seed that a failure shows and that a rerun can set.
//
//     kfl_test::Random random;
//     for (int i = 0; i < 1000; ++i) step(random.below(6));
//
// KFL_TEST_SEED=12345 runs a test again as it was; without it the seed is the same on every run and
// every machine.
#ifndef KFL_TESTS_SEED_H
#define KFL_TESTS_SEED_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "tests/support/choices.h"

namespace kfl_test {

// KFL_TEST_SEED, or a fixed number.
inline std::uint32_t seed() {
    const char* const given = std::getenv("KFL_TEST_SEED");
    if (!given || *given == '\0') return 20031117;
    return static_cast<std::uint32_t>(std::strtoul(given, nullptr, 0));
}

// A generator for one test. While it lives, every failure of the test shows the seed; the test's
// record in the XML report has it too.
class Random : public Choices {
  public:
    // `stream` tells apart generators of one test that must not run in step.
    explicit Random(std::uint32_t stream = 0, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE())
        : engine_(seed() + stream * 0x9E3779B9U),
          trace_(file, line, "KFL_TEST_SEED=" + std::to_string(seed())) {
        testing::Test::RecordProperty("seed", std::to_string(seed()));
    }

    std::uint32_t operator()() override { return static_cast<std::uint32_t>(engine_()); }
    std::uint32_t below(std::uint32_t limit) override { return (*this)() % limit; }
    bool oneIn(std::uint32_t n) override { return below(n) == 0; }
    // For the standard library's distributions and std::shuffle.
    std::mt19937& engine() { return engine_; }

  private:
    std::mt19937 engine_;
    testing::ScopedTrace trace_;
};

}  // namespace kfl_test

#endif
