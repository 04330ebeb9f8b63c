// What the tool says of a configuration file's lines, and what it makes of them, beside the
// library's own reader, on generated files.
#include "tools/kfl/ini_lines.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kfl/IniFileParser.h"
#include "tests/config/ini_file_writer.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/memory_file.h"
#include "tests/support/seed.h"
#include "tools/kfl/ini_edit.h"
#include "tools/kfl/ini_findings.h"

namespace {

using kfl_test::contentOf;
using kfl_test::IniFileWriter;
using kfl_test::MemoryFile;
using kfl_test::Random;
using kfl_test::SimpleIniReader;
using kfl_test::visible;
using kfl_tool::Fate;
using kfl_tool::Finding;
using kfl_tool::findingsOf;
using kfl_tool::IniLine;
using kfl_tool::isDropped;
using kfl_tool::readLines;
using kfl_tool::Setting;
using kfl_tool::whyNotHeld;
using kfl_tool::withSetting;

// What the lines hold that are said to be stored, and nothing else.
std::string contentOfStored(const std::vector<IniLine>& lines) {
    SimpleIniReader held;
    for (const IniLine& line : lines) {
        if (line.fate == Fate::section) held.createSection(line.section);
        if (line.fate == Fate::stored) {
            held.setValue(std::string(line.key), std::string(line.value), line.section);
        }
    }
    return contentOf(held);
}

class IniLinesTest : public testing::Test {
  protected:
    // What the library reads from a file of these bytes.
    std::string contentIn(const std::string& bytes) const {
        kfl::IniFileParser parser;
        EXPECT_TRUE(parser.parseFile(file.write(bytes).c_str()));
        return contentOf(parser);
    }

