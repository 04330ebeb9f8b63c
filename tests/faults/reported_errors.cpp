#include "tests/faults/reported_errors.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace kfl_test {
namespace {

struct Errors {
    unsigned int count;
    char last[256];
};

Errors& errors() {
    static Errors* const page = [] {
        void* const memory = mmap(nullptr, sizeof(Errors), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        return new (memory) Errors{};
    }();
    return *page;
}

}  // namespace

unsigned int reportedErrors() { return errors().count; }

const char* lastError() { return errors().last; }

void forgetErrors() { errors() = Errors{}; }

void keepError(const char* text) {
    ++errors().count;
    std::strncpy(errors().last, text, sizeof errors().last - 1);
}

}  // namespace kfl_test
