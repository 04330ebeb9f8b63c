// mbedTLS. It asks a function of its own whether the processor has AES instructions; here that
// answers no.
#include <mbedtls/aes.h>

#include <algorithm>

#include "benchmarks/ciphers/cipher.h"

extern "C" int mbedtls_aesni_has_support(unsigned what);
int mbedtls_aesni_has_support(unsigned) { return 0; }

namespace kfl_benchmark {
namespace {

class MbedtlsCipher : public Cipher {
  public:
    explicit MbedtlsCipher(const Kind& kind)
        : mode_(kind.mode),
          direction_(kind.enciphering ? MBEDTLS_AES_ENCRYPT : MBEDTLS_AES_DECRYPT) {
        mbedtls_aes_init(&context_);
        const auto bits = static_cast<unsigned>(8 * kind.key.size());
        if (kind.enciphering || kind.mode == cfb) {
            mbedtls_aes_setkey_enc(&context_, kind.key.data(), bits);
        } else {
            mbedtls_aes_setkey_dec(&context_, kind.key.data(), bits);
        }
        std::copy(kind.chain.begin(), kind.chain.end(), chain_);
    }
    ~MbedtlsCipher() override { mbedtls_aes_free(&context_); }
    MbedtlsCipher(const MbedtlsCipher&) = delete;
    MbedtlsCipher& operator=(const MbedtlsCipher&) = delete;

    void run(const Byte* in, Byte* out, std::size_t n) override {
        if (mode_ == cbc) {
            mbedtls_aes_crypt_cbc(&context_, direction_, n, chain_, in, out);
        } else if (mode_ == cfb) {
            mbedtls_aes_crypt_cfb128(&context_, direction_, n, &offset_, chain_, in, out);
        } else {
            for (std::size_t i = 0; i < n; i += 16)
                mbedtls_aes_crypt_ecb(&context_, direction_, in + i, out + i);
        }
    }

  private:
    mbedtls_aes_context context_;
    Byte chain_[16];
    std::size_t offset_ = 0;
    Mode mode_;
    int direction_;
};

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    return std::make_unique<MbedtlsCipher>(kind);
}

void setKey(const Bytes& key) {
    static mbedtls_aes_context there;
    static mbedtls_aes_context back;
    const auto bits = static_cast<unsigned>(8 * key.size());
    mbedtls_aes_setkey_enc(&there, key.data(), bits);
    mbedtls_aes_setkey_dec(&back, key.data(), bits);
}

const Entered entered({"mbedtls", make, setKey});

}  // namespace
}  // namespace kfl_benchmark
