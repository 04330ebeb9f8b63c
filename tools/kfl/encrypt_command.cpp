// kfl encrypt: enciphers a file.
#include "tools/kfl/cipher_job.h"

namespace kfl_tool {
namespace {

int run(Arguments& arguments) {
    runCipherJob(readCipherJob(arguments), false, &kfl::AES::Rijndael::encryptFile);
    return succeeded;
}

const std::string details = cipherDetails(
    "Enciphers IN to OUT, which is bare ciphertext as long as IN rounded up to whole\n"
    "blocks: the last one is filled up with bytes of FF before. Nothing about length,\n"
    "key or chain block is kept in OUT.\n");

}  // namespace

const Command encryptCommand = {"encrypt", cipherUsage, "Encipher a file with AES", details.c_str(),
                                run};

}  // namespace kfl_tool
