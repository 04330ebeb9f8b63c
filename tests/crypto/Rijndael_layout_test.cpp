// The object's bytes and the exported names, as a host knows them that was compiled long ago.
// Fields are read at their promised offsets, not by name.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/crypto/cipher_support.h"

namespace {

using kfl_test::Byte;
using kfl_test::Bytes;
using kfl_test::bytesOf;
using kfl_test::chars;
using kfl_test::Keyed;
using kfl_test::lengths;
using kfl_test::Random;
using kfl_test::ReferenceCipher;
using kfl_test::Rijndael;
using kfl_test::toHex;

// Behind the pointer to the virtual table and the flag, which fills up a word.
constexpr std::size_t flagAt = sizeof(void*);
constexpr std::size_t encryptKeysAt = flagAt + 4;
constexpr std::size_t decryptKeysAt = encryptKeysAt + 480;
constexpr std::size_t keyLengthAt = decryptKeysAt + 480;
constexpr std::size_t blockSizeAt = keyLengthAt + 4;
constexpr std::size_t roundsAt = blockSizeAt + 4;
constexpr std::size_t initialChainAt = roundsAt + 4;
constexpr std::size_t chainAt = initialChainAt + 32;
constexpr std::size_t keyWorkAt = chainAt + 32;
constexpr std::size_t blockStateAt = keyWorkAt + 32;
constexpr std::size_t blockTempAt = blockStateAt + 32;
constexpr std::size_t end = blockTempAt + 32;

constexpr bool is32 = sizeof(void*) == 4;
static_assert(!is32 || decryptKeysAt == 488, "");
static_assert(!is32 || keyLengthAt == 968, "");
static_assert(!is32 || chainAt == 1012, "");
static_assert(sizeof(Rijndael) == (is32 ? 1140 : 1144), "");
static_assert(sizeof(Rijndael) >= end && sizeof(Rijndael) < end + sizeof(void*), "");
static_assert(alignof(Rijndael) == sizeof(void*), "");
static_assert(std::is_polymorphic<Rijndael>::value, "");
static_assert(std::has_virtual_destructor<Rijndael>::value, "");

// A live object whose bytes are looked at.
class Raw {
  public:
    Raw() {
        std::memset(memory_, fill, sizeof memory_);
        cipher_ = new (memory_) Rijndael;
    }
    ~Raw() { cipher_->~Rijndael(); }
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;

    static constexpr Byte fill = 0xA5;

    Rijndael& cipher() { return *cipher_; }
    Byte byte(std::size_t offset) const { return memory_[offset]; }
    int number(std::size_t offset) const {
        int value;
        std::memcpy(&value, memory_ + offset, sizeof value);
        return value;
    }
    // A word of a round key, most significant byte first.
    std::string word(std::size_t keys, std::size_t row, std::size_t column) const {
        unsigned value;
        std::memcpy(&value, memory_ + keys + 32 * row + 4 * column, sizeof value);
        Bytes bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<Byte>(value >> shift));
        return toHex(bytes);
    }
    Bytes bytes(std::size_t offset, int n) const {
        return bytesOf(reinterpret_cast<const char*>(memory_) + offset, n);
    }

  private:
    alignas(Rijndael) Byte memory_[sizeof(Rijndael)];
    Rijndael* cipher_;
};

std::string wordOf(const Bytes& key, std::size_t column) {
    return toHex(Bytes(key.begin() + 4 * static_cast<long>(column),
                       key.begin() + 4 * static_cast<long>(column) + 4));
}

TEST(RijndaelLayoutTest, FlagAndNumbersStandInTheirPlaces) {
    for (const int keyLength : lengths()) {
        for (const int blockSize : lengths()) {
            Raw raw;
            EXPECT_EQ(raw.byte(flagAt), 0);
            kfl_test::makeKey(raw.cipher(), kfl_test::countingBytes(keyLength),
                              kfl_test::countingBytes(blockSize));
            EXPECT_EQ(raw.byte(flagAt), 1);
            EXPECT_EQ(raw.number(keyLengthAt), keyLength);
            EXPECT_EQ(raw.number(blockSizeAt), blockSize);
            EXPECT_EQ(raw.number(roundsAt), std::max(keyLength, blockSize) / 4 + 6);
        }
    }
}

