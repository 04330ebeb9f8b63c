// A file in memory that can be opened by its path and is written anew for each round: a disk would
// take most of the time.
#ifndef KFL_TESTS_MEMORY_FILE_H
#define KFL_TESTS_MEMORY_FILE_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace kfl_test {

class MemoryFile {
  public:
    MemoryFile()
        : descriptor_(memfd_create("generated", 0)),
          path_("/proc/self/fd/" + std::to_string(descriptor_)) {}
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& write(const std::string& bytes) const {
        EXPECT_EQ(ftruncate(descriptor_, 0), 0);
        EXPECT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return path_;
    }

    const std::string& path() const { return path_; }
    std::string content() const {
        std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
        EXPECT_EQ(pread(descriptor_, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return bytes;
    }

  private:
    int descriptor_;
    std::string path_;
};

}  // namespace kfl_test

#endif
