// A message enciphered and deciphered at once, in pieces, in place and between overlapping places,
// beside the tests' own slow cipher.
#include "fuzz/cipher_input.h"

namespace {

using kfl_fuzz::CipherInput;
using kfl_fuzz::Input;
using kfl_test::Byte;
using kfl_test::Bytes;
using kfl_test::chars;
using kfl_test::Keyed;
using kfl_test::Rijndael;

using Operation = void (Rijndael::*)(const char*, char*, unsigned, int);

// What calls for one piece of the text after the other give; each byte of `pieces` is a number of
// blocks.
Bytes inPieces(Keyed& cipher, Operation operation, const Bytes& text, const std::string& pieces,
               const CipherInput& what) {
    Bytes result;
    std::size_t piece = 0;
    while (result.size() < text.size()) {
        const std::size_t left = text.size() - result.size();
        const std::size_t wanted =
            piece < pieces.size() ? static_cast<Byte>(pieces[piece++]) % 16 + 1U : left;
        const std::size_t n = std::min(left, wanted * what.blockSize());
        // Memory of exactly its size on both sides.
        const Bytes in(text.begin() + static_cast<std::ptrdiff_t>(result.size()),
                       text.begin() + static_cast<std::ptrdiff_t>(result.size() + n));
        Bytes out(n);
        ((*cipher).*operation)(chars(in), chars(out), static_cast<unsigned>(n), what.mode);
        result.insert(result.end(), out.begin(), out.end());
    }
    return result;
}

void compareRoundTrip(const CipherInput& what, const Bytes& text, const std::string& pieces) {
    Keyed whole = what.cipher();
    kfl_test::ReferenceModes reference = what.reference();
    const Bytes coded = whole.encrypted(text, what.mode);
    ASSERT_EQ(coded, reference.encrypted(text, what.mode));
    ASSERT_EQ(whole.chain(), reference.chain());

    Keyed parts = what.cipher();
    ASSERT_EQ(inPieces(parts, &Rijndael::encrypt, text, pieces, what), coded);
    ASSERT_EQ(parts.chain(), whole.chain());

    Keyed back = what.cipher();
    ASSERT_EQ(back.decrypted(coded, what.mode), text);
    Keyed backInParts = what.cipher();
    ASSERT_EQ(inPieces(backInParts, &Rijndael::decrypt, coded, pieces, what), text);
    ASSERT_EQ(backInParts.chain(), back.chain());
}

// From one place of a block of memory to another one, which may overlap or be the same.
void compareOverlapping(const CipherInput& what, const Bytes& text, std::size_t from,
                        std::size_t to) {
    Bytes memory(text.size() + std::max(from, to));
    std::copy(text.begin(), text.end(), memory.begin() + static_cast<std::ptrdiff_t>(from));
    Bytes expected = memory;
    Keyed cipher = what.cipher();
    kfl_test::ReferenceModes reference = what.reference();
    const auto n = static_cast<unsigned>(text.size());
    cipher->encrypt(chars(memory) + from, chars(memory) + to, n, what.mode);
    reference.encrypt(expected.data() + from, expected.data() + to, n, what.mode);
    ASSERT_EQ(memory, expected);
    cipher->decrypt(chars(memory) + to, chars(memory) + from, n, what.mode);
    reference.decrypt(expected.data() + to, expected.data() + from, n, what.mode);
    ASSERT_EQ(memory, expected);
    ASSERT_EQ(cipher.chain(), reference.chain());
}

void compareBlock(const CipherInput& what, Bytes block) {
    block.resize(what.blockSize());
    const kfl_test::ReferenceCipher reference(what.key, what.blockSize());
    Keyed cipher = what.cipher();
    Bytes coded(block.size());
    cipher->encryptBlock(chars(block), chars(coded));
    ASSERT_EQ(coded, reference.encrypt(block));
    cipher->decryptBlock(chars(coded), chars(coded));
    ASSERT_EQ(coded, block);
    ASSERT_EQ(cipher.chain(), what.chain);
}

void expectRefused(const CipherInput& what, std::size_t n) {
    Keyed cipher = what.cipher();
    const Bytes text(n, 'x');
    ASSERT_EQ(cipher.encrypted(text, what.mode), Bytes(n));
    ASSERT_EQ(cipher.decrypted(text, what.mode), Bytes(n));
    ASSERT_EQ(cipher.chain(), what.chain);
    const std::string refusal = "Data not multiple of Block Size";
    kfl_test::expectEvents({refusal, refusal});
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const CipherInput what(input);
    const std::string pieces = input.bytes(4);
    const std::size_t from = input.below(40);
    const std::size_t to = input.below(40);
    // Longer ones take the slow cipher long, and show nothing more.
    Bytes text = kfl_test::bytesOf(input.bytes(600));
    compareBlock(what, text);
    const std::size_t excess = text.size() % what.blockSize();
    if (excess != 0 || text.empty()) expectRefused(what, text.size());
    text.resize(text.size() - excess);
    if (text.empty()) return 0;
    compareRoundTrip(what, text, pieces);
    compareOverlapping(what, text, from, to);
    kfl_test::expectEvents({});
    return 0;
}
