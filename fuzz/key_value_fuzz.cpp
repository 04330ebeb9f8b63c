// A key/value file: the pairs wanted are its keys and some others. The file is also one text for
// trim() and getNextWord().
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "kfl/KeyValue.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/memory_file.h"

namespace {

using kfl_test::SimpleIniReader;
using kfl_test::SimpleKey;
using kfl_test::textOf;
using kfl_test::withoutEdges;

std::unique_ptr<kfl::KeyValuePair> pairOf(std::string key) {
    std::string value = "default";
    return std::make_unique<kfl::KeyValuePair>(key.data(), value.data());
}

void comparePairs(const kfl_test::MemoryFile& file, const std::string& bytes) {
    SimpleIniReader model;
    model.read(bytes);
    std::vector<std::unique_ptr<kfl::KeyValuePair>> pairs;
    for (const char* const name : {"host", "", "Port"}) pairs.push_back(pairOf(name));
    // Those of all sections: only the first one's count.
    for (const auto& section : model.sections)
        for (const SimpleKey& key : section.keys) pairs.push_back(pairOf(key.name));
    std::vector<kfl::KeyValuePair*> list;
    for (const auto& pair : pairs) list.push_back(pair.get());
    list.push_back(nullptr);

    const int result = kfl::KeyValueParser().parse(file.write(bytes).c_str(), list.data());
    bool found = false;
    for (const auto& pair : pairs) {
        const SimpleKey* const key = model.findKey(textOf(pair->key), "");
        found = found || key;
        ASSERT_EQ(textOf(pair->value), key ? key->value : "default") << textOf(pair->key);
    }
    ASSERT_EQ(result, found ? 2 : 1);
}

void compareWords(const std::string& text) {
    kfl::AString trimmed(text.c_str());
    kfl::trim(trimmed);
    ASSERT_EQ(textOf(trimmed), withoutEdges(text));

    kfl::AString line(text.c_str());
    kfl::AString word("what was there before");
    kfl::getNextWord(line, word);
    const std::size_t separator = text.find_first_of("=:");
    ASSERT_EQ(textOf(word), withoutEdges(text.substr(0, separator)));
    ASSERT_EQ(textOf(line), separator == std::string::npos ? "" : text.substr(separator + 1));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kfl_test::MemoryFile file;
    const std::string bytes = kfl_fuzz::Input(data, size).rest();
    comparePairs(file, bytes);
    const std::string text = bytes.substr(0, bytes.find('\0'));
    compareWords(text);
    const kfl::NameValuePair pair(kfl_fuzz::ExactText{text}, "");
    EXPECT_EQ(textOf(pair.name), text);
    return 0;
}
