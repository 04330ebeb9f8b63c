// kfl decrypt: deciphers a file.
#include "tools/kfl/cipher_job.h"

namespace kfl_tool {
namespace {

int run(Arguments& arguments) {
    runCipherJob(readCipherJob(arguments), true, &kfl::AES::Rijndael::decryptFile);
    return succeeded;
}

const std::string details = cipherDetails(
    "Deciphers IN, which must be whole blocks, to OUT. The bytes of FF with which the\n"
    "last block was filled up stay at its end: cut them off where they are known.\n");

}  // namespace

const Command decryptCommand = {"decrypt", cipherUsage, "Decipher what encrypt made",
                                details.c_str(), run};

}  // namespace kfl_tool
