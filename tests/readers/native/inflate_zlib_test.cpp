// The decoder against zlib's encoder at every level and strategy.

#include "readers/inflate.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace nv {

std::string inflated(const Bytes& stream, size_t size, size_t expectedSize); // from inflate_test.cpp

namespace {

// Raw Deflate. Small memory levels end blocks early, so that many blocks of each kind follow one another.
Bytes deflateRaw(const std::string& data, int level, int strategy) {
    Bytes out(data.size() * 2 + 1024);
    z_stream z{};
    z.next_in = (Bytef*)data.data(), z.avail_in = uInt(data.size());
    z.next_out = out.data(), z.avail_out = uInt(out.size());
    EXPECT_EQ(deflateInit2(&z, level, Z_DEFLATED, -15, 1 + (level + strategy) % 9, strategy), Z_OK);
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

TEST(InflateRawAgainstZlib, EveryLevelAndStrategy) {
    // Long matches from across the whole 32 KiB window, then short ones and runs of up to 15 bytes.
    std::string noise = test::textOf(test::noiseBytes(32000, 5)), sample = noise + noise;
    for (uint8_t x : test::noiseBytes(40000, 6))
        sample.append(x < 16 ? x : 1, char('a' + x % 8));
    for (int run = 0; run < 100; ++run) {
        int level = run / 5 % 10, strategy = run % 5; // Z_DEFAULT_STRATEGY to Z_FIXED
        std::string data = run < 50 ? "A" : sample;
        SCOPED_TRACE(testing::Message()
                     << data.size() << " bytes, level " << level << ", strategy " << strategy);
        Bytes s = deflateRaw(data, level, strategy);
        std::string out = inflated(s, s.size(), data.size());
        ASSERT_TRUE(out == data) << out.substr(0, 80);
        EXPECT_EQ(inflated(s, s.size() - 1, data.size()), "Deflate verisi erken bitti.");
        EXPECT_EQ(inflated(s, s.size(), data.size() + 1), "Deflate cikti boyutu uyusmuyor.");
        EXPECT_EQ(inflated(s, s.size(), data.size() - 1), "Deflate ciktisi beklenen boyutu asti.");
    }
}

} // namespace
} // namespace nv
