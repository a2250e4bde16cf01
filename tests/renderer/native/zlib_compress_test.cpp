// zlib itself is the referee for the Deflate encoder of the PNG writer (natively only; never in the product).

#include "renderer/png_writer.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace nv {
namespace {

TEST(ZlibCompress, ZlibInflatesWhatWeWrite) {
    Bytes runs;
    for (int i = 0; i < 70000; ++i)
        runs.push_back(uint8_t((i / 300) % 7)); // runs longer than 258
    Bytes far = test::noiseBytes(40000, 3);     // repeats from as far back as a match may reach, and further
    const Bytes head(far.begin(), far.begin() + 8000);
    far.insert(far.end(), head.begin(), head.end());
    Bytes mixed = test::noiseBytes(5000, 9);
    for (int i = 0; i < 5000; ++i)
        mixed.push_back(mixed[size_t(i * 13 % 5000)]);
    const Bytes inputs[] = {{},
                            {42},
                            {1, 2, 3},
                            test::bytesOf("abcabcabcabcabcabcX"),
                            runs,
                            far,
                            test::noiseBytes(100000, 1),
                            mixed,
                            Bytes(1 << 20, 0)};
    for (const Bytes& input : inputs) {
        SCOPED_TRACE(input.size());
        const Bytes packed = zlibCompress(input.data(), input.size());
        Bytes back(input.size() + 1);
        uLongf length = uLongf(back.size());
        ASSERT_EQ(uncompress(back.data(), &length, packed.data(), uLong(packed.size())), Z_OK);
        back.resize(length);
        EXPECT_EQ(back, input);
    }
}

} // namespace
} // namespace nv
