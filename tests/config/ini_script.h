// Steps that an INI parser and the simple reader take together.
#ifndef KFL_TESTS_INI_SCRIPT_H
#define KFL_TESTS_INI_SCRIPT_H

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "kfl/IniFileParser.h"
#include "tests/config/ini_file_writer.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/choices.h"
#include "tests/support/memory_file.h"

namespace kfl_test {

// Gives both readers a file of these bytes.
inline void readBoth(kfl::IniFileParser& parser, SimpleIniReader& model, const MemoryFile& file,
                     const std::string& bytes) {
    ASSERT_TRUE(parser.parseFile(file.write(bytes).c_str()));
    model.read(bytes);
    ASSERT_EQ(contentOf(parser), contentOf(model)) << visible(bytes);
    ASSERT_EQ(parser.flags, model.flags);
}

// Every value that the model holds is found under its name in any case, and nothing else is.
inline void compareLookups(kfl::IniFileParser& parser, SimpleIniReader& model,
                           const std::string& key, const std::string& section) {
    const SimpleKey* const found = model.findKey(key, section);
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

inline std::string withoutNul(const std::string& text) { return text.substr(0, text.find('\0')); }

// Gives both the same call.
inline void takeIniStep(Choices& random, IniFileWriter& writer, const MemoryFile& file,
                        kfl::IniFileParser& parser, SimpleIniReader& model) {
    const std::string key = random.oneIn(5) ? withoutNul(writer.noise(5)) : writer.name();
    const std::string section = random.oneIn(5) ? withoutNul(writer.noise(5)) : writer.name();
    const std::string value = withoutNul(writer.value());
    switch (random.below(8)) {
        case 0: return readBoth(parser, model, file, writer.file());
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
        default: compareLookups(parser, model, key, section);
    }
}

}  // namespace kfl_test

#endif
