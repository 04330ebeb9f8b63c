// A va_list that came as a plain pointer, whatever kind of type it is on this machine.
#ifndef KFL_CORE_ARGUMENT_LIST_H
#define KFL_CORE_ARGUMENT_LIST_H

#include <cstdarg>
#include <type_traits>

namespace kfl::detail {

// Arguments are taken from a copy: the caller's list stays as it is.
class ArgumentList {
  public:
    explicit ArgumentList(void* arguments) { copy<va_list>(list_, arguments); }
    ~ArgumentList() { va_end(list_); }
    ArgumentList(const ArgumentList&) = delete;
    ArgumentList& operator=(const ArgumentList&) = delete;

    template <class T>
    T next() {
        return va_arg(list_, T);
    }

  private:
    // A pointer comes as itself, an array or a structure by its address.
    template <class List>
    static void copy(List& to, void* from) {
        if constexpr (std::is_pointer<List>::value) {
            va_copy(to, static_cast<List>(from));
        } else {
            va_copy(to, *static_cast<List*>(from));
        }
    }

    va_list list_;
};

}  // namespace kfl::detail

#endif
