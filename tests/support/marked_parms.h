// Stands between the library and the host's Parms, in one source of a white-box test that is linked
// with kfl_wrap_parms: it can show in every text from which format Parms made it.
//
//     const kfl_test::MarkedParms marked;
//     kfl::osKillProcess(7);
//     EXPECT_EQ(events()[0].text, kfl_test::made("...osKillProcess: %d", "...osKillProcess: 7"));
#ifndef KFL_TESTS_MARKED_PARMS_H
#define KFL_TESTS_MARKED_PARMS_H

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace kfl_test {
namespace parms {

inline std::atomic<bool> isMarking{false};

}  // namespace parms

// What Parms makes of a format while texts are marked; `text` is what it makes otherwise.
inline std::string made(const std::string& format, const std::string& text) {
    return "[" + format + "] " + text;
}

// Marks the texts while it lives, those of children too.
class MarkedParms {
  public:
    MarkedParms() { parms::isMarking = true; }
    ~MarkedParms() { parms::isMarking = false; }
    MarkedParms(const MarkedParms&) = delete;
    MarkedParms& operator=(const MarkedParms&) = delete;
};

}  // namespace kfl_test

extern "C" {
// The library calls char* Parms(const char*, ...), a C++ name.
char* __wrap__Z5ParmsPKcz(const char* format, ...) __attribute__((format(printf, 1, 2)));
char* __wrap__Z5ParmsPKcz(const char* format, ...) {
    static thread_local char result[4096];
    std::size_t begin = 0;
    if (kfl_test::parms::isMarking) {
        begin = static_cast<std::size_t>(std::snprintf(result, 2048, "[%s] ", format));
    }
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(result + begin, sizeof result - begin, format, arguments);
    va_end(arguments);
    return result;
}
}

#endif
