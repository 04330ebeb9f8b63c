// Overwrites keys in memory, in a way that the compiler cannot leave out.
//
//     kfl::AES::Rijndael cipher;
//     const kfl::WipedAtEnd wiped(cipher);
//     cipher.makeKey(key, chain, 32, 16);
//     ...
//     kfl::wipe(key, sizeof key);
//
// What is wiped is the memory named. Copies of it can be in registers, in stack frames that were
// left, in the swap space or in core files.
#ifndef KFL_CONVENIENCE_WIPE_H
#define KFL_CONVENIENCE_WIPE_H

#include <new>

#include "kfl/Rijndael.h"

namespace kfl {

// Fills `size` bytes with zeros, although nobody may read them any more.
inline void wipe(void* memory, unsigned long size) {
    __builtin_memset(memory, 0, size);
    // The compiler must think that this reads the bytes.
    __asm__ __volatile__("" : : "r"(memory) : "memory");
}

// Overwrites key, round keys and chain; the cipher is as one that never had a key, and can be given
// one. Requires: a Rijndael itself, no object of a class derived from it.
inline void wipe(AES::Rijndael& cipher) {
    cipher.~Rijndael();
    wipe(static_cast<void*>(&cipher), sizeof cipher);
    new (static_cast<void*>(&cipher)) AES::Rijndael;
}

// Wipes a cipher at the end of a scope. The cipher must outlive it: it is declared behind it.
class WipedAtEnd {
  public:
    // The cipher to wipe.
    explicit WipedAtEnd(AES::Rijndael& cipher) : cipher_(cipher) {}
    ~WipedAtEnd() { wipe(cipher_); }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

  private:
    AES::Rijndael& cipher_;
};

}  // namespace kfl

#endif
