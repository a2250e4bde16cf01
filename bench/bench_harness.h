#pragma once
// A small timing harness that builds in both trees: natively and for Windows, whose benchmarks run under
// Wine (Google Benchmark has no mingw build). A benchmark program lists its cases; run without arguments it
// starts itself once per case, so that the peak memory reported for a case is that case's own and not the
// largest of everything that ran before it in the same process.
//
//   int main(int argc, char** argv) {
//       return nv::bench::runCases(argc, argv, {
//           {"decode/bomb", [] { nv::bench::measure("decode/bomb", 5, [&] { ... }); }},
//       });
//   }
//
// Each measure() prints one line: the name, the best and median wall time of the runs, their count, and the
// peak memory of the process so far (working set on Windows, resident set natively).

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace nv::bench {

struct Timing {
    double bestMs = 0;
    double medianMs = 0;
    int runs = 0;
};

// The process's peak memory so far, in bytes (0 where the platform does not say).
uint64_t peakMemoryBytes();

// Prints the result line of one measurement.
void report(const std::string& name, const Timing& timing);

// Keeps the compiler from dropping a computation whose result nothing reads.
void keep(const void* value);

// Runs fn `runs` times (at least once) and reports its best and median wall time with the peak memory.
template <typename Fn> Timing measure(const std::string& name, int runs, Fn&& fn) {
    std::vector<double> times;
    for (int i = 0; i < std::max(runs, 1); ++i) {
        const auto start = std::chrono::steady_clock::now();
        fn();
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
        times.push_back(elapsed.count());
    }
    std::sort(times.begin(), times.end());
    Timing timing{times.front(), times[times.size() / 2], int(times.size())};
    report(name, timing);
    return timing;
}

struct Case {
    const char* name;
    std::function<void()> run;
};

// Without arguments: every case in a child process of its own, in order; with "--case NAME": that case here;
// with any other argument: the cases whose names contain it. Returns the exit code for main (0 when every
// case ran; a case fails by returning through fail()).
int runCases(int argc, char** argv, std::initializer_list<Case> cases);

// Ends the case with a message and a failing exit code (for a benchmark whose input turned out wrong).
[[noreturn]] void fail(const std::string& message);

} // namespace nv::bench