    const MemoryFile file;
};

TEST_F(IniLinesTest, WhatIsStoredIsWhatTheLibraryHolds) {
    Random random;
    IniFileWriter writer(random);
    for (int i = 0; i < 2000; ++i) {
        const std::string bytes = writer.file();
        ASSERT_EQ(contentOfStored(readLines(bytes)), contentIn(bytes)) << visible(bytes);
    }
}

// Lines that are called dropped, but for repeated headers, can go, and the library reads the same.
// Each other line that is no comment cannot.
TEST_F(IniLinesTest, DroppedLinesAreThoseWithoutWhichTheLibraryReadsTheSame) {
    Random random(1);
    IniFileWriter writer(random);
    unsigned int dropped = 0;
    for (int i = 0; i < 400; ++i) {
        const std::string bytes = writer.file();
        const std::string content = contentIn(bytes);
        for (const IniLine& line : readLines(bytes)) {
            // Without a piece of a long line others would be other pieces.
            if (!line.isFirst || !line.isLast) continue;
            if (line.fate == Fate::comment || line.fate == Fate::repeatedHeader) continue;
            const bool isPassedOver = line.fate == Fate::blank || isDropped(line);
            // One that is set again later leaves no trace.
            if (!isPassedOver && line.fate == Fate::stored) continue;
            std::string without = bytes;
            without.erase(line.offset, line.bytes.size());
            ASSERT_EQ(contentIn(without) == content, isPassedOver)
                << visible(std::string(line.bytes)) << " in " << visible(bytes);
            if (isDropped(line)) ++dropped;
        }
    }
    EXPECT_GT(dropped, 200U);
}

// A value that stands alone for its key cannot go either.
TEST_F(IniLinesTest, ALineThatIsStoredIsRead) {
    Random random(2);
    IniFileWriter writer(random);
    for (int i = 0; i < 400; ++i) {
        const std::string bytes = writer.file();
        const std::vector<IniLine> lines = readLines(bytes);
        const std::string content = contentIn(bytes);
        for (const IniLine& line : lines) {
            if (line.fate != Fate::stored || !line.isFirst || !line.isLast) continue;
            std::string changed = bytes;
            const auto end =
                static_cast<std::size_t>(line.text.data() - bytes.data()) + line.text.size();
            if (line.bytes.size() > 500) continue;
            changed.insert(end, "!new!");
            bool isLastOfKey = true;
            for (const IniLine& other : lines) {
                isLastOfKey &= other.offset <= line.offset || other.fate != Fate::stored ||
                               !kfl_test::sameName(other.section, line.section) ||
                               !kfl_test::sameName(std::string(other.key), std::string(line.key));
            }
            if (!isLastOfKey) continue;
            ASSERT_NE(contentIn(changed), content) << visible(std::string(line.bytes));
        }
    }
}

// The lines are all of the file, in order, and are numbered as an editor does.
TEST_F(IniLinesTest, LinesAreTheWholeFile) {
    Random random(3);
    IniFileWriter writer(random);
    for (int i = 0; i < 500; ++i) {
        const std::string bytes = writer.file();
        std::string all;
        std::size_t number = 1;
        for (const IniLine& line : readLines(bytes)) {
            EXPECT_EQ(line.offset, all.size());
            EXPECT_EQ(line.number, number);
            all += line.bytes;
            if (line.bytes.back() == '\n') ++number;
        }
        ASSERT_EQ(all, bytes);
    }
}

// Every dropped line has a finding, and a file that reads as it looks has none.
TEST_F(IniLinesTest, NothingIsDroppedWithoutAFinding) {
    Random random(4);
    IniFileWriter writer(random);
    for (int i = 0; i < 500; ++i) {
        const std::string bytes = writer.file();
        const std::vector<IniLine> lines = readLines(bytes);
        const std::vector<Finding> findings = findingsOf(lines);
        for (const IniLine& line : lines) {
            if (!isDropped(line)) continue;
            std::size_t count = 0;
            for (const Finding& finding : findings) count += finding.number == line.number;
            ASSERT_GT(count, 0U) << visible(std::string(line.bytes));
        }
    }
    EXPECT_TRUE(findingsOf(readLines("; c\n[a]\nk=v\n\n[b]\r\nk:v\r\n  i=\"a\" b\n#x\n")).empty());
}

// The file with a setting in it is read as a parser is in which the value was set, or it is
// refused; no other line changes.
TEST_F(IniLinesTest, ASettingChangesOneLine) {
    Random random(5);
    IniFileWriter writer(random);
    int changed = 0;
    for (int i = 0; i < 2000; ++i) {
        const std::string bytes = writer.file();
        const auto text = [&](const std::string& t) { return t.substr(0, t.find('\0')); };
        const Setting setting{writer.name(), writer.name(),
                              text(random.oneIn(2) ? writer.value() : writer.noise(6))};
        if (!whyNotHeld(setting).empty()) continue;
        const std::string result = withSetting(bytes, setting);

        // What goes before the change and behind it is as it was.
        std::size_t same = 0;
        while (same < bytes.size() && same < result.size() && bytes[same] == result[same]) ++same;
        std::size_t back = 0;
        while (back < bytes.size() - same && back < result.size() - same &&
               bytes[bytes.size() - 1 - back] == result[result.size() - 1 - back]) {
            ++back;
        }
        ASSERT_EQ(bytes.substr(same, bytes.size() - same - back).find('\n'), std::string::npos)
            << visible(bytes) << visible(result);

        bool hasLongLine = false;
        for (const IniLine& line : readLines(bytes)) hasLongLine |= !line.isLast;
        kfl::IniFileParser expected;
        expected.parseFile(file.write(bytes).c_str());
        expected.setValue(setting.key.c_str(), setting.value.c_str(), setting.section.c_str());
        const std::string content = contentIn(result);
        if (hasLongLine && content != contentOf(expected)) continue;  // the tool refuses it
        ASSERT_EQ(content, contentOf(expected))
            << visible(bytes) << " with " << setting.section << '/' << setting.key << '='
            << visible(setting.value);
        ++changed;
    }
    EXPECT_GT(changed, 200);
}

// What is refused could not be read back, wherever it stood.
TEST_F(IniLinesTest, WhatIsRefusedCannotBeRead) {
    Random random(6);
    IniFileWriter writer(random);
    int refused = 0;
    for (int i = 0; i < 2000; ++i) {
        const auto text = [&](const std::string& t) { return t.substr(0, t.find('\0')); };
        const Setting setting{text(writer.noise(4)), text(writer.noise(4)), text(writer.noise(6))};
        const std::string bytes = (setting.section.empty() ? "" : '[' + setting.section + "]\n") +
                                  setting.key + '=' + setting.value + '\n';
        kfl::IniFileParser parser;
        parser.parseFile(file.write(bytes).c_str());
        const char* const value = parser.getValue(setting.key.c_str(), setting.section.c_str());
        ASSERT_EQ(whyNotHeld(setting).empty(), value && value == setting.value)
            << visible(bytes) << ": " << whyNotHeld(setting);
        if (!whyNotHeld(setting).empty()) ++refused;
    }
    EXPECT_GT(refused, 200);
}

}  // namespace
