#include "readers/image.h"

#include "core/byte_order.h"
#include <algorithm>
#include <cstring>

namespace nv {
namespace {

bool startsWith(const uint8_t* data, size_t size, const char* prefix, size_t length) {
    return size >= length && std::memcmp(data, prefix, length) == 0;
}

// The frame header (SOF0..SOF15 except DHT, JPG and DAC) names the size; the segments before it are skipped
// by their lengths. A height of 0 is left to a later DNL segment, so the size counts as not stated.
void jpegFrameSize(const uint8_t* data, size_t size, ImageSignature& signature) {
    size_t pos = 2;
    while (size - pos >= 4) {
        if (data[pos] != 0xFF) return;
        const uint8_t marker = data[pos + 1];
        if (marker == 0xFF) { // fill byte
            ++pos;
            continue;
        }
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) { // no length field
            pos += 2;
            continue;
        }
        if (marker == 0xD9 || marker == 0xDA) return; // the end, or the scan, before any frame header
        const size_t length = readBe16(data + pos + 2);
        if (length < 2) return;
        const bool frame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frame) {
            if (size - pos < 9 || length < 7) return;
            const uint32_t height = readBe16(data + pos + 5), width = readBe16(data + pos + 7);
            if (height != 0) {
                signature.width = width;
                signature.height = height;
            }
            return;
        }
        if (size - pos - 2 < length) return;
        pos += 2 + length;
    }
}

} // namespace

DecodedImage DecodedImage::fromPixels(int width, int height, std::vector<uint32_t> pixels) {
    DecodedImage image;
    image.width = width;
    image.height = height;
    image.hasTransparency =
        std::any_of(pixels.begin(), pixels.end(), [](uint32_t pixel) { return (pixel >> 24) != 0xFF; });
    image.pixels = std::make_shared<const std::vector<uint32_t>>(std::move(pixels));
    return image;
}

ImageSignature sniffImage(const uint8_t* data, size_t size) {
    ImageSignature s;
    if (data == nullptr) return s;
    if (startsWith(data, size, "\x89PNG\r\n\x1A\n", 8)) {
        s.format = ImageFormat::Png;
        if (size >= 24 && std::memcmp(data + 12, "IHDR", 4) == 0) {
            s.width = readBe32(data + 16);
            s.height = readBe32(data + 20);
        }
    } else if (startsWith(data, size, "\xFF\xD8\xFF", 3)) {
        s.format = ImageFormat::Jpeg;
        jpegFrameSize(data, size, s);
    } else if (startsWith(data, size, "BM", 2)) {
        s.format = ImageFormat::Bmp;
        if (size >= 26) {
            if (readLe32(data + 14) == 12) { // the old core header: 16-bit sides
                s.width = readLe16(data + 18);
                s.height = readLe16(data + 20);
            } else {
                s.width = int32_t(readLe32(data + 18));
                s.height = int32_t(readLe32(data + 22));
                if (s.height < 0) s.height = -s.height; // rows stored from the top
            }
        }
    } else if (startsWith(data, size, "GIF87a", 6) || startsWith(data, size, "GIF89a", 6)) {
        s.format = ImageFormat::Gif;
        if (size >= 10) {
            s.width = readLe16(data + 6);
            s.height = readLe16(data + 8);
        }
    } else if (startsWith(data, size, "\0\0\1\0", 4) && size >= 6 && readLe16(data + 4) != 0) {
        s.format = ImageFormat::Ico; // type 1; a cursor (type 2) is not a picture for us
    }
    return s;
}

} // namespace nv
