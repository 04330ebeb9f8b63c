// The errors that a host was told, also those of children. Keeping them asks nobody for memory.
#ifndef KFL_TESTS_FAULTS_REPORTED_ERRORS_H
#define KFL_TESTS_FAULTS_REPORTED_ERRORS_H

namespace kfl_test {

// How many errors were reported since the last call of forgetErrors().
unsigned int reportedErrors();
// The last one, up to 255 characters.
const char* lastError();
void forgetErrors();
void keepError(const char* text);

}  // namespace kfl_test

#endif
