// A sequence of calls on an object, each of which either happens or leaves everything as it was.
#ifndef KFL_TESTS_FAULTS_STEPS_H
#define KFL_TESTS_FAULTS_STEPS_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/faults/exhaust.h"

namespace kfl_test {

template <class Object>
struct Steps {
    std::function<std::unique_ptr<Object>()> make;
    std::vector<std::function<void(Object&)>> steps;
    // All that can be seen of the object.
    std::function<std::string(Object&)> state;
};

// Lets each allocation of the steps fail in turn: the step that it falls into changes nothing, and
// from there on a second try goes through to the same end.
template <class Object>
void exhaustSteps(const char* name, const Steps<Object>& work) {
    std::vector<std::string> states;
    const auto model = work.make();
    states.push_back(work.state(*model));
    for (const auto& step : work.steps) {
        step(*model);
        states.push_back(work.state(*model));
    }
    exhaust(name, [&](Attempt& attempt) {
        const auto object = work.make();
        std::size_t i = 0;
        const auto goOn = [&] {
            for (; i < work.steps.size(); ++i) work.steps[i](*object);
        };
        attempt(goOn);
        EXPECT_EQ(attempt.threw(), attempt.failed("malloc")) << "in step " << i;
        EXPECT_EQ(work.state(*object), states[i]) << "after step " << i;
        goOn();
        EXPECT_EQ(work.state(*object), states.back());
    });
}

// The same for making an object.
template <class Make>
void exhaustMaking(const char* name, Make make) {
    exhaust(name, [&](Attempt& attempt) {
        attempt([&] { make(); });
        EXPECT_EQ(attempt.threw(), attempt.failed("malloc"));
        if (attempt.threw()) make();
    });
}

}  // namespace kfl_test

#endif