TEST(RijndaelLayoutTest, ChainsStandInTheirPlacesAndNoFurther) {
    for (const int blockSize : lengths()) {
        Raw raw;
        const Bytes chain = kfl_test::countingBytes(blockSize);
        kfl_test::makeKey(raw.cipher(), Bytes(16), chain);
        EXPECT_EQ(raw.bytes(initialChainAt, blockSize), chain);
        EXPECT_EQ(raw.bytes(chainAt, blockSize), chain);
        const Bytes text(static_cast<std::size_t>(blockSize), 1);
        Bytes result(text.size());
        raw.cipher().encrypt(chars(text), chars(result), static_cast<unsigned>(blockSize),
                             Rijndael::modeCBC);
        EXPECT_EQ(raw.bytes(initialChainAt, blockSize), chain);
        EXPECT_EQ(raw.bytes(chainAt, blockSize), result);
        for (std::size_t at : {initialChainAt, chainAt})
            for (auto i = static_cast<std::size_t>(blockSize); i < 32; ++i)
                EXPECT_EQ(raw.byte(at + i), Raw::fill);
    }
}

// Row r of the deciphering keys is row rounds - r of the others, unmixed but for the outer two.
TEST(RijndaelLayoutTest, RoundKeysStandInRowsOfEightWords) {
    Random random;
    for (const int keyLength : lengths()) {
        for (const int blockSize : lengths()) {
            Raw raw;
            const Bytes key = randomBytes(random, static_cast<std::size_t>(keyLength));
            const auto size = static_cast<std::size_t>(blockSize);
            kfl_test::makeKey(raw.cipher(), key, Bytes(size));
            const ReferenceCipher reference(key, size);
            const std::size_t rounds = reference.rounds();
            for (std::size_t r = 0; r <= rounds; ++r) {
                const Bytes there = reference.roundKey(r);
                const Bytes back = r == 0 || r == rounds ? reference.roundKey(rounds - r)
                                                         : reference.unmixedRoundKey(rounds - r);
                for (std::size_t j = 0; j < size / 4; ++j) {
                    EXPECT_EQ(raw.word(encryptKeysAt, r, j), wordOf(there, j)) << r << ' ' << j;
                    EXPECT_EQ(raw.word(decryptKeysAt, r, j), wordOf(back, j)) << r << ' ' << j;
                }
            }
        }
    }
}

TEST(RijndaelLayoutTest, WordsBeyondTheKeysAreLeftAlone) {
    for (const int keyLength : lengths()) {
        for (const int blockSize : lengths()) {
            Raw raw;
            kfl_test::makeKey(raw.cipher(), kfl_test::countingBytes(keyLength),
                              Bytes(static_cast<std::size_t>(blockSize)));
            const int rounds = raw.cipher().roundCount();
            for (const std::size_t keys : {encryptKeysAt, decryptKeysAt}) {
                for (int row = 0; row < 15; ++row) {
                    for (int column = 0; column < 8; ++column) {
                        if (row <= rounds && column < blockSize / 4) continue;
                        EXPECT_EQ(raw.word(keys, static_cast<std::size_t>(row),
                                           static_cast<std::size_t>(column)),
                                  "a5a5a5a5");
                    }
                }
            }
        }
    }
}

// The published expansions of three keys.
TEST(RijndaelLayoutTest, PublishedKeyExpansions) {
    Raw raw;
    kfl_test::makeKey(raw.cipher(), kfl_test::fromHex("2b7e151628aed2a6abf7158809cf4f3c"),
                      Bytes(16));
    EXPECT_EQ(raw.word(encryptKeysAt, 1, 0), "a0fafe17");
    EXPECT_EQ(raw.word(encryptKeysAt, 10, 3), "b6630ca6");
    kfl_test::makeKey(raw.cipher(),
                      kfl_test::fromHex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"),
                      Bytes(16));
    EXPECT_EQ(raw.word(encryptKeysAt, 1, 2), "fe0c91f7");
    EXPECT_EQ(raw.word(encryptKeysAt, 12, 3), "01002202");
    kfl_test::makeKey(
        raw.cipher(),
        kfl_test::fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"),
        Bytes(16));
    EXPECT_EQ(raw.word(encryptKeysAt, 2, 0), "9ba35411");
    EXPECT_EQ(raw.word(encryptKeysAt, 14, 3), "706c631e");
}

// --- exported names --------------------------------------------------------------------------

