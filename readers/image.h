#pragma once
// Picture decoding to premultiplied 32-bit pixels, shared by the skin loader, the renderer and the icon
// conversion.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nv {

// A decoded picture. Its pixels are immutable once decoded and shared by every copy, so a skin whose controls
// and button states use one file hold that file's pixels once.
struct DecodedImage {
    int width = 0;
    int height = 0;
    std::shared_ptr<const std::vector<uint32_t>> pixels; // rows from the top, no padding, premultiplied ARGB
    bool hasTransparency = false;                        // any pixel's alpha below 255

    bool empty() const { return width <= 0 || height <= 0 || !pixels || pixels->empty(); }
    const uint32_t* data() const { return pixels ? pixels->data() : nullptr; }
    uint32_t at(int x, int y) const { return (*pixels)[size_t(y) * size_t(width) + size_t(x)]; }

    // Takes over width * height premultiplied pixels and notes whether any of them is not opaque.
    static DecodedImage fromPixels(int width, int height, std::vector<uint32_t> pixels);
};

constexpr int kMaxImageSide = 8192;

enum class ImageFormat { Unknown, Png, Jpeg, Bmp, Gif, Ico };

// What the first bytes of a picture file say: its format, and its size where the format states it in a
// header at the start (PNG, GIF, BMP, the frame header of a JPEG). Width and height stay 0 when the size is
// not stated there (an icon holds several pictures) or the header is cut short. A header's word is only an
// early estimate: the decoders still check the picture they actually produce.
struct ImageSignature {
    ImageFormat format = ImageFormat::Unknown;
    int64_t width = 0;
    int64_t height = 0;

    bool sizeKnown() const { return width != 0 || height != 0; }
    // A stated size outside 1..kMaxImageSide on either side.
    bool tooLarge() const {
        return sizeKnown() && (width < 1 || width > kMaxImageSide || height < 1 || height > kMaxImageSide);
    }
};

// Only the formats named here ever reach a decoder: anything else (TIFF, metafiles, cursors...) is Unknown.
ImageSignature sniffImage(const uint8_t* data, size_t size);

// PNG, JPEG, BMP, GIF and ICO through GDI+ on Windows (GDI+ must have been started); bytes of any other
// format are refused before GDI+ sees them, since it would pick a codec from the content. The native build
// decodes PNG and uncompressed BMP with its own code, for tests and fuzzing. Messages: "Bos gorsel.", "Bellek
// yetersiz.", "Akis olusturulamadi.", "Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).".
bool decodeImage(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error = nullptr);

} // namespace nv
