// The INI parser beside a second, plain reader: generated files, generated calls, and the files of
// the machine.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kfl/IniFileParser.h"
#include "tests/config/ini_script.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::contentOf;
using kfl_test::IniFileWriter;
using kfl_test::MemoryFile;
using kfl_test::Random;
using kfl_test::readBoth;
using kfl_test::SimpleIniReader;
using kfl_test::takeIniStep;

class IniFileParserModelTest : public testing::Test {
  protected:
    const MemoryFile file;
};

TEST_F(IniFileParserModelTest, ReadsGeneratedFilesAsTheSimpleReaderDoes) {
    Random random;
    IniFileWriter writer(random);
    for (int i = 0; i < 3000; ++i) {
        const std::string bytes = writer.file();
        kfl::IniFileParser parser;
        SimpleIniReader model;
        ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file, bytes));
    }
}

TEST_F(IniFileParserModelTest, AnswersGeneratedCallsAsTheSimpleReaderDoes) {
    Random random(1);
    IniFileWriter writer(random);
    for (int script = 0; script < 150; ++script) {
        kfl::IniFileParser parser;
        SimpleIniReader model;
        for (int step = 0; step < 30; ++step) {
            ASSERT_NO_FATAL_FAILURE(takeIniStep(random, writer, file, parser, model));
            ASSERT_EQ(contentOf(parser), contentOf(model)) << "step " << step;
        }
    }
}

// What stands in a file about the border between two reads is shifted over it byte by byte.
TEST_F(IniFileParserModelTest, LinesAcrossEveryReadBorderAreWhole) {
    const std::string lines =
        "[s]\r\nkey = value\n; comment\nk:" + std::string(600, 'v') + "\n[t\nl=w";
    for (const std::size_t border : {std::size_t{4096}, std::size_t{8192}}) {
        for (std::size_t before = 0; before <= lines.size(); before += before < 40 ? 1 : 13) {
            std::string bytes;
            while (bytes.size() + before < border) {
                const std::size_t left = border - before - bytes.size();
                bytes += std::string(std::min<std::size_t>(left, 100) - 1, ';') + '\n';
            }
            bytes += lines;
            kfl::IniFileParser parser;
            SimpleIniReader model;
            ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file, bytes));
            ASSERT_STREQ(parser.getValue("l", "t"), "w") << before;
        }
    }
}

// Every text of up to three characters out of those that mean something.
TEST_F(IniFileParserModelTest, ReadsAllShortFilesAsTheSimpleReaderDoes) {
    const std::string characters = "aB=:[]; \n";
    std::vector<std::string> texts{""};
    for (std::size_t first = 0, length = 1; length <= 3; ++length) {
        const std::size_t end = texts.size();
        for (; first < end; ++first)
            for (const char c : characters) texts.push_back(texts[first] + c);
    }
    ASSERT_EQ(texts.size(), 1U + 9U + 81U + 729U);
    for (const std::string& text : texts) {
        // In front and behind stands what shows whether a section is open.
        const std::string bytes = "a=1\n[B]\nx=y\n" + text + "\nb=2\n";
        kfl::IniFileParser parser;
        SimpleIniReader model;
        ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file, bytes));
    }
}

// Files of the machine: no more than so many, and none that is large.
std::vector<std::filesystem::path> filesUnder(const char* root, std::size_t most) {
    namespace fs = std::filesystem;
    static const char* const endings[] = {".ini",   ".conf", ".cfg",   ".desktop",    ".service",
                                          ".theme", ".list", ".rules", ".properties", ".timer",
                                          ".pc",    ".cnf",  ""};
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator at(root, fs::directory_options::skip_permission_denied, error);
    for (; !error && at != fs::recursive_directory_iterator() && files.size() < most;
         at.increment(error)) {
        std::error_code unread;
        if (!fs::is_regular_file(at->symlink_status(unread)) || at->file_size(unread) > 200000)
            continue;
        const std::string ending = at->path().extension().string();
        if (std::find(std::begin(endings), std::end(endings), ending) != std::end(endings))
            files.push_back(at->path());
    }
    return files;
}

void compareOnFilesUnder(const char* root) {
    const std::vector<std::filesystem::path> files = filesUnder(root, 250);
    EXPECT_FALSE(files.empty()) << root;
    for (const std::filesystem::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) continue;  // not ours to read
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        kfl::IniFileParser parser;
        SimpleIniReader model;
        EXPECT_TRUE(parser.parseFile(path.c_str())) << path;
        model.read(bytes);
        EXPECT_EQ(contentOf(parser), contentOf(model)) << path;
    }
}

TEST_F(IniFileParserModelTest, ReadsTheMachinesSettingsAsTheSimpleReaderDoes) {
    compareOnFilesUnder("/etc");
}

TEST_F(IniFileParserModelTest, ReadsTheMachinesSharedFilesAsTheSimpleReaderDoes) {
    compareOnFilesUnder("/usr/share");
}

}  // namespace
