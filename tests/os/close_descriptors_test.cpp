// The three ways of closing inherited descriptors: what they close, what they leave, and how many
// system calls they cost at limits that no machine here can set.
#include "os/close_descriptors.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstring>

#include "tests/os/children.h"

namespace {

// What is counted and what is made to fail. Each test runs in a child of its own, which has its own
// copy.
struct Calls {
    int closes = 0;
    int opens = 0;
    int ranges = 0;
    int listings = 0;
    int limits = 0;
} calls;

bool rangeFails = false;
bool openFails = false;
int listingsThatWork = INT_MAX;
long pretendedLimit = 0;  // 0 for the real one

int refuse(int error) {
    errno = error;
    return -1;
}

// Behind what was listed stands a record that was not, of descriptor 4.
void noteWhatIsNotListed(long records, long size, long room) {
    dirent64 record{};
    record.d_reclen = sizeof record;
    record.d_name[0] = '4';
    const long left = room - size;
    if (left > 0) {
        std::memcpy(reinterpret_cast<char*>(records) + size, &record,
                    std::min<std::size_t>(static_cast<std::size_t>(left), sizeof record));
    }
}

}  // namespace

extern "C" {

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
    ++calls.closes;
    return __real_close(descriptor);
}

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    ++calls.opens;
    return openFails ? refuse(ENOENT) : __real_open(path, flags);
}
int __wrap_open64(const char* path, int flags, ...) { return __wrap_open(path, flags); }

long __real_sysconf(int name);
long __wrap_sysconf(int name) {
    ++calls.limits;
    return pretendedLimit != 0 ? pretendedLimit : __real_sysconf(name);
}

long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    const long first = va_arg(arguments, long);
    const long second = va_arg(arguments, long);
    const long third = va_arg(arguments, long);
    va_end(arguments);
    if (number == SYS_getdents64) {
        if (++calls.listings > listingsThatWork) return refuse(EIO);
    } else {
        ++calls.ranges;
        if (rangeFails) return refuse(ENOSYS);
    }
    const long result = __real_syscall(number, first, second, third);
    if (number == SYS_getdents64 && result >= 0) noteWhatIsNotListed(second, result, third);
    return result;
}

}  // extern "C"

namespace {

using kfl::detail::closeInheritedDescriptors;
using kfl_test::statusOfChild;

int softLimit() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<int>(limit.rlim_cur);
}

