// Runs a target once with each file of its command line, and with each file in a folder named
// there: for compilers without a fuzz engine.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/input.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path>& files() {
    static std::vector<fs::path> all;
    return all;
}

void addFiles(const fs::path& path) {
    if (!fs::is_directory(path)) return files().push_back(path);
    for (const fs::directory_entry& entry : fs::directory_iterator(path))
        files().push_back(entry.path());
}

TEST(Replay, EveryFile) {
    ASSERT_FALSE(files().empty()) << "usage: fuzz_TARGET FILE|FOLDER ...";
    for (const fs::path& path : files()) {
        SCOPED_TRACE(path);
        std::ifstream file(path, std::ios::binary);
        ASSERT_TRUE(file.is_open());
        // No longer than its content: a sanitizer sees what is read behind it.
        std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        bytes.shrink_to_fit();
        ASSERT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
        if (HasFailure()) return;
    }
    std::printf("%zu files\n", files().size());
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) addFiles(argv[i]);
    std::sort(files().begin(), files().end());
    return RUN_ALL_TESTS();
}
