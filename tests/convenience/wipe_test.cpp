#include "kfl/convenience/wipe.h"
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>

#include <cstring>
#include <string>
#include <string_view>

#include "tests/support/recording_host.h"

namespace {

using kfl::AES::Rijndael;

const char key[] = "SECRETsecretSECR";

std::string_view bytesOf(const Rijndael& cipher) {
    return {reinterpret_cast<const char*>(&cipher), sizeof cipher};
}

TEST(WipeTest, NothingOfTheKeyIsLeft) {
    Rijndael cipher;
    cipher.makeKey(key, "initialCHAINinit", 16, 16);
    ASSERT_NE(bytesOf(cipher).find(std::string_view("initialCHAINinit")), std::string_view::npos);
    kfl::wipe(cipher);
    EXPECT_FALSE(cipher.hasKey());
    EXPECT_EQ(cipher.keyBytes(), 0);
    // Behind the pointer to its operations there are zeros, whatever the object was.
    const std::string_view rest = bytesOf(cipher).substr(sizeof(void*));
    EXPECT_EQ(rest.find_first_not_of('\0'), std::string_view::npos);
}

TEST(WipeTest, AWipedCipherCanBeGivenAKey) {
    Rijndael fresh;
    Rijndael wiped;
    wiped.makeKey("another key, 24 bytes...", Rijndael::_nullchain, 24, 32);
    kfl::wipe(wiped);
    char a[16];
    char b[16];
    kfl_test::clearEvents();
    wiped.encryptBlock(key, a);
    ASSERT_EQ(kfl_test::events().size(), 1U);
    EXPECT_EQ(kfl_test::events()[0].text, "Object not Initialized");
    for (Rijndael* cipher : {&fresh, &wiped}) {
        cipher->makeKey(key, Rijndael::_nullchain, 16, 16);
        cipher->encryptBlock(key, cipher == &fresh ? a : b);
    }
    EXPECT_EQ(std::memcmp(a, b, sizeof a), 0);
    kfl_test::clearEvents();
}

TEST(WipeTest, AScopeCanWipeAtItsEnd) {
    Rijndael cipher;
    {
        const kfl::WipedAtEnd wiped(cipher);
        cipher.makeKey(key, Rijndael::_nullchain, 16, 16);
        EXPECT_TRUE(cipher.hasKey());
    }
    EXPECT_FALSE(cipher.hasKey());
}

TEST(WipeTest, BytesAreOverwrittenAndNoOthers) {
    char text[] = "abcdef";
    kfl::wipe(text + 1, 3);
    EXPECT_EQ(std::memcmp(text, "a\0\0\0ef", sizeof text), 0);
    kfl::wipe(text, 0);
    EXPECT_EQ(text[0], 'a');
}

#ifndef KFL_FOREIGN_STACK

// Runs a function on a stack of its own and keeps what it leaves there.
class WatchedStack {
  public:
    explicit WatchedStack(void* (*function)(void*))
        : stack_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        EXPECT_EQ(pthread_attr_setstack(&attributes, stack_, size), 0);
        pthread_t thread{};
        EXPECT_EQ(pthread_create(&thread, &attributes, function, nullptr), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
    }
    ~WatchedStack() { munmap(stack_, size); }
    WatchedStack(const WatchedStack&) = delete;
    WatchedStack& operator=(const WatchedStack&) = delete;

    bool holds(std::string_view text) const {
        return std::string_view(static_cast<const char*>(stack_), size).find(text) !=
               std::string_view::npos;
    }

  private:
    static constexpr std::size_t size = 1024 * 1024;
    void* stack_;
};

// The text is made on the stack: a constant in the program's image would be no sign.
void fillWithMark(char* room) {
    for (char c = 'A'; c <= 'Z'; ++c) *room++ = c;
    asm volatile("" : : "r"(room) : "memory");
}
const std::string_view mark = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// So deep that the thread's end does not write over it.
constexpr std::size_t frame = 8192;

void* leaveAMark(void* /*unused*/) {
    char room[frame];
    fillWithMark(room);
    return nullptr;
}

void* wipeAMark(void* /*unused*/) {
    char room[frame];
    fillWithMark(room);
    kfl::wipe(room, mark.size());
    return nullptr;
}

// The chain block stands for the key, which does not lie in the object as it was given.
void* leaveACipher(void* /*unused*/) {
    Rijndael cipher;
    cipher.makeKey(key, "initialCHAINinit", 16, 16);
    return nullptr;
}

void* wipeACipher(void* /*unused*/) {
    Rijndael cipher;
    const kfl::WipedAtEnd wiped(cipher);
    cipher.makeKey(key, "initialCHAINinit", 16, 16);
    return nullptr;
}

// The compiler sees that nobody reads the bytes any more, and must write them all the same.
TEST(WipeTest, TheCompilerCannotLeaveItOut) {
    EXPECT_TRUE(WatchedStack(leaveAMark).holds(mark));
    EXPECT_FALSE(WatchedStack(wipeAMark).holds(mark));
    EXPECT_TRUE(WatchedStack(leaveACipher).holds("initialCHAINinit"));
    EXPECT_FALSE(WatchedStack(wipeACipher).holds("initialCHAINinit"));
}

#endif

}  // namespace
