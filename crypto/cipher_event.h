// The cipher's reports to the host.
#ifndef KFL_CRYPTO_CIPHER_EVENT_H
#define KFL_CRYPTO_CIPHER_EVENT_H

namespace kfl::detail {

void reportCipherError(const char* text);

}  // namespace kfl::detail

#endif
