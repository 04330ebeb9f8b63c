// Libgcrypt, without the processor's AES and vector instructions.
#include <gcrypt.h>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

void begin() {
    static const bool once = [] {
        for (const char* feature : {"intel-aesni", "intel-ssse3", "intel-avx", "intel-avx2",
                                    "intel-vaes-vpclmul", "padlock-aes"})
            gcry_control(GCRYCTL_DISABLE_HWF, feature, nullptr);
        gcry_check_version(nullptr);
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        return true;
    }();
    (void)once;
}

class GcryptCipher : public Cipher {
  public:
    explicit GcryptCipher(const Kind& kind) : enciphering_(kind.enciphering) {
        begin();
        const int cipher = kind.key.size() == 16   ? GCRY_CIPHER_AES128
                           : kind.key.size() == 24 ? GCRY_CIPHER_AES192
                                                   : GCRY_CIPHER_AES256;
        static constexpr int modes[] = {GCRY_CIPHER_MODE_ECB, GCRY_CIPHER_MODE_CBC,
                                        GCRY_CIPHER_MODE_CFB, GCRY_CIPHER_MODE_ECB};
        gcry_cipher_open(&handle_, cipher, modes[kind.mode], 0);
        gcry_cipher_setkey(handle_, kind.key.data(), kind.key.size());
        if (kind.mode == cbc || kind.mode == cfb)
            gcry_cipher_setiv(handle_, kind.chain.data(), kind.chain.size());
    }
    ~GcryptCipher() override { gcry_cipher_close(handle_); }
    GcryptCipher(const GcryptCipher&) = delete;
    GcryptCipher& operator=(const GcryptCipher&) = delete;

    void run(const Byte* in, Byte* out, std::size_t n) override {
        if (enciphering_) {
            gcry_cipher_encrypt(handle_, out, n, in, n);
        } else {
            gcry_cipher_decrypt(handle_, out, n, in, n);
        }
    }

  private:
    gcry_cipher_hd_t handle_;
    bool enciphering_;
};

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    return std::make_unique<GcryptCipher>(kind);
}

const Entered entered({"gcrypt", make, nullptr});

}  // namespace
}  // namespace kfl_benchmark
