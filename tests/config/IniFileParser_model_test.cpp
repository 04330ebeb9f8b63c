// The INI parser beside a second, plain reader: generated files, generated calls, and the files of
// the machine.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kfl/IniFileParser.h"
#include "tests/config/generated_ini_files.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::contentOf;
using kfl_test::FileWriter;
using kfl_test::Random;
using kfl_test::RewrittenFile;
using kfl_test::SimpleIniReader;
using kfl_test::visible;

class IniFileParserModelTest : public testing::Test {
  protected:
    // Gives both readers a file of these bytes.
    static void readBoth(kfl::IniFileParser& parser, SimpleIniReader& model,
                         const std::string& path, const std::string& bytes) {
        ASSERT_TRUE(parser.parseFile(path.c_str()));
        model.read(bytes);
        ASSERT_EQ(contentOf(parser), contentOf(model)) << visible(bytes);
        ASSERT_EQ(parser.flags, model.flags);
    }

    const RewrittenFile file;
};

TEST_F(IniFileParserModelTest, ReadsGeneratedFilesAsTheSimpleReaderDoes) {
    Random random;
    FileWriter writer(random);
    for (int i = 0; i < 3000; ++i) {
        const std::string bytes = writer.file();
        kfl::IniFileParser parser;
        SimpleIniReader model;
        ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file.write(bytes), bytes));
    }
}

// Every value that the model holds is found under its name in any case, and nothing else is.
void compareLookups(kfl::IniFileParser& parser, SimpleIniReader& model, const std::string& key,
                    const std::string& section) {
    const kfl_test::SimpleKey* const found = model.findKey(key, section);
    const char* const value = parser.getValue(key.c_str(), section.c_str());
    ASSERT_EQ(value != nullptr, found != nullptr) << visible(key) << " in " << visible(section);
    ASSERT_EQ(parser.getBool(key.c_str(), section.c_str()), found != nullptr);
    ASSERT_EQ(parser.getSection(section.c_str()) != nullptr,
              model.findSection(section) != SimpleIniReader::none);
    if (!found) {
        ASSERT_EQ(parser.getInt(key.c_str(), section.c_str()), INT_MIN);
        return;
    }
    ASSERT_EQ(value, found->value);
    ASSERT_EQ(parser.getInt(key.c_str(), section.c_str()), std::atoi(found->value.c_str()));
    // As text, in which a NaN equals itself.
    ASSERT_EQ(std::to_string(parser.getFloat(key.c_str(), section.c_str())),
              std::to_string(static_cast<float>(std::atof(found->value.c_str()))));
}

std::string withoutNul(const std::string& text) { return text.substr(0, text.find('\0')); }

TEST_F(IniFileParserModelTest, AnswersGeneratedCallsAsTheSimpleReaderDoes) {
    Random random(1);
    FileWriter writer(random);
    for (int script = 0; script < 150; ++script) {
        kfl::IniFileParser parser;
        SimpleIniReader model;
        for (int step = 0; step < 30; ++step) {
            const std::string key = random.oneIn(5) ? withoutNul(writer.noise(5)) : writer.name();
            const std::string section =
                random.oneIn(5) ? withoutNul(writer.noise(5)) : writer.name();
            const std::string value = withoutNul(writer.value());
            switch (random.below(8)) {
                case 0: {
                    const std::string bytes = writer.file();
                    ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file.write(bytes), bytes));
                    break;
                }
                case 1: parser.flags = model.flags = random.below(8); break;
                case 2: parser.modified = model.modified = false; break;
                case 3:
                    ASSERT_EQ(parser.createSection(section.c_str()) != nullptr,
                              model.createSection(section) != SimpleIniReader::none);
                    break;
                case 4:
                case 5:
                    ASSERT_EQ(parser.setValue(key.c_str(), value.c_str(), section.c_str()),
                              model.setValue(key, value, section));
                    break;
                default: ASSERT_NO_FATAL_FAILURE(compareLookups(parser, model, key, section));
            }
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
            ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file.write(bytes), bytes));
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
        ASSERT_NO_FATAL_FAILURE(readBoth(parser, model, file.write(bytes), bytes));
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
