// What kfl encrypt and kfl decrypt have in common: a key, a mode, and two files.
#ifndef KFL_TOOLS_KFL_CIPHER_JOB_H
#define KFL_TOOLS_KFL_CIPHER_JOB_H

#include <string>

#include "kfl/Rijndael.h"
#include "tools/kfl/command.h"

namespace kfl_tool {

// Raw bytes, checked.
struct CipherJob {
    std::string key;
    // As long as a block.
    std::string chain;
    int mode;
    const char* in;
    const char* out;
};

constexpr const char cipherUsage[] =
    "--mode MODE [--chain HEX] [--block N]\n"
    "                   (--key HEX | --key-file FILE | --key-env NAME) IN OUT";

// The end of both help pages.
std::string cipherDetails(const char* purpose);

// Reads options and operands; ends the tool when something about them is wrong.
CipherJob readCipherJob(Arguments& arguments);

// Carries the job out. Ends the tool, before OUT is touched, when IN has no length or is OUT, or,
// where only whole blocks are taken, holds something else.
void runCipherJob(const CipherJob& job, bool wholeBlocks,
                  void (kfl::AES::Rijndael::*work)(const char*, const char*, int));

}  // namespace kfl_tool

#endif
