// A va_list that came as a plain pointer, whatever kind of type it is on this machine.
#ifndef KFL_CORE_ARGUMENT_LIST_H
#define KFL_CORE_ARGUMENT_LIST_H

#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace kfl::detail {

// The list that a plain pointer stands for: where a list is a pointer it came as itself, an array
// or a structure came by its address.
template <class List>
std::conditional_t<std::is_pointer<List>::value, List, List&> listBehind(void* arguments) {
    if constexpr (std::is_pointer<List>::value) {
        return static_cast<List>(arguments);
    } else {
        return *static_cast<List*>(arguments);
    }
}

// The pointer that was handed over as this word.
inline void* pointerIn(long word) {
    static_assert(sizeof(long) == sizeof(void*), "a pointer is a word");
    void* pointer;
    std::memcpy(&pointer, &word, sizeof pointer);
    return pointer;
}

// Both kinds give the next int, long or pointer, and leave the caller's list as it is. Each
// argument is handed over as one word on every machine that the library runs on, an int as the low
// part of it.

#if defined(__x86_64__) && defined(__LP64__)

// A list of the System V ABI for x86-64 is read where it stands. Its fields have just been written
// one by one: a copy reads several of them at once, and would wait until they have left the
// processor's store buffer.
class ArgumentList {
  public:
    explicit ArgumentList(const void* arguments) : list_(static_cast<const char*>(arguments)) {}

    long next() {
        const unsigned int at = field<unsigned int>(offsetof(Record, firstRegister)) + taken_;
        taken_ += sizeof(long);
        return at < registersEnd
                   ? read<long>(field<const char*>(offsetof(Record, registers)) + at)
                   : read<long>(field<const char*>(offsetof(Record, stack)) + at - registersEnd);
    }

  private:
    struct Record {
        unsigned int firstRegister;
        unsigned int firstFloatRegister;
        const char* stack;
        const char* registers;
    };
    // Where the registers for words end among those that were saved.
    static constexpr unsigned int registersEnd = 48;

    template <class Value>
    static Value read(const char* from) {
        Value value;
        std::memcpy(&value, from, sizeof value);
        return value;
    }

    template <class Value>
    Value field(std::size_t offset) const {
        return read<Value>(list_ + offset);
    }

    const char* list_;
    unsigned int taken_ = 0;
};

#else

// A list of any other machine is copied.
class ArgumentList {
  public:
    explicit ArgumentList(void* arguments) { va_copy(list_, listBehind<va_list>(arguments)); }
    ~ArgumentList() { va_end(list_); }
    ArgumentList(const ArgumentList&) = delete;
    ArgumentList& operator=(const ArgumentList&) = delete;

    long next() { return va_arg(list_, long); }

  private:
    va_list list_;
};

#endif

}  // namespace kfl::detail

#endif
