// A file of any length enciphered and deciphered, beside the operation on memory and the tests' own
// slow cipher.
#include "fuzz/cipher_input.h"
#include "tests/support/memory_file.h"

namespace {

using kfl_fuzz::CipherInput;
using kfl_test::Bytes;
using kfl_test::bytesOf;
using kfl_test::MemoryFile;
using kfl_test::Rijndael;

using FileOperation = void (Rijndael::*)(const char*, const char*, int);

// What an operation makes of a file with these bytes.
Bytes fileAfter(FileOperation operation, const CipherInput& what, const Bytes& content) {
    static const MemoryFile in;
    static const MemoryFile out;
    in.write(std::string(content.begin(), content.end()));
    out.write("what was there before");
    kfl_test::Keyed cipher = what.cipher();
    ((*cipher).*operation)(in.path().c_str(), out.path().c_str(), what.mode);
    EXPECT_EQ(bytesOf(in.content()), content);
    const std::string notWhole = "Data not multiple of Block Size";
    kfl_test::expectEvents(content.empty() ? std::vector<std::string>{notWhole}
                                           : std::vector<std::string>{});
    return bytesOf(out.content());
}

Bytes filledUp(Bytes bytes, std::size_t blockSize, kfl_test::Byte filler) {
    while (bytes.size() % blockSize != 0) bytes.push_back(filler);
    return bytes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kfl_fuzz::Input input(data, size);
    const CipherInput what(input);
    // The piece over and over gives files a little longer than the 48 KiB that are read at once.
    const std::uint32_t times = 1 + input.below(input.oneIn(16) ? 60 : 2);
    const std::string piece = input.bytes(1000);
    Bytes content;
    for (std::uint32_t i = 0; i < times && content.size() < 50000; ++i)
        content.insert(content.end(), piece.begin(), piece.end());

    const Bytes text = filledUp(content, what.blockSize(), 0xFF);
    const Bytes coded = fileAfter(&Rijndael::encryptFile, what, content);
    EXPECT_EQ(fileAfter(&Rijndael::decryptFile, what, coded), text);
    // Content that nobody enciphered is deciphered all the same.
    const Bytes zeros = filledUp(content, what.blockSize(), 0);
    const Bytes plain = fileAfter(&Rijndael::decryptFile, what, content);
    if (content.empty()) return 0;
    EXPECT_EQ(coded, what.cipher().encrypted(text, what.mode));
    EXPECT_EQ(plain, what.cipher().decrypted(zeros, what.mode));
    // The slow cipher would take too long over the long ones.
    if (content.size() > 600) return 0;
    EXPECT_EQ(coded, what.reference().encrypted(text, what.mode));
    EXPECT_EQ(plain, what.reference().decrypted(zeros, what.mode));
    return 0;
}
