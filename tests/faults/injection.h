// Lets calls that the library makes of the system fail, one by one. Programs that use it are linked
// with the linker's --wrap for every call below (see wrapped_calls.cpp).
#ifndef KFL_TESTS_FAULTS_INJECTION_H
#define KFL_TESTS_FAULTS_INJECTION_H

#include <string>
#include <vector>

namespace kfl_test {

// A call that can fail, and the errors that it plausibly fails with.
struct FallibleCall {
    const char* name;
    std::vector<int> errors;
    // Whether it can also do a part of its work only.
    bool canBeShort;
    // Whether a failing call has done its work all the same: a descriptor is closed, a mutex
    // locked.
    bool worksAllTheSame;
};

const std::vector<FallibleCall>& fallibleCalls();

// Which call is to fail, and how. Children and their parent are counted apart.
struct Fault {
    bool inChild;
    // The number of the call, from 1; 0: none fails.
    unsigned long at;
    // Which of the errors of that call, or after the last one a short result.
    unsigned int variant;
    // Whether all later calls of that name fail as well.
    bool lasts;
};

// What became of a fault.
struct Injected {
    const FallibleCall* call;  // null: the operation made fewer calls
    int error;                 // 0 for a short result
    unsigned long calls;       // how many there were, in the process that was looked at
    bool forked;
};

// While it lives, calls that this thread makes, and calls of children forked by it, are counted and
// fail as planned. Where `only` is not empty, no other calls count.
class Injection {
  public:
    // Calls named `refused` fail at any time with ENOSYS, and do not count.
    explicit Injection(const Fault& fault, const std::string& only = "",
                       const std::string& refused = "");
    ~Injection();
    Injection(const Injection&) = delete;
    Injection& operator=(const Injection&) = delete;

    static Injected result();
};

// How often each call was made to fail so far, in the order of fallibleCalls().
std::vector<unsigned long> injectedByCall();

// Blocks that malloc and new gave this program's own code and that it did not give back.
long liveBlocks();

}  // namespace kfl_test

#endif
