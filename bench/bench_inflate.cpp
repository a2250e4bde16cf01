// Deflate decoding throughput: the product's inflateRaw against zlib's raw inflate over the same streams, a
// mixed corpus of about 40 MB shaped like skin files (compressed images, skin XML, bitmap pixels), made
// deterministically here and compressed with zlib at level 6.

#include "readers/inflate.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using nv::Bytes;

struct Stream {
    Bytes compressed;
    size_t size; // uncompressed
};

class Random {
public:
    uint32_t next() {
        x_ ^= x_ << 13;
        x_ ^= x_ >> 17;
        x_ ^= x_ << 5;
        return x_;
    }

private:
    uint32_t x_ = 2463534242u;
};

Bytes deflateRaw(const Bytes& data, int level) {
    z_stream z{};
    deflateInit2(&z, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    Bytes out(deflateBound(&z, uLong(data.size())));
    z.next_in = const_cast<Bytef*>(data.data());
    z.avail_in = uInt(data.size());
    z.next_out = out.data();
    z.avail_out = uInt(out.size());
    deflate(&z, Z_FINISH);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

// Bitmap pixels: 32-bit gradients with a little noise, as skin backgrounds and buttons look.
Bytes bitmapPixels(Random& r, int width, int height) {
    Bytes b;
    b.reserve(size_t(width) * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint32_t n = r.next();
            bool noisy = (n & 15) == 0;
            b.push_back(uint8_t(x * 255 / width + (noisy ? n >> 28 : 0)));
            b.push_back(uint8_t(y * 255 / height));
            b.push_back(uint8_t((x + y) / 8 + (noisy ? (n >> 24) & 7 : 0)));
            b.push_back(255);
        }
    return b;
}

// The body of a PNG file: already Deflate-compressed pixels, which hardly compress again.
Bytes pngLike(Random& r, int width, int height) {
    Bytes pixels = bitmapPixels(r, width, height);
    for (size_t i = 0; i < pixels.size(); i += 7)
        pixels[i] ^= uint8_t(r.next() >> 29);
    return deflateRaw(pixels, 9);
}

Bytes skinXml(Random& r, size_t size) {
    static const char* const kinds[] = {"button", "text", "gauge", "image", "iframe"};
    static const char* const words[] = {"baslat", "ayarlar",  "haberler", "cikis",
                                        "indir",  "guncelle", "site"};
    std::string s =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<skin background_image=\"bg.png\" width=\"900\">\n";
    for (int i = 0; s.size() < size; ++i) {
        uint32_t n = r.next();
        const char* word = words[n % 7];
        s += "  <control type=\"" + std::string(kinds[(n >> 8) % 5]) + "\" name=\"" + word +
             std::to_string(i) + "\" x=\"" + std::to_string((n >> 12) % 900) + "\" y=\"" +
             std::to_string((n >> 20) % 600) + "\" image=\"" + word + ".png\" hover_image=\"" + word +
             "_hover.png\" link_url=\"https://example.org/" + word + "\"/>\n";
    }
    s += "</skin>\n";
    return Bytes(s.begin(), s.end());
}

const std::vector<Stream>& corpus() {
    static const std::vector<Stream> streams = [] {
        Random r;
        std::vector<Bytes> files;
        // About 12 MB of compressed images, 12 MB of XML and 16 MB of bitmap pixels.
        auto addUntil = [&files](size_t total, auto make) {
            for (size_t sum = 0; sum < total; sum += files.back().size())
                files.push_back(make());
        };
        addUntil(12000000, [&r] { return pngLike(r, 320, 240); });
        addUntil(12000000, [&r] { return skinXml(r, 120000); });
        addUntil(16000000, [&r] { return bitmapPixels(r, 1024, 512); });
        std::vector<Stream> s;
        for (const Bytes& f : files)
            s.push_back({deflateRaw(f, 6), f.size()});
        return s;
    }();
    return streams;
}

size_t corpusBytes() {
    size_t total = 0;
    for (const Stream& s : corpus())
        total += s.size;
    return total;
}

bool inflateNorvane(const Stream& s, Bytes& out) {
    return nv::inflateRaw(s.compressed.data(), s.compressed.size(), s.size, out);
}

bool inflateZlib(const Stream& s, Bytes& out) {
    out.resize(s.size);
    z_stream z{};
    inflateInit2(&z, -15);
    z.next_in = const_cast<Bytef*>(s.compressed.data());
    z.avail_in = uInt(s.compressed.size());
    z.next_out = out.data();
    z.avail_out = uInt(out.size());
    bool ok = inflate(&z, Z_FINISH) == Z_STREAM_END && z.total_out == s.size;
    inflateEnd(&z);
    return ok;
}

template <bool (*Inflate)(const Stream&, Bytes&)> void BM_Inflate(benchmark::State& state) {
    Bytes out;
    for (auto _ : state)
        for (const Stream& s : corpus()) {
            Inflate(s, out);
            benchmark::DoNotOptimize(out.data());
        }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(corpusBytes()));
}

BENCHMARK(BM_Inflate<inflateNorvane>)
    ->Name("BM_Inflate_Norvane")
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);
BENCHMARK(BM_Inflate<inflateZlib>)->Name("BM_Inflate_Zlib")->Unit(benchmark::kMillisecond)->MinTime(2.0);

// Collects the throughput of each run so that the ratio can be printed after the table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // CPU time: the machines this runs on are shared, and the decoders do no I/O.
            double seconds = run.GetAdjustedCPUTime() / 1e3; // milliseconds per iteration
            double mibPerSecond = double(corpusBytes()) / (1 << 20) / seconds;
            (run.benchmark_name().find("Zlib") != std::string::npos ? zlib_ : ours_) = mibPerSecond;
        }
    }
    double ours_ = 0, zlib_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The same bytes from both, or the comparison means nothing.
    size_t compressed = 0;
    Bytes ours, theirs;
    for (const Stream& s : corpus()) {
        compressed += s.compressed.size();
        if (!inflateNorvane(s, ours) || !inflateZlib(s, theirs) || ours != theirs) {
            std::fprintf(stderr, "inflate mismatch against zlib\n");
            return 1;
        }
    }
    std::printf("Corpus: %zu streams, %.1f MiB compressed, %.1f MiB decoded\n", corpus().size(),
                compressed / 1048576.0, corpusBytes() / 1048576.0);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nInflate over %.1f MiB: Norvane %.0f MiB/s, zlib %.0f MiB/s, ratio %.2f\n",
                corpusBytes() / 1048576.0, reporter.ours_, reporter.zlib_,
                reporter.zlib_ > 0 ? reporter.ours_ / reporter.zlib_ : 0.0);
    return 0;
}
