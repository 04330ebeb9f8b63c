// A child that tells on itself: its arguments, open descriptors and environment, a line each, on
// standard output.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>

namespace {

void printDescriptors() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (int descriptor = 0; descriptor < static_cast<int>(limit.rlim_max); ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1) std::printf("open %d\n", descriptor);
    }
}

}  // namespace

int main(int, char** arguments) {
    for (char** argument = arguments; *argument; ++argument) std::printf("word %s\n", *argument);
    printDescriptors();
    for (char** variable = environ; *variable; ++variable) std::printf("env %s\n", *variable);
    return 0;
}
