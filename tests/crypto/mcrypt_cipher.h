// libmcrypt's Rijndael with its wide blocks, for comparison; chain kept from call to call.
#ifndef KFL_TESTS_MCRYPT_CIPHER_H
#define KFL_TESTS_MCRYPT_CIPHER_H

#include <mcrypt.h>

#include <stdexcept>
#include <string>

#include "tests/crypto/cipher_support.h"

namespace kfl_test {

class McryptCipher {
  public:
    McryptCipher(const Bytes& key, const Bytes& chain, int mode, bool enciphering)
        : module_(open(chain.size(), mode)), enciphering_(enciphering) {
        Bytes ownKey = key;
        Bytes ownChain = chain;
        if (mcrypt_generic_init(module_, ownKey.data(), static_cast<int>(key.size()),
                                ownChain.data()) < 0)
            throw std::runtime_error("mcrypt_generic_init");
    }
    ~McryptCipher() {
        mcrypt_generic_deinit(module_);
        mcrypt_module_close(module_);
    }
    McryptCipher(const McryptCipher&) = delete;
    McryptCipher& operator=(const McryptCipher&) = delete;

    Bytes next(Bytes text) {
        const auto n = static_cast<int>(text.size());
        if (enciphering_) {
            mcrypt_generic(module_, text.data(), n);
        } else {
            mdecrypt_generic(module_, text.data(), n);
        }
        return text;
    }

  private:
    static MCRYPT open(std::size_t blockSize, int mode) {
        static constexpr const char* modes[] = {"ecb", "cbc", "ncfb"};
        std::string cipher = "rijndael-" + std::to_string(8 * blockSize);
        std::string name = modes[mode];
        MCRYPT const module = mcrypt_module_open(cipher.data(), nullptr, name.data(), nullptr);
        if (module == MCRYPT_FAILED) throw std::runtime_error("mcrypt_module_open");
        return module;
    }

    MCRYPT module_;
    bool enciphering_;
};

}  // namespace kfl_test

#endif
