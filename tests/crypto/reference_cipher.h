// The cipher once more, slowly and straight from its rules: bytes in a matrix, arithmetic in
// GF(2^8) written out, no tables of the library's. The tests' second opinion on every target.
#ifndef KFL_TESTS_REFERENCE_CIPHER_H
#define KFL_TESTS_REFERENCE_CIPHER_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace kfl_test {

using Byte = unsigned char;
using Bytes = std::vector<Byte>;

// The product of two polynomials over the bits, reduced by 0x11B.
constexpr unsigned product(unsigned a, unsigned b) {
    unsigned wide = 0;
    for (int bit = 0; bit < 8; ++bit)
        if ((b >> bit & 1) != 0) wide ^= a << bit;
    for (int bit = 14; bit >= 8; --bit)
        if ((wide >> bit & 1) != 0) wide ^= 0x11BU << (bit - 8);
    return wide;
}

// The number whose product with `a` is 1, found by trying; 0 for 0.
inline unsigned reciprocal(unsigned a) {
    for (unsigned b = 1; b < 256; ++b)
        if (product(a, b) == 1) return b;
    return 0;
}

// The substitution, bit by bit.
inline Byte substitution(unsigned a) {
    const unsigned b = reciprocal(a);
    unsigned result = 0;
    for (unsigned i = 0; i < 8; ++i) {
        unsigned bit = 0x63U >> i;
        for (const unsigned offset : {0U, 4U, 5U, 6U, 7U}) bit ^= b >> (i + offset) % 8;
        result |= (bit & 1) << i;
    }
    return static_cast<Byte>(result);
}

struct ReferenceTables {
    std::array<Byte, 256> s{};
    std::array<Byte, 256> inverse{};
    // Products with the factors up to 14.
    std::array<std::array<Byte, 256>, 15> times{};

    ReferenceTables() {
        for (unsigned a = 0; a < 256; ++a) {
            s[a] = substitution(a);
            inverse[s[a]] = static_cast<Byte>(a);
            for (unsigned f = 0; f < times.size(); ++f)
                times[f][a] = static_cast<Byte>(product(f, a));
        }
    }
    static const ReferenceTables& get() {
        static const ReferenceTables tables;
        return tables;
    }
};

class ReferenceCipher {
  public:
    ReferenceCipher(const Bytes& key, std::size_t blockSize)
        : rounds_(std::max(key.size(), blockSize) / 4 + 6), blockSize_(blockSize) {
        expand(key);
    }

    std::size_t rounds() const { return rounds_; }
    std::size_t blockSize() const { return blockSize_; }
    // The bytes of a round's key.
    Bytes roundKey(std::size_t round) const {
        const auto begin = keys_.begin() + static_cast<std::ptrdiff_t>(round * blockSize_);
        return Bytes(begin, begin + static_cast<std::ptrdiff_t>(blockSize_));
    }
    // The same after the inverse column mixing.
    Bytes unmixedRoundKey(std::size_t round) const {
        return mixed(roundKey(round), {14, 11, 13, 9});
    }

    // Works on as many bytes as it is given, with the first bytes of each round key.
    Bytes encrypt(Bytes block) const {
        add(block, 0);
        for (std::size_t r = 1; r <= rounds_; ++r) {
            substitute(block, ReferenceTables::get().s);
            block = shifted(block, true);
            if (r < rounds_) block = mixed(block, {2, 3, 1, 1});
            add(block, r);
        }
        return block;
    }
    Bytes decrypt(Bytes block) const {
        add(block, rounds_);
        for (std::size_t r = rounds_; r-- > 0;) {
            block = shifted(block, false);
            substitute(block, ReferenceTables::get().inverse);
            add(block, r);
            if (r > 0) block = mixed(block, {14, 11, 13, 9});
        }
        return block;
    }

