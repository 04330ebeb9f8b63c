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
    for (int i = 0; i < KeyWords; ++i) words[i] = loadWord(key + 4 * i);
    const unsigned char* rcon = Rijndael::_rcon;
    unsigned last = words[KeyWords - 1];
    for (const unsigned* const end = words + count; words + KeyWords < end; words += KeyWords) {
        last = substitutedWord(last << 8 | last >> 24) ^ unsigned { *rcon++ } << 24;
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

}  // namespace

void expandKey(const char* key, int keyWords, int blockWords, int rounds,
               unsigned (*encryptKeys)[8], unsigned (*decryptKeys)[8]) {
    unsigned words[mostWords];
    const int count = (rounds + 1) * blockWords;
    switch (keyWords) {
        case 4: expand<4>(key, words, count); break;
        case 6: expand<6>(key, words, count); break;
        default: expand<8>(key, words, count);
    }
    const unsigned* from = words;
    for (int r = 0; r <= rounds; ++r, from += blockWords) {
        const bool isOuter = r == 0 || r == rounds;
        for (int j = 0; j < blockWords; ++j) {
            encryptKeys[r][j] = from[j];
            decryptKeys[rounds - r][j] = isOuter ? from[j] : unmixed(from[j]);
        }
    }
}

}  // namespace kfl::detail
