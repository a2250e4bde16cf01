// The decoder against zlib's encoder: every level and strategy, flushes that cut the stream into many blocks,
// and data that exercises literals, short and long matches and the whole 32 KiB window.

#include "core/text.h"
#include "readers/inflate.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

namespace nv {
namespace {

// Raw Deflate (no zlib header) of data, flushing with `flush` every `chunk` bytes when chunk is not 0.
Bytes deflateRaw(const Bytes& data, int level, int strategy, size_t chunk = 0, int flush = Z_NO_FLUSH) {
    z_stream z{};
    EXPECT_EQ(deflateInit2(&z, level, Z_DEFLATED, -15, 9, strategy), Z_OK);
    Bytes out(deflateBound(&z, uLong(data.size())) + 64 + (chunk ? data.size() / chunk * 16 : 0));
    z.next_out = out.data();
    z.avail_out = uInt(out.size());
    size_t pos = 0;
    do {
        size_t n = chunk ? std::min(chunk, data.size() - pos) : data.size();
        z.next_in = const_cast<Bytes::value_type*>(data.data()) + pos;
        z.avail_in = uInt(n);
        pos += n;
        int mode = pos == data.size() ? Z_FINISH : flush;
        EXPECT_NE(deflate(&z, mode), Z_STREAM_ERROR);
        EXPECT_EQ(z.avail_in, 0u);
    } while (pos < data.size());
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

Bytes textBytes(size_t size) {
    static const char* const words[] = {"skin",   "button", "<control ", "name=\"", "patcher", "indir",
                                        "baslat", "\n",     "  ",        "ayarlar", "/>",      "Fernwick"};
    std::string text;
    uint32_t x = 12345;
    while (text.size() < size) {
        x = x * 1103515245u + 12345u;
        text += words[(x >> 16) % 12];
        text += ' ';
    }
    text.resize(size);
    return test::bytesOf(text);
}

Bytes runsBytes(size_t size) {
    Bytes b;
    for (uint8_t v = 0; b.size() < size; v += 37)
        b.insert(b.end(), std::min<size_t>(size - b.size(), 1 + v * 3), v);
    return b;
}

// Noise blocks repeated at distances near the window size: matches of 258 bytes from up to 32 KiB back.
Bytes farRepeatsBytes(size_t size) {
    Bytes block = test::noiseBytes(32000, 5), b;
    while (b.size() < size)
        b.insert(b.end(), block.begin(), block.end());
    b.resize(size);
    return b;
}

Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes b;
    for (const Bytes& p : parts)
        b.insert(b.end(), p.begin(), p.end());
    return b;
}

struct Sample {
    const char* name;
    Bytes data;
};

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = {
        {"empty", {}},
        {"one byte", {0x41}},
        {"text", textBytes(20000)},
        {"noise", test::noiseBytes(20000, 9)},
        {"runs", runsBytes(30000)},
        {"mixed", concat({textBytes(5000), test::noiseBytes(3000, 2), runsBytes(4000), textBytes(7000)})},
        {"far repeats over 64 KiB", farRepeatsBytes(150000)},
    };
    return all;
}

void expectRoundTrip(const Bytes& data, const Bytes& stream) {
    Bytes out;
    std::wstring error;
    ASSERT_TRUE(inflateRaw(stream.data(), stream.size(), data.size(), out, &error)) << wideToUtf8(error);
    ASSERT_TRUE(out == data);
}

TEST(InflateRawAgainstZlib, EveryLevelAndStrategy) {
    const int strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    for (const Sample& s : samples()) {
        for (int level = 0; level <= 9; ++level) {
            SCOPED_TRACE(std::string(s.name) + ", level " + std::to_string(level));
            expectRoundTrip(s.data, deflateRaw(s.data, level, Z_DEFAULT_STRATEGY));
        }
        for (int strategy : strategies) {
            SCOPED_TRACE(std::string(s.name) + ", strategy " + std::to_string(strategy));
            expectRoundTrip(s.data, deflateRaw(s.data, 6, strategy));
        }
    }
}

// Sync and full flushes end blocks early and add empty stored blocks; partial flushes add empty fixed blocks.
TEST(InflateRawAgainstZlib, FlushedStreams) {
    const int flushes[] = {Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_PARTIAL_FLUSH};
    const Bytes& data = samples()[5].data;
    for (int flush : flushes) {
        for (size_t chunk : {1000, 7}) {
            SCOPED_TRACE("flush " + std::to_string(flush) + " every " + std::to_string(chunk));
            expectRoundTrip(data, deflateRaw(data, 6, Z_DEFAULT_STRATEGY, chunk, flush));
        }
    }
}

// A stream cut anywhere, or read with a size one off, fails with a message and leaves no output.
TEST(InflateRawAgainstZlib, CutStreamsAndWrongSizesFail) {
    for (const Sample& s : samples()) {
        for (int level : {0, 1, 9}) {
            SCOPED_TRACE(std::string(s.name) + ", level " + std::to_string(level));
            Bytes stream = deflateRaw(s.data, level, Z_DEFAULT_STRATEGY);
            size_t step = std::max<size_t>(1, stream.size() / 60);
            for (size_t cut = 0; cut < stream.size(); cut += (cut + step < stream.size() ? step : 1)) {
                Bytes out;
                std::wstring error;
                ASSERT_FALSE(inflateRaw(stream.data(), cut, s.data.size(), out, &error)) << "cut at " << cut;
                ASSERT_FALSE(error.empty());
                ASSERT_TRUE(out.empty());
            }
            Bytes out;
            std::wstring error;
            EXPECT_FALSE(inflateRaw(stream.data(), stream.size(), s.data.size() + 1, out, &error));
            EXPECT_EQ(error, L"Deflate cikti boyutu uyusmuyor.");
            if (!s.data.empty()) {
                EXPECT_FALSE(inflateRaw(stream.data(), stream.size(), s.data.size() - 1, out, &error));
                EXPECT_EQ(error, L"Deflate ciktisi beklenen boyutu asti.");
            }
        }
    }
}

} // namespace
} // namespace nv