  private:
    void expand(const Bytes& key) {
        const auto& s = ReferenceTables::get().s;
        keys_ = key;
        unsigned constant = 1;
        for (std::size_t word = key.size() / 4; keys_.size() < (rounds_ + 1) * blockSize_; ++word) {
            std::array<Byte, 4> w{};
            std::copy(keys_.end() - 4, keys_.end(), w.begin());
            const std::size_t turn = word % (key.size() / 4);
            if (turn == 0) {
                std::rotate(w.begin(), w.begin() + 1, w.end());
                for (Byte& b : w) b = s[b];
                w[0] = static_cast<Byte>(w[0] ^ constant);
                constant = product(constant, 2);
            } else if (key.size() == 32 && turn == 4) {
                for (Byte& b : w) b = s[b];
            }
            for (const Byte b : w)
                keys_.push_back(static_cast<Byte>(keys_[keys_.size() - key.size()] ^ b));
        }
    }
    void add(Bytes& block, std::size_t round) const {
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<Byte>(block[i] ^ keys_[round * blockSize_ + i]);
    }
    static void substitute(Bytes& block, const std::array<Byte, 256>& s) {
        for (Byte& b : block) b = s[b];
    }
    static Bytes shifted(const Bytes& block, bool forward) {
        const std::size_t columns = block.size() / 4;
        const std::array<std::size_t, 4> shifts = columns == 8
                                                      ? std::array<std::size_t, 4>{0, 1, 3, 4}
                                                      : std::array<std::size_t, 4>{0, 1, 2, 3};
        Bytes result(block.size());
        for (std::size_t column = 0; column < columns; ++column) {
            for (std::size_t row = 0; row < 4; ++row) {
                const std::size_t other = (column + shifts[row]) % columns;
                if (forward) {
                    result[4 * column + row] = block[4 * other + row];
                } else {
                    result[4 * other + row] = block[4 * column + row];
                }
            }
        }
        return result;
    }
    // Each column times a circulant matrix that begins with these factors.
    static Bytes mixed(const Bytes& block, const std::array<std::size_t, 4>& factors) {
        const auto& times = ReferenceTables::get().times;
        Bytes result(block.size());
        for (std::size_t i = 0; i < block.size(); ++i) {
            unsigned sum = 0;
            for (std::size_t row = 0; row < 4; ++row)
                sum ^= times[factors[(row + 4 - i % 4) % 4]][block[i / 4 * 4 + row]];
            result[i] = static_cast<Byte>(sum);
        }
        return result;
    }

    std::size_t rounds_;
    std::size_t blockSize_;
    Bytes keys_;
};

// The chaining modes by their rules, one block after the other, on bytes that may overlap: a
// block's output is computed from its input and the chain before it is written; after that
// deciphering takes the chain from where the input stood.
class ReferenceModes {
  public:
    ReferenceModes(const Bytes& key, const Bytes& chain)
        : cipher_(key, chain.size()), chain_(chain) {}

    const Bytes& chain() const { return chain_; }
    const ReferenceCipher& cipher() const { return cipher_; }

    void encrypt(const Byte* in, Byte* out, std::size_t n, int mode) {
        for (std::size_t at = 0; at < n; at += chain_.size()) {
            const Bytes input = blockAt(in + at);
            Bytes output;
            if (mode == 1) {
                output = chain_ = cipher_.encrypt(sum(chain_, input));
            } else if (mode == 2) {
                output = chain_ = sum(cipher_.encrypt(chain_), input);
            } else {
                output = cipher_.encrypt(input);
            }
            std::copy(output.begin(), output.end(), out + at);
        }
    }
    void decrypt(const Byte* in, Byte* out, std::size_t n, int mode) {
        for (std::size_t at = 0; at < n; at += chain_.size()) {
            const Bytes input = blockAt(in + at);
            Bytes output;
            if (mode == 1) {
                output = sum(cipher_.decrypt(input), chain_);
            } else if (mode == 2) {
                output = sum(cipher_.encrypt(chain_), input);
            } else {
                output = cipher_.decrypt(input);
            }
            std::copy(output.begin(), output.end(), out + at);
            if (mode == 1 || mode == 2) chain_ = blockAt(in + at);
        }
    }

    Bytes encrypted(const Bytes& text, int mode) {
        Bytes result(text.size());
        encrypt(text.data(), result.data(), text.size(), mode);
        return result;
    }
    Bytes decrypted(const Bytes& text, int mode) {
        Bytes result(text.size());
        decrypt(text.data(), result.data(), text.size(), mode);
        return result;
    }

  private:
    Bytes blockAt(const Byte* from) const { return Bytes(from, from + chain_.size()); }
    static Bytes sum(const Bytes& a, const Bytes& b) {
        Bytes result(a);
        for (std::size_t i = 0; i < b.size(); ++i) result[i] = static_cast<Byte>(result[i] ^ b[i]);
        return result;
    }

    ReferenceCipher cipher_;
    Bytes chain_;
};

}  // namespace kfl_test

#endif
