// The least that a text made at once can do: a function of a shared library that hands its
// arguments on to vsnprintf.
#ifndef KFL_BENCHMARKS_BARE_FORMAT_H
#define KFL_BENCHMARKS_BARE_FORMAT_H

namespace kfl_benchmark {

const char* bareFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace kfl_benchmark

#endif
