// kfl uri: splits a file-transfer location, or a host with its port.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/URIParser.h"
#include "tools/kfl/command.h"

namespace kfl_tool {
namespace {

void printHost(const kfl::AString& host, unsigned short port) {
    std::printf("host=%s\nport=%hu\n", host.c_str(), port);
}

void splitHost(const char* text) {
    kfl::AString host("");
    unsigned short port = 0;
    if (!kfl::URIParser::parseHost(text, host, port)) fail("no host in '%s'", text);
    printHost(host, port);
}

void splitLocation(const char* uri) {
    auto protocol = kfl::protocolNone;
    kfl::AString host("");
    unsigned short port = 0;
    kfl::AString path("");
    if (!kfl::URIParser::parseFileTransferURI(uri, protocol, host, port, path)) {
        fail("not a file-transfer location: '%s'", uri);
    }
    const char* const name = kfl::fileTransferProtocols[protocol];
    std::printf("protocol=%s\n", name ? name : "");
    printHost(host, port);
    std::printf("path=%s\n", path.c_str());
}

int run(Arguments& arguments) {
    constexpr int asHost = 'H';
    static const option options[] = {{"host", no_argument, nullptr, asHost}, helpOption, {}};
    void (*split)(const char*) = splitLocation;
    while (arguments.nextOption(options) != 0) split = splitHost;
    arguments.requireOperands(1, 1);
    split(arguments[0]);
    return succeeded;
}

}  // namespace

const Command uriCommand = {
    "uri", "[--host] URI", "Split a file-transfer location into its parts",
    "Splits scheme://host:port/path, where scheme and port may be missing, and shows\n"
    "the parts as lines of the form name=value. The schemes are TFTP, FTP, HTTP,\n"
    "HTTPS and MMDDF, in any case; the protocol is empty where there is none. A port\n"
    "that is missing or no number is 0; one past 65535 is cut to 16 bits. The path\n"
    "comes without the slash in front of it.\n"
    "\n"
    "Options:\n"
    "      --host  split host:port, where either may be missing, instead\n"
    "  -h, --help  show this page\n"
    "\n"
    "Exit status: 0 when split, 1 when URI is not such a location (its scheme is not\n"
    "known, or its host or path is missing) or, with --host, is empty, 2 for wrong\n"
    "usage.\n",
    run};

}  // namespace kfl_tool
