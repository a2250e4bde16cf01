#pragma once
// Picture decoding to premultiplied 32-bit pixels, shared by the skin loader and the icon conversion.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nv {

struct DecodedImage {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels; // row by row from the top, no padding, premultiplied 0xAARRGGBB
    bool hasTransparency = false; // any pixel's alpha below 255

    bool empty() const { return width <= 0 || height <= 0 || pixels.empty(); }
};

constexpr int kMaxImageSide = 8192;

// PNG, JPEG, BMP, GIF and ICO through GDI+ on Windows (GDI+ must have been started). The native build decodes
// PNG and uncompressed BMP with its own code, for tests and fuzzing. Messages: "Bos gorsel.",
// "Bellek yetersiz.", "Akis olusturulamadi.", "Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).".
bool decodeImage(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error = nullptr);

} // namespace nv
