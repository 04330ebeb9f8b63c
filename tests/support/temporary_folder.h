// A folder for the files of a test, removed with them at the end.
#ifndef KFL_TESTS_TEMPORARY_FOLDER_H
#define KFL_TESTS_TEMPORARY_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace kfl_test {

class TemporaryFolder {
  public:
    TemporaryFolder()
        : path_((std::filesystem::temp_directory_path() / "kfl-test-XXXXXX").string()) {
        if (!mkdtemp(path_.data())) throw std::filesystem::filesystem_error("mkdtemp", path_, {});
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + '/' + name; }
    // Writes a file anew and returns its path.
    std::string write(const std::string& name, std::string_view content) const {
        const std::string path = *this / name;
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        return path;
    }

  private:
    std::string path_;
};

}  // namespace kfl_test

#endif
