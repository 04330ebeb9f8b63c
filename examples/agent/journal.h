// Collects lines to be shown together: StringFormat and Buffer at work.
//
//     agent::Journal journal;
//     journal.add(StringFormat("%s: port %d", name, port));
//     journal.print();
#ifndef AGENT_JOURNAL_H
#define AGENT_JOURNAL_H

#include "kfl/Buffer.h"
#include "kfl/StringFormat.h"

namespace agent {

class Journal {
  public:
    Journal();

    // Adds a line; its end is added here. The text is copied at once: the next StringFormat
    // anywhere in the process overwrites it.
    void add(const StringFormat& line);
    // Prints all lines and their size, and forgets them.
    void print();

  private:
    Buffer text_;
    unsigned int lines_;
};

}  // namespace agent

#endif
