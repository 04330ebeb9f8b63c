#include "crypto/galois.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

constexpr int entry(unsigned a) { return static_cast<int>(detail::logarithm(a)); }

}  // namespace

const int Rijndael::_log[256] = {
#include "crypto/tables/every_byte.inc"
};

}  // namespace kfl::AES
