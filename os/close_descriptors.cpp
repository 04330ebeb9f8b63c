#include "os/close_descriptors.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace kfl::detail {
namespace {

// Headers older than the kernel do not name the call. Its number is the same everywhere, counted
// from where the architecture's numbers begin.
#if defined(SYS_close_range)
constexpr long closeRangeNumber = SYS_close_range;
#elif defined(__NR_Linux)
constexpr long closeRangeNumber = __NR_Linux + 436;
#else
constexpr long closeRangeNumber = 436;
#endif

// Where the kernel's directory records hold their length and their name.
constexpr unsigned int recordLengthOffset = 16;
constexpr unsigned int recordNameOffset = 19;

// The number that a name in /proc/self/fd stands for; -1 for "." and "..".
long descriptorNamed(const char* name) {
    if (*name == '.') return -1;
    long number = 0;
    for (; *name; ++name) number = 10 * number + (*name - '0');
    return number;
}

void closeRecords(const char* records, long size, int directory, long end) {
    std::uint16_t length = 0;
    for (long at = 0; at < size; at += length) {
        std::memcpy(&length, records + at + recordLengthOffset, sizeof length);
        const long descriptor = descriptorNamed(records + at + recordNameOffset);
        if (descriptor < firstClosedDescriptor || descriptor >= end) continue;
        if (descriptor != directory) close(static_cast<int>(descriptor));
    }
}

// The listing goes by descriptor number, so closing what it named disturbs nothing that follows.
bool closeListed(int directory, long end) {
    alignas(8) char records[2048];
    for (;;) {
        const long size = syscall(SYS_getdents64, directory, records, sizeof records);
        if (size <= 0) return size == 0;
        closeRecords(records, size, directory, end);
    }
}

}  // namespace

bool closeDescriptorRange(long end) {
    return syscall(closeRangeNumber, static_cast<unsigned int>(firstClosedDescriptor),
                   static_cast<unsigned int>(end - 1), 0U) == 0;
}

bool closeListedDescriptors(long end) {
    close(firstClosedDescriptor);  // so that there is room for one more, whatever is open
    const int directory = open("/proc/self/fd", O_RDONLY | O_DIRECTORY);
    if (directory < 0) return false;
    const bool complete = closeListed(directory, end);
    close(directory);
    return complete;
}

void closeEachDescriptor(long end) {
    for (int descriptor = firstClosedDescriptor; descriptor < end; ++descriptor) close(descriptor);
}

void closeInheritedDescriptors() {
    const long end = sysconf(_SC_OPEN_MAX);
    if (end <= firstClosedDescriptor) return;
    if (!closeDescriptorRange(end) && !closeListedDescriptors(end)) closeEachDescriptor(end);
}

}  // namespace kfl::detail
