// What the cipher's tests have in common: bytes as text, random bytes, and the cipher called with
// them.
#ifndef KFL_TESTS_CIPHER_SUPPORT_H
#define KFL_TESTS_CIPHER_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "kfl/Rijndael.h"
#include "tests/crypto/reference_cipher.h"
#include "tests/support/recording_host.h"
#include "tests/support/seed.h"

namespace kfl_test {

using kfl::AES::Rijndael;

inline const std::vector<int>& lengths() {
    static const std::vector<int> all{16, 24, 32};
    return all;
}

inline Bytes fromHex(std::string_view text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<Byte>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
    return bytes;
}

inline std::string toHex(const Bytes& bytes) {
    std::string text;
    for (const Byte b : bytes) {
        text += "0123456789abcdef"[b >> 4];
        text += "0123456789abcdef"[b & 15];
    }
    return text;
}

inline Bytes randomBytes(Random& random, std::size_t n) {
    Bytes bytes(n);
    for (Byte& b : bytes) b = static_cast<Byte>(random());
    return bytes;
}

// 00, 01, 02 ...
inline Bytes countingBytes(int n) {
    Bytes bytes;
    for (int i = 0; i < n; ++i) bytes.push_back(static_cast<Byte>(i));
    return bytes;
}

inline const char* chars(const Bytes& bytes) { return reinterpret_cast<const char*>(bytes.data()); }
inline char* chars(Bytes& bytes) { return reinterpret_cast<char*>(bytes.data()); }

inline Bytes bytesOf(const char* from, int n) { return Bytes(from, from + n); }
inline Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

inline void makeKey(Rijndael& cipher, const Bytes& key, const Bytes& chain) {
    cipher.makeKey(chars(key), chars(chain), static_cast<int>(key.size()),
                   static_cast<int>(chain.size()));
}

// A cipher with a key; the chain's length is the block size.
class Keyed {
  public:
    Keyed(const Bytes& key, const Bytes& chain) { makeKey(cipher_, key, chain); }

    Rijndael* operator->() { return &cipher_; }
    Rijndael& operator*() { return cipher_; }

    Bytes encrypted(const Bytes& text, int mode) {
        Bytes result(text.size());
        cipher_.encrypt(chars(text), chars(result), static_cast<unsigned>(text.size()), mode);
        return result;
    }
    Bytes decrypted(const Bytes& text, int mode) {
        Bytes result(text.size());
        cipher_.decrypt(chars(text), chars(result), static_cast<unsigned>(text.size()), mode);
        return result;
    }
    Bytes chain() const { return bytesOf(cipher_.currentChain(), cipher_.blockBytes()); }

  private:
    Rijndael cipher_;
};

inline Event cipherEvent(const std::string& text) { return Event{3, 950, 0, 0, text}; }

// The events since the last look, which must be these.
inline void expectEvents(const std::vector<std::string>& texts) {
    std::vector<Event> expected;
    for (const std::string& text : texts) expected.push_back(cipherEvent(text));
    EXPECT_EQ(events(), expected);
    clearEvents();
}

// KFL_TEST_ROUNDS multiplies how much the random tests do.
inline unsigned testRounds(unsigned usual) {
    const char* const given = std::getenv("KFL_TEST_ROUNDS");
    return given && *given != '\0' ? usual * static_cast<unsigned>(std::strtoul(given, nullptr, 0))
                                   : usual;
}

}  // namespace kfl_test

#endif
