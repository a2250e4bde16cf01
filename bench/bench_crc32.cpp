// CRC-32 throughput: the product's slicing-by-eight Crc32 against zlib's crc32 over the same 64 MiB buffer.

#include "core/crc32.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <vector>

namespace {

const std::vector<uint8_t>& buffer() {
    static const std::vector<uint8_t> data = [] {
        std::vector<uint8_t> d(64u << 20);
        uint32_t x = 2463534242u;
        for (auto& b : d) {
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            b = uint8_t(x);
        }
        return d;
    }();
    return data;
}

void BM_Crc32_Norvane(benchmark::State& state) {
    const auto& data = buffer();
    for (auto _ : state)
        benchmark::DoNotOptimize(nv::Crc32::of(data.data(), data.size()));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.size()));
}

void BM_Crc32_Zlib(benchmark::State& state) {
    const auto& data = buffer();
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32(0L, data.data(), uInt(data.size())));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.size()));
}

BENCHMARK(BM_Crc32_Norvane)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_Crc32_Zlib)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Collects the throughput of each run so that the ratio can be printed after the table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            double seconds = run.GetAdjustedRealTime() / 1e3; // milliseconds per iteration
            double mibPerSecond = double(buffer().size()) / (1 << 20) / seconds;
            (run.benchmark_name().find("Zlib") != std::string::npos ? zlib_ : ours_) = mibPerSecond;
        }
    }
    double ours_ = 0, zlib_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The same checksum, or the comparison means nothing.
    const auto& data = buffer();
    if (nv::Crc32::of(data.data(), data.size()) != crc32(0L, data.data(), uInt(data.size()))) {
        std::fprintf(stderr, "CRC mismatch against zlib\n");
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nCRC-32 over 64 MiB: Norvane %.0f MiB/s, zlib %.0f MiB/s, ratio %.2f\n", reporter.ours_,
                reporter.zlib_, reporter.zlib_ > 0 ? reporter.ours_ / reporter.zlib_ : 0.0);
    return 0;
}
