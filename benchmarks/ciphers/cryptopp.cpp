// Crypto++, kept from the processor's AES instructions by the flag it looks at.
#include <cryptopp/aes.h>
#include <cryptopp/cpu.h>
#include <cryptopp/modes.h>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

using CryptoPP::AES;

void begin() {
    CryptoPP::HasAESNI();
    CryptoPP::g_hasAESNI = false;
}

template <class Transformation>
class CryptoppCipher : public Cipher {
  public:
    explicit CryptoppCipher(const Kind& kind) {
        begin();
        if (kind.mode == ecb || kind.mode == singleBlock) {
            transformation_.SetKey(kind.key.data(), kind.key.size());
        } else {
            transformation_.SetKeyWithIV(kind.key.data(), kind.key.size(), kind.chain.data(), 16);
        }
    }
    void run(const Byte* in, Byte* out, std::size_t n) override {
        transformation_.ProcessData(out, in, n);
    }

  private:
    Transformation transformation_;
};

template <class Pair>
std::unique_ptr<Cipher> makeOf(const Kind& kind) {
    if (kind.enciphering) return std::make_unique<CryptoppCipher<typename Pair::Encryption>>(kind);
    return std::make_unique<CryptoppCipher<typename Pair::Decryption>>(kind);
}

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    if (kind.mode == cbc) return makeOf<CryptoPP::CBC_Mode<AES>>(kind);
    if (kind.mode == cfb) return makeOf<CryptoPP::CFB_Mode<AES>>(kind);
    return makeOf<CryptoPP::ECB_Mode<AES>>(kind);
}

const Entered entered({"cryptopp", make, nullptr});

}  // namespace
}  // namespace kfl_benchmark
