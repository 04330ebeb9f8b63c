#include "benchmarks/ciphers/cipher.h"
#include "kfl/Rijndael.h"

namespace kfl_benchmark {
namespace {

using kfl::AES::Rijndael;

const char* chars(const Byte* bytes) { return reinterpret_cast<const char*>(bytes); }
char* chars(Byte* bytes) { return reinterpret_cast<char*>(bytes); }

class KflCipher : public Cipher {
  public:
    explicit KflCipher(const Kind& kind) : mode_(kind.mode), enciphering_(kind.enciphering) {
        cipher_.makeKey(chars(kind.key.data()), chars(kind.chain.data()),
                        static_cast<int>(kind.key.size()), static_cast<int>(kind.chain.size()));
    }
    void run(const Byte* in, Byte* out, std::size_t n) override {
        if (mode_ == singleBlock) return cipher_.encryptBlock(chars(in), chars(out));
        const auto length = static_cast<unsigned>(n);
        if (enciphering_) {
            cipher_.encrypt(chars(in), chars(out), length, mode_);
        } else {
            cipher_.decrypt(chars(in), chars(out), length, mode_);
        }
    }

  private:
    Rijndael cipher_;
    Mode mode_;
    bool enciphering_;
};

std::unique_ptr<Cipher> make(const Kind& kind) { return std::make_unique<KflCipher>(kind); }

void setKey(const Bytes& key) {
    static Rijndael cipher;
    cipher.makeKey(chars(key.data()), Rijndael::_nullchain, static_cast<int>(key.size()), 16);
}

const Entered entered({"kfl", make, setKey});

}  // namespace
}  // namespace kfl_benchmark