void* exported(const std::string& mangledName) {
    void* const address = dlsym(RTLD_DEFAULT, mangledName.c_str());
    EXPECT_NE(address, nullptr) << mangledName;
    return address;
}

std::string member(const std::string& rest) { return "_ZN3kfl3AES8Rijndael" + rest; }

TEST(RijndaelLayoutTest, VirtualTableHoldsTheDestructorAlone) {
    Raw raw;
    void* const* table;
    std::memcpy(&table, static_cast<const void*>(&raw.cipher()), sizeof table);
    EXPECT_EQ(table[-2], nullptr);
    EXPECT_EQ(table[-1], exported("_ZTIN3kfl3AES8RijndaelE"));
    EXPECT_EQ(table[0], exported(member("D1Ev")));
    EXPECT_EQ(table[1], exported(member("D0Ev")));
    Dl_info info{};
    void* entry = nullptr;
    ASSERT_NE(dladdr1(exported("_ZTVN3kfl3AES8RijndaelE"), &info, &entry, RTLD_DL_SYMENT), 0);
    // The symbol's size stands behind name and value, or name, kind and value.
    std::size_t size;
    std::memcpy(&size, static_cast<const char*>(entry) + (is32 ? 8 : 16), sizeof size);
    EXPECT_EQ(size, 4 * sizeof(void*));
}

TEST(RijndaelLayoutTest, OperationsAreFoundUnderTheirNames) {
    for (const char* const name :
         {"C1Ev", "C2Ev", "D0Ev", "D1Ev", "D2Ev", "7makeKeyEPKcS3_ii", "15DefEncryptBlockEPKcPc",
          "15DefDecryptBlockEPKcPc", "12encryptBlockEPKcPc", "12decryptBlockEPKcPc",
          "7encryptEPKcPcji", "7decryptEPKcPcji", "11encryptFileEPKcS3_i", "11decryptFileEPKcS3_i"})
        exported(member(name));
}

TEST(RijndaelLayoutTest, TablesAreFoundUnderTheirNames) {
    EXPECT_EQ(exported(member("5_alogE")), Rijndael::_alog);
    EXPECT_EQ(exported(member("4_logE")), Rijndael::_log);
    EXPECT_EQ(exported(member("2_SE")), Rijndael::_S);
    EXPECT_EQ(exported(member("3_SiE")), Rijndael::_Si);
    for (int i = 1; i <= 8; ++i) exported(member("3_T" + std::to_string(i) + "E"));
    for (int i = 1; i <= 4; ++i) exported(member("3_U" + std::to_string(i) + "E"));
    EXPECT_EQ(exported(member("3_T1E")), Rijndael::_T1);
    EXPECT_EQ(exported(member("3_U4E")), Rijndael::_U4);
    EXPECT_EQ(exported(member("5_rconE")), Rijndael::_rcon);
    EXPECT_EQ(exported(member("7_shiftsE")), Rijndael::_shifts);
    EXPECT_EQ(exported(member("10_ErrorMsg1E")), &Rijndael::_ErrorMsg1);
    EXPECT_EQ(exported(member("10_ErrorMsg2E")), &Rijndael::_ErrorMsg2);
    EXPECT_EQ(exported(member("10_nullchainE")), &Rijndael::_nullchain);
}

// A host's calls, with room for an object of its own.
TEST(RijndaelLayoutTest, OldHostMakesAndUsesAnObject) {
    alignas(void*) char memory[is32 ? 1140 : 1144];
    reinterpret_cast<void (*)(void*)>(exported(member("C1Ev")))(memory);
    const Bytes key = kfl_test::countingBytes(16);
    const auto makeKey = reinterpret_cast<void (*)(void*, const char*, const char*, int, int)>(
        exported(member("7makeKeyEPKcS3_ii")));
    makeKey(memory, chars(key), Rijndael::_nullchain, 16, 16);
    const Bytes text = kfl_test::fromHex("00112233445566778899aabbccddeeff");
    Bytes result(16);
    const auto encrypt = reinterpret_cast<void (*)(void*, const char*, char*, unsigned, int)>(
        exported(member("7encryptEPKcPcji")));
    encrypt(memory, chars(text), chars(result), 16, 1);
    EXPECT_EQ(toHex(result), "69c4e0d86a7b0430d8cdb78070b4c55a");
    reinterpret_cast<void (*)(void*)>(exported(member("D1Ev")))(memory);
}

}  // namespace