void setSoftLimit(int soft) {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(soft);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

// Whether 0, 1 and 2 are open, and nothing else of the first `end` numbers.
bool onlyStandardDescriptors(int end) {
    for (int descriptor = 0; descriptor < end; ++descriptor) {
        if (isOpen(descriptor) != (descriptor < 3)) {
            ADD_FAILURE() << descriptor << (isOpen(descriptor) ? " is open" : " is closed");
            return false;
        }
    }
    return true;
}

void openAll(int begin, int end) {
    for (int descriptor = begin; descriptor < end; ++descriptor) dup2(0, descriptor);
}

// How the best way that works is brought about.
struct Way {
    const char* name;
    bool rangeFails;
    bool openFails;
    int listingsThatWork;
};

class EveryWayTest : public testing::TestWithParam<Way> {
  protected:
    // From here on, in a child: counts from zero.
    static void closeInThisWay() {
        rangeFails = GetParam().rangeFails;
        openFails = GetParam().openFails;
        listingsThatWork = GetParam().listingsThatWork;
        calls = {};
        closeInheritedDescriptors();
    }
};

INSTANTIATE_TEST_SUITE_P(CloseDescriptors, EveryWayTest,
                         testing::Values(Way{"OneCall", false, false, INT_MAX},
                                         Way{"Walk", true, false, INT_MAX},
                                         Way{"PlainLoop", true, true, INT_MAX},
                                         Way{"PlainLoopForWantOfAListing", true, false, 0},
                                         Way{"PlainLoopAfterHalfAListing", true, false, 1}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(EveryWayTest, LeavesTheStandardDescriptorsOnly) {
    EXPECT_EQ(statusOfChild([] {
                  const int limit = softLimit();
                  openAll(3, 10);
                  dup2(0, limit / 2);
                  dup2(0, limit - 1);
                  closeInThisWay();
                  return onlyStandardDescriptors(limit);
              }),
              0);
}

TEST_P(EveryWayTest, ClosesThousands) {
    EXPECT_EQ(statusOfChild([] {
                  rlimit limit = {};
                  getrlimit(RLIMIT_NOFILE, &limit);
                  const int most = static_cast<int>(std::min<rlim_t>(limit.rlim_max, 20000));
                  setSoftLimit(most);
                  openAll(3, std::min(most, 6000));
                  dup2(0, most - 1);
                  closeInThisWay();
                  return onlyStandardDescriptors(most);
              }),
              0);
}

TEST_P(EveryWayTest, NeedsNoFreeDescriptor) {
    EXPECT_EQ(statusOfChild([] {
                  setSoftLimit(64);
                  openAll(3, 64);
                  closeInThisWay();
                  return onlyStandardDescriptors(64);
              }),
              0);
}

TEST_P(EveryWayTest, LeavesWhatIsOpenAboveALoweredLimit) {
    EXPECT_EQ(statusOfChild([] {
                  for (const int descriptor : {5, 99, 100, 101, 900}) dup2(0, descriptor);
                  setSoftLimit(100);
                  closeInThisWay();
                  return onlyStandardDescriptors(100) && isOpen(100) && isOpen(101) && isOpen(900);
              }),
              0);
}

// The walk's own descriptor then is one of the three.
TEST_P(EveryWayTest, LeavesStandardDescriptorsClosedThatWereClosed) {
    EXPECT_EQ(statusOfChild([] {
                  openAll(3, 20);
                  close(0);
                  closeInThisWay();
                  return !isOpen(0) && isOpen(1) && isOpen(2) && !isOpen(3) && !isOpen(19);
              }),
              0);
}

TEST_P(EveryWayTest, ClosesNothingBelowALimitOfThree) {
    for (const long limit : {-1L, 0L, 1L, 3L}) {
        EXPECT_EQ(statusOfChild([limit] {
                      dup2(0, 7);
                      pretendedLimit = limit == 0 ? LONG_MIN : limit;
                      closeInThisWay();
                      return isOpen(0) && isOpen(1) && isOpen(2) && isOpen(7) &&
                             calls.closes + calls.ranges + calls.opens == 0;
                  }),
                  0)
            << limit;
    }
}

TEST_P(EveryWayTest, ClosesTheOnlyDescriptorBelowALimitOfFour) {
    EXPECT_EQ(statusOfChild([] {
                  dup2(0, 3);
                  dup2(0, 4);
                  // Checkers of memory need a descriptor now and then.
                  const int usual = softLimit();
                  setSoftLimit(4);
                  closeInThisWay();
                  setSoftLimit(usual);
                  return !isOpen(3) && isOpen(4);
              }),
              0);
}

const long limits[] = {1024, 65536, 1048576, 1073741816, INT_MAX};

TEST(CloseDescriptorsTest, IsOneCallAtEveryLimit) {
    for (const long limit : limits) {
        EXPECT_EQ(statusOfChild([limit] {
                      openAll(3, 500);
                      pretendedLimit = limit;
                      calls = {};
                      closeInheritedDescriptors();
                      const bool closed = !isOpen(3) && !isOpen(499);
                      return closed && calls.ranges == 1 && calls.limits == 1 &&
                             calls.closes + calls.opens + calls.listings == 0;
                  }),
                  0)
            << limit;
    }
}

// One close for each that is open, one for the listing and one that makes room for it.
TEST(CloseDescriptorsTest, WalksWhatIsOpenAtEveryLimit) {
    for (const long limit : limits) {
        EXPECT_EQ(statusOfChild([limit] {
                      closeInheritedDescriptors();
                      openAll(3, 500);
                      pretendedLimit = limit;
                      rangeFails = true;
                      calls = {};
                      closeInheritedDescriptors();
                      const bool closed = !isOpen(3) && !isOpen(499);
                      return closed && calls.limits == 1 && calls.ranges == 1 && calls.opens == 1 &&
                             calls.closes == 498 && calls.listings < 10;
                  }),
                  0)
            << limit;
    }
}

TEST(CloseDescriptorsTest, FallsBackToOneCloseForEachNumber) {
    EXPECT_EQ(statusOfChild([] {
                  pretendedLimit = 1000;
                  rangeFails = openFails = true;
                  calls = {};
                  closeInheritedDescriptors();
                  return calls.closes == 997 + 1;
              }),
              0);
}

TEST(CloseDescriptorsTest, TellsWhetherAWayWorked) {
    EXPECT_EQ(statusOfChild([] {
                  const bool both = kfl::detail::closeDescriptorRange(1000) &&
                                    kfl::detail::closeListedDescriptors(1000);
                  rangeFails = openFails = true;
                  const bool neither = !kfl::detail::closeDescriptorRange(1000) &&
                                       !kfl::detail::closeListedDescriptors(1000);
                  openFails = false;
                  listingsThatWork = 1;
                  return both && neither && !kfl::detail::closeListedDescriptors(1000);
              }),
              0);
}

}  // namespace
