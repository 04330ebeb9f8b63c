// A source of its own: the call cannot be seen through.
#include "benchmarks/bare_format.h"

#include <cstdarg>
#include <cstdio>

namespace kfl_benchmark {

const char* bareFormat(const char* format, ...) {
    static char text[500];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace kfl_benchmark
