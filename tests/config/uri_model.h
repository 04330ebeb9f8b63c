// What becomes of transfer locations and hosts, beside a second splitter, step by step on standard
// strings.
#ifndef KFL_TESTS_URI_MODEL_H
#define KFL_TESTS_URI_MODEL_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "kfl/URIParser.h"

namespace kfl_test {

// What stands in the results before a call.
constexpr int oldProtocol = 77;
constexpr unsigned short oldPort = 4711;
inline const std::string oldText = "untouched";

struct Split {
    bool done = false;
    int protocol = oldProtocol;
    std::string host = oldText;
    unsigned short port = oldPort;
    std::string path = oldText;
};

inline bool operator==(const Split& a, const Split& b) {
    return a.done == b.done && a.protocol == b.protocol && a.host == b.host && a.port == b.port &&
           a.path == b.path;
}

inline void PrintTo(const Split& split, std::ostream* out) {
    *out << (split.done ? "split" : "refused") << ", protocol " << split.protocol << ", host '"
         << split.host << "', port " << split.port << ", path '" << split.path << '\'';
}

inline Split splitURI(const char* uri) {
    auto protocol = static_cast<kfl::FileTransferProtocol>(oldProtocol);
    kfl::AString host(oldText.c_str());
    kfl::AString path(oldText.c_str());
    Split split;
    split.done = kfl::URIParser::parseFileTransferURI(uri, protocol, host, split.port, path);
    EXPECT_EQ(host.length(), std::string(host.c_str()).size());
    EXPECT_EQ(path.length(), std::string(path.c_str()).size());
    split.protocol = protocol;
    split.host = host.c_str();
    split.path = path.c_str();
    return split;
}

inline Split splitHost(const char* text) {
    kfl::AString host(oldText.c_str());
    Split split;
    split.done = kfl::URIParser::parseHost(text, host, split.port);
    EXPECT_EQ(host.length(), std::string(host.c_str()).size());
    split.host = host.c_str();
    return split;
}

inline std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

inline unsigned short portIn(const std::string& text) {
    return static_cast<unsigned short>(std::atoi(text.c_str()));
}

inline Split modelOfURI(const std::string& uri) {
    static const std::vector<std::string> names = {"tftp", "ftp", "http", "https", "mmddf"};
    Split split;
    split.protocol = 5;
    std::string rest = uri;
    const std::size_t mark = uri.find("://");
    if (mark != std::string::npos) {
        int index = 0;
        while (index < 5 && names[static_cast<std::size_t>(index)] != lower(uri.substr(0, mark)))
            ++index;
        if (index == 5) return split;
        split.protocol = index;
        rest = uri.substr(mark + 3);
    }
    const std::size_t slash = rest.find('/');
    if (slash == std::string::npos || slash == 0) return split;
    std::string host = rest.substr(0, slash);
    const std::size_t colon = host.find(':');
    split.port = 0;
    if (colon != std::string::npos) {
        split.port = portIn(host.substr(colon + 1));
        host.resize(colon);
    }
    if (host.empty()) return split;
    split.host = host;
    if (slash + 1 == rest.size()) return split;
    split.path = rest.substr(slash + 1);
    split.done = true;
    return split;
}

inline Split modelOfHost(const std::string& text) {
    Split split;
    if (text.empty()) return split;
    const std::size_t colon = text.find(':');
    split.host = text.substr(0, colon);
    split.port = colon == std::string::npos ? static_cast<unsigned short>(0)
                                            : portIn(text.substr(colon + 1));
    split.done = true;
    return split;
}

}  // namespace kfl_test

#endif
