// The round keys of both directions.
#ifndef KFL_CRYPTO_KEY_SCHEDULE_H
#define KFL_CRYPTO_KEY_SCHEDULE_H

namespace kfl::detail {

// Fills rows 0 to `rounds`, words 0 to `blockWords` - 1 of both key arrays from `keyWords` words at
// `key`; either count is 4, 6 or 8.
void expandKey(const char* key, int keyWords, int blockWords, int rounds,
               unsigned (*encryptKeys)[8], unsigned (*decryptKeys)[8]);

}  // namespace kfl::detail

#endif
