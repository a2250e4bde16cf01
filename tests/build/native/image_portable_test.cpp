// The native decoder where it is deliberately stricter than GDI+ (which shrugs off a wrong CRC, a cut IEND or
// a palette index past the palette) or narrower (BMP kinds that only GDI+ reads), and its handling of highly
// compressed data. zlib serves as an independent compressor here.

#include "build/image.h"
#include "tests/build/image_samples.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <algorithm>

namespace nv {
namespace {

using test::bmpFile;
using test::concat;
using test::pngChunk;
using test::pngFile;
using test::pngWithStream;

Bytes zlibCompressed(const Bytes& data) {
    uLongf size = compressBound(uLong(data.size()));
    Bytes out(size);
    EXPECT_EQ(compress2(out.data(), &size, data.data(), uLong(data.size()), 9), Z_OK);
    out.resize(size);
    return out;
}

// A copy of a PNG file with one bit of the named chunk's CRC flipped.
Bytes withBadCrc(Bytes png, const char* type) {
    for (size_t i = 12; i + 4 <= png.size(); ++i) {
        if (!std::equal(type, type + 4, png.begin() + ptrdiff_t(i))) continue;
        const size_t length =
            size_t(png[i - 4]) << 24 | size_t(png[i - 3]) << 16 | size_t(png[i - 2]) << 8 | png[i - 1];
        png[i + 4 + length + 3] ^= 1;
        return png;
    }
    ADD_FAILURE() << "no chunk " << type;
    return png;
}

TEST(DecodeImagePortable, RefusesWhatGdiplusWouldTolerate) {
    const Bytes grey = pngFile(2, 1, 8, 0, {0, 1, 2}, pngChunk("tEXt", {'a', 0, 'b'}));
    std::vector<std::pair<std::string, Bytes>> inputs;

    inputs.push_back({"wrong IDAT CRC", withBadCrc(grey, "IDAT")});
    inputs.push_back({"wrong CRC of an ancillary chunk", withBadCrc(grey, "tEXt")});
    inputs.push_back({"IEND without its last byte", Bytes(grey.begin(), grey.end() - 1)});

    const Bytes twoColours = pngChunk("PLTE", {255, 0, 0, 0, 255, 0});
    inputs.push_back({"palette index past the palette", pngFile(2, 1, 8, 3, {0, 0, 2}, twoColours)});
    inputs.push_back(
        {"2-bit palette index past the palette", pngFile(4, 1, 2, 3, {0, 0b00011000}, twoColours)});
    inputs.push_back({"unknown critical chunk", pngFile(1, 1, 8, 0, {0, 0}, pngChunk("ABCD", {}))});
    inputs.push_back(
        {"grey tRNS of the wrong length", pngFile(1, 1, 8, 0, {0, 0}, pngChunk("tRNS", {0, 0, 0}))});
    inputs.push_back(
        {"more data than the picture needs", pngWithStream(1, 1, 8, 0, zlibCompressed({0, 0, 0}))});
    inputs.push_back({"zlib preset dictionary flag", pngWithStream(1, 1, 8, 0, {0x78, 0x20, 0, 0, 0, 0})});
    inputs.push_back({"bit depth 16 with a palette", pngFile(1, 1, 16, 3, {0, 0, 0}, twoColours)});
    inputs.push_back({"interlace method 2", pngFile(1, 1, 8, 0, {0, 0}, {}, 2)});

    // A valid stream in two IDAT chunks with another chunk between them.
    const Bytes z = test::zlibStored({0, 1, 2});
    Bytes interrupted =
        concat(Bytes(grey.begin(), grey.begin() + 33), pngChunk("IDAT", Bytes(z.begin(), z.begin() + 5)));
    interrupted = concat(interrupted, pngChunk("tEXt", {'a', 0, 'b'}));
    interrupted = concat(interrupted, pngChunk("IDAT", Bytes(z.begin() + 5, z.end())));
    inputs.push_back({"IDAT after another chunk", concat(interrupted, pngChunk("IEND", {}))});
    Bytes uninterrupted =
        concat(Bytes(grey.begin(), grey.begin() + 33), pngChunk("IDAT", Bytes(z.begin(), z.begin() + 5)));
    uninterrupted = concat(uninterrupted, pngChunk("IDAT", Bytes(z.begin() + 5, z.end())));
    uninterrupted = concat(uninterrupted, pngChunk("IEND", {}));
    DecodedImage control;
    ASSERT_TRUE(decodeImage(uninterrupted.data(), uninterrupted.size(), control))
        << "the same data without the chunk between";

    inputs.push_back({"16-bit BMP", bmpFile(2, 1, 16, {0x1F, 0, 0xE0, 0x03})});
    inputs.push_back({"8-bit BMP", bmpFile(4, 1, 8, {0, 1, 2, 3})});
    inputs.push_back({"RLE BMP", bmpFile(2, 1, 24, {2, 0, 0, 1}, 1)});
    inputs.push_back(
        {"24-bit BMP with bitfields", bmpFile(1, 1, 24, {0, 0, 0, 0}, 3, {0xFF0000, 0xFF00, 0xFF})});
    inputs.push_back(
        {"BMP with a mask of 4 bits", bmpFile(1, 1, 32, {0, 0, 0, 0}, 3, {0xF00000, 0xFF00, 0xFF})});
    Bytes pixelsBeyond = bmpFile(1, 1, 24, {0, 0, 0, 0});
    pixelsBeyond[10] = 200; // the pixel offset points past the end
    inputs.push_back({"BMP pixel offset past the end", pixelsBeyond});
    Bytes pixelsInHeader = bmpFile(1, 1, 24, {0, 0, 0, 0});
    pixelsInHeader[10] = 20;
    inputs.push_back({"BMP pixel offset inside the header", pixelsInHeader});
    Bytes coreHeader = bmpFile(1, 1, 24, {0, 0, 0, 0});
    coreHeader[14] = 12;
    inputs.push_back({"BMP with a 12-byte core header", coreHeader});

    for (const auto& [name, bytes] : inputs) {
        SCOPED_TRACE(name);
        DecodedImage image;
        std::wstring error;
        EXPECT_FALSE(decodeImage(bytes.data(), bytes.size(), image, &error));
        EXPECT_EQ(error, L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).");
        EXPECT_TRUE(image.empty());
    }
}

TEST(DecodeImagePortable, HighlyCompressedDataStillDecodes) {
    // Zeros compress at close to Deflate's limit of 1032:1, which the decoder's size check must still allow.
    const uint32_t width = 8192, height = 64;
    const Bytes raw(size_t(height) * (1 + width * 8), 0);
    const Bytes z = zlibCompressed(raw);
    ASSERT_GT(raw.size() / z.size(), 900u);
    const Bytes png = pngWithStream(width, height, 16, 6, z);
    DecodedImage image;
    std::wstring error;
    ASSERT_TRUE(decodeImage(png.data(), png.size(), image, &error)) << error;
    EXPECT_EQ(image.width, int(width));
    EXPECT_TRUE(image.hasTransparency);
    EXPECT_EQ(image.pixels[size_t(width) * height - 1], 0u);
}

} // namespace
} // namespace nv
