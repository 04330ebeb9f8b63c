// Twenty usual forms of formatting, with makeString and StringFormat beside the C library, stb's
// sprintf and fmt's printf (the latter two where they are installed), and beside a bare function of
// a shared library that hands its arguments on to vsnprintf. All results are compared before
// anything is timed.
#include <benchmark/benchmark.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "benchmarks/bare_format.h"
#include "kfl/BoundedStringBase.h"
#include "kfl/StringFormat.h"

#if __has_include(<stb/stb_sprintf.h>)
#define STB_SPRINTF_STATIC
#define STB_SPRINTF_IMPLEMENTATION
#include <stb/stb_sprintf.h>
#define HAVE_STB 1
#endif

#if __has_include(<fmt/printf.h>)
#define FMT_HEADER_ONLY 1
#include <fmt/printf.h>
#define HAVE_FMT 1
#endif

namespace {

// What hosts format, day in, day out: log lines, addresses, times, numbers.
const char* const volatile agent = "agent";
const char* const volatile interfaceName = "eth0.100";
const char* const volatile message = "link is down, trying the second uplink";
volatile int small = 7;
volatile int large = 1234567;
volatile int negative = -42;
volatile unsigned int word = 0x1A2B3C4DU;
volatile long wide = 86400123L;

// Calls `to` with the arguments of form number `form`.
template <class To>
int withForm(int form, To&& to) {
    switch (form) {
        case 0: return to("the configuration was read");
        case 1: return to("%s", message);
        case 2: return to("%d", small);
        case 3: return to("%d", large);
        case 4: return to("%u", word);
        case 5: return to("%ld", wide);
        case 6: return to("%x", word);
        case 7: return to("%08x", word);
        case 8: return to("%#x", word);
        case 9: return to("%5d", negative);
        case 10: return to("%-16s|", interfaceName);
        case 11: return to("%.12s", message);
        case 12: return to("%s: %d", interfaceName, large);
        case 13: return to("%s=%s\n", interfaceName, message);
        case 14: return to("%d.%d.%d.%d", small + 185, small + 161, small, small + 94);
        case 15: return to("%02d:%02d:%02d", small, small + 21, small + 52);
        case 16: return to("%02x:%02x:%02x:%02x:%02x:%02x", small, 255, small + 9, 16, 171, 205);
        case 17: return to("%s/%03d-%02d-%d|%s", agent, small, small + 3, small - 6, message);
        case 18: return to("%s[%d]: interface %s has %u errors", agent, large, interfaceName, word);
        case 19: return to("%c%c %lu of %lu bytes (%d%%)", 'R', 'X', wide / 3, wide, 33);
        default: return -1;
    }
}
constexpr int forms = 20;
constexpr unsigned int room = 255;

int cLibrary(char* buf, unsigned int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int n = std::vsnprintf(buf, std::size_t{size} + 1, format, arguments);
    va_end(arguments);
    return n;
}

struct Engine {
    const char* name;
    // Formats a form into `buf` and returns where the text stands.
    const char* (*make)(int form, char* buf);
};

const Engine engines[] = {
    {"kfl",
     [](int form, char* buf) -> const char* {
         withForm(form, [buf](const char* format, auto... arguments) {
             return BoundedStringBase::format(buf, room, format, arguments...);
         });
         return buf;
     }},
    {"vsnprintf",
     [](int form, char* buf) -> const char* {
         withForm(form, [buf](const char* format, auto... arguments) {
             return cLibrary(buf, room, format, arguments...);
         });
         return buf;
     }},
    {"StringFormat",
     [](int form, char*) -> const char* {
         const char* text = nullptr;
         withForm(form, [&text](const char* format, auto... arguments) {
             text = StringFormat(format, arguments...).getString();
             return 0;
         });
         return text;
     }},
    {"bare",
     [](int form, char*) -> const char* {
         const char* text = nullptr;
         withForm(form, [&text](const char* format, auto... arguments) {
             text = kfl_benchmark::bareFormat(format, arguments...);
             return 0;
         });
         return text;
     }},
#ifdef HAVE_STB
    {"stb_snprintf",
     [](int form, char* buf) -> const char* {
         withForm(form, [buf](const char* format, auto... arguments) {
             return stbsp_snprintf(buf, int{room} + 1, format, arguments...);
         });
         return buf;
     }},
    {"stb_sprintf",
     [](int form, char* buf) -> const char* {
         withForm(form, [buf](const char* format, auto... arguments) {
             return stbsp_sprintf(buf, format, arguments...);
         });
         return buf;
     }},
#endif
#ifdef HAVE_FMT
    {"fmt_sprintf",
     [](int form, char* buf) -> const char* {
         withForm(form, [buf](const char* format, auto... arguments) {
             const std::string text = fmt::sprintf(format, arguments...);
             std::memcpy(buf, text.c_str(), text.size() + 1);
             return 0;
         });
         return buf;
     }},
#endif
};

// What stands at once, and that alone, is compared with this one.
const Engine& bare = engines[3];

void compareResults() {
    for (int form = 0; form < forms; ++form) {
        char expected[room + 1];
        engines[1].make(form, expected);
        for (const Engine& engine : engines) {
            char buf[room + 1];
            if (std::strcmp(engine.make(form, buf), expected) == 0) continue;
            std::fprintf(stderr, "form %d: %s differs from \"%s\"\n", form, engine.name, expected);
            std::exit(1);
        }
    }
}

void run(benchmark::State& state, const Engine& engine, int form) {
    char buf[room + 1];
    for (auto _ : state) benchmark::DoNotOptimize(engine.make(form, buf));
}

void runAll(benchmark::State& state, const Engine& engine) {
    char buf[room + 1];
    for (auto _ : state) {
        for (int form = 0; form < forms; ++form) {
            benchmark::DoNotOptimize(engine.make(form, buf));
        }
    }
    state.SetItemsProcessed(state.iterations() * forms);
}

void registerAll() {
    for (const Engine& engine : engines) {
        if (&engine == &bare) continue;
        benchmark::RegisterBenchmark((std::string("format: twenty forms/") + engine.name).c_str(),
                                     runAll, engine);
    }
    // What stands on vsnprintf is compared with that alone.
    benchmark::RegisterBenchmark("format at once: twenty forms/kfl", runAll, engines[2]);
    benchmark::RegisterBenchmark("format at once: twenty forms/vsnprintf", runAll, engines[1]);
    benchmark::RegisterBenchmark("format at once: twenty forms/bare", runAll, bare);
    for (int form = 0; form < forms; ++form) {
        for (const Engine& engine : engines) {
            if (&engine == &bare) continue;
            benchmark::RegisterBenchmark(
                ("format: form " + std::to_string(form) + "/" + engine.name).c_str(), run, engine,
                form);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    compareResults();
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
