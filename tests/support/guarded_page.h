// A page that ends where nothing may be read or written any more.
#ifndef KFL_TESTS_GUARDED_PAGE_H
#define KFL_TESTS_GUARDED_PAGE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

namespace kfl_test {

class GuardedPage {
  public:
    GuardedPage() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        start_ =
            mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (start_ != MAP_FAILED) mprotect(static_cast<char*>(start_) + page_, page_, PROT_NONE);
    }
    ~GuardedPage() { munmap(start_, 2 * page_); }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;

    bool isReady() const { return start_ != MAP_FAILED; }
    // How many bytes it has.
    std::size_t size() const { return page_; }
    // Where the last `bytes` of them begin.
    char* last(std::size_t bytes) const { return static_cast<char*>(start_) + page_ - bytes; }

  private:
    std::size_t page_;
    void* start_;
};

}  // namespace kfl_test

#endif
