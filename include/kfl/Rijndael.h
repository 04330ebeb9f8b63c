// The Rijndael block cipher: AES where the block has 16 bytes, and its two wider blocks.
//
//     kfl::AES::Rijndael cipher;
//     cipher.makeKey(key, chain, 32, 16);                     // 32 raw key bytes, 16-byte blocks
//     cipher.encrypt(text, coded, 64, cipher.modeCBC);        // 64 bytes, 4 blocks
//     cipher.makeKey(key, chain, 32, 16);                     // back to the first chain block
//     cipher.decrypt(coded, text, 64, cipher.modeCBC);
//
// Keys of 16, 24 and 32 bytes go with blocks of 16, 24 and 32 bytes, nine combinations in all. An
// object holds one expanded key and one running chain block. The chain carries on from call to call
// and from file to file; only makeKey() sets it, so what was enciphered in CBC or CFB is deciphered
// by an object whose chain stands where it stood then, mostly after a fresh makeKey().
//
// Every failure is reported to the host: genSyslogEvent(3, 950, 0, 0, text). The operation then
// returns without effect; nothing is thrown, no result is returned. Only the file operations
// allocate; std::bad_alloc passes through them with both files closed.
//
// What the cipher is not:
//  - It hides, it does not protect: who can change the ciphertext changes the plaintext, unnoticed.
//    Where that matters, keep a keyed checksum (a MAC) of the ciphertext and check it first.
//  - ECB shows which blocks are equal. It is for single random blocks such as keys; take CBC or CFB
//    for anything else. Both need a chain block that was not used before with the same key, for CBC
//    one that nobody can foresee.
//  - Table look-ups take more or less time with what the processor's cache holds, which depends on
//    key and data. Who can run code on the same processor, or time single blocks exactly, may learn
//    the key; use a cipher without tables where such neighbours are not trusted.
//  - Round keys and chain are not wiped when the object ends. Its bytes can stay in memory and in
//    core files; a host that minds overwrites the object's memory after its end.
//  - Whole blocks only. Files are padded, and the padding is neither marked nor removed. A host
//    that needs the exact length keeps it, for example in the text's first bytes.
//
// One thread at a time uses an object; distinct objects are independent, and a copy is one. `in`
// and `result` may be the same or overlap: the outcome is that of one block after the other, each
// read before it is written, as told at each operation.
#ifndef KFL_RIJNDAEL_H
#define KFL_RIJNDAEL_H

#include "kfl/export.h"

namespace kfl {
namespace AES {

// One key with its schedule, and the chain block that its calls carry on.
class KFL_EXPORT Rijndael {
  public:
    // The chaining modes. Any other number counts as modeECB.
    enum Mode : int {
        modeECB = 0,  // Each block alone.
        modeCBC = 1,  // Cipher-block chaining.
        modeCFB = 2   // Cipher feedback over whole blocks.
    };

    // Without a key: every operation but makeKey reports "Object not Initialized".
    Rijndael();
    // Kept on purpose: wipes neither round keys nor chain.
    virtual ~Rijndael();

    // Takes `keyLength` raw bytes at `key` and `blockSize` raw bytes at `chain`, the chain block to
    // begin with; each length is 16, 24 or 32. May be called again at any time. Refused, in this
    // order: a null key ("Empty key"), a key length ("Incorrect key length"), a block length
    // ("Incorrect block length"); nothing changes then, and a former key stays in force.
    // Requires: `chain` holds `blockSize` bytes; it is not checked. _nullchain gives zeros.
    void makeKey(const char* key, const char* chain, int keyLength, int blockSize);

    // Enciphers the 16 bytes at `in` to `result`, which may be the same.
    // Kept on purpose: the block size is not looked at. Requires: a key made for 16-byte blocks.
    void DefEncryptBlock(const char* in, char* result);
    // The inverse, under the same rules.
    void DefDecryptBlock(const char* in, char* result);

    // Enciphers one block of the key's block size, chain left alone; `in` and `result` may be the
    // same.
    void encryptBlock(const char* in, char* result);
    // The inverse.
    void decryptBlock(const char* in, char* result);

