// Tries an operation with each call that it makes of the system failing in turn, in each plausible
// way, once and from then on, and looks each time whether anything was lost.
//
//     exhaust("append", [](Attempt& attempt) {
//         AString text("abc");
//         attempt([&] { text.append("def"); });
//         if (attempt.threw()) {
//             EXPECT_STREQ(text.c_str(), "abc");
//             text.append("def");
//         }
//         EXPECT_STREQ(text.c_str(), "abcdef");
//     });
//
// The body is run again and again, each time from the start; what it opened, started and allocated
// must be gone when it is done.
#ifndef KFL_TESTS_FAULTS_EXHAUST_H
#define KFL_TESTS_FAULTS_EXHAUST_H

#include <functional>
#include <string>
#include <string_view>

#include "tests/faults/injection.h"

namespace kfl_test {

class Attempt {
  public:
    explicit Attempt(const Fault& fault) : fault_(fault) {}

    // The operation that is to fail; once in each run of the body, in a thread of its choice.
    // Only std::bad_alloc may come out of it, and only where an allocation failed.
    void operator()(const std::function<void()>& operation);
    // The same where only calls of that name are to fail.
    void only(const std::string& call, const std::function<void()>& operation);
    // The same where all calls of that name fail at any time, as on a system that has no such call.
    void without(const std::string& call, const std::function<void()>& operation);

    bool threw() const { return threw_; }
    // Whether a call of that name failed or did a part only; with `error` 0 for all errors.
    bool failed(std::string_view call, int error = 0) const;
    bool didPart(std::string_view call) const;
    // Whether any call failed.
    bool failedAnywhere() const { return injected_.call != nullptr; }
    // Whether the calls after it that had that name failed as well.
    bool failedFromThenOn() const { return failedAnywhere() && fault_.lasts; }
    bool isInChild() const { return fault_.inChild; }
    int error() const { return injected_.error; }
    const Injected& injected() const { return injected_; }

  private:
    void run(const std::string& only, const std::string& refused,
             const std::function<void()>& operation);

    Fault fault_;
    Injected injected_{};
    bool threw_ = false;
};

// Returns the number of failures that were injected; prints it too.
unsigned long exhaust(const char* name, const std::function<void(Attempt&)>& body);

// Whether `text` begins or ends with `part`, for what a failure left of a file.
bool beginsWith(std::string_view text, std::string_view part);
bool endsWith(std::string_view text, std::string_view part);

}  // namespace kfl_test

#endif
