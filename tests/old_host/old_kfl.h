// What a host knew of the library when it was compiled: its classes as they stood then, with all
// fields in the open. This is no copy to keep in step with include/kfl/: it changes only when the
// library gets a new name (libkfl.so.2).
#ifndef OLD_KFL_H
#define OLD_KFL_H

#include <pthread.h>

#include <cstddef>

struct timeval;
class Buffer;
class StringFormat;

// The one of two numbers that holds for this target's word size.
constexpr std::size_t bits(std::size_t on32, std::size_t on64) {
    return sizeof(void*) == 4 ? on32 : on64;
}

class Protectable {
  public:
    Protectable();
    Protectable(const Protectable& other);
    virtual ~Protectable();

    unsigned int count;
};
static_assert(sizeof(Protectable) == bits(8, 16));

class ProtectionElement {
  public:
    ProtectionElement();
    ProtectionElement(Protectable* object);
    ProtectionElement(const ProtectionElement& other);
    virtual ~ProtectionElement();
    ProtectionElement& operator=(const ProtectionElement& other);
    ProtectionElement& operator=(Protectable* object);

    Protectable* object;
};
static_assert(sizeof(ProtectionElement) == bits(8, 16));

namespace kfl {

class SObject {
  public:
    SObject();
    virtual ~SObject();
};
static_assert(sizeof(SObject) == bits(4, 8));

class AString : public Protectable, public SObject {
  public:
    AString(unsigned int capacity, unsigned int increment = 100);
    AString(const char* text, unsigned int increment = 100);
    AString(const kfl::AString& other);
    AString(const StringFormat& format);
    AString(Buffer* buffer);
    virtual ~AString();

    virtual int append(const char* text);
    virtual int append(const char* text, unsigned int n);
    virtual int append(Buffer* buffer);
    virtual int append(const kfl::AString& s);
    virtual int append(char c);
    virtual int append(unsigned char c);

    int insert(unsigned int pos, const char* text);
    int erase(unsigned int pos, int count);
    int trimRight(unsigned int n);
    int replace(char from, char to);
    int expandTo(unsigned int n);
    bool operator==(const kfl::AString& other) const;
    int find(const char* needle, int start);
    int findFirstOf(const char* set, int start);
    int findFirstNotOf(const char* set, int start);
    int findLastOf(const char* set);
    int findLastNotOf(const char* set);

    char* data;
    unsigned int capacity;
    unsigned int length;
    unsigned int increment;
};
static_assert(sizeof(AString) == bits(28, 48));

class AStringIterator {
  public:
    AStringIterator(kfl::AString& s, unsigned int lineSize);
    ~AStringIterator();
    void Reset();
    char* Next();

    AString* string;
    char* position;
    char* line;
};
static_assert(sizeof(AStringIterator) == bits(12, 24));

}  // namespace kfl

class StringFormat {
  public:
    StringFormat(const char* format, ...);
    virtual ~StringFormat();
    const char* getString() const;
};
static_assert(sizeof(StringFormat) == bits(4, 8));

class BoundedStringBase {
  public:
    BoundedStringBase();
    ~BoundedStringBase();
    static int makeString(char* buf, unsigned int size, const char* fmt, void* args);
    static char* number(char* out, char* end, long num, int base, int width, int precision,
                        int flags);
    static int skip_atoi(const char** s);
};

class DataInputStream {
  public:
    DataInputStream();
    virtual ~DataInputStream();
    virtual unsigned int read(char* dst, unsigned int n) = 0;
    virtual void rewind() = 0;
};

class DataOutputStream {
  public:
    DataOutputStream();
    virtual ~DataOutputStream();
    virtual unsigned int write(const char* src, unsigned int n) = 0;
    virtual unsigned int writeChar(char c);
};

namespace kfl {

class AStringInputStream : public DataInputStream {
  public:
    AStringInputStream(kfl::AString& s);
    virtual ~AStringInputStream();
    unsigned int read(char* dst, unsigned int n) override;
    void rewind() override;

