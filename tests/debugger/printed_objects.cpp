// One object of each kind that gdb is taught to show, and some that make no sense.
#include <cstring>

#include "kfl/kfl.h"

namespace {

// gdb stops here.
void stop() { asm volatile(""); }

// Memory that was never an object of the kind.
template <class T>
struct Garbage {
    explicit Garbage(int fill) { std::memset(bytes, fill, sizeof bytes); }
    const T& object() const { return *reinterpret_cast<const T*>(bytes); }
    alignas(T) unsigned char bytes[sizeof(T)];
};

template <class T>
void showGarbage() {
    const Garbage<T> zeros(0);
    const Garbage<T> ones(1);
    const Garbage<T> high(0xA5);
    const Garbage<T> full(0xFF);
    [[maybe_unused]] const T& garbage1 = zeros.object();
    [[maybe_unused]] const T& garbage2 = ones.object();
    [[maybe_unused]] const T& garbage3 = high.object();
    [[maybe_unused]] const T& garbage4 = full.object();
    stop();
}

void showObjects() {
    const kfl::AString text("eth0");
    kfl::AString withNul("ab");
    withNul.append('\0');
    withNul.append('c');
    const kfl::AString empty(10U);
    const kfl::AString longText("0123456789012345678901234567890123456789");
    int item = 7;

    kfl::Container container(2, 3);
    char element[] = {1, 2, 3};
    container.atPut(1, element);
    const kfl::Container noStorage;
    kfl::VoidPtrArray array(2);
    array.atPutId(1, &item);
    kfl::SObjectArray objects(1);
    kfl::AString member("member");
    objects.add(&member);
    kfl::VoidPtrStack stack(2);
    stack.push(&item);
    stack.push(nullptr);
    stack.push(&item);
    kfl::VoidPtrOrderedCollection list;
    for (int i = 0; i < 12; ++i) list.add(&item);
    kfl::OrdCollect objectList;
    objectList.add(&member);
    StringsContainer strings(3);
    char first[] = "first";
    strings.addString(first);
    strings.addString(nullptr);

    Buffer buffer(8, 0);
    unsigned char bytes[] = {1, 2, 3, 4};
    buffer.Write(bytes, 4);
    buffer.Read(bytes, 1);

    kfl::IniFileParser parser;
    parser.setValue("port", "8080", "net");
    parser.setValue("mode", "a", "net");
    [[maybe_unused]] const kfl::st_section& section = *parser.getSection("net");
    [[maybe_unused]] const st_key& key = *parser.getKey("mode", "net");

    char name[] = "host";
    char value[] = "localhost";
    const kfl::KeyValuePair pair(name, value);
    const kfl::NameValuePair named(name, value);
    const ProtectionElement nothing;
    const ProtectionElement handle(new kfl::AString("shared"));
    const ProtectionElement second(handle);

    kfl::AES::Rijndael cipher;
    const kfl::AES::Rijndael keyless;
    cipher.makeKey("SECRETsecretSECRETsecret", kfl::AES::Rijndael::_nullchain, 24, 16);
    stop();
}

}  // namespace

int main() {
    showObjects();
    showGarbage<kfl::AString>();
    showGarbage<kfl::Container>();
    showGarbage<kfl::VoidPtrArray>();
    showGarbage<kfl::SObjectArray>();
    showGarbage<kfl::VoidPtrStack>();
    showGarbage<kfl::VoidPtrOrderedCollection>();
    showGarbage<kfl::OrdCollect>();
    showGarbage<StringsContainer>();
    showGarbage<Buffer>();
    showGarbage<st_key>();
    showGarbage<kfl::st_section>();
    showGarbage<kfl::IniFileParser>();
    showGarbage<kfl::KeyValuePair>();
    showGarbage<kfl::NameValuePair>();
    showGarbage<ProtectionElement>();
    showGarbage<kfl::AES::Rijndael>();
    return 0;
}
