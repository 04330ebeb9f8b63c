// Not a cipher but its bound: as many look-ups in the same tables as the cipher makes, found and
// summed up by the same instructions, yet none waits for another. What a cipher of this kind needs
// beyond this time it spends waiting.
#include <algorithm>

#include "benchmarks/ciphers/cipher.h"
#include "crypto/rounds.h"

namespace kfl_benchmark {
namespace {

using kfl::detail::Block;
using kfl::detail::Deciphering;
using kfl::detail::Enciphering;
using kfl::detail::Indices;

constexpr int mostRounds = 14;

unsigned roundKeys[mostRounds][8];

// A round whose result is not the next one's input: that is made of this one's input and the key.
template <class Way, int Columns, int... I>
[[gnu::always_inline]] inline void looseRound(Block<Columns>& sum, Block<Columns>& t,
                                              const unsigned* key, Indices<I...>) {
    (kfl::detail::scatter<Way, Columns, I>(sum.word, t.word[I]), ...);
    ((t.word[I] += key[I]), ...);
}

template <class Way, int Columns>
void lookUp(const char* in, char* out, std::size_t n, int rounds) {
    using All = typename Block<Columns>::All;
    for (const char* const end = in + n; in != end; in += 4 * Columns, out += 4 * Columns) {
        Block<Columns> t;
        Block<Columns> sum{};
        t.load(in);
        for (int r = 0; r < rounds; ++r) looseRound<Way>(sum, t, roundKeys[r], All());
        sum.store(out);
    }
}

using LookUp = void (*)(const char* in, char* out, std::size_t n, int rounds);

template <class Way>
LookUp lookUpOf(std::size_t blockSize) {
    if (blockSize == 16) return lookUp<Way, 4>;
    if (blockSize == 24) return lookUp<Way, 6>;
    return lookUp<Way, 8>;
}

class LookUps : public Cipher {
  public:
    explicit LookUps(const Kind& kind)
        : lookUp_(kind.enciphering || kind.mode == cfb ? lookUpOf<Enciphering>(kind.chain.size())
                                                       : lookUpOf<Deciphering>(kind.chain.size())),
          rounds_(static_cast<int>(std::max(kind.key.size(), kind.chain.size()) / 4 + 6)) {
        unsigned word = 1;
        for (auto& row : roundKeys)
            for (unsigned& key : row) key = word = word * 1664525 + 1013904223;
    }
    void run(const Byte* in, Byte* out, std::size_t n) override {
        lookUp_(reinterpret_cast<const char*>(in), reinterpret_cast<char*>(out), n, rounds_);
    }

  private:
    LookUp lookUp_;
    int rounds_;
};

// A chain that runs from block to block is bound by waiting, not by this.
std::unique_ptr<Cipher> make(const Kind& kind) {
    const bool chained = kind.mode == singleBlock || (kind.enciphering && kind.mode != ecb);
    return chained ? nullptr : std::make_unique<LookUps>(kind);
}

const Entered entered({boundName, make, nullptr});

}  // namespace
}  // namespace kfl_benchmark
