// decodeImage on PNG and BMP. The same expectations run against GDI+ (Windows build) and against the native
// build's own decoder, which is what keeps the two in step: pixel values, premultiplication, limits,
// messages. The pictures come from scripts/make-image-fixtures.py.

#include "readers/image.h"
#include "tests/readers/image_samples.h"
#include "tests/support/image_files.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using test::expectPixels;
using test::imageFixture;

TEST(DecodeImage, PixelsOfEachPngKindAndBmpLayout) {
    const struct {
        const char* file;
        int width;
        std::vector<uint32_t> pixels;
    } cases[] = {
        {"grey4_key.png", 3, {0xFF777777, 0xFFFFFFFF, 0}},
        {"grey16_key.png", 2, {0, 0xFF121212}}, // the key compares all 16 bits
        {"rgb8_key.png", 2, {0, 0xFF0A141F}},   // and all three channels
        {"rgb16.png", 1, {0xFFAB01FF}},         // the high byte of each sample
        {"palette2_short_trns.png", 4, {0, 0x80008000, 0xFF0000FF, 0xFFFFFFFF}},
        {"grey_alpha8.png", 2, {0x80646464, 0xFF323232}},
        {"rgba16.png", 1, {0xFFFF0080}},
        {"rgba8_rounding.png", 6, {0x01000000, 0x01010001, 0x80010001, 0x7F000000, 0xC0970097, 0}},
        {"interlaced_1x1.png", 1, {0xFF4D4D4D}}, // six empty passes
        {"text_three_idat.png", 2, {0xFF010101, 0xFF020202, 0xFF030303, 0xFF040404}},
        {"bottom_up_24.bmp", 3, {0xFF0D0C0B, 0xFF100F0E, 0xFF131211, 0xFF030201, 0xFF060504, 0xFF090807}},
        {"top_down_v4_24.bmp", 3, {0xFF030201, 0xFF060504, 0xFF090807, 0xFF0D0C0B, 0xFF100F0E, 0xFF131211}},
        {"rgb32.bmp", 2, {0xFFFF0000, 0xFF00FF00}}, // the fourth byte is not alpha
        {"bitfields_red_low.bmp", 2, {0xFF0000FF, 0xFF00FF00}},
        {"v5_alpha_mask.bmp", 2, {0xFFFF0000, 0xFF00FF00}},
    };
    for (const auto& c : cases)
        expectPixels(c.file, imageFixture(c.file), c.width, c.pixels);
}

TEST(DecodeImage, CompressedWithEveryFilterAndInterlaced) {
    test::expectFixture("gradient_rgba.png", 16, 12, [](uint32_t x, uint32_t y) {
        const uint32_t a = (x + y) % 4 == 0 ? 255 : (x * 37 + y * 11) % 256;
        auto times = [a](uint32_t c) { return (c * a + 127) / 255; }; // rounded, as GDI+ does
        return a << 24 | times(x * 15) << 16 | times(y * 21) << 8 | times(x * y * 7 % 256);
    });
    test::expectFixture("adam7_rgb.png", 13, 11, [](uint32_t x, uint32_t y) {
        return 0xFF000000u | x * 19 << 16 | y * 23 << 8 | (x + y) * 9 % 256;
    });
    test::expectFixture("paeth_rgb.png", 20, 10, [](uint32_t x, uint32_t y) { // Paeth ties everywhere
        return 0xFF000000u | (200 - 6 * x + 3 * y) << 16 | ((x * 29 + y * 7 + x * y * 3) % 256 & 0xF0) << 8 |
               (100 + 4 * x - 8 * y);
    });
}

TEST(DecodeImage, SidesUpTo8192) {
    const std::vector<uint32_t> row(8192, 0xFF102030);
    expectPixels("png 8192 wide", test::makePng(8192, 1, row[0]), 8192, row);
    expectPixels("png 8192 high", test::makePng(1, 8192, row[0]), 1, row);
    expectPixels("bmp 8192 wide", test::makeBmp(8192, 1, row[0]), 8192, row);
}

