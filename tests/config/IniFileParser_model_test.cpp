// The INI parser beside a second, plain reader: generated files, generated calls, and the files of
// the machine.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kfl/IniFileParser.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::contentOf;
using kfl_test::Random;
using kfl_test::SimpleIniReader;
using kfl_test::visible;

// Writes files that lie close to every rule of the reader.
class FileWriter {
  public:
    explicit FileWriter(Random& random) : random_(random) {}

    std::string file() {
        std::string text;
        const unsigned int lines = random_.below(30);
        for (unsigned int i = 0; i < lines; ++i) {
            if (random_.oneIn(40)) padToBorder(text);
            text += line();
            // The last line often lacks its end.
            if (i + 1 < lines || random_.oneIn(2)) text += lineEnd();
        }
        return text;
    }

    // A name out of few, in any case, so that names come again.
    std::string name() {
        static const char* const names[] = {"a",   "b",   "mode", "port", "net",
                                            "a b", "x]y", "\xE4", ""};
        std::string name = names[random_.below(std::size(names))];
        for (char& c : name)
            if (c >= 'a' && c <= 'z' && random_.oneIn(3)) c = static_cast<char>(c - 'a' + 'A');
        return name;
    }

    std::string value() {
        static const char* const values[] = {"1",  " 8080", "",     "=x", "a;b",
                                             "t#", "[z]",   "-3.5", "yes"};
        return values[random_.below(std::size(values))] + (random_.oneIn(4) ? noise(12) : "");
    }

    // Up to so many characters, most of them with a meaning.
    std::string noise(unsigned int most) {
        static const std::string characters =
            std::string(" \t\r=:[];#aAbB", 13) + '\0' + "\x01\xFF";
        std::string text;
        for (unsigned int n = random_.below(most + 1); n > 0; --n) {
            text += random_.oneIn(8)
                        ? static_cast<char>(random_())
                        : characters[random_.below(static_cast<unsigned int>(characters.size()))];
        }
        return text;
    }

  private:
    std::string line() {
        switch (random_.below(10)) {
            case 0:
            case 1:
                return edge() + '[' + edge() + name() + (random_.oneIn(5) ? noise(3) : "") +
                       (random_.oneIn(5) ? "" : "]") + (random_.oneIn(5) ? noise(6) : edge());
            case 2: return edge() + (random_.oneIn(2) ? ';' : '#') + name() + '=' + value();
            case 3: return noise(40);
            case 4: return longLine();
            default:
                return edge() + name() + edge() + (random_.oneIn(2) ? '=' : ':') + edge() +
                       value() + edge();
        }
    }

    // What is dropped at the ends of a line.
    std::string edge() {
        static const std::string characters = " \t\r=: ";
        std::string text;
        while (random_.oneIn(3))
            text += characters[random_.below(static_cast<unsigned int>(characters.size()))];
        return text;
    }

    std::string lineEnd() {
        static const char* const ends[] = {"\n", "\n", "\n", "\r\n", "\n\n", "\r", "\n\r"};
        return ends[random_.below(std::size(ends))];
    }

    // A line whose end lies about the end of a first or second piece, and what may follow there.
    std::string longLine() {
        std::string text = name() + (random_.oneIn(4) ? "" : "=");
        const std::size_t length = (random_.oneIn(2) ? 511U : 1022U) - 6U + random_.below(12);
        const char filling = "x x=;[\0"[random_.below(7)];
        if (text.size() < length) text.append(length - text.size(), filling);
        return text + (random_.oneIn(2) ? line() : "");
    }

    // A comment that lets the next line begin about a border between two reads of the file.
    void padToBorder(std::string& text) {
        constexpr std::size_t readSize = 4096;
        const std::size_t border = (text.size() / readSize + 1) * readSize - 8 + random_.below(16);
        while (text.size() + 1 < border) {
            const std::size_t room = border - text.size() - 1;
            text += ';' + std::string(std::min<std::size_t>(room, 400) - 1, '-') + '\n';
            if (room == 1) break;
        }
    }

    Random& random_;
};

// A file in memory that is written anew for each round: a disk would take most of the time.
class RewrittenFile {
  public:
    RewrittenFile()
        : descriptor_(memfd_create("generated.ini", 0)),
          path_("/proc/self/fd/" + std::to_string(descriptor_)) {}
    ~RewrittenFile() { close(descriptor_); }
    RewrittenFile(const RewrittenFile&) = delete;
    RewrittenFile& operator=(const RewrittenFile&) = delete;

    const std::string& write(const std::string& bytes) const {
        EXPECT_EQ(ftruncate(descriptor_, 0), 0);
        EXPECT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return path_;
    }

  private:
    int descriptor_;
    std::string path_;
};

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
