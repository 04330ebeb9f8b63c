#include "crypto/galois.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

constexpr unsigned int entry(unsigned a) { return detail::mixedColumn(detail::substituted(a), 0); }

}  // namespace

const unsigned int Rijndael::_T1[256] = {
#include "crypto/tables/every_byte.inc"
};

}  // namespace kfl::AES
