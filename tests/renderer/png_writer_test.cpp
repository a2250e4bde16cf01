#include "readers/image.h"
#include "renderer/composite.h"
#include "renderer/png_writer.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// Premultiplied pictures that the renderer may produce: every alpha with every channel value up to it, a
// transparent margin, long runs (LZ77 matches at every distance) and noise (literals).
std::vector<uint32_t> pattern(int kind, int width, int height) {
    std::vector<uint32_t> pixels(size_t(width) * size_t(height));
    const Bytes noise = test::noiseBytes(pixels.size() * 4, 7);
    for (size_t i = 0; i < pixels.size(); ++i) {
        const int x = int(i % size_t(width)), y = int(i / size_t(width));
        uint32_t straight = 0;
        switch (kind) {
        case 0:
            straight =
                uint32_t(y & 0xFF) << 24 | uint32_t(x & 0xFF) << 16 | uint32_t((x * 7) & 0xFF) << 8 | 0x99;
            break;
        case 1:
            straight = x < 3 || x >= width - 3 ? 0u : 0xFF1A2B3Cu;
            break;
        case 2:
            straight = 0xFF000000u | uint32_t((x / 17 + y / 5) % 3) * 0x404040u;
            break;
        default:
            straight = uint32_t(noise[i * 4]) << 24 | uint32_t(noise[i * 4 + 1]) << 16 |
                       uint32_t(noise[i * 4 + 2]) << 8 | noise[i * 4 + 3];
        }
        pixels[i] = premultiply(straight);
    }
    return pixels;
}

TEST(PngWriter, RenderedPixelsComeBackExactlyThroughTheDecoder) {
    struct Case {
        int kind, width, height;
    } cases[] = {{0, 256, 256}, {1, 40, 9}, {2, 300, 120}, {3, 97, 61}, {2, 1, 1}, {3, 1, 300}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.kind << " " << c.width << "x" << c.height);
        const std::vector<uint32_t> pixels = pattern(c.kind, c.width, c.height);
        const Bytes png = encodePng(pixels.data(), c.width, c.height);
        DecodedImage decoded;
        std::wstring error;
        ASSERT_TRUE(decodeImage(png.data(), png.size(), decoded, &error)) << test::fsPath(error).string();
        ASSERT_EQ(decoded.width, c.width);
        ASSERT_EQ(decoded.height, c.height);
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), decoded.data()));
    }
}

TEST(PngWriter, FlatAreasCompress) {
    const std::vector<uint32_t> pixels = pattern(2, 300, 120);
    EXPECT_LT(encodePng(pixels.data(), 300, 120).size(), pixels.size() * 4 / 20);
}

} // namespace
} // namespace nv
