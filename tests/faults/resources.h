// What a process holds of the system, to be compared.
#ifndef KFL_TESTS_FAULTS_RESOURCES_H
#define KFL_TESTS_FAULTS_RESOURCES_H

#include <string>
#include <vector>

namespace kfl_test {

// What there is when it is made.
class Resources {
  public:
    Resources();

    // What is there now that was not, or no longer; empty where nothing changed.
    std::string difference() const;

  private:
    long blocks_;
    std::vector<int> descriptors_;
    unsigned int threads_;
};

}  // namespace kfl_test

#endif