TEST(DecodeImage, RefusedInputsLeaveNoPicture) {
    test::expectRefused("empty", {}, L"Bos gorsel.");
    test::expectRefused("png 8193 wide", test::makePng(8193, 1, 0xFF000000));
    test::expectRefused("png 8193 high", test::makePng(1, 8193, 0xFF000000));
    test::expectRefused("png 0 wide", test::makePng(0, 1, 0xFF000000));
    test::expectRefused("bmp 8193 wide", test::makeBmp(8193, 1, 0xFF000000));
    test::expectRefused("bmp 8193 high", test::makeBmp(1, 8193, 0xFF000000));
    test::expectRefused("noise", test::noiseBytes(300, 7));
    const Bytes png = imageFixture("gradient_rgba.png"), bmp = imageFixture("bottom_up_24.bmp");
    test::expectRefused("png cut in half", Bytes(png.begin(), png.begin() + ptrdiff_t(png.size() / 2)));
    test::expectRefused("bmp one byte short", Bytes(bmp.begin(), bmp.end() - 1));
    for (const char* name :
         {"bad_adler.png", "bad_filter.png", "palette_without_plte.png", "too_little_data.png",
          // Formats GDI+ reads when it is handed them, picking the codec from the content, whatever the name.
          "tiff_named.png", "metafile.emf", "placeable.wmf", "cursor.cur"})
        test::expectRefused(name, imageFixture(name));
}

TEST(SniffImage, FormatAndTheSizeTheHeaderStates) {
    const auto bytes = [](std::initializer_list<int> values) {
        Bytes out;
        for (int v : values)
            out.push_back(uint8_t(v));
        return out;
    };
    const Bytes png = test::makePng(300, 7, 0xFF000000), bmp = test::makeBmp(5, 9000, 0xFF000000);
    // A JPEG whose frame header comes after an APP0 segment and fill bytes; the frame states 16 x 8200.
    const Bytes jpeg =
        bytes({0xFF, 0xD8, 0xFF, 0xE0, 0, 4, 1, 2, 0xFF, 0xFF, 0xC2, 0, 11, 8, 0x20, 0x08, 0, 16});
    Bytes topDown = test::makeBmp(3, 2, 0xFF000000);
    topDown[22] = 0xFE, topDown[23] = topDown[24] = topDown[25] = 0xFF; // height -2: rows from the top
    const struct {
        const char* what;
        Bytes data;
        ImageFormat format;
        int64_t width, height;
    } cases[] = {
        {"png", png, ImageFormat::Png, 300, 7},
        {"png cut before its size", Bytes(png.begin(), png.begin() + 20), ImageFormat::Png, 0, 0},
        {"bmp", bmp, ImageFormat::Bmp, 5, 9000},
        {"top-down bmp", topDown, ImageFormat::Bmp, 3, 2},
        {"jpeg", jpeg, ImageFormat::Jpeg, 16, 8200},
        {"jpeg cut inside the frame header", Bytes(jpeg.begin(), jpeg.end() - 1), ImageFormat::Jpeg, 0, 0},
        {"jpeg scan before any frame", bytes({0xFF, 0xD8, 0xFF, 0xDA, 0, 2, 0xFF, 0xC0}), ImageFormat::Jpeg,
         0, 0},
        {"gif", imageFixture("transparent.gif"), ImageFormat::Gif, 5, 3},
        {"ico", imageFixture("icon_rgba.ico"), ImageFormat::Ico, 0, 0},
        {"ico without pictures", bytes({0, 0, 1, 0, 0, 0}), ImageFormat::Unknown, 0, 0},
        {"tiff", imageFixture("tiff_named.png"), ImageFormat::Unknown, 0, 0},
        {"wmf", imageFixture("placeable.wmf"), ImageFormat::Unknown, 0, 0},
        {"cursor", imageFixture("cursor.cur"), ImageFormat::Unknown, 0, 0},
    };
    for (const auto& c : cases) {
        const ImageSignature s = sniffImage(c.data.data(), c.data.size());
        EXPECT_EQ(std::tuple(s.format, s.width, s.height), std::tuple(c.format, c.width, c.height)) << c.what;
    }
    // A stated side past the limit is refused before any decoder sees the bytes.
    EXPECT_TRUE(sniffImage(bmp.data(), bmp.size()).tooLarge());
    EXPECT_TRUE(sniffImage(jpeg.data(), jpeg.size()).tooLarge());
    EXPECT_FALSE(sniffImage(png.data(), png.size()).tooLarge());
}

} // namespace
} // namespace nv
