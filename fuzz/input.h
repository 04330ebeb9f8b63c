// The bytes of one run of a fuzzer, as choices for a script and as texts. What is asked for behind
// their end is 0 or empty, and no case of oneIn() comes up there: a script can always end.
#ifndef KFL_FUZZ_INPUT_H
#define KFL_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "tests/support/choices.h"

namespace kfl_fuzz {

class Input : public kfl_test::Choices {
  public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool empty() const { return next_ == end_; }

    std::uint8_t byte() { return empty() ? std::uint8_t{0} : *next_++; }
    std::uint32_t operator()() override { return number(4); }
    // Takes no more bytes than `limit` has.
    std::uint32_t below(std::uint32_t limit) override {
        return number(limit <= 0x100 ? 1 : limit <= 0x10000 ? 2 : 4) % limit;
    }
    bool oneIn(std::uint32_t n) override { return !empty() && below(n) == 0; }

    // So many bytes, or all that are left.
    std::string bytes(std::size_t most) {
        const std::size_t n = std::min(most, static_cast<std::size_t>(end_ - next_));
        std::string taken(n, '\0');
        for (char& c : taken) c = static_cast<char>(*next_++);
        return taken;
    }
    std::string rest() { return bytes(static_cast<std::size_t>(end_ - next_)); }
    // A text whose length, at most 255, stands in front of it.
    std::string text() { return bytes(byte()); }

  private:
    std::uint32_t number(int bytes) {
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | byte();
        return value;
    }

    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

// A terminated copy of a text up to its first NUL in memory of exactly its size: a sanitizer sees
// what is read behind it.
class ExactText {
  public:
    explicit ExactText(const std::string& text) : text_(new char[std::strlen(text.c_str()) + 1]) {
        std::memcpy(text_.get(), text.c_str(), std::strlen(text.c_str()) + 1);
    }
    operator const char*() const { return text_.get(); }

  private:
    std::unique_ptr<char[]> text_;
};

}  // namespace kfl_fuzz

// What each target defines: one run with these bytes, with 0 as its result. A failed expectation of
// GoogleTest is a finding, as is what a sanitizer reports.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
