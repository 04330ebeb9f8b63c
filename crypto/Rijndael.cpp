// Keys and single blocks of kfl/Rijndael.h.
#include "kfl/Rijndael.h"

#include <cstring>

#include "crypto/cipher_event.h"
#include "crypto/key_schedule.h"
#include "crypto/transform_block.h"

namespace kfl::AES {
namespace {

using detail::Block;
using detail::CountedBlock;
using detail::Deciphering;
using detail::Enciphering;
using detail::RoundKeys;

bool isLength(int bytes) { return bytes == 16 || bytes == 24 || bytes == 32; }

// What is wrong with the arguments, or null.
const char* faultOf(const char* key, int keyLength, int blockSize) {
    if (!key) return "Empty key";
    if (!isLength(keyLength)) return "Incorrect key length";
    if (!isLength(blockSize)) return "Incorrect block length";
    return nullptr;
}

bool checkKey(bool keyInitialized) {
    if (!keyInitialized) detail::reportCipherError(Rijndael::_ErrorMsg1);
    return keyInitialized;
}

template <class Way, class AnyBlock>
void transformFrom(AnyBlock t, RoundKeys keys, const char* in, char* result) {
    t.load(in);
    detail::transformBlock<Way>(t, keys);
    t.store(result);
}

template <class Way>
void transformDefault(RoundKeys keys, const char* in, char* result) {
    if constexpr (detail::countsColumns) {
        transformFrom<Way>(CountedBlock(16), keys, in, result);
    } else {
        detail::transformDefault<Way>(in, result, keys);
    }
}

template <class Way>
void transformOther(int blockSize, RoundKeys keys, const char* in, char* result) {
    if constexpr (detail::countsColumns) {
        transformFrom<Way>(CountedBlock(blockSize), keys, in, result);
    } else {
        if (blockSize == 24) return transformFrom<Way>(Block<6>(), keys, in, result);
        transformFrom<Way>(Block<8>(), keys, in, result);
    }
}

}  // namespace

const char* const Rijndael::_ErrorMsg1 = "Object not Initialized";
const char* const Rijndael::_ErrorMsg2 = "Data not multiple of Block Size";

// cppcheck-suppress uninitMemberVar ; makeKey sets what is used
Rijndael::Rijndael() : keyInitialized(false) {}

Rijndael::~Rijndael() = default;

void Rijndael::makeKey(const char* key, const char* chainBlock, int newKeyLength,
                       int newBlockSize) {
    if (const char* const fault = faultOf(key, newKeyLength, newBlockSize)) {
        detail::reportCipherError(fault);
        return;
    }
    keyLength = newKeyLength;
    blockSize = newBlockSize;
    rounds = (keyLength > blockSize ? keyLength : blockSize) / 4 + 6;
    // The chain block may be one of the object's own.
    const std::size_t chainLength = static_cast<unsigned>(blockSize);
    std::memmove(initialChain, chainBlock, chainLength);
    std::memcpy(chain, initialChain, chainLength);
    detail::expandKey(key, keyLength / 4, blockSize / 4, rounds, encryptKeys, decryptKeys);
    keyInitialized = true;
}

void Rijndael::DefEncryptBlock(const char* in, char* result) {
    if (!checkKey(keyInitialized)) return;
    transformDefault<Enciphering>({encryptKeys, rounds}, in, result);
}

void Rijndael::DefDecryptBlock(const char* in, char* result) {
    if (!checkKey(keyInitialized)) return;
    transformDefault<Deciphering>({decryptKeys, rounds}, in, result);
}

void Rijndael::encryptBlock(const char* in, char* result) {
    if (!checkKey(keyInitialized)) return;
    const RoundKeys keys{encryptKeys, rounds};
    if (blockSize == 16) return transformDefault<Enciphering>(keys, in, result);
    transformOther<Enciphering>(blockSize, keys, in, result);
}

void Rijndael::decryptBlock(const char* in, char* result) {
    if (!checkKey(keyInitialized)) return;
    const RoundKeys keys{decryptKeys, rounds};
    if (blockSize == 16) return transformDefault<Deciphering>(keys, in, result);
    transformOther<Deciphering>(blockSize, keys, in, result);
}

}  // namespace kfl::AES
