// libmcrypt, the only one with wide blocks. It works in place.
#include <mcrypt.h>

#include <cstring>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {
namespace {

class McryptCipher : public Cipher {
  public:
    explicit McryptCipher(const Kind& kind) : enciphering_(kind.enciphering) {
        static constexpr const char* modes[] = {"ecb", "cbc", "ncfb", "ecb"};
        std::string cipher = "rijndael-" + std::to_string(8 * kind.chain.size());
        std::string mode = modes[kind.mode];
        module_ = mcrypt_module_open(cipher.data(), nullptr, mode.data(), nullptr);
        Bytes key = kind.key;
        Bytes chain = kind.chain;
        mcrypt_generic_init(module_, key.data(), static_cast<int>(key.size()), chain.data());
    }
    ~McryptCipher() override {
        mcrypt_generic_deinit(module_);
        mcrypt_module_close(module_);
    }
    McryptCipher(const McryptCipher&) = delete;
    McryptCipher& operator=(const McryptCipher&) = delete;

    void run(const Byte* in, Byte* out, std::size_t n) override {
        std::memcpy(out, in, n);
        if (enciphering_) {
            mcrypt_generic(module_, out, static_cast<int>(n));
        } else {
            mdecrypt_generic(module_, out, static_cast<int>(n));
        }
    }

  private:
    MCRYPT module_;
    bool enciphering_;
};

std::unique_ptr<Cipher> make(const Kind& kind) { return std::make_unique<McryptCipher>(kind); }

const Entered entered({"mcrypt", make, nullptr});

}  // namespace
}  // namespace kfl_benchmark
