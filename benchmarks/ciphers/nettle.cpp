// Nettle. The program's environment keeps it from the processor's AES instructions.
#include <nettle/aes.h>
#include <nettle/cbc.h>
#include <nettle/cfb.h>

#include <algorithm>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

template <class Context, nettle_set_key_func* encryptKey, nettle_set_key_func* decryptKey,
          nettle_cipher_func* encrypt, nettle_cipher_func* decrypt>
class NettleCipher : public Cipher {
  public:
    explicit NettleCipher(const Kind& kind) : mode_(kind.mode), enciphering_(kind.enciphering) {
        encryptKey(&there_, kind.key.data());
        decryptKey(&back_, kind.key.data());
        std::copy(kind.chain.begin(), kind.chain.end(), chain_);
    }
    void run(const Byte* in, Byte* out, std::size_t n) override {
        if (mode_ == cbc) {
            if (enciphering_) return cbc_encrypt(&there_, encrypt, 16, chain_, n, out, in);
            return cbc_decrypt(&back_, decrypt, 16, chain_, n, out, in);
        }
        if (mode_ == cfb) {
            if (enciphering_) return cfb_encrypt(&there_, encrypt, 16, chain_, n, out, in);
            return cfb_decrypt(&there_, encrypt, 16, chain_, n, out, in);
        }
        if (enciphering_) return encrypt(&there_, n, out, in);
        decrypt(&back_, n, out, in);
    }

  private:
    Context there_;
    Context back_;
    Byte chain_[16];
    Mode mode_;
    bool enciphering_;
};

// The library's functions with their contexts' types taken away.
template <class Context, void (*function)(Context*, const uint8_t*)>
void setKeyOf(void* context, const uint8_t* key) {
    function(static_cast<Context*>(context), key);
}
template <class Context, void (*function)(const Context*, size_t, uint8_t*, const uint8_t*)>
void cipherOf(const void* context, size_t n, uint8_t* out, const uint8_t* in) {
    function(static_cast<const Context*>(context), n, out, in);
}

using Nettle128 = NettleCipher<aes128_ctx, setKeyOf<aes128_ctx, nettle_aes128_set_encrypt_key>,
                               setKeyOf<aes128_ctx, nettle_aes128_set_decrypt_key>,
                               cipherOf<aes128_ctx, nettle_aes128_encrypt>,
                               cipherOf<aes128_ctx, nettle_aes128_decrypt>>;
using Nettle192 = NettleCipher<aes192_ctx, setKeyOf<aes192_ctx, nettle_aes192_set_encrypt_key>,
                               setKeyOf<aes192_ctx, nettle_aes192_set_decrypt_key>,
                               cipherOf<aes192_ctx, nettle_aes192_encrypt>,
                               cipherOf<aes192_ctx, nettle_aes192_decrypt>>;
using Nettle256 = NettleCipher<aes256_ctx, setKeyOf<aes256_ctx, nettle_aes256_set_encrypt_key>,
                               setKeyOf<aes256_ctx, nettle_aes256_set_decrypt_key>,
                               cipherOf<aes256_ctx, nettle_aes256_encrypt>,
                               cipherOf<aes256_ctx, nettle_aes256_decrypt>>;

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    if (kind.key.size() == 16) return std::make_unique<Nettle128>(kind);
    if (kind.key.size() == 24) return std::make_unique<Nettle192>(kind);
    return std::make_unique<Nettle256>(kind);
}

template <class Context>
void setBoth(void (*there)(Context*, const uint8_t*), void (*back)(Context*, const Context*),
             const Bytes& key) {
    static Context forward;
    static Context backward;
    there(&forward, key.data());
    back(&backward, &forward);
}

void setKey(const Bytes& key) {
    if (key.size() == 16)
        return setBoth(nettle_aes128_set_encrypt_key, nettle_aes128_invert_key, key);
    if (key.size() == 24)
        return setBoth(nettle_aes192_set_encrypt_key, nettle_aes192_invert_key, key);
    setBoth(nettle_aes256_set_encrypt_key, nettle_aes256_invert_key, key);
}

const Entered entered({"nettle", make, setKey});

}  // namespace
}  // namespace kfl_benchmark
