#include "crypto/key_schedule.h"

#include <cstring>

#include "crypto/block.h"
#include "kfl/Rijndael.h"

namespace kfl::detail {
namespace {

using AES::Rijndael;

// 15 rows of 8 words. With keys of every length they are whole turns of the expansion; shorter rows
// leave room for the words that the last turn makes too many.
constexpr int mostWords = 15 * 8;

unsigned substitutedWord(unsigned w) {
    const unsigned char* const s = Rijndael::_S;
    return unsigned{s[w >> 24]} << 24 | unsigned{s[(w >> 16) & 0xFF]} << 16 |
           unsigned{s[(w >> 8) & 0xFF]} << 8 | unsigned{s[w & 0xFF]};
}

// A number that the compiler knows.
template <int N>
struct Known {
    constexpr operator int() const { return N; }
};

// Calls `use` with the number of words of a key or a block.
template <class Use>
void withWords(int words, Use use) {
    if constexpr (countsColumns) {
        use(words);
    } else {
        if (words == 4) return use(Known<4>());
        if (words == 6) return use(Known<6>());
        use(Known<8>());
    }
}

// Most columns that a loop over known ones is unrolled for.
constexpr int unrolled = countsColumns ? 1 : 8;

// Makes the words of all rounds in one row, `keyWords` a turn.
template <class Words>
void expand(Words known, const char* key, unsigned* words, int count) {
    const int keyWords = known;
    for (int i = 0; i < keyWords; ++i) words[i] = loadWord(key + i * wordSize);
    const unsigned char* rcon = Rijndael::_rcon;
    unsigned last = words[keyWords - 1];
    for (const unsigned* const end = words + count; words + keyWords < end; words += keyWords) {
        last = substitutedWord(last << 8 | last >> 24) ^ unsigned { *rcon++ } << 24;
#pragma GCC unroll unrolled
        for (int i = 0; i < keyWords; ++i) {
            if (keyWords == 8 && i == 4) last = substitutedWord(last);
            last ^= words[i];
            words[keyWords + i] = last;
        }
    }
}

unsigned unmixed(unsigned w) {
    return Rijndael::_U1[w >> 24] ^ Rijndael::_U2[(w >> 16) & 0xFF] ^
           Rijndael::_U3[(w >> 8) & 0xFF] ^ Rijndael::_U4[w & 0xFF];
}

// Hands the words out to the rows of both directions.
template <class Words>
void spread(Words known, const unsigned* words, int rounds, unsigned (*encryptKeys)[8],
            unsigned (*decryptKeys)[8]) {
    const int blockWords = known;
    const std::size_t size = sizeof(unsigned) * static_cast<unsigned>(blockWords);
    for (int r = 0; r <= rounds; ++r, words += blockWords) {
        std::memcpy(encryptKeys[r], words, size);
        unsigned* const back = decryptKeys[rounds - r];
        if (r == 0 || r == rounds) {
            std::memcpy(back, words, size);
        } else {
#pragma GCC unroll unrolled
            for (int j = 0; j < blockWords; ++j) back[j] = unmixed(words[j]);
        }
    }
}

}  // namespace

void expandKey(const char* key, int keyWords, int blockWords, int rounds,
               unsigned (*encryptKeys)[8], unsigned (*decryptKeys)[8]) {
    unsigned words[mostWords];
    const int count = (rounds + 1) * blockWords;
    withWords(keyWords, [&](auto known) { expand(known, key, words, count); });
    withWords(blockWords,
              [&](auto known) { spread(known, words, rounds, encryptKeys, decryptKeys); });
}

}  // namespace kfl::detail
