#pragma once
// Small PNG and BMP files built in memory for the image decoder tests. PNG data goes into stored Deflate
// blocks, so these files need no compressor and are the same on every build.

#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "tests/support/test_support.h"

#include <cstdint>
#include <initializer_list>
#include <string>

namespace nv::test {

inline void putBe32(Bytes& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(v >> shift));
}

inline void putLe16(Bytes& out, uint32_t v) {
    out.push_back(uint8_t(v));
    out.push_back(uint8_t(v >> 8));
}

inline void putLe32(Bytes& out, uint32_t v) {
    putLe16(out, v & 0xFFFF);
    putLe16(out, v >> 16);
}

inline Bytes pngChunk(const char* type, const Bytes& body) {
    // Sized up front: GCC 12 at -O3 misreads a growing vector here as an overflow.
    Bytes out(12 + body.size());
    const uint32_t length = uint32_t(body.size());
    for (int i = 0; i < 4; ++i) {
        out[size_t(i)] = uint8_t(length >> (24 - 8 * i));
        out[size_t(4 + i)] = uint8_t(type[i]);
    }
    for (size_t i = 0; i < body.size(); ++i)
        out[8 + i] = body[i];
    const uint32_t crc = Crc32::of(out.data() + 4, body.size() + 4);
    for (int i = 0; i < 4; ++i)
        out[8 + body.size() + size_t(i)] = uint8_t(crc >> (24 - 8 * i));
    return out;
}

inline uint32_t adler32Of(const Bytes& data) {
    uint32_t a = 1, b = 0;
    for (uint8_t byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

// A zlib stream of stored blocks.
inline Bytes zlibStored(const Bytes& data) {
    Bytes out = {0x78, 0x01};
    size_t pos = 0;
    do {
        const size_t n = data.size() - pos < 65535 ? data.size() - pos : 65535;
        out.push_back(pos + n == data.size() ? 1 : 0);
        putLe16(out, uint32_t(n));
        putLe16(out, uint32_t(~n & 0xFFFF));
        out.insert(out.end(), data.begin() + ptrdiff_t(pos), data.begin() + ptrdiff_t(pos + n));
        pos += n;
    } while (pos < data.size());
    putBe32(out, adler32Of(data));
    return out;
}

inline Bytes pngHeaderBody(uint32_t width, uint32_t height, int depth, int colourType, int interlace = 0) {
    Bytes body;
    putBe32(body, width);
    putBe32(body, height);
    body.insert(body.end(), {uint8_t(depth), uint8_t(colourType), 0, 0, uint8_t(interlace)});
    return body;
}

inline Bytes concat(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A PNG whose IDAT chunks hold the given zlib stream, cut into idatParts chunks; extra: chunks placed between
// IHDR and the first IDAT.
inline Bytes pngWithStream(uint32_t width, uint32_t height, int depth, int colourType,
                           const Bytes& zlibStream, const Bytes& extra = {}, int interlace = 0,
                           size_t idatParts = 1) {
    Bytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    out = concat(out, pngChunk("IHDR", pngHeaderBody(width, height, depth, colourType, interlace)));
    out = concat(out, extra);
    for (size_t i = 0; i < idatParts; ++i) {
        const auto from = zlibStream.begin() + ptrdiff_t(zlibStream.size() * i / idatParts);
        const auto to = zlibStream.begin() + ptrdiff_t(zlibStream.size() * (i + 1) / idatParts);
        out = concat(out, pngChunk("IDAT", Bytes(from, to)));
    }
    return concat(out, pngChunk("IEND", {}));
}

// scanlines: the filtered rows (of every interlace pass in turn), each with its filter byte.
inline Bytes pngFile(uint32_t width, uint32_t height, int depth, int colourType, const Bytes& scanlines,
                     const Bytes& extra = {}, int interlace = 0, size_t idatParts = 1) {
    return pngWithStream(width, height, depth, colourType, zlibStored(scanlines), extra, interlace,
                         idatParts);
}

// An uncompressed BMP: a BITMAPINFOHEADER (or a longer header of headerSize bytes, zero-filled past the
// masks), the masks after a 40-byte header when given with BI_BITFIELDS, then the rows exactly as passed
// (padding included).
inline Bytes bmpFile(int32_t width, int32_t height, int bitCount, const Bytes& rows, uint32_t compression = 0,
                     std::initializer_list<uint32_t> masks = {}, uint32_t headerSize = 40) {
    Bytes info;
    putLe32(info, headerSize);
    putLe32(info, uint32_t(width));
    putLe32(info, uint32_t(height));
    putLe16(info, 1);
    putLe16(info, uint32_t(bitCount));
    putLe32(info, compression);
    putLe32(info, uint32_t(rows.size()));
    putLe32(info, 2835);
    putLe32(info, 2835);
    putLe32(info, 0);
    putLe32(info, 0);
    for (uint32_t mask : masks)
        putLe32(info, mask);
    if (headerSize > 40 && info.size() < headerSize) info.resize(headerSize, 0);

    Bytes out = {'B', 'M'};
    const uint32_t offset = uint32_t(14 + info.size());
    putLe32(out, uint32_t(offset + rows.size()));
    putLe32(out, 0);
    putLe32(out, offset);
    out.insert(out.end(), info.begin(), info.end());
    out.insert(out.end(), rows.begin(), rows.end());
    return out;
}

inline Bytes imageFixture(const wchar_t* name) {
    return readFile(pathJoin(pathJoin(testDataDir(), L"images"), name));
}

// Premultiplication as GDI+ does it: c * a / 255, rounded.
inline uint32_t premultiplied(uint32_t r, uint32_t g, uint32_t b, uint32_t a) {
    auto scale = [a](uint32_t c) { return (c * a + 127) / 255; };
    return a << 24 | scale(r) << 16 | scale(g) << 8 | scale(b);
}

} // namespace nv::test
