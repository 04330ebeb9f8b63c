#include "kfl/URIParser.h"

#include <stdlib.h>
#include <strings.h>

#include <cstdint>
#include <cstring>

#include "core/allocation.h"

namespace kfl {
namespace {

// The entry that equals the first `length` characters of `text`, or -1.
int lookup(const char* text, std::size_t length, const char* const* table) {
    for (int i = 0; table[i]; ++i) {
        if (strncasecmp(table[i], text, length) == 0 && table[i][length] == '\0') return i;
    }
    return -1;
}

unsigned short portOf(const char* text) { return static_cast<unsigned short>(atoi(text)); }

void assign(AString& string, const char* begin, const char* end) {
    const unsigned int length = detail::checkedSize(static_cast<std::uint64_t>(end - begin));
    string.clear();
    string.append(begin, length);
}

// Takes the scheme off, if there is one: moves `uri` behind it. False for an unknown scheme.
bool takeScheme(const char*& uri, FileTransferProtocol& protocol) {
    static constexpr char mark[] = "://";
    const char* const found = std::strstr(uri, mark);
    if (!found) return true;
    const int index = lookup(uri, static_cast<std::size_t>(found - uri), fileTransferProtocols);
    if (index < 0) return false;
    protocol = static_cast<FileTransferProtocol>(index);
    uri = found + std::strlen(mark);
    return true;
}

}  // namespace

// Writable by its type only: the linker puts it where nothing is written once the library is
// loaded.
__attribute__((section(".data.rel.ro.kfl_protocols")))
const char* fileTransferProtocols[6] = {"TFTP", "FTP", "HTTP", "HTTPS", "MMDDF", nullptr};

int lookupStringIgnoreCase(const char* text, const char** table) {
    return text && table ? lookup(text, std::strlen(text), table) : -1;
}

URIParser::URIParser() = default;

URIParser::~URIParser() = default;

bool URIParser::parseFileTransferURI(const char* uri, FileTransferProtocol& protocol, AString& host,
                                     unsigned short& port, AString& path) {
    protocol = protocolNone;
    if (!uri || !takeScheme(uri, protocol)) return false;
    const char* const slash = std::strchr(uri, '/');
    // Without a scheme this refuses a leading '/' too.
    if (!slash || slash == uri) return false;

    port = 0;
    const char* hostEnd = slash;
    const char* const colon = std::strchr(uri, ':');
    if (colon && colon < slash) {
        port = portOf(colon + 1);
        hostEnd = colon;
    }
    if (hostEnd == uri) return false;
    assign(host, uri, hostEnd);
    if (slash[1] == '\0') return false;
    assign(path, slash + 1, slash + std::strlen(slash));
    return true;
}

bool URIParser::parseHost(const char* text, AString& host, unsigned short& port) {
    if (!text || *text == '\0') return false;
    const char* const colon = std::strchr(text, ':');
    assign(host, text, colon ? colon : text + std::strlen(text));
    port = colon ? portOf(colon + 1) : 0;
    return true;
}

}  // namespace kfl
