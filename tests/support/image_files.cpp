#include "tests/support/image_files.h"

#include "core/byte_order.h"
#include "core/crc32.h"

#include <algorithm>
#include <string>

namespace nv::test {
namespace {

void put32be(Bytes& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(v >> shift));
}

void chunk(Bytes& png, const char* type, const Bytes& data) {
    put32be(png, uint32_t(data.size()));
    size_t start = png.size();
    png.insert(png.end(), type, type + 4);
    png.insert(png.end(), data.begin(), data.end());
    put32be(png, Crc32::of(png.data() + start, png.size() - start));
}

// A zlib stream of stored deflate blocks.
Bytes zlibStored(const Bytes& raw) {
    Bytes out = {0x78, 0x01};
    size_t pos = 0;
    do {
        size_t n = std::min<size_t>(raw.size() - pos, 65535);
        bool last = pos + n == raw.size();
        out.push_back(last ? 1 : 0);
        appendLe16(out, uint32_t(n));
        appendLe16(out, uint32_t(~n & 0xFFFF));
        out.insert(out.end(), raw.begin() + long(pos), raw.begin() + long(pos + n));
        pos += n;
    } while (pos < raw.size());
    uint32_t a = 1, b = 0;
    for (uint8_t byte : raw) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    put32be(out, b << 16 | a);
    return out;
}

} // namespace

Bytes makePng(int width, int height, const std::vector<uint32_t>& pixels) {
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    put32be(header, uint32_t(width));
    put32be(header, uint32_t(height));
    header.insert(header.end(),
                  {8, 6, 0, 0, 0}); // 8 bits, RGBA, deflate, no filter method change, no interlace
    chunk(png, "IHDR", header);
    Bytes raw;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0); // filter: none
        for (int x = 0; x < width; ++x) {
            uint32_t p = pixels[size_t(y) * size_t(width) + size_t(x)];
            raw.insert(raw.end(), {uint8_t(p >> 16), uint8_t(p >> 8), uint8_t(p), uint8_t(p >> 24)});
        }
    }
    chunk(png, "IDAT", zlibStored(raw));
    chunk(png, "IEND", {});
    return png;
}

Bytes makePng(int width, int height, uint32_t argb) {
    return makePng(width, height, std::vector<uint32_t>(size_t(width) * size_t(height), argb));
}

Bytes makeBmp(int width, int height, uint32_t argb) {
    const uint32_t rowBytes = (uint32_t(width) * 3 + 3) & ~3u;
    const uint32_t imageBytes = rowBytes * uint32_t(height);
    Bytes bmp = {'B', 'M'};
    appendLe32(bmp, 54 + imageBytes);
    appendLe32(bmp, 0);
    appendLe32(bmp, 54);
    appendLe32(bmp, 40);
    appendLe32(bmp, uint32_t(width));
    appendLe32(bmp, uint32_t(height));
    appendLe16(bmp, 1);
    appendLe16(bmp, 24);
    for (int i = 0; i < 6; ++i)
        appendLe32(bmp, i == 1 ? imageBytes : 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            bmp.insert(bmp.end(), {uint8_t(argb), uint8_t(argb >> 8), uint8_t(argb >> 16)});
        bmp.resize(bmp.size() + (rowBytes - uint32_t(width) * 3), 0);
    }
    return bmp;
}

} // namespace nv::test
