// Ordered lists, of anything and of objects, and a walk that removes.
#include <cstdio>

#include "kfl/AString.h"
#include "kfl/Collection.h"
#include "kfl/VoidPtrCollection.h"

namespace {

struct Peer {
    const char* name;
    bool alive;
};

}  // namespace

int main() {
    // Pointers to what lives elsewhere.
    Peer primary = {"primary", true}, secondary = {"secondary", false}, third = {"third", true};
    kfl::VoidPtrOrderedCollection peers;
    peers.add(&primary);
    peers.add(&third);
    peers.insertAt(1, &secondary);
    kfl::VoidPtrIterator it(peers);
    while (void* item = peers.next(it)) std::printf("%s ", static_cast<Peer*>(item)->name);
    std::printf("(%u)\n", peers.count());

    // An iterator is not told of removals, so this walk goes backwards by index.
    for (unsigned int i = peers.count(); i-- > 0;) {
        if (!static_cast<Peer*>(peers.idAt(i))->alive) peers.removeAt(i);
    }
    std::printf("%u left, secondary at %d\n", peers.count(), peers.indexOfSame(&secondary));

    // Objects, which the collection deletes when it is told to.
    kfl::OrdCollect names;
    names.add(new kfl::AString("eth0"));
    names.add(new kfl::AString("dsp0"));
    kfl::Iterator name(names);
    while (kfl::SObject* item = names.next(name)) {
        std::printf("%s ", static_cast<kfl::AString*>(item)->c_str());
    }
    names.freeContents();
    std::printf("(%u after freeContents)\n", names.count());
    return 0;
}