    AString* string;
    unsigned int position;
};
static_assert(sizeof(AStringInputStream) == bits(12, 24));

class AStringOutputStream : public DataOutputStream {
  public:
    AStringOutputStream(kfl::AString& s);
    virtual ~AStringOutputStream();
    unsigned int write(const char* src, unsigned int n) override;
    unsigned int writeChar(char c) override;

    AString* string;
};
static_assert(sizeof(AStringOutputStream) == bits(8, 16));

}  // namespace kfl

class BufferInputStream : public DataInputStream {
  public:
    BufferInputStream(const char* data, unsigned int length);
    virtual ~BufferInputStream();
    unsigned int read(char* dst, unsigned int n) override;
    void rewind() override;

    const char* start;
    unsigned int total;
    const char* current;
    unsigned int remaining;
};
static_assert(sizeof(BufferInputStream) == bits(20, 40));

class BufferOutputStream : public DataOutputStream {
  public:
    BufferOutputStream(char* array);
    virtual ~BufferOutputStream();
    unsigned int write(const char* src, unsigned int n) override;

    char* array;
    unsigned int length;
};
static_assert(sizeof(BufferOutputStream) == bits(12, 24));

class StringsContainer {
  public:
    StringsContainer(unsigned int capacity);
    virtual ~StringsContainer();
    int addString(char* text);
    unsigned int getNumberOfStrings();
    char* getString(unsigned int index);
    void clear();
    void clearFromString(unsigned int index);
    bool areAllStringsPresentInOtherContainer(StringsContainer* other);
    bool isItIdentical(StringsContainer* other);
    unsigned int getLengthOfStrings();

    unsigned int capacity;
    unsigned int count;
    char** slots;
};
static_assert(sizeof(StringsContainer) == bits(16, 24));

namespace kfl {

class Container {
  public:
    Container();
    Container(unsigned int elementSize);
    Container(unsigned int capacity, unsigned int elementSize);
    virtual ~Container();
    virtual unsigned int size() const;
    virtual unsigned int atGet(unsigned int index, kfl::Container* destination, unsigned int n);
    virtual unsigned int atPut(unsigned int index, kfl::Container* source, unsigned int n);
    virtual void expandTo(unsigned int n);
    void expand();
    void expand(unsigned int n);
    void reset();
    char* setData(char* data);
    unsigned int atPut(unsigned int index, char* source, unsigned int n);
    unsigned int atPut(unsigned int index, char* source);
    unsigned int atGet(unsigned int index, char* destination, unsigned int n);
    unsigned int atGet(unsigned int index, char* destination);

    char* data;
    unsigned int capacity;
    unsigned int elementSize;
};
static_assert(sizeof(Container) == bits(16, 24));

class VoidPtrArray : public Container {
  public:
    VoidPtrArray();
    VoidPtrArray(unsigned int capacity);
    virtual ~VoidPtrArray();
    void add(void* item);
    void* idAt(unsigned int index) const;
    void*& operator[](unsigned int index);
    void atPutId(unsigned int index, void* item);
    int indexOfSame(void* item) const;
    void* findSame(void* item);
    void reset();
};

class SObjectArray : public Container {
  public:
    SObjectArray();
    SObjectArray(unsigned int capacity);
    virtual ~SObjectArray();
    void add(kfl::SObject* item);
    kfl::SObject* idAt(unsigned int index) const;
    kfl::SObject*& operator[](unsigned int index);
    void atPutId(unsigned int index, kfl::SObject* item);
    int indexOfSame(kfl::SObject* item) const;
    kfl::SObject* findSame(kfl::SObject* item);
    void reset();
    void freeContents();
};

class VoidPtrStack {
  public:
    VoidPtrStack(int capacity);
    ~VoidPtrStack();
    bool push(void* item);
    void* pop();

    int capacity;
    int top;
    void** slots;
};
static_assert(sizeof(VoidPtrStack) == bits(12, 16));

class VoidPtrCollection;

class VoidPtrIterator {
  public:
    VoidPtrIterator(kfl::VoidPtrCollection& walked);
    VoidPtrIterator(kfl::VoidPtrCollection* walked);

