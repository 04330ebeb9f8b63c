#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

const char zeros[32] = {};

}  // namespace

const char* const Rijndael::_nullchain = zeros;

}  // namespace kfl::AES
