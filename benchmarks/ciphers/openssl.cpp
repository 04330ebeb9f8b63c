// OpenSSL. The program's environment keeps it from the processor's AES instructions and from vector
// permutations, which leaves hand-written assembler with tables.
#include <openssl/aes.h>
#include <openssl/evp.h>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

class OpensslCipher : public Cipher {
  public:
    explicit OpensslCipher(const Kind& kind) : context_(EVP_CIPHER_CTX_new()) {
        static constexpr const char* modes[] = {"ecb", "cbc", "cfb", "ecb"};
        const std::string name =
            "aes-" + std::to_string(8 * kind.key.size()) + '-' + modes[kind.mode];
        EVP_CipherInit_ex(context_, EVP_get_cipherbyname(name.c_str()), nullptr, kind.key.data(),
                          kind.chain.data(), kind.enciphering ? 1 : 0);
        EVP_CIPHER_CTX_set_padding(context_, 0);
    }
    ~OpensslCipher() override { EVP_CIPHER_CTX_free(context_); }
    OpensslCipher(const OpensslCipher&) = delete;
    OpensslCipher& operator=(const OpensslCipher&) = delete;

    void run(const Byte* in, Byte* out, std::size_t n) override {
        int written = 0;
        EVP_CipherUpdate(context_, out, &written, in, static_cast<int>(n));
    }

  private:
    EVP_CIPHER_CTX* context_;
};

// The block function itself, as it is called without the general interface.
class OpensslBlock : public Cipher {
  public:
    explicit OpensslBlock(const Kind& kind) {
        AES_set_encrypt_key(kind.key.data(), static_cast<int>(8 * kind.key.size()), &key_);
    }
    void run(const Byte* in, Byte* out, std::size_t) override { AES_encrypt(in, out, &key_); }

  private:
    AES_KEY key_;
};

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    if (kind.mode == singleBlock) return std::make_unique<OpensslBlock>(kind);
    return std::make_unique<OpensslCipher>(kind);
}

void setKey(const Bytes& key) {
    static AES_KEY there;
    static AES_KEY back;
    AES_set_encrypt_key(key.data(), static_cast<int>(8 * key.size()), &there);
    AES_set_decrypt_key(key.data(), static_cast<int>(8 * key.size()), &back);
}

const Entered entered({"openssl", make, setKey});

}  // namespace
}  // namespace kfl_benchmark
