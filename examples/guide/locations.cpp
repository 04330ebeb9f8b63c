// Locations of files, split into their parts.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/URIParser.h"

namespace {

void show(const char* uri) {
    kfl::FileTransferProtocol protocol = kfl::protocolNone;
    kfl::AString host(""), path("");
    unsigned short port = 0;
    if (!kfl::URIParser::parseFileTransferURI(uri, protocol, host, port, path)) {
        std::printf("%s: no location\n", uri);
        return;
    }
    const char* const name = kfl::fileTransferProtocols[protocol];
    std::printf("%s from %s, port %u, file %s\n", name ? name : "(none)", host.c_str(),
                static_cast<unsigned int>(port), path.c_str());
}

}  // namespace

int main() {
    show("tftp://10.64.0.9:6969/images/iad-24.bin");
    show("files.example/phonebook.xml");
    show("gopher://files.example/x");
    kfl::AString host("");
    unsigned short port = 0;
    kfl::URIParser::parseHost("10.64.0.1:7070", host, port);
    std::printf("%s and %u\n", host.c_str(), static_cast<unsigned int>(port));
    return 0;
}
