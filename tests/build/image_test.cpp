// decodeImage on PNG and BMP. The same expectations run against GDI+ (Windows build) and against the native
// build's own decoder, which is what keeps the two in step: pixel values, premultiplication, limits,
// messages.

#include "build/image.h"
#include "tests/build/image_samples.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwchar>
#include <iterator>
#include <vector>

namespace nv {
namespace {

using test::bmpFile;
using test::concat;
using test::imageFixture;
using test::pngChunk;
using test::pngFile;
using test::premultiplied;

const std::wstring kUndecodable = L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).";

std::string hex(uint32_t v) {
    char text[12];
    std::snprintf(text, sizeof text, "%08X", unsigned(v));
    return text;
}

// Compares every pixel and the transparency flag; reports the first differing pixels by position.
void expectPixels(const DecodedImage& image, int width, int height, const std::vector<uint32_t>& expected) {
    ASSERT_EQ(image.width, width);
    ASSERT_EQ(image.height, height);
    ASSERT_EQ(image.pixels.size(), expected.size());
    int reported = 0;
    bool transparent = false;
    for (size_t i = 0; i < expected.size(); ++i) {
        transparent = transparent || (expected[i] >> 24) != 0xFF;
        if (image.pixels[i] != expected[i] && reported++ < 5)
            ADD_FAILURE() << "pixel (" << i % size_t(width) << ", " << i / size_t(width)
                          << "): " << hex(image.pixels[i]) << ", expected " << hex(expected[i]);
    }
    EXPECT_EQ(image.hasTransparency, transparent);
}

bool decode(const Bytes& bytes, DecodedImage& image, std::wstring& error) {
    return decodeImage(bytes.data(), bytes.size(), image, &error);
}

// ---- PNG pixel formats -----------------------------------------------------------------------------------

struct PngFormatCase {
    const char* name;
    uint32_t width;
    int depth;
    int colourType;
    Bytes row; // one unfiltered row
    Bytes extra;
    std::vector<uint32_t> expected;
};

Bytes palette(std::initializer_list<uint8_t> rgb) {
    return pngChunk("PLTE", Bytes(rgb));
}

std::vector<PngFormatCase> pngFormatCases() {
    const Bytes fourColours = palette({255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255});
    return {
        {"grey 1-bit",
         8,
         1,
         0,
         {0b10110001},
         {},
         {0xFFFFFFFF, 0xFF000000, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF000000, 0xFF000000, 0xFF000000, 0xFFFFFFFF}},
        {"grey 2-bit", 4, 2, 0, {0b00011011}, {}, {0xFF000000, 0xFF555555, 0xFFAAAAAA, 0xFFFFFFFF}},
        {"grey 4-bit with a transparent key",
         3,
         4,
         0,
         {0x7F, 0x30},
         pngChunk("tRNS", {0, 3}),
         {0xFF777777, 0xFFFFFFFF, 0}},
        {"grey 8-bit", 2, 8, 0, {0x00, 0x9C}, {}, {0xFF000000, 0xFF9C9C9C}},
        {"grey 16-bit key compares all 16 bits",
         2,
         16,
         0,
         {0x12, 0x34, 0x12, 0x35},
         pngChunk("tRNS", {0x12, 0x34}),
         {0, 0xFF121212}},
        {"rgb 8-bit with a transparent key",
         2,
         8,
         2,
         {10, 20, 30, 10, 20, 31},
         pngChunk("tRNS", {0, 10, 0, 20, 0, 30}),
         {0, 0xFF0A141F}},
        {"rgb 16-bit keeps the high byte", 1, 16, 2, {0xAB, 0xCD, 0x01, 0xFF, 0xFF, 0x00}, {}, {0xFFAB01FF}},
        {"palette 1-bit",
         3,
         1,
         3,
         {0b01000000},
         palette({255, 0, 0, 0, 0, 255}),
         {0xFFFF0000, 0xFF0000FF, 0xFFFF0000}},
        {"palette 2-bit, tRNS shorter than the palette",
         4,
         2,
         3,
         {0b00011011},
         concat(fourColours, pngChunk("tRNS", {0, 128})),
         {0, 0x80008000, 0xFF0000FF, 0xFFFFFFFF}},
        {"palette 4-bit", 2, 4, 3, {0x21}, fourColours, {0xFF0000FF, 0xFF00FF00}},
        {"palette 8-bit", 2, 8, 3, {3, 0}, fourColours, {0xFFFFFFFF, 0xFFFF0000}},
        {"grey and alpha 8-bit", 2, 8, 4, {200, 128, 50, 255}, {}, {0x80646464, 0xFF323232}},
        {"grey and alpha 16-bit", 1, 16, 4, {0x80, 0x80, 0x80, 0x00}, {}, {0x80404040}},
        {"rgba 8-bit: 0x80FF0000 becomes 0x80800000",
         2,
         8,
         6,
         {255, 0, 0, 128, 90, 80, 70, 0},
         {},
         {0x80800000, 0}},
        {"rgba 16-bit", 1, 16, 6, {0xFF, 0xFF, 0x00, 0x00, 0x80, 0x80, 0xFF, 0xFF}, {}, {0xFFFF0080}},
    };
}

TEST(DecodeImage, PngPixelFormats) {
    for (const PngFormatCase& c : pngFormatCases()) {
        SCOPED_TRACE(c.name);
        Bytes scanline = {0};
        scanline.insert(scanline.end(), c.row.begin(), c.row.end());
        DecodedImage image;
        std::wstring error;
        ASSERT_TRUE(decode(pngFile(c.width, 1, c.depth, c.colourType, scanline, c.extra), image, error))
            << error;
        expectPixels(image, int(c.width), 1, c.expected);
    }
}

TEST(DecodeImage, PremultipliesWithRounding) {
    // Measured through GDI+: c * a / 255 rounded to nearest, never truncated.
    struct Sample {
        uint8_t colour, alpha, expected;
    };
    const Sample samples[] = {{254, 1, 1},     {127, 1, 0},    {128, 1, 1},     {1, 128, 1},
                              {1, 127, 0},     {129, 100, 51}, {100, 64, 25},   {200, 129, 101},
                              {254, 254, 253}, {3, 170, 2},    {200, 192, 151}, {255, 0, 0}};
    Bytes scanline = {0};
    std::vector<uint32_t> expected;
    for (const Sample& s : samples) {
        scanline.insert(scanline.end(), {s.colour, 0, s.colour, s.alpha});
        expected.push_back(uint32_t(s.alpha) << 24 | uint32_t(s.expected) << 16 | s.expected);
    }
    DecodedImage image;
    std::wstring error;
    ASSERT_TRUE(decode(pngFile(uint32_t(std::size(samples)), 1, 8, 6, scanline), image, error)) << error;
    expectPixels(image, int(std::size(samples)), 1, expected);
}

// Fixtures written by scripts/make-image-fixtures.py with real zlib compression and every filter type in
// turn.
TEST(DecodeImage, CompressedFixturesWithAllFilters) {
    struct Fixture {
        const wchar_t* name;
        int width, height;
        uint32_t (*pixel)(uint32_t x, uint32_t y);
    };
    const Fixture fixtures[] = {
        {L"gradient_rgba.png", 16, 12,
         [](uint32_t x, uint32_t y) {
             const uint32_t alpha = (x + y) % 4 == 0 ? 255 : (x * 37 + y * 11) % 256;
             return premultiplied(x * 15, y * 21, x * y * 7 % 256, alpha);
         }},
        {L"adam7_rgb.png", 13, 11,
         [](uint32_t x, uint32_t y) { return 0xFF000000u | x * 19 << 16 | y * 23 << 8 | (x + y) * 9 % 256; }},
        {L"paeth_rgb.png", 20, 10,
         [](uint32_t x, uint32_t y) {
             return 0xFF000000u | (200 - 6 * x + 3 * y) << 16 |
                    ((x * 29 + y * 7 + x * y * 3) % 256 & 0xF0) << 8 | (100 + 4 * x - 8 * y);
         }},
        {L"grey16_alpha.png", 10, 3,
         [](uint32_t x, uint32_t y) {
             const uint32_t grey = (x * 40 + y * 3) % 256;
             const uint32_t alphas[] = {0, 64, 255, 128};
             return premultiplied(grey, grey, grey, alphas[(x + y) % 4]);
         }},
    };
    for (const Fixture& f : fixtures) {
        SCOPED_TRACE(std::string(f.name, f.name + wcslen(f.name)));
        std::vector<uint32_t> expected;
        for (int y = 0; y < f.height; ++y)
            for (int x = 0; x < f.width; ++x)
                expected.push_back(f.pixel(uint32_t(x), uint32_t(y)));
        DecodedImage image;
        std::wstring error;
        ASSERT_TRUE(decode(imageFixture(f.name), image, error)) << error;
        expectPixels(image, f.width, f.height, expected);
    }
}

TEST(DecodeImage, PngLayouts) {
    struct LayoutCase {
        const char* name;
        Bytes file;
        int width, height;
        std::vector<uint32_t> expected;
    };
    const LayoutCase cases[] = {
        // 3 x 2 interlaced: passes 1, 4 and 6 hold one pixel of the top row each, pass 7 the bottom row; the
        // other passes are empty and have no rows at all.
        {"tiny interlaced image with empty passes",
         pngFile(3, 2, 8, 0, {0, 10, 0, 30, 0, 20, 0, 40, 50, 60}, {}, 1),
         3,
         2,
         {0xFF0A0A0A, 0xFF141414, 0xFF1E1E1E, 0xFF282828, 0xFF323232, 0xFF3C3C3C}},
        {"1 x 1 interlaced", pngFile(1, 1, 8, 0, {0, 77}, {}, 1), 1, 1, {0xFF4D4D4D}},
        {"data split over three IDAT chunks",
         pngFile(2, 2, 8, 0, {0, 1, 2, 0, 3, 4}, {}, 0, 3),
         2,
         2,
         {0xFF010101, 0xFF020202, 0xFF030303, 0xFF040404}},
        {"an ancillary chunk before the data",
         pngFile(1, 1, 8, 0, {0, 9}, pngChunk("tEXt", {'C', 'o', 'm', 'm', 'e', 'n', 't', 0, 'x'})),
         1,
         1,
         {0xFF090909}},
    };
    for (const LayoutCase& c : cases) {
        SCOPED_TRACE(c.name);
        DecodedImage image;
        std::wstring error;
        ASSERT_TRUE(decode(c.file, image, error)) << error;
        expectPixels(image, c.width, c.height, c.expected);
    }
}

// ---- BMP -------------------------------------------------------------------------------------------------

TEST(DecodeImage, UncompressedBmp) {
    // Two rows of three pixels; 24-bit rows are padded to four bytes. Rows are given in file order.
    const Bytes rows24 = {1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0};
    const std::vector<uint32_t> firstRowAtBottom = {0xFF0D0C0B, 0xFF100F0E, 0xFF131211,
                                                    0xFF030201, 0xFF060504, 0xFF090807};
    const std::vector<uint32_t> firstRowAtTop = {0xFF030201, 0xFF060504, 0xFF090807,
                                                 0xFF0D0C0B, 0xFF100F0E, 0xFF131211};
    // 32-bit pixels whose fourth byte is 128 and 0: GDI+ does not take it as alpha.
    const Bytes rows32 = {0, 0, 255, 128, 0, 255, 0, 0};
    struct BmpCase {
        const char* name;
        Bytes file;
        int width, height;
        std::vector<uint32_t> expected;
    };
    const BmpCase cases[] = {
        {"24-bit bottom-up", bmpFile(3, 2, 24, rows24), 3, 2, firstRowAtBottom},
        {"24-bit top-down", bmpFile(3, -2, 24, rows24), 3, 2, firstRowAtTop},
        {"32-bit, fourth byte ignored", bmpFile(2, 1, 32, rows32), 2, 1, {0xFFFF0000, 0xFF00FF00}},
        {"32-bit bitfields after the header, red in the low byte",
         bmpFile(2, 1, 32, rows32, 3, {0x000000FF, 0x0000FF00, 0x00FF0000}),
         2,
         1,
         {0xFF0000FF, 0xFF00FF00}},
        {"32-bit V5 header with an alpha mask",
         bmpFile(2, 1, 32, rows32, 3, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 124),
         2,
         1,
         {0xFFFF0000, 0xFF00FF00}},
        {"24-bit V4 header, top-down", bmpFile(3, -2, 24, rows24, 0, {}, 108), 3, 2, firstRowAtTop},
    };
    for (const BmpCase& c : cases) {
        SCOPED_TRACE(c.name);
        DecodedImage image;
        std::wstring error;
        ASSERT_TRUE(decode(c.file, image, error)) << error;
        expectPixels(image, c.width, c.height, c.expected);
    }
}

// ---- Limits and failures ---------------------------------------------------------------------------------

// A 1-bit grey PNG of the given size with all its data present, so only the size can make it fail.
Bytes blackPng(uint32_t width, uint32_t height) {
    const size_t rowBytes = (width + 7) / 8;
    return pngFile(width, height, 1, 0, Bytes(height * (1 + rowBytes), 0));
}

Bytes whiteBmp(int32_t width, int32_t height) {
    const size_t stride = (size_t(width) * 3 + 3) / 4 * 4;
    return bmpFile(width, height, 24, Bytes(stride * size_t(height < 0 ? -height : height), 0xFF));
}

TEST(DecodeImage, SidesUpTo8192) {
    struct LimitCase {
        const char* name;
        Bytes file;
        bool ok;
    };
    // A header claiming 9000 pixels of 64 bits, followed by a few bytes: refused on the header alone.
    const Bytes wideClaim = pngFile(9000, 1, 16, 6, Bytes(16, 0));
    const LimitCase cases[] = {
        {"png 8192 wide", blackPng(8192, 1), true},
        {"png 8192 high", blackPng(1, 8192), true},
        {"png 9000 wide", blackPng(9000, 1), false},
        {"png 9000 high", blackPng(1, 9000), false},
        {"png header claiming 9000 x 1", wideClaim, false},
        {"png 0 wide", blackPng(0, 1), false},
        {"bmp 8192 wide", whiteBmp(8192, 1), true},
        {"bmp 8193 wide", whiteBmp(8193, 1), false},
        {"bmp 9000 high, top-down", whiteBmp(1, -9000), false},
    };
    for (const LimitCase& c : cases) {
        SCOPED_TRACE(c.name);
        DecodedImage image;
        std::wstring error;
        EXPECT_EQ(decode(c.file, image, error), c.ok);
        if (c.ok) {
            EXPECT_TRUE(image.width == 8192 || image.height == 8192);
            EXPECT_FALSE(image.hasTransparency);
        } else {
            EXPECT_EQ(error, kUndecodable);
            EXPECT_TRUE(image.empty());
        }
    }
}

TEST(DecodeImage, EmptyInput) {
    const uint8_t byte = 0;
    for (const uint8_t* data : {&byte, static_cast<const uint8_t*>(nullptr)}) {
        DecodedImage image;
        std::wstring error;
        EXPECT_FALSE(decodeImage(data, 0, image, &error));
        EXPECT_EQ(error, L"Bos gorsel.");
    }
}

TEST(DecodeImage, GarbageTruncationAndCorruptionFail) {
    std::vector<std::pair<std::string, Bytes>> inputs;
    const Bytes signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    inputs.push_back({"noise", test::noiseBytes(300, 7)});
    inputs.push_back({"text", test::bytesOf("not a picture at all")});
    inputs.push_back({"png signature alone", signature});
    Bytes afterSignature = signature;
    const Bytes noise = test::noiseBytes(100, 3);
    afterSignature.insert(afterSignature.end(), noise.begin(), noise.end());
    inputs.push_back({"png signature, then noise", afterSignature});
    inputs.push_back({"BM, then noise", concat(test::bytesOf("BM"), noise)});

    const Bytes png = imageFixture(L"gradient_rgba.png");
    ASSERT_GT(png.size(), 100u);
    for (size_t cut :
         {size_t(4), size_t(16), size_t(33), size_t(60), png.size() / 2, png.size() - 12, png.size() - 5})
        inputs.push_back(
            {"png cut to " + std::to_string(cut), Bytes(png.begin(), png.begin() + ptrdiff_t(cut))});
    const Bytes bmp = whiteBmp(3, 2);
    for (size_t cut : {size_t(2), size_t(14), size_t(30), size_t(54), bmp.size() - 1})
        inputs.push_back(
            {"bmp cut to " + std::to_string(cut), Bytes(bmp.begin(), bmp.begin() + ptrdiff_t(cut))});

    Bytes badAdler = test::zlibStored({0, 1, 2});
    badAdler.back() ^= 1;
    inputs.push_back({"png with a wrong Adler-32", test::pngWithStream(2, 1, 8, 0, badAdler)});
    inputs.push_back({"png with filter type 5", pngFile(2, 1, 8, 0, {5, 1, 2})});
    inputs.push_back({"palette png without PLTE", pngFile(2, 1, 8, 3, {0, 0, 0})});
    inputs.push_back({"png with too little data", pngFile(2, 2, 8, 0, {0, 1, 2})});

    for (const auto& [name, bytes] : inputs) {
        SCOPED_TRACE(name);
        DecodedImage image;
        image.width = image.height = 1;
        image.pixels = {0xFFFFFFFF};
        std::wstring error;
        EXPECT_FALSE(decode(bytes, image, error));
        EXPECT_EQ(error, kUndecodable);
        EXPECT_TRUE(image.empty()); // a failed decode leaves nothing of an earlier picture behind
    }
}

} // namespace
} // namespace nv
