// A file, as the bytes stand there, beside the simple reader; then the same file again into the
// same parser.
#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "tests/config/ini_script.h"

namespace {

using kfl_test::SimpleIniReader;

// With the case of its letters changed.
std::string inOtherCase(std::string text) {
    for (char& c : text)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) c = static_cast<char>(c ^ 0x20);
    return text;
}

void compareAllLookups(kfl::IniFileParser& parser, SimpleIniReader& model) {
    for (std::size_t i = 0; i < model.sections.size(); ++i) {
        const std::string section = inOtherCase(model.sections[i].name);
        for (std::size_t k = 0; k < model.sections[i].keys.size() && k < 20; ++k) {
            const std::string name = inOtherCase(model.sections[i].keys[k].name);
            kfl_test::compareLookups(parser, model, name, section);
            kfl_test::compareLookups(parser, model, name + "x", section);
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kfl_test::MemoryFile file;
    const std::string bytes = kfl_fuzz::Input(data, size).rest();
    kfl::IniFileParser parser;
    SimpleIniReader model;
    kfl_test::readBoth(parser, model, file, bytes);
    compareAllLookups(parser, model);
    parser.modified = model.modified = false;
    kfl_test::readBoth(parser, model, file, bytes);
    return 0;
}
