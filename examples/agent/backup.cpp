// An enciphered copy of a file. Shows: a chain block that is new each time, a fresh key schedule
// for each direction, padding that stays, and a Buffer that is made to fit.
#include "backup.h"

#include <sys/stat.h>
#include <unistd.h>
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/Buffer.h"
#include "kfl/Rijndael.h"

namespace agent {
namespace {

using kfl::AES::Rijndael;

constexpr int keySize = 32;
constexpr int blockSize = 16;

// A key and a first chain block that nobody can foresee. Both are new with each run here; an agent
// that wants its backups back keeps the key in a safe place, and the chain block beside the backup.
struct Secret {
    char key[keySize];
    char chain[blockSize];
};

bool makeSecret(Secret& secret) {
    std::FILE* const source = std::fopen("/dev/urandom", "rb");
    if (!source) return false;
    const bool complete = std::fread(&secret, sizeof secret, 1, source) == 1;
    std::fclose(source);
    return complete;
}

// The chain carries on from call to call: deciphering begins with a fresh key, as enciphering did.
void startWith(Rijndael& cipher, const Secret& secret) {
    cipher.makeKey(secret.key, secret.chain, keySize, blockSize);
}

// Appends a file's bytes; false when it cannot be read.
bool readAll(const char* path, Buffer& bytes) {
    std::FILE* const file = std::fopen(path, "rb");
    if (!file) return false;
    unsigned char piece[4096];
    for (;;) {
        const unsigned int n = static_cast<unsigned int>(std::fread(piece, 1, sizeof piece, file));
        if (n == 0) break;
        // A Buffer's own growth may leave it too small for a write, so room is made first.
        Buffer rest(n, 0);
        rest.Write(piece, n);
        bytes += rest;
    }
    std::fclose(file);
    return true;
}

// Deciphered files come in whole blocks: what was missing in the last one reads as 0xFF, and only
// the host can know where its text ended. A configuration never ends with such a byte.
unsigned int stripPadding(Buffer& bytes) {
    unsigned int padding = 0;
    while (bytes.Size() > 0 && bytes[bytes.Size() - 1] == 0xFF) {
        bytes.Unwrite(1);
        ++padding;
    }
    return padding;
}

}  // namespace

bool backUp(const char* path, const char* backupPath) {
    Secret secret;
    if (!makeSecret(secret)) return false;
    kfl::AString restoredPath(backupPath);
    restoredPath.append(".restored");
    // Failures of the cipher are reported to the host; what counts here is the comparison.
    Rijndael cipher;
    startWith(cipher, secret);
    cipher.encryptFile(path, backupPath, Rijndael::modeCBC);
    Rijndael decipher;
    startWith(decipher, secret);
    decipher.decryptFile(backupPath, restoredPath.c_str(), Rijndael::modeCBC);

    Buffer original(0, 0);
    Buffer restored(0, 0);
    const bool readable = readAll(path, original) && readAll(restoredPath.c_str(), restored);
    unlink(restoredPath.c_str());
    const unsigned int size = restored.Size();
    const unsigned int padding = stripPadding(restored);
    const bool same = readable && original == restored;
    std::printf("backup: %u bytes as %u in %s, %u of padding; restored: %s\n", original.Size(),
                size, backupPath, padding, same ? "the same" : "not the same");
    return same;
}

}  // namespace agent
