// Random numbers: real generators, each in a process that has not seeded anything yet.
#include "kfl/RandomNumberGenerator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "tests/os/children.h"

namespace {

using kfl_test::statusOfChild;
using Numbers = std::vector<int>;

Numbers next(int count) {
    Numbers numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(RandomNumberGenerator::getNumber());
    return numbers;
}

Numbers fromRand(unsigned seed, int count) {
    std::srand(seed);
    Numbers numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(std::rand());
    return numbers;
}

TEST(RandomNumberGeneratorTest, StaysInTheRangeOfRand) {
    EXPECT_EQ(statusOfChild([] {
                  for (const int number : next(10000)) {
                      if (number < 0 || number > RAND_MAX) return false;
                  }
                  return true;
              }),
              0);
}

TEST(RandomNumberGeneratorTest, GivesTheHostsSequenceOnceItHasSeededItself) {
    EXPECT_EQ(statusOfChild([] {
                  const Numbers expected = fromRand(1, 100);
                  next(1);
                  std::srand(1);
                  return next(100) == expected;
              }),
              0);
}

TEST(RandomNumberGeneratorTest, OverridesASeedThatTheHostSetBefore) {
    // One microsecond in a million is the host's own seed: not three times.
    int same = 0;
    for (int i = 0; i < 3; ++i) {
        same += statusOfChild([] {
                    const Numbers expected = fromRand(123456, 100);
                    std::srand(123456);
                    return next(100) != expected;
                }) != 0;
    }
    EXPECT_LT(same, 3);
}

TEST(RandomNumberGeneratorTest, SharesItsStateWithRand) {
    EXPECT_EQ(statusOfChild([] {
                  const Numbers expected = fromRand(7, 3);
                  next(1);
                  std::srand(7);
                  return RandomNumberGenerator::getNumber() == expected[0] &&
                         std::rand() == expected[1] &&
                         RandomNumberGenerator::getNumber() == expected[2];
              }),
              0);
}

TEST(RandomNumberGeneratorTest, DiffersBetweenProcessesOfTheSameSecond) {
    const kfl_test::TemporaryFolder folder;
    std::set<std::string> sequences;
    for (int i = 0; i < 5; ++i) {
        const std::string path = folder / "numbers";
        EXPECT_EQ(statusOfChild([&] {
                      std::ofstream file(path);
                      for (const int number : next(10)) file << number << ' ';
                      return true;
                  }),
                  0);
        sequences.insert(kfl_test::contentOf(path));
    }
    EXPECT_GT(sequences.size(), 1U);
}

TEST(RandomNumberGeneratorTest, CanBeMadeAnObject) {
    EXPECT_EQ(statusOfChild([] {
                  RandomNumberGenerator generator;
                  const Numbers expected = fromRand(1, 1);
                  generator.getNumber();
                  std::srand(1);
                  return generator.getNumber() == expected[0];
              }),
              0);
}

}  // namespace
