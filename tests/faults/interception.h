// Between the wrapped calls and the plan of what is to fail.
#ifndef KFL_TESTS_FAULTS_INTERCEPTION_H
#define KFL_TESTS_FAULTS_INTERCEPTION_H

namespace kfl_test {

enum class Interception { none, fails, isShort };

// To be asked by every wrapped call. Where it fails, errno is set.
Interception intercept(const char* name);
inline bool isToFail(const char* name) { return intercept(name) == Interception::fails; }

// To be told by fork: that there was one, and in the child that it is the child.
void noteFork();
void noteChild();

}  // namespace kfl_test

#endif
