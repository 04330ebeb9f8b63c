// Splits file-transfer locations such as "tftp://server:69/dir/file", and "host:port" texts.
//
//     kfl::FileTransferProtocol protocol;
//     kfl::AString host(""), path("");
//     unsigned short port;
//     if (!kfl::URIParser::parseFileTransferURI(uri, protocol, host, port, path))
//         return refuse(uri);
#ifndef KFL_URIPARSER_H
#define KFL_URIPARSER_H

#include "kfl/AString.h"
#include "kfl/export.h"

namespace kfl {

// The indexes of fileTransferProtocols.
enum FileTransferProtocol : int {
    protocolTFTP = 0,
    protocolFTP = 1,
    protocolHTTP = 2,
    protocolHTTPS = 3,
    protocolMMDDF = 4,
    // A location without a scheme.
    protocolNone = 5
};

// The names "TFTP", "FTP", "HTTP", "HTTPS" and "MMDDF", and the null pointer that ends them.
// Read-only, although its type lets it be passed as the table of lookupStringIgnoreCase.
KFL_EXPORT extern const char* fileTransferProtocols[6];

// The index of the first entry of a null-terminated table that equals `text` ignoring case; -1
// where none does, and for a null text or table.
KFL_EXPORT int lookupStringIgnoreCase(const char* text, const char** table);

// In both operations the results are emptied and filled anew, `uri` or `text` must not be theirs,
// and a port is what atoi makes of its text, cut to 16 bits.
class KFL_EXPORT URIParser {
  public:
    URIParser();
    ~URIParser();

    // Splits "scheme://host:port/path", where scheme and port may be missing: the protocol is then
    // protocolNone, the port 0. The path comes without its leading slash. A ':' behind the first
    // '/' of the rest belongs to the path. Returns false for an unknown scheme, a '/' at the start,
    // a missing '/' behind the host, an empty host, an empty path and null; what was split before
    // that is written all the same.
    static bool parseFileTransferURI(const char* uri, kfl::FileTransferProtocol& protocol,
                                     kfl::AString& host, unsigned short& port, kfl::AString& path);

    // Splits "host:port" at its first ':', or takes the whole for the host, with port 0. Returns
    // false, and writes nothing, for null and an empty text.
    static bool parseHost(const char* text, kfl::AString& host, unsigned short& port);
};

}  // namespace kfl

#endif
