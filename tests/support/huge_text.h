// A text of more than 4 GiB, for sizes that 32 bits do not hold.
#ifndef KFL_TESTS_HUGE_TEXT_H
#define KFL_TESTS_HUGE_TEXT_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace kfl_test {

// Only a 64-bit host can have such text. ThreadSanitizer would keep a record, four times as large,
// of every byte that was looked at: there the text is as on a 32-bit host.
#if defined(__SANITIZE_THREAD__)
constexpr bool hasHugeText = false;
#else
constexpr bool hasHugeText = sizeof(void*) > 4;
#endif

// Many 'x', made of one mebibyte that is mapped again and again.
class HugeText {
  public:
    // The length, cut to 32 bits, is that of one mebibyte where there can be so much.
    explicit HugeText(std::size_t mebibytes = hasHugeText ? 4097 : 64)
        : size_(mebibytes << 20U), file_(memfd_create("text", 0)) {
        const std::string block(std::size_t{1} << 20U, 'x');
        EXPECT_EQ(write(file_, block.data(), block.size()), static_cast<ssize_t>(block.size()));
        void* const room = mmap(nullptr, size_ + block.size(), PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (room == MAP_FAILED) return;
        text_ = static_cast<char*>(room);
        for (std::size_t at = 0; at < size_; at += block.size()) {
            mmap(text_ + at, block.size(), PROT_READ, MAP_SHARED | MAP_FIXED, file_, 0);
        }
    }
    ~HugeText() {
        if (text_) munmap(text_, size_ + (std::size_t{1} << 20U));
        close(file_);
    }
    HugeText(const HugeText&) = delete;
    HugeText& operator=(const HugeText&) = delete;

    // Null where there was no room.
    const char* text() const { return text_; }
    // The terminator, with a mebibyte of room in which the text may go on.
    char* end() { return text_ + size_; }
    std::size_t size() const { return size_; }

  private:
    std::size_t size_;
    int file_;
    char* text_ = nullptr;
};

}  // namespace kfl_test

#endif
