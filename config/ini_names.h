// Finding sections and keys by name.
#ifndef KFL_CONFIG_INI_NAMES_H
#define KFL_CONFIG_INI_NAMES_H

#include "config/text_piece.h"
#include "kfl/IniFileParser.h"

namespace kfl::detail {

// The first record of that name, or null. A null entry, which only a host can have made, ends the
// walk. Both kinds of record begin with their name.
void* findNamed(const VoidPtrOrderedCollection& records, TextPiece name);

template <class Record>
Record* findRecord(const VoidPtrOrderedCollection& records, TextPiece name) {
    return static_cast<Record*>(findNamed(records, name));
}

}  // namespace kfl::detail

#endif
