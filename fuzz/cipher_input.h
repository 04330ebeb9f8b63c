// A key, a chain block and a mode out of a fuzzer's bytes.
#ifndef KFL_FUZZ_CIPHER_INPUT_H
#define KFL_FUZZ_CIPHER_INPUT_H

#include "fuzz/input.h"
#include "tests/crypto/cipher_support.h"

namespace kfl_fuzz {

// Bytes of one of the three lengths; those that are missing are zeros.
inline kfl_test::Bytes anyLengthOf(Input& input) {
    const auto length = static_cast<std::size_t>(kfl_test::lengths()[input.below(3)]);
    kfl_test::Bytes bytes = kfl_test::bytesOf(input.bytes(length));
    bytes.resize(length);
    return bytes;
}

struct CipherInput {
    explicit CipherInput(Input& input)
        : key(anyLengthOf(input)),
          chain(anyLengthOf(input)),
          mode(static_cast<int>(input.below(4))) {}

    kfl_test::Keyed cipher() const { return kfl_test::Keyed(key, chain); }
    kfl_test::ReferenceModes reference() const { return kfl_test::ReferenceModes(key, chain); }
    std::size_t blockSize() const { return chain.size(); }

    kfl_test::Bytes key;
    kfl_test::Bytes chain;
    int mode;  // 3 is none of the modes, and counts as the first
};

}  // namespace kfl_fuzz

#endif
