// Names that are easily lost: the host knows them as its compiler wrote them down.
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

struct Name {
    const char* mangled;
    const char* what;
};

const Name names[] = {
    {"_ZN3kfl12VoidPtrArrayixEj", "a reference to a pointer as result"},
    {"_ZN3kfl12SObjectArrayixEj", "the same for objects"},
    {"_ZN6BufferixEj", "a reference to a byte as result"},
    {"_ZN6BuffereqERS_", "a comparison that is not const"},
    {"_ZNK3kfl7AStringeqERKS0_", "a comparison that is const"},
    {"_ZN3kfl7AString4findEPKci", "a search that is not const"},
    {"_ZNK3kfl9Container4sizeEv", "a const virtual operation"},
    {"_ZNK3kfl24VoidPtrOrderedCollection4idAtEj", "another"},
    {"_ZN17ProtectionElementaSEP11Protectable", "assignment of a plain pointer"},
    {"_ZN6BufferpLERKS_", "an appending operator"},
    {"_ZN9LocalHeapC1EjjNS_14AllocateMethodE", "a nested enumeration as argument"},
    {"_ZN3kfl9URIParser20parseFileTransferURIEPKcRNS_20FileTransferProtocolERNS_7AStringERtS6_",
     "references to an enumeration, a short and a string twice"},
    {"_ZN3kfl22lookupStringIgnoreCaseEPKcPS1_", "a table of texts as argument"},
    {"_ZN17BoundedStringBase10makeStringEPcjPKcPv", "an argument list without a type"},
    {"_ZN17BoundedStringBase6numberEPcS0_liiii", "a long among ints"},
    {"_ZN17BoundedStringBase9skip_atoiEPPKc", "a pointer to a pointer"},
    {"_ZN12StringFormatC1EPKcz", "a constructor with any arguments"},
    {"_Z14recvFromSocketiPvjP7timevalPi", "a structure of the system"},
    {"_ZN19CommunicationSocket7receiveEPciR7timevalRi", "the same as a reference"},
    {"_ZN3kfl14osCreateThreadEiPFvPvES0_i", "a function as argument"},
    {"_ZN3kfl8OSThread6createEiPFvPvES1_i", "the same of a class"},
    {"_ZN3kfl14KeyValueParser5parseEPKcPPNS_12KeyValuePairE", "an array of pointers"},
    {"_ZN3kfl7AString6appendEh", "an unsigned character"},
    {"_ZThn8_N3kfl7AStringD1Ev", nullptr},
    {"_ZThn16_N3kfl7AStringD1Ev", nullptr},
    {"_ZN15DataInputStreamC2Ev", "the constructor that subclasses call"},
    {"_ZTI19CommunicationSocket", "the type of an abstract class"},
    {"_ZN3kfl3AES8Rijndael7_shiftsE", "a table"},
};

TEST(OldHost, OddNamesAreFound) {
    for (const Name& name : names) {
        // The thunk's name holds the place of the second base, which depends on the word size.
        if (!name.what && (name.mangled[5] == '8') != (sizeof(void*) == 4)) continue;
        EXPECT_NE(dlsym(RTLD_DEFAULT, name.mangled), nullptr)
            << name.mangled << " (" << (name.what ? name.what : "deletion through the second base")
            << ") is gone: a host that uses it no longer starts";
    }
}

}  // namespace
