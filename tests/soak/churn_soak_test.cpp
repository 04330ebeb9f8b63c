// What a process of the device does all day: configurations read, strings, collections, buffers,
// pools and ciphers made, changed and dropped.
#include <gtest/gtest.h>

#include <memory>

#include "kfl/kfl.h"
#include "tests/os/children.h"
#include "tests/soak/soak.h"
#include "tests/support/seed.h"

namespace {

using kfl::AString;
using kfl_test::soak;
using Random = kfl_test::Random;

TEST(ChurnSoak, ConfigurationFiles) {
    const kfl_test::TemporaryFolder folder;
    std::string text;
    for (int section = 0; section < 10; ++section) {
        text += "[section " + std::to_string(section) + "]\n";
        for (unsigned int key = 0; key < 20; ++key) {
            text += "key" + std::to_string(key) + " = " + std::string(key * 10, 'v') + '\n';
        }
    }
    const std::string path = folder.write("ini", text);
    soak("INI files parsed and dropped", kfl_test::rounds(100), 1, [&] {
        kfl::IniFileParser parser;
        EXPECT_TRUE(parser.parseFile(path.c_str()));
        EXPECT_TRUE(parser.setValue("key7", "new", "section 9"));
        EXPECT_STREQ(parser.getValue("KEY7", "section 9"), "new");
    });
}

// How many changes one object sees.
constexpr unsigned int changes = 100;

TEST(ChurnSoak, Strings) {
    Random random;
    soak("changes of strings", kfl_test::rounds(200), changes, [&] {
        AString text("", 20);
        for (unsigned int i = 0; i < changes; ++i) {
            text.append(std::string(random.below(100), 'p').c_str());
            text.insert(random.below(text.length() + 1), "inserted");
            text.erase(random.below(text.length() + 1), static_cast<int>(random.below(120)));
            const AString copy(text);
            const AString formatted(StringFormat("%u %s", copy.length(), "characters"));
            EXPECT_TRUE(copy == text);
        }
    });
}

TEST(ChurnSoak, Collections) {
    Random random;
    soak("changes of collections", kfl_test::rounds(200), changes, [&] {
        kfl::OrdCollect list(random.below(20));
        kfl::VoidPtrOrderedCollection pointers(random.below(20));
        for (unsigned int i = 0; i < changes; ++i) {
            list.insertAt(random.below(list.count() + 1), new AString("item"));
            if (random.oneIn(2)) delete list.removeAt(random.below(list.count()));
            pointers.add(&random);
            EXPECT_EQ(pointers.count(), i + 1);
        }
        list.freeContents();
    });
}

TEST(ChurnSoak, BuffersAndPools) {
    Random random;
    soak("changes of buffers and pools", kfl_test::rounds(200), changes, [&] {
        unsigned char bytes[64] = {};
        LocalHeap heap(16, 64, LocalHeap::GrowOnDemand);
        Buffer buffer(random.below(30), 1 + random.below(20));
        for (unsigned int i = 0; i < changes; ++i) {
            void* const block = heap.allocateBlock(64);
            buffer.Write(bytes, random.below(64));
            Buffer copy(buffer);
            copy += buffer;
            EXPECT_EQ(copy.Size(), 2 * buffer.Size());
            if (random.oneIn(2)) heap.deallocateBlock(block, 64);
        }
    });
}

TEST(ChurnSoak, Ciphers) {
    const kfl_test::TemporaryFolder folder;
    const std::string plain = folder.write("plain", std::string(4096, 'x'));
    const std::string coded = folder / "coded";
    const std::string again = folder / "again";
    soak("files enciphered and deciphered", kfl_test::rounds(20), 2, [&] {
        const auto cipher = std::make_unique<kfl::AES::Rijndael>();
        const std::string key(32, 'k');
        cipher->makeKey(key.c_str(), cipher->_nullchain, 32, 16);
        cipher->encryptFile(plain.c_str(), coded.c_str(), cipher->modeCBC);
        cipher->makeKey(key.c_str(), cipher->_nullchain, 32, 16);
        cipher->decryptFile(coded.c_str(), again.c_str(), cipher->modeCBC);
    });
    EXPECT_EQ(kfl_test::contentOf(again), kfl_test::contentOf(plain));
}

}  // namespace
