// The C library's vsnprintf in makeString's terms.
#ifndef KFL_TESTS_CORE_LIBRARY_FORMAT_H
#define KFL_TESTS_CORE_LIBRARY_FORMAT_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace kfl_test {

// Returns the number of characters stored.
__attribute__((format(printf, 3, 4))) inline int libraryFormat(char* buf, unsigned int size,
                                                               const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int whole = std::vsnprintf(buf, std::size_t{size} + 1, format, arguments);
    va_end(arguments);
    return whole < 0 || static_cast<unsigned int>(whole) < size ? whole : static_cast<int>(size);
}

}  // namespace kfl_test

#endif
