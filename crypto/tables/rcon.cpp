#include "crypto/galois.h"
#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

// 2 to the power of `exponent`; 2 is the generator to the power of 25.
constexpr unsigned char entry(unsigned exponent) {
    return static_cast<unsigned char>(detail::power(25 * exponent % 255));
}

}  // namespace

const unsigned char Rijndael::_rcon[30] = {
    entry(0),  entry(1),  entry(2),  entry(3),  entry(4),  entry(5),  entry(6),  entry(7),
    entry(8),  entry(9),  entry(10), entry(11), entry(12), entry(13), entry(14), entry(15),
    entry(16), entry(17), entry(18), entry(19), entry(20), entry(21), entry(22), entry(23),
    entry(24), entry(25), entry(26), entry(27), entry(28), entry(29),
};

}  // namespace kfl::AES
