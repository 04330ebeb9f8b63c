// How a stranger tests what a program reports.
#include "kfl/RecordingHost.h"
#include "kfl/process.h"

int main() {
    kfl::osKillProcess(-1);
    if (!kfl::recording::waitForEvents(2, 1000)) return 1;
    const kfl::recording::Event last = kfl::recording::events().back();
    return last.priority == 3 && !last.text.empty() ? 0 : 1;
}
