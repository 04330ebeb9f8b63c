// Locations of files. Shows: a flat file of keys with defaults in the program, locations split into
// their parts, names looked up in a table, and formatted texts that are copied before the next one.
#include "downloads.h"

#include <cstdlib>
#include <cstring>

#include "kfl/AString.h"

namespace agent {
namespace {

// The pairs copy their texts, but take them as changeable.
char protocolKey[] = "protocol";
char protocolBuiltIn[] = "tftp";
char attemptsKey[] = "attempts";
char attemptsBuiltIn[] = "3";
char folderKey[] = "folder";
char folderBuiltIn[] = "/tmp";

// The downloads, named as their keys in the section "downloads".
const char* const downloads[] = {"firmware", "prompts", "phonebook"};

// The value without the blanks that the reader leaves in front of it.
const char* valueOf(const kfl::KeyValuePair& pair) {
    const char* const text = pair.value.c_str();
    return text + std::strspn(text, " \t");
}

void appendPort(kfl::AString& text, unsigned short port) {
    if (port == 0) {
        text.append("its usual port");
        return;
    }
    text.append(StringFormat("port %hu", port).getString());
}

// A name beside a file, or by itself when it begins with a slash.
void appendPathBeside(kfl::AString& path, const char* file, const char* name) {
    if (*name != '/') {
        path.append(file);
        path.erase(static_cast<unsigned int>(path.findLastOf("/") + 1), -1);
    }
    path.append(name);
}

void reportDefaults(Journal& journal, const DownloadDefaults& defaults, int result,
                    const char* path) {
    static const char* const results[] = {"cannot be read", "holds none", "read"};
    journal.add(StringFormat("defaults: %s: %s", path, results[result]));
    journal.add(StringFormat("defaults: %s, %d attempts, to %s",
                             kfl::fileTransferProtocols[defaults.protocol()], defaults.attempts(),
                             defaults.folder()));
}

}  // namespace

DownloadDefaults::DownloadDefaults()
    : protocol_(protocolKey, protocolBuiltIn),
      attempts_(attemptsKey, attemptsBuiltIn),
      folder_(folderKey, folderBuiltIn) {}

int DownloadDefaults::read(const char* path) {
    kfl::KeyValuePair* pairs[] = {&protocol_, &attempts_, &folder_, nullptr};
    return kfl::KeyValueParser::parse(path, pairs);
}

kfl::FileTransferProtocol DownloadDefaults::protocol() const {
    const int index = kfl::lookupStringIgnoreCase(valueOf(protocol_), kfl::fileTransferProtocols);
    return index < 0 ? kfl::protocolTFTP : static_cast<kfl::FileTransferProtocol>(index);
}

int DownloadDefaults::attempts() const { return std::atoi(valueOf(attempts_)); }

const char* DownloadDefaults::folder() const { return valueOf(folder_); }

void reportDownload(Journal& journal, const char* what, const char* location,
                    const DownloadDefaults& defaults) {
    if (!location) {
        journal.add(StringFormat("download %s: no location", what));
        return;
    }
    auto protocol = kfl::protocolNone;
    kfl::AString host("");
    kfl::AString path("");
    unsigned short port = 0;
    if (!kfl::URIParser::parseFileTransferURI(location, protocol, host, port, path)) {
        journal.add(StringFormat("download %s: not a location: %s", what, location));
        return;
    }
    if (protocol == kfl::protocolNone) protocol = defaults.protocol();
    // Two formatted texts must not be alive at once, so the first one is copied.
    kfl::AString portText("");
    appendPort(portText, port);
    journal.add(StringFormat("download %s: %s from %s, %s, file %s", what,
                             kfl::fileTransferProtocols[protocol], host.c_str(), portText.c_str(),
                             path.c_str()));
}

void reportDownloads(Journal& journal, Settings& settings, const char* settingsPath) {
    DownloadDefaults defaults;
    kfl::AString path("");
    appendPathBeside(path, settingsPath, settings.text("downloads", "defaults"));
    const int result = defaults.read(path.c_str());
    reportDefaults(journal, defaults, result, path.c_str());
    for (const char* const name : downloads) {
        reportDownload(journal, name, settings.text("downloads", name), defaults);
    }
}

}  // namespace agent
