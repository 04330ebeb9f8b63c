#include "tests/faults/exhaust.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <new>

#include "tests/faults/reported_errors.h"
#include "tests/faults/resources.h"

namespace kfl_test {
namespace {

// More calls than any operation of these tests makes.
constexpr unsigned long mostCalls = 5000;

std::string description(const Injected& injected, const Fault& fault) {
    if (!injected.call) return "nothing failed";
    std::string text = std::string(injected.call->name) + " (call " + std::to_string(fault.at) +
                       (fault.inChild ? " of the child) " : ") ");
    text += injected.error != 0 ? strerror(injected.error) : "did a part only";
    return text + (fault.lasts ? ", and all later ones" : "");
}

// Runs the body once and compares what there is before and after. Returns what was injected.
Injected runOnce(const char* name, const std::function<void(Attempt&)>& body, const Fault& fault) {
    fallibleCalls();  // not to be counted
    forgetErrors();
    const Resources before;
    Attempt attempt(fault);
    const bool failedBefore = testing::Test::HasFailure();
    body(attempt);
    const std::string lost = before.difference();
    EXPECT_EQ(lost, "") << "was lost";
    if (!failedBefore && testing::Test::HasFailure()) {
        std::printf("%s: first fault: %s\n", name, description(attempt.injected(), fault).c_str());
    }
    return attempt.injected();
}

std::size_t variantsOf(const FallibleCall& call) {
    return call.errors.size() + (call.canBeShort ? 1 : 0);
}

// Waiting goes on after an interruption, for ever if need be. (It is not the call's first way to
// fail, so by then it is known which call it is.)
bool wouldNeverEnd(const Fault& fault, const FallibleCall& call) {
    return fault.lasts && std::strcmp(call.name, "waitpid") == 0 &&
           call.errors[fault.variant] == EINTR;
}

// All ways in which one call can fail. Returns how many there were; 0: there is no such call.
unsigned long failCall(const char* name, const std::function<void(Attempt&)>& body, Fault fault) {
    const FallibleCall* call = nullptr;
    unsigned long count = 0;
    for (fault.variant = 0; !call || fault.variant < variantsOf(*call); ++fault.variant) {
        if (call && wouldNeverEnd(fault, *call)) continue;
        const Injected injected = runOnce(name, body, fault);
        if (!injected.call) return count;
        call = injected.call;
        ++count;
        if (testing::Test::HasFailure()) return count;
    }
    return count;
}

unsigned long failEachCall(const char* name, const std::function<void(Attempt&)>& body,
                           bool inChild, bool lasts) {
    unsigned long count = 0;
    for (unsigned long at = 1; at < mostCalls; ++at) {
        const unsigned long ways = failCall(name, body, Fault{inChild, at, 0, lasts});
        if (ways == 0 || testing::Test::HasFailure()) return count;
        count += ways;
    }
    ADD_FAILURE() << name << " makes more than " << mostCalls << " calls";
    return count;
}

}  // namespace

void Attempt::operator()(const std::function<void()>& operation) { run("", "", operation); }

void Attempt::only(const std::string& call, const std::function<void()>& operation) {
    run(call, "", operation);
}

void Attempt::without(const std::string& call, const std::function<void()>& operation) {
    run("", call, operation);
}

void Attempt::run(const std::string& only, const std::string& refused,
                  const std::function<void()>& operation) {
    std::fflush(stdout);
    try {
        const Injection injection(fault_, only, refused);
        operation();
    } catch (const std::bad_alloc&) {
        threw_ = true;
    }
    injected_ = Injection::result();
    EXPECT_TRUE(!threw_ || failed("malloc")) << "bad_alloc without a reason";
}

bool Attempt::failed(std::string_view call, int error) const {
    return injected_.call && injected_.call->name == call && injected_.error != 0 &&
           (error == 0 || injected_.error == error);
}

bool Attempt::didPart(std::string_view call) const {
    return injected_.call && injected_.call->name == call && injected_.error == 0;
}

unsigned long exhaust(const char* name, const std::function<void(Attempt&)>& body) {
    const Injected clean = runOnce(name, body, Fault{false, 0, 0, false});
    EXPECT_TRUE(clean.calls > 0 || clean.forked) << name << " makes no call that can fail";
    unsigned long count = 0;
    for (const bool inChild : {false, true}) {
        if (inChild && !clean.forked) continue;
        for (const bool lasts : {false, true}) count += failEachCall(name, body, inChild, lasts);
    }
    EXPECT_GT(count, 0U);
    std::printf("failures injected: %5lu  %s\n", count, name);
    return count;
}

bool beginsWith(std::string_view text, std::string_view part) {
    return text.substr(0, part.size()) == part;
}

bool endsWith(std::string_view text, std::string_view part) {
    return text.size() >= part.size() && text.substr(text.size() - part.size()) == part;
}

}  // namespace kfl_test