    unsigned int position;
    void* current;
    kfl::VoidPtrCollection* collection;
};
static_assert(sizeof(VoidPtrIterator) == bits(12, 24));

class VoidPtrCollection {
  public:
    VoidPtrCollection();
    virtual ~VoidPtrCollection();
    virtual void* add(void* item) = 0;
    virtual void* removeSame(void* item) = 0;
    virtual void* replaceSame(void* oldItem, void* newItem) = 0;
    virtual void* findSame(void* item) = 0;
    virtual void clear() = 0;
    virtual unsigned int count() const = 0;
    virtual void* start(kfl::VoidPtrIterator& it) = 0;
    virtual void* end(kfl::VoidPtrIterator& it) = 0;
    virtual void* next(kfl::VoidPtrIterator& it) = 0;
    virtual void* prev(kfl::VoidPtrIterator& it) = 0;
    void* first();
    void* last();
};

class VoidPtrOrderedCollection : public VoidPtrCollection {
  public:
    VoidPtrOrderedCollection();
    VoidPtrOrderedCollection(unsigned int capacity);
    virtual ~VoidPtrOrderedCollection();
    void* add(void* item) override;
    void* removeSame(void* item) override;
    void* replaceSame(void* oldItem, void* newItem) override;
    void* findSame(void* item) override;
    void clear() override;
    unsigned int count() const override;
    void* start(kfl::VoidPtrIterator& it) override;
    void* end(kfl::VoidPtrIterator& it) override;
    void* next(kfl::VoidPtrIterator& it) override;
    void* prev(kfl::VoidPtrIterator& it) override;
    virtual void* insertAt(unsigned int index, void* item);
    virtual void* removeAt(unsigned int index);
    virtual void* replaceAt(unsigned int index, void* item);
    virtual int indexOfSame(void* item) const;
    virtual void* idAt(unsigned int index) const;
    virtual void expandTo(unsigned int capacity);

    VoidPtrArray items;
    unsigned int itemCount;
};
static_assert(sizeof(VoidPtrOrderedCollection) == bits(24, 40));

class Collection;

class Iterator : public SObject {
  public:
    Iterator();
    Iterator(kfl::Collection& walked);
    Iterator(kfl::Collection* walked);
    virtual ~Iterator();

    unsigned int position;
    kfl::SObject* current;
    kfl::Collection* collection;
};
static_assert(sizeof(Iterator) == bits(16, 32));

class Collection : public SObject {
  public:
    Collection();
    virtual ~Collection();
    virtual kfl::SObject* add(kfl::SObject* item) = 0;
    virtual kfl::SObject* removeSame(kfl::SObject* item) = 0;
    virtual kfl::SObject* replaceSame(kfl::SObject* oldItem, kfl::SObject* newItem) = 0;
    virtual kfl::SObject* findSame(kfl::SObject* item) = 0;
    virtual unsigned int count() const = 0;
    virtual void freeContents() = 0;
    virtual kfl::SObject* start(kfl::Iterator& it) = 0;
    virtual kfl::SObject* end(kfl::Iterator& it) = 0;
    virtual kfl::SObject* next(kfl::Iterator& it) = 0;
    virtual kfl::SObject* prev(kfl::Iterator& it) = 0;
    kfl::SObject* first();
    kfl::SObject* last();
};

class OrdCollect : public Collection {
  public:
    OrdCollect();
    OrdCollect(unsigned int capacity);
    virtual ~OrdCollect();
    kfl::SObject* add(kfl::SObject* item) override;
    kfl::SObject* removeSame(kfl::SObject* item) override;
    kfl::SObject* replaceSame(kfl::SObject* oldItem, kfl::SObject* newItem) override;
    kfl::SObject* findSame(kfl::SObject* item) override;
    unsigned int count() const override;
    void freeContents() override;
    kfl::SObject* start(kfl::Iterator& it) override;
    kfl::SObject* end(kfl::Iterator& it) override;
    kfl::SObject* next(kfl::Iterator& it) override;
    kfl::SObject* prev(kfl::Iterator& it) override;
    virtual kfl::SObject* insertAt(unsigned int index, kfl::SObject* item);
    virtual kfl::SObject* removeAt(unsigned int index);
    virtual kfl::SObject* replaceAt(unsigned int index, kfl::SObject* item);
    virtual int indexOfSame(kfl::SObject* item) const;
    virtual kfl::SObject* idAt(unsigned int index) const;
    virtual void expandTo(unsigned int capacity);
    void reset();

