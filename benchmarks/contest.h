// One piece of work, done by several implementations side by side. All must give the same result
// before any is timed.
#ifndef KFL_BENCHMARKS_CONTEST_H
#define KFL_BENCHMARKS_CONTEST_H

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace kfl_benchmark {

// Sees results while the time runs: the compiler may not drop them.
struct Glance {
    template <class Value>
    void value(const Value& seen) const {
        benchmark::DoNotOptimize(seen);
    }
    void text(const char* seen) const { benchmark::DoNotOptimize(seen); }
    void bytes(const void* seen, std::size_t) const { benchmark::DoNotOptimize(seen); }
};

// Writes results down, to be compared.
class Notes {
  public:
    template <class Value>
    void value(const Value& seen) {
        all_ += std::to_string(seen) + '\n';
    }
    void text(const char* seen) { (all_ += seen ? seen : "(none)") += '\n'; }
    void bytes(const void* seen, std::size_t size) {
        all_.append(static_cast<const char*>(seen), size);
    }
    const std::string& all() const { return all_; }

  private:
    std::string all_;
};

class Contest {
  public:
    explicit Contest(std::string work) : work_(std::move(work)) {}

    // `run(sees)` does the work once and shows what came out to `sees`, one of the above. It is
    // timed as WORK/WHO.
    template <class Run>
    benchmark::internal::Benchmark* enter(const char* who, Run run) {
        Notes notes;
        run(notes);
        if (isFirst_) expected_ = notes.all();
        isFirst_ = false;
        if (notes.all() != expected_) fail(who);
        return benchmark::RegisterBenchmark((work_ + '/' + who).c_str(),
                                            [run](benchmark::State& state) mutable {
                                                Glance glance;
                                                for (auto _ : state) run(glance);
                                            });
    }

  private:
    [[noreturn]] void fail(const char* who) const {
        std::fprintf(stderr, "%s: the result of %s differs\n", work_.c_str(), who);
        std::exit(1);
    }

    std::string work_;
    bool isFirst_ = true;
    std::string expected_;
};

// The end of every main(): runs what was entered.
inline int runAll(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// The same numbers on every run and machine.
class Numbers {
  public:
    explicit Numbers(unsigned seed) : state_(seed) {}
    // Below `bound`.
    unsigned next(unsigned bound) {
        state_ = state_ * 1664525 + 1013904223;
        return (state_ >> 8U) % bound;
    }

  private:
    unsigned state_;
};

}  // namespace kfl_benchmark

#endif