    // Enciphers `n` bytes from `in` to `result` and moves the chain on. Two calls for the halves of
    // a text give what one call for the whole gives. `in` and `result` may be the same. Refused:
    // an `n` that is 0 or no multiple of the block size ("Data not multiple of Block Size").
    void encrypt(const char* in, char* result, unsigned n, int mode);
    // The inverse. Kept on purpose: in CBC and CFB the chain is read from `in` after the block's
    // output was written to `result`. So when they are the same, only the first block comes out
    // right. Requires for a right result: no overlap in these modes.
    void decrypt(const char* in, char* result, unsigned n, int mode);

    // Enciphers the file `inName` to the file `outName`, which is created or cut to nothing first.
    // The result is bare ciphertext as long as the input rounded up to whole blocks; the padding
    // bytes, before enciphering, are 0xFF each. Reported: "Unable to open NAME", "Unable to create
    // NAME", and for an empty input, whose result is empty, "Data not multiple of Block Size".
    // Without a key the output is made and stays empty. What cannot be measured (a pipe, a
    // directory) counts as empty. Kept on purpose: failing reads and writes are not reported; and
    // an output that is the input itself is cut before it is read.
    void encryptFile(const char* inName, const char* outName, int mode);
    // The inverse. Missing bytes of a last block count as zeros. Kept on purpose: padding is not
    // removed, so a text of 10 bytes comes back with six 0xFF behind it.
    void decryptFile(const char* inName, const char* outName, int mode);

    // True once a key was made. The lengths and the count below are 0 before.
    bool hasKey() const { return keyInitialized; }
    // Length of the key in bytes.
    int keyBytes() const { return keyInitialized ? keyLength : 0; }
    // Length of a block in bytes.
    int blockBytes() const { return keyInitialized ? blockSize : 0; }
    // Rounds of a block: 10, 12 or 14.
    int roundCount() const { return keyInitialized ? rounds : 0; }
    // The chain block given to makeKey: blockBytes() bytes of the object.
    const char* firstChain() const { return initialChain; }
    // The running chain block, as long.
    const char* currentChain() const { return chain; }

    // The tables of the cipher's arithmetic in GF(2^8), where bytes are polynomials over the bits,
    // reduced by 0x11B. A word's bytes are given here the most significant first.

    // The powers of the generator 3.
    static const int _alog[256];
    // The exponent of each byte (0 for 0 and 1).
    static const int _log[256];
    // The substitution of bytes.
    static const unsigned char _S[256];
    // Its inverse.
    static const unsigned char _Si[256];
    // Substitution and column mixing of one byte in row 0 of a column: (2 S, S, S, 3 S).
    static const unsigned int _T1[256];
    // The same for row 1: rotated right by 8.
    static const unsigned int _T2[256];
    // For row 2: by 16.
    static const unsigned int _T3[256];
    // For row 3: by 24.
    static const unsigned int _T4[256];
    // For deciphering, row 0: (14 Si, 9 Si, 13 Si, 11 Si).
    static const unsigned int _T5[256];
    // For row 1: rotated right by 8.
    static const unsigned int _T6[256];
    // For row 2: by 16.
    static const unsigned int _T7[256];
    // For row 3: by 24.
    static const unsigned int _T8[256];
    // Inverse column mixing alone, row 0: (14 x, 9 x, 13 x, 11 x).
    static const unsigned int _U1[256];
    // For row 1: rotated right by 8.
    static const unsigned int _U2[256];
    // For row 2: by 16.
    static const unsigned int _U3[256];
    // For row 3: by 24.
    static const unsigned int _U4[256];
    // The round constants: the powers of 2.
    static const unsigned char _rcon[30];
    // By block size (16, 24, 32) and row of the state: how many columns the row moves in
    // enciphering and in deciphering.
    static const int _shifts[3][4][2];

    // The text of the report that there is no key.
    static const char* const _ErrorMsg1;
    // The text of the report that data are no whole blocks.
    static const char* const _ErrorMsg2;
    // 32 zero bytes, for callers that want a chain of zeros.
    static const char* const _nullchain;

  private:
    bool keyInitialized;
    // Row r holds the key of round r, one word for each column of the block.
    unsigned int encryptKeys[15][8];
    unsigned int decryptKeys[15][8];
    int keyLength;
    int blockSize;
    int rounds;
    char initialChain[32];
    char chain[32];
    // Room that belongs to the object's layout. The work is done in registers.
    int keyWork[8];
    int blockState[8];
    int blockTemp[8];
};

}  // namespace AES
}  // namespace kfl

#endif
