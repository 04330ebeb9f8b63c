// One block as a function of its own, for every place where a call does not matter.
#ifndef KFL_CRYPTO_TRANSFORM_BLOCK_H
#define KFL_CRYPTO_TRANSFORM_BLOCK_H

#include "crypto/rounds.h"

namespace kfl::detail {

// All rounds of one block; Way is Enciphering or Deciphering.
template <class Way, int Columns>
void transformBlock(Block<Columns>& t, RoundKeys keys);

}  // namespace kfl::detail

#endif
