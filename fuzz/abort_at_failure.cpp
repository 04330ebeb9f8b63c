// A fuzz engine takes an abort for a finding: each failed expectation is made one, once it has been
// printed.
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class AbortAtFailure : public testing::EmptyTestEventListener {
  public:
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.failed()) std::abort();
    }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static_cast<void>(argc);
    static_cast<void>(argv);
    testing::UnitTest::GetInstance()->listeners().Append(new AbortAtFailure);
    return 0;
}
