// An enciphered copy of a file: kfl::AES::Rijndael at work.
#ifndef AGENT_BACKUP_H
#define AGENT_BACKUP_H

namespace agent {

// Enciphers `path` to `backupPath`, deciphers that again with a fresh key schedule and compares.
// Prints what came of it; returns false when the two are not the same.
bool backUp(const char* path, const char* backupPath);

}  // namespace agent

#endif
