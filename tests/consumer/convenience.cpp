// What a stranger's program in C++11 finds in the headers of convenience.
#include "kfl/convenience.h"

#include "kfl/AString.h"
#include "kfl/CommunicationSocket.h"
#include "kfl/process.h"

int main() {
    kfl::IniFileParser parser;
    parser.setValue("key", "value", "section");
    int keys = 0;
    for (const kfl::st_section& section : kfl::sections(parser)) {
        for (const st_key& key : kfl::keys(section)) keys += key.value.empty() ? 0 : 1;
    }
    kfl::OrdCollect texts;
    texts.add(new kfl::AString("text"));
    for (kfl::AString* text : kfl::items<kfl::AString>(texts)) text->append('s');
    texts.freeContents();

    kfl::Ref<kfl::AString> shared(new kfl::AString("shared"));
    const kfl::Ref<kfl::AString> second = shared;
    shared = nullptr;

    const char path[] = "consumer.socket";
    if (!kfl::removeDeadSocket(path)) return 2;
    IPCSocket socket(const_cast<char*>(path));
    int code = 0;
    if (!socket.initialize(code) || !socket.bind()) return 3;
    kfl::SocketGuard guard(socket.descriptor());
    if (!guard.ownPath(path)) return 4;
    kfl::Sender sender;
    char byte = 'x';
    if (!kfl::sendToPath(guard.descriptor(), path, &byte, 1)) return 5;
    if (kfl::receiveFrom(guard.descriptor(), &byte, 1, 1000, sender) != 1) return 6;
    guard.finish();

    kfl::AES::Rijndael cipher;
    const kfl::WipedAtEnd wiped(cipher);
    const kfl::WaitStatus end(kfl::osSystem("exit 3"));
    return keys == 1 && second.referenceCount() == 1 && end.code() == 3 ? 0 : 1;
}
