#pragma once
// The picture fixtures of scripts/make-image-fixtures.py and the checks that the image decoder tests share.

#include "readers/image.h"
#include "core/paths.h"
#include "core/text.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace nv::test {

inline const wchar_t* const kUndecodable = L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).";

inline Bytes imageFixture(const char* name) {
    return readFile(pathJoin(pathJoin(testDataDir(), L"images"), widenAscii(name)));
}

// Decodes bytes and compares the size, the transparency flag and every pixel (colour channels within
// tolerance, alpha exactly).
inline void expectPixels(const char* name, const Bytes& bytes, int width, const std::vector<uint32_t>& pixels,
                         int tolerance = 0) {
    SCOPED_TRACE(name);
    DecodedImage image;
    std::wstring error;
    ASSERT_TRUE(decodeImage(bytes.data(), bytes.size(), image, &error)) << error;
    ASSERT_EQ(std::pair(image.width, image.height), std::pair(width, int(pixels.size()) / width));
    ASSERT_EQ(image.pixels->size(), pixels.size());
    bool transparent = false;
    for (size_t i = 0; i < pixels.size(); ++i) {
        transparent = transparent || pixels[i] < 0xFF000000;
        for (int shift = 0; shift < 32; shift += 8)
            ASSERT_LE(std::abs(int((*image.pixels)[i] >> shift & 0xFF) - int(pixels[i] >> shift & 0xFF)),
                      shift < 24 ? tolerance : 0)
                << "pixel " << i % size_t(width) << ", " << i / size_t(width) << ": " << std::hex
                << (*image.pixels)[i] << " instead of " << pixels[i];
    }
    EXPECT_EQ(image.hasTransparency, transparent);
}

// A fixture drawn by a formula, which the test repeats.
inline void expectFixture(const char* name, int width, int height, uint32_t (*pixel)(uint32_t x, uint32_t y),
                          int tolerance = 0) {
    std::vector<uint32_t> pixels;
    for (uint32_t i = 0; i < uint32_t(width * height); ++i)
        pixels.push_back(pixel(i % uint32_t(width), i / uint32_t(width)));
    expectPixels(name, imageFixture(name), width, pixels, tolerance);
}

// Bytes that must be refused with the message, leaving nothing of the picture decoded before.
inline void expectRefused(const char* name, const Bytes& bytes, const wchar_t* message = kUndecodable) {
    SCOPED_TRACE(name);
    DecodedImage image = DecodedImage::fromPixels(1, 1, {0xFFFFFFFF});
    std::wstring error;
    const uint8_t* data = bytes.empty() ? reinterpret_cast<const uint8_t*>("") : bytes.data(); // never null
    EXPECT_FALSE(decodeImage(data, bytes.size(), image, &error));
    EXPECT_EQ(error, message);
    EXPECT_TRUE(image.empty());
}

} // namespace nv::test
