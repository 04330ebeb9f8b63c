// A va_list that came as a plain pointer, whatever kind of type it is on this machine.
#ifndef KFL_CORE_ARGUMENT_LIST_H
#define KFL_CORE_ARGUMENT_LIST_H

#include <cstdarg>
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

// Arguments are taken from a copy: the caller's list stays as it is.
class ArgumentList {
  public:
    explicit ArgumentList(void* arguments) { va_copy(list_, listBehind<va_list>(arguments)); }
    ~ArgumentList() { va_end(list_); }
    ArgumentList(const ArgumentList&) = delete;
    ArgumentList& operator=(const ArgumentList&) = delete;

    // The next int, long or pointer. Each is handed over as one word on every machine that the
    // library runs on, an int as the low part of it.
    long next() { return va_arg(list_, long); }

  private:
    va_list list_;
};

}  // namespace kfl::detail

#endif
