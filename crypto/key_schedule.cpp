#include "crypto/key_schedule.h"

#include <cstring>

#include "crypto/block.h"
#include "kfl/Rijndael.h"

namespace kfl::detail {
namespace {

using AES::Rijndael;

// 15 rows of 8 words, and what the last turn of the expansion makes too many.
constexpr int mostWords = 15 * 8 + 8;

unsigned substitutedWord(unsigned w) {
    const unsigned char* const s = Rijndael::_S;
    return unsigned{s[w >> 24]} << 24 | unsigned{s[(w >> 16) & 0xFF]} << 16 |
           unsigned{s[(w >> 8) & 0xFF]} << 8 | unsigned{s[w & 0xFF]};
}

// Makes the words of all rounds in one row, KeyWords a turn.
template <int KeyWords>
void expand(const char* key, unsigned* words, int count) {
    for (int i = 0; i < KeyWords; ++i) words[i] = loadWord(key + i * wordSize);
    const unsigned char* rcon = Rijndael::_rcon;
    unsigned last = words[KeyWords - 1];
    for (const unsigned* const end = words + count; words + KeyWords < end; words += KeyWords) {
        last = substitutedWord(last << 8 | last >> 24) ^ unsigned { *rcon++ } << 24;
#pragma GCC unroll 8
        for (int i = 0; i < KeyWords; ++i) {
            if (KeyWords == 8 && i == 4) last = substitutedWord(last);
            last ^= words[i];
            words[KeyWords + i] = last;
        }
    }
}

unsigned unmixed(unsigned w) {
    return Rijndael::_U1[w >> 24] ^ Rijndael::_U2[(w >> 16) & 0xFF] ^
           Rijndael::_U3[(w >> 8) & 0xFF] ^ Rijndael::_U4[w & 0xFF];
}

// Hands the words out to the rows of both directions.
template <int BlockWords>
void spread(const unsigned* words, int rounds, unsigned (*encryptKeys)[8],
            unsigned (*decryptKeys)[8]) {
    for (int r = 0; r <= rounds; ++r, words += BlockWords) {
        std::memcpy(encryptKeys[r], words, Block<BlockWords>::size);
        unsigned* const back = decryptKeys[rounds - r];
        if (r == 0 || r == rounds) {
            std::memcpy(back, words, Block<BlockWords>::size);
        } else {
#pragma GCC unroll 8
            for (int j = 0; j < BlockWords; ++j) back[j] = unmixed(words[j]);
        }
    }
}

void expandInto(unsigned* words, const char* key, int keyWords, int count) {
    if (keyWords == 4) return expand<4>(key, words, count);
    if (keyWords == 6) return expand<6>(key, words, count);
    expand<8>(key, words, count);
}

}  // namespace

void expandKey(const char* key, int keyWords, int blockWords, int rounds,
               unsigned (*encryptKeys)[8], unsigned (*decryptKeys)[8]) {
    unsigned words[mostWords];
    expandInto(words, key, keyWords, (rounds + 1) * blockWords);
    if (blockWords == 4) return spread<4>(words, rounds, encryptKeys, decryptKeys);
    if (blockWords == 6) return spread<6>(words, rounds, encryptKeys, decryptKeys);
    spread<8>(words, rounds, encryptKeys, decryptKeys);
}

}  // namespace kfl::detail
