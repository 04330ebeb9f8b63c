// Where a script of a test takes its decisions from: a random generator, or the bytes of a file
// that a fuzzer makes.
#ifndef KFL_TESTS_CHOICES_H
#define KFL_TESTS_CHOICES_H

#include <cstdint>

namespace kfl_test {

class Choices {
  public:
    virtual ~Choices() = default;

    // 32 bits.
    virtual std::uint32_t operator()() = 0;
    // A number from 0 to `limit` - 1; `limit` must not be 0.
    virtual std::uint32_t below(std::uint32_t limit) = 0;
    // True in one of `n` cases.
    virtual bool oneIn(std::uint32_t n) = 0;
    // A number from `low` to `high`, both included.
    int between(int low, int high) {
        const auto span = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1;
        return static_cast<int>(static_cast<std::uint32_t>(low) + below(span));
    }
};

}  // namespace kfl_test

#endif
