// OpenSSL's AES, for comparison; no padding, chain kept from call to call.
#ifndef KFL_TESTS_OPENSSL_CIPHER_H
#define KFL_TESTS_OPENSSL_CIPHER_H

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "tests/crypto/cipher_support.h"

namespace kfl_test {

class OpensslCipher {
  public:
    OpensslCipher(const Bytes& key, const Bytes& chain, int mode, bool enciphering)
        : context_(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {
        check(EVP_CipherInit_ex(context_.get(), kind(key.size(), mode), nullptr, key.data(),
                                chain.data(), enciphering ? 1 : 0));
        check(EVP_CIPHER_CTX_set_padding(context_.get(), 0));
    }

    Bytes next(const Bytes& text) {
        Bytes result(text.size());
        int written = 0;
        check(EVP_CipherUpdate(context_.get(), result.data(), &written, text.data(),
                               static_cast<int>(text.size())));
        if (static_cast<std::size_t>(written) != text.size()) throw std::runtime_error("short");
        return result;
    }

  private:
    static void check(int result) {
        if (result != 1) throw std::runtime_error("OpenSSL");
    }
    static const EVP_CIPHER* kind(std::size_t keyLength, int mode) {
        static constexpr const char* modes[] = {"ecb", "cbc", "cfb"};
        return EVP_get_cipherbyname(
            ("aes-" + std::to_string(8 * keyLength) + '-' + modes[mode]).c_str());
    }

    std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context_;
};

inline OpensslCipher makeOpenssl(const Bytes& key, const Bytes& chain, int mode, bool enciphering) {
    return OpensslCipher(key, chain, mode, enciphering);
}

}  // namespace kfl_test

#endif