    SObjectArray items;
    unsigned int itemCount;
};
static_assert(sizeof(OrdCollect) == bits(24, 40));

}  // namespace kfl

class Buffer : public Protectable {
  public:
    Buffer(unsigned maxSize, unsigned increment);
    Buffer(const Buffer& other);
    virtual ~Buffer();
    Buffer& operator=(const Buffer& other);
    bool operator==(Buffer& other);
    unsigned char& operator[](unsigned index);
    unsigned Read(unsigned char* dest, unsigned count);
    void Unread(unsigned count);
    unsigned Write(unsigned char* src, unsigned count);
    void Unwrite(unsigned count);
    unsigned OneLocationRead(unsigned char* dest, unsigned count);
    unsigned OneLocationWrite(unsigned char* src, unsigned count);
    unsigned ReadWrite(Buffer& dest, Buffer& src, unsigned count);
    Buffer& operator+=(const Buffer& other);
    virtual void Reset();
    virtual void Clear();
    virtual unsigned Size();
    virtual unsigned MaxSize();
    virtual void SetWriteCount(unsigned count);

    unsigned maxSize;
    unsigned increment;
    unsigned char* data;
    unsigned readIndex;
    unsigned writeCount;
};
static_assert(sizeof(Buffer) == bits(28, 40));

class LocalHeap {
  public:
    enum AllocateMethod : int {};

    LocalHeap(unsigned blocksPerPool, unsigned blockSize, LocalHeap::AllocateMethod method);
    virtual ~LocalHeap();
    void initialize();
    void* createPool();
    void* allocateBlock(unsigned size);
    void deallocateBlock(void* block, unsigned size);

    AllocateMethod method;
    unsigned blocksPerPool;
    unsigned blockSize;
    void* firstPool;
    void* lastPool;
    void* freeList;
    unsigned blocksInUse;
    unsigned maxBlocksInUse;
};
static_assert(sizeof(LocalHeap) == bits(36, 56));

struct st_key {
    st_key();
    ~st_key();

    kfl::AString name;
    kfl::AString value;
};

namespace kfl {

struct st_section {
    st_section(const char* name);
    ~st_section();

    kfl::AString name;
    kfl::VoidPtrOrderedCollection keys;
};

void trim(kfl::AString& s);
void getNextWord(kfl::AString& line, kfl::AString& word);
int compareNoCase(const char* a, const char* b);

class IniFileParser {
  public:
    IniFileParser();
    virtual ~IniFileParser();
    bool parseFile(const char* path);
    bool setValue(const char* key, const char* value, const char* section);
    const char* getValue(const char* key, const char* section);
    const char* getString(const char* key, const char* section);
    int getInt(const char* key, const char* section);
    float getFloat(const char* key, const char* section);
    bool getBool(const char* key, const char* section);
    st_key* getKey(const char* key, const char* section);
    kfl::st_section* getSection(const char* name);
    kfl::st_section* createSection(const char* name);

    unsigned int flags;
    kfl::VoidPtrOrderedCollection sections;
    bool modified;
};
static_assert(sizeof(IniFileParser) == bits(36, 64));

class KeyValuePair : public SObject {
  public:
    KeyValuePair(char* key, char* value);
    virtual ~KeyValuePair();

    kfl::AString key;
    kfl::AString value;
};

class NameValuePair : public Protectable {
  public:
    NameValuePair(const char* name, const char* value);
    virtual ~NameValuePair();

    kfl::AString name;
    kfl::AString value;
};

class KeyValueParser {
  public:
    KeyValueParser();
    ~KeyValueParser();
    static int parse(const char* path, kfl::KeyValuePair** pairs);
};

enum FileTransferProtocol : int {};

extern const char* fileTransferProtocols[6];

int lookupStringIgnoreCase(const char* text, const char** table);

class URIParser {
  public:
    URIParser();
    ~URIParser();
    static bool parseFileTransferURI(const char* uri, kfl::FileTransferProtocol& protocol,
                                     kfl::AString& host, unsigned short& port, kfl::AString& path);
    static bool parseHost(const char* text, kfl::AString& host, unsigned short& port);
};

}  // namespace kfl

