// LibTomCrypt, which has tables only.
#include <tomcrypt.h>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

int cipherIndex() {
    static const int index = register_cipher(&rijndael_desc);
    return index;
}

template <class State, int (*start)(State&, const Kind&),
          int (*encrypt)(const Byte*, Byte*, unsigned long, State*),
          int (*decrypt)(const Byte*, Byte*, unsigned long, State*)>
class TomcryptCipher : public Cipher {
  public:
    explicit TomcryptCipher(const Kind& kind) : work_(kind.enciphering ? encrypt : decrypt) {
        start(state_, kind);
    }
    void run(const Byte* in, Byte* out, std::size_t n) override { work_(in, out, n, &state_); }

  private:
    State state_;
    int (*work_)(const Byte*, Byte*, unsigned long, State*);
};

int keyLength(const Kind& kind) { return static_cast<int>(kind.key.size()); }

int startEcb(symmetric_ECB& state, const Kind& kind) {
    return ecb_start(cipherIndex(), kind.key.data(), keyLength(kind), 0, &state);
}
int startCbc(symmetric_CBC& state, const Kind& kind) {
    return cbc_start(cipherIndex(), kind.chain.data(), kind.key.data(), keyLength(kind), 0, &state);
}
int startCfb(symmetric_CFB& state, const Kind& kind) {
    return cfb_start(cipherIndex(), kind.chain.data(), kind.key.data(), keyLength(kind), 0, &state);
}
int startBlock(symmetric_key& state, const Kind& kind) {
    return rijndael_setup(kind.key.data(), keyLength(kind), 0, &state);
}
int encryptBlock(const Byte* in, Byte* out, unsigned long, symmetric_key* state) {
    return rijndael_ecb_encrypt(in, out, state);
}

std::unique_ptr<Cipher> make(const Kind& kind) {
    if (kind.chain.size() != 16) return nullptr;
    switch (kind.mode) {
        case cbc:
            return std::make_unique<
                TomcryptCipher<symmetric_CBC, startCbc, cbc_encrypt, cbc_decrypt>>(kind);
        case cfb:
            return std::make_unique<
                TomcryptCipher<symmetric_CFB, startCfb, cfb_encrypt, cfb_decrypt>>(kind);
        case singleBlock:
            return std::make_unique<
                TomcryptCipher<symmetric_key, startBlock, encryptBlock, encryptBlock>>(kind);
        default:
            return std::make_unique<
                TomcryptCipher<symmetric_ECB, startEcb, ecb_encrypt, ecb_decrypt>>(kind);
    }
}

void setKey(const Bytes& key) {
    static symmetric_key state;
    rijndael_setup(key.data(), static_cast<int>(key.size()), 0, &state);
}

const Entered entered({"tomcrypt", make, setKey});

}  // namespace
}  // namespace kfl_benchmark
