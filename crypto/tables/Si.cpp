#include "crypto/galois.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

constexpr unsigned char entry(unsigned a) {
    return static_cast<unsigned char>(detail::unsubstituted(a));
}

}  // namespace

const unsigned char Rijndael::_Si[256] = {
#include "crypto/tables/every_byte.inc"
};

}  // namespace kfl::AES