class CommunicationSocket {
  public:
    CommunicationSocket(int domain, int type, int protocol, int port);
    virtual ~CommunicationSocket();
    virtual bool bind() = 0;
    bool initialize(int& resultCode);
    int receive(char* buffer, int length, timeval& timeOut, int& resultCode);
    const char* resultToString(int code);

    int domain;
    int type;
    int protocol;
    int port;
    int descriptor;
};
static_assert(sizeof(CommunicationSocket) == bits(24, 32));

class IPCSocket : public CommunicationSocket {
  public:
    IPCSocket(char* path);
    ~IPCSocket() override;
    bool bind() override;

    char* path;
};

class ISCSocket : public CommunicationSocket {
  public:
    ISCSocket(int type, int protocol, int port);
    ~ISCSocket() override;
    bool bind() override;
};

int createSocket(int* resultCode);
int bindSocket(int descriptor, int port);
int recvFromSocket(int descriptor, void* buffer, unsigned int length, timeval* timeOut,
                   int* resultCode);
int sendToSocket(int descriptor, void* data, unsigned int length, int* resultCode);
const char* socketResultToString(int code);

void raiseSyslogEvent(int priority, int first, int second, int third, const char* origin,
                      int originNumber, const char* text);
void raiseSyslogAlarm(int priority, bool on, int first, int second, int third, const char* origin,
                      int originNumber, const char* text);
void setExcludeFromDebugEventsFilter(int* filter);

namespace kfl {

int osCopyFile(const char* from, const char* to, bool sync);
int osSystem(const char* command);
int osCreateProcess(const char* commandLine, bool wait, const char* outputFile);
bool osStatusReceived(int pid, int status);
int osKillProcess(int pid);

int osCreateThread(int eventGroup, void (*entry)(void*), void* argument, int ignoredOption);
int osJoinThread(int threadId);
void osExitThread();

class OSThread {
  public:
    OSThread();
    ~OSThread();
    int create(int eventGroup, void (*entry)(void*), void* argument, int ignoredOption);
    int destroy();
    bool isRequestedToStop(unsigned int timeoutNs);
    int threadHasStarted();
    int threadIsStopping();
    void leave();

    pthread_mutex_t stopMutex;
    pthread_cond_t stopCondition;
    int threadId;
};

namespace AES {

class Rijndael {
  public:
    Rijndael();
    virtual ~Rijndael();
    void makeKey(const char* key, const char* chain, int keyLength, int blockSize);
    void DefEncryptBlock(const char* in, char* result);
    void DefDecryptBlock(const char* in, char* result);
    void encryptBlock(const char* in, char* result);
    void decryptBlock(const char* in, char* result);
    void encrypt(const char* in, char* result, unsigned n, int mode);
    void decrypt(const char* in, char* result, unsigned n, int mode);
    void encryptFile(const char* inName, const char* outName, int mode);
    void decryptFile(const char* inName, const char* outName, int mode);

    static const int _alog[256];
    static const unsigned char _S[256];
    static const unsigned int _T1[256];
    static const unsigned char _rcon[30];
    static const int _shifts[3][4][2];
    static const char* const _ErrorMsg1;
    static const char* const _nullchain;

    bool keyInitialized;
    unsigned int encryptKeys[15][8];
    unsigned int decryptKeys[15][8];
    int keyLength;
    int blockSize;
    int rounds;
    char initialChain[32];
    char chain[32];
    int keyWork[8];
    int blockState[8];
    int blockTemp[8];
};
static_assert(sizeof(Rijndael) == bits(1140, 1144));

}  // namespace AES
}  // namespace kfl

class RandomNumberGenerator {
  public:
    RandomNumberGenerator();
    ~RandomNumberGenerator();
    static int getNumber();
};

// What the host supplies.
extern const char* applicationName;

#endif
