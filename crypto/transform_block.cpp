#include "crypto/transform_block.h"

namespace kfl::detail {

template <class Way, int Columns>
void transformBlock(Block<Columns>& t, RoundKeys keys) {
    Block<Columns> inRegisters = t;
    transform<Way>(inRegisters, keys);
    t = inRegisters;
}

template void transformBlock<Enciphering, 4>(Block<4>&, RoundKeys);
template void transformBlock<Enciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Enciphering, 8>(Block<8>&, RoundKeys);
template void transformBlock<Deciphering, 4>(Block<4>&, RoundKeys);
template void transformBlock<Deciphering, 6>(Block<6>&, RoundKeys);
template void transformBlock<Deciphering, 8>(Block<8>&, RoundKeys);

}  // namespace kfl::detail
