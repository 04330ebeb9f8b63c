// A transfer location, a host with its port, and a look-up in a table of names, beside plain second
// splitters.
#include <gtest/gtest.h>
#include <strings.h>

#include <cstdlib>
#include <ostream>

#include "fuzz/input.h"
#include "kfl/URIParser.h"
#include "tests/config/simple_ini_reader.h"

namespace {

using kfl_fuzz::ExactText;
using kfl_test::textOf;

// What an operation answers and leaves in its results; what it left alone is as it was made here.
struct Split {
    bool done = false;
    int protocol = 77;
    std::string host = "host before";
    unsigned short port = 4711;
    std::string path = "path before";
};

bool operator==(const Split& a, const Split& b) {
    return a.done == b.done && a.protocol == b.protocol && a.host == b.host && a.port == b.port &&
           a.path == b.path;
}

void PrintTo(const Split& split, std::ostream* out) {
    *out << split.done << ", protocol " << split.protocol << ", host '" << split.host << "', port "
         << split.port << ", path '" << split.path << '\'';
}

unsigned short portOf(const std::string& text) {
    return static_cast<unsigned short>(std::atoi(text.c_str()));
}

int indexOf(const std::string& text) {
    for (int i = 0; kfl::fileTransferProtocols[i]; ++i)
        if (strcasecmp(kfl::fileTransferProtocols[i], text.c_str()) == 0) return i;
    return -1;
}

Split modelURI(const std::string& uri) {
    Split split;
    split.protocol = kfl::protocolNone;
    std::string rest = uri;
    if (const std::size_t mark = uri.find("://"); mark != std::string::npos) {
        const int index = indexOf(uri.substr(0, mark));
        if (index < 0) return split;
        split.protocol = index;
        rest = uri.substr(mark + 3);
    }
    const std::size_t slash = rest.find('/');
    if (slash == std::string::npos || slash == 0) return split;
    // A ':' behind the slash belongs to the path.
    const std::string place = rest.substr(0, slash);
    const std::size_t colon = place.find(':');
    split.port = colon == std::string::npos ? portOf("") : portOf(place.substr(colon + 1));
    const std::string host = place.substr(0, colon);
    if (host.empty()) return split;
    split.host = host;
    if (slash + 1 == rest.size()) return split;
    split.path = rest.substr(slash + 1);
    split.done = true;
    return split;
}

Split modelHost(const std::string& text) {
    Split split;
    if (text.empty()) return split;
    const std::size_t colon = text.find(':');
    split.host = text.substr(0, colon);
    split.port = colon == std::string::npos ? portOf("") : portOf(text.substr(colon + 1));
    split.done = true;
    return split;
}

Split splitURI(const char* uri) {
    Split split;
    auto protocol = static_cast<kfl::FileTransferProtocol>(split.protocol);
    kfl::AString host(split.host.c_str());
    kfl::AString path(split.path.c_str());
    split.done = kfl::URIParser::parseFileTransferURI(uri, protocol, host, split.port, path);
    split.protocol = protocol;
    split.host = textOf(host);
    split.path = textOf(path);
    return split;
}

Split splitHost(const char* text) {
    Split split;
    kfl::AString host(split.host.c_str());
    split.done = kfl::URIParser::parseHost(text, host, split.port);
    split.host = textOf(host);
    return split;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = kfl_fuzz::Input(data, size).rest();
    const std::string text = bytes.substr(0, bytes.find('\0'));
    const ExactText exact(text);
    EXPECT_EQ(splitURI(exact), modelURI(text));
    EXPECT_EQ(splitHost(exact), modelHost(text));
    EXPECT_EQ(kfl::lookupStringIgnoreCase(exact, kfl::fileTransferProtocols), indexOf(text));
    return 0;
}
