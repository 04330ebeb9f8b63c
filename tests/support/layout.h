// Looks at objects of the library as a host does that was compiled long ago: it knows byte offsets,
// slots of virtual tables and mangled names, and nothing else.
//
// Programs that use it link ${CMAKE_DL_LIBS}, and the library with --no-as-needed: the linker sees
// no use of it where all names are looked up at run time.
#ifndef KFL_TESTS_LAYOUT_H
#define KFL_TESTS_LAYOUT_H

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace kfl_test {

// The one of two numbers that holds for this target's word size.
constexpr std::size_t bits(std::size_t on32, std::size_t on64) {
    return sizeof(void*) == 4 ? on32 : on64;
}

constexpr std::size_t pointerSize = sizeof(void*);

// What stands at a byte offset of a live object.
template <class T>
T fieldAt(const void* object, std::size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(object) + offset, sizeof value);
    return value;
}

inline unsigned int wordAt(const void* object, std::size_t offset) {
    return fieldAt<unsigned int>(object, offset);
}

inline void* pointerAt(const void* object, std::size_t offset) {
    return fieldAt<void*>(object, offset);
}

template <class T>
void setFieldAt(void* object, std::size_t offset, T value) {
    std::memcpy(static_cast<unsigned char*>(object) + offset, &value, sizeof value);
}

// The address of an exported function or table; a failure and null when there is none.
inline void* exported(const char* mangledName) {
    void* const address = dlsym(RTLD_DEFAULT, mangledName);
    EXPECT_NE(address, nullptr) << mangledName << " is not exported";
    return address;
}

// What virtual slot `slot` of the table that the object (or part of an object) points to holds.
inline void* slotOf(const void* object, std::size_t slot) {
    return pointerAt(pointerAt(object, 0), slot * pointerSize);
}

// Calls the function at an address; a member function takes its object as the first argument. The
// arguments must have exactly the types of the function's parameters.
template <class R, class... Args>
R callAt(void* function, Args... args) {
    return reinterpret_cast<R (*)(Args...)>(function)(args...);
}

template <class R, class... Args>
R call(const char* mangledName, Args... args) {
    return callAt<R>(exported(mangledName), args...);
}

// Calls a virtual operation through its slot; the types are those of the result and of the
// operation's own parameters.
template <class R, class... Args>
R callSlot(std::size_t slot, void* object, Args... args) {
    return callAt<R>(slotOf(object, slot), object, args...);
}

// Expects that the table of an object (or part of an object) begins with exactly these functions
// and belongs to that type; `toTop` is the distance from there to the whole object's start.
inline void expectTable(const void* object, std::ptrdiff_t toTop, const char* typeInformation,
                        const std::vector<const char*>& functions) {
    const unsigned char* const table = static_cast<unsigned char*>(pointerAt(object, 0));
    EXPECT_EQ(fieldAt<std::ptrdiff_t>(table - 2 * pointerSize, 0), toTop);
    EXPECT_EQ(pointerAt(table - pointerSize, 0), exported(typeInformation)) << typeInformation;
    for (std::size_t slot = 0; slot < functions.size(); ++slot) {
        EXPECT_EQ(slotOf(object, slot), exported(functions[slot]))
            << "slot " << slot << " is not " << functions[slot];
    }
}

// The same for an abstract class, which has no objects of its own and whose table serves only while
// a subclass is made: two slots for the destructors, whatever the compiler put there, and then as
// many operations that a subclass must supply.
inline void expectAbstractTable(const char* table, const char* typeInformation,
                                std::size_t operations) {
    const unsigned char* const start = static_cast<unsigned char*>(exported(table));
    EXPECT_EQ(fieldAt<std::ptrdiff_t>(start, 0), 0);
    EXPECT_EQ(pointerAt(start, pointerSize), exported(typeInformation)) << typeInformation;
    for (std::size_t i = 0; i < operations; ++i) {
        EXPECT_EQ(pointerAt(start, (4 + i) * pointerSize), exported("__cxa_pure_virtual"))
            << "slot " << 2 + i << " of " << table;
    }
}

// Expects that the whole table of a class has that many words, the two in front of each part's
// functions counted: no virtual operation was added.
inline void expectTableWords(const char* table, std::size_t words) {
    Dl_info info{};
    ElfW(Sym)* symbol = nullptr;
    ASSERT_NE(dladdr1(exported(table), &info, reinterpret_cast<void**>(&symbol), RTLD_DL_SYMENT),
              0);
    ASSERT_NE(symbol, nullptr) << table;
    EXPECT_EQ(std::size_t{symbol->st_size}, words * pointerSize) << table;
}

// The table of a host's own class: that of a live object, but for the slots that the host fills.
class HostTable {
  public:
    HostTable(const void* object, std::size_t slots) : words_(slots + 2) {
        const unsigned char* const table = static_cast<unsigned char*>(pointerAt(object, 0));
        std::memcpy(words_.data(), table - 2 * pointerSize, words_.size() * pointerSize);
    }

    template <class R, class... Args>
    void fill(std::size_t slot, R (*function)(Args...)) {
        words_[slot + 2] = reinterpret_cast<void*>(function);
    }
    // What the object's first word becomes.
    void* start() { return words_.data() + 2; }

  private:
    std::vector<void*> words_;
};

// Room for an object of `size` bytes, where a host's compiler would have put it; the bytes behind
// it are watched.
template <std::size_t size>
class Room {
  public:
    Room() { std::memset(bytes_, fill, sizeof bytes_); }

    operator void*() const { return bytes_; }

    unsigned int word(std::size_t offset) const { return wordAt(bytes_, offset); }
    void* pointer(std::size_t offset) const { return pointerAt(bytes_, offset); }
    const char* text(std::size_t offset) const {
        return static_cast<const char*>(pointerAt(bytes_, offset));
    }
    // Whether nothing was written behind the object.
    bool intact() const {
        for (std::size_t i = size; i < sizeof bytes_; ++i)
            if (bytes_[i] != fill) return false;
        return true;
    }

  private:
    static constexpr unsigned char fill = 0xA5;
    alignas(std::max_align_t) mutable unsigned char bytes_[size + 32];
};

}  // namespace kfl_test

#endif
