// AES: one block of a published example, a text in memory, and a file.
#include <cstdio>
#include <cstring>

#include "kfl/Rijndael.h"

using kfl::AES::Rijndael;

namespace {

void show(const char* what, const char* bytes, int count) {
    std::printf("%s:", what);
    for (int i = 0; i < count; ++i) std::printf(" %02X", static_cast<unsigned char>(bytes[i]));
    std::puts("");
}

void write(const char* path, const char* text) {
    std::FILE* const file = std::fopen(path, "wb");
    if (!file) return;
    std::fputs(text, file);
    std::fclose(file);
}

}  // namespace

int main() {
    char key[16], block[16];
    for (int i = 0; i < 16; ++i) {
        key[i] = static_cast<char>(i);
        block[i] = static_cast<char>(0x11 * i);
    }
    Rijndael cipher;
    cipher.makeKey(key, Rijndael::_nullchain, sizeof key, sizeof block);
    cipher.encryptBlock(block, block);
    show("FIPS 197, C.1", block, sizeof block);

    // A real chain block is random and new for each text.
    const char chain[16] = {'n', 'e', 'w', ' ', 'e', 'a', 'c', 'h', ' ', 't', 'i', 'm', 'e'};
    char text[32] = "two blocks of sixteen bytes", coded[32], back[32];
    cipher.makeKey(key, chain, sizeof key, sizeof block);
    cipher.encrypt(text, coded, sizeof text, Rijndael::modeCBC);
    // The chain has moved on: the inverse begins where this began.
    cipher.makeKey(key, chain, sizeof key, sizeof block);
    cipher.decrypt(coded, back, sizeof coded, Rijndael::modeCBC);
    std::printf("back: %s\n", back);

    write("plain", "ten bytes.");
    cipher.makeKey(key, chain, sizeof key, sizeof block);
    cipher.encryptFile("plain", "secret", Rijndael::modeCBC);
    cipher.makeKey(key, chain, sizeof key, sizeof block);
    cipher.decryptFile("secret", "restored", Rijndael::modeCBC);
    char restored[32];
    std::FILE* const file = std::fopen("restored", "rb");
    if (!file) return 1;
    const std::size_t size = std::fread(restored, 1, sizeof restored, file);
    std::fclose(file);
    // Padding stays: the host knows how long its text was.
    show("file", restored, static_cast<int>(size));
    return 0;
}
