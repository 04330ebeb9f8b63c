// Where the agent fetches its files from: kfl::URIParser and kfl::KeyValueParser at work.
//
//     agent::DownloadDefaults defaults;
//     defaults.read("/etc/defaults.conf");
//     agent::reportDownload(journal, "firmware", "tftp://10.0.0.1:69/boot/img", defaults);
#ifndef AGENT_DOWNLOADS_H
#define AGENT_DOWNLOADS_H

#include "journal.h"
#include "kfl/KeyValue.h"
#include "kfl/URIParser.h"
#include "settings.h"

namespace agent {

// What a location leaves open. A key/value file of its own may change it.
class DownloadDefaults {
  public:
    DownloadDefaults();

    // Takes what the file holds and leaves the rest built in. The result is that of
    // kfl::KeyValueParser::parse.
    int read(const char* path);

    // For a location without a scheme: TFTP when the value names no protocol.
    kfl::FileTransferProtocol protocol() const;
    // How often to try.
    int attempts() const;
    // The folder that takes the files.
    const char* folder() const;

  private:
    kfl::KeyValuePair protocol_;
    kfl::KeyValuePair attempts_;
    kfl::KeyValuePair folder_;
};

// Adds a line to the journal that shows the parts of a location, or what is wrong with it; it may
// be null.
void reportDownload(Journal& journal, const char* what, const char* location,
                    const DownloadDefaults& defaults);

// Reads the file of defaults that the settings name, which lies beside the settings' own file
// unless its path is absolute, and reports on all downloads.
void reportDownloads(Journal& journal, Settings& settings, const char* settingsPath);

}  // namespace agent

#endif
