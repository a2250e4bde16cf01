// The native build's picture decoder: PNG and uncompressed BMP, with the same output, limits and messages as
// the GDI+ decoder of the Windows build. Every byte it reads comes from an untrusted file, so every read is
// checked against the buffer and every size is checked before anything is allocated for it.

#include "readers/image.h"

#include "core/byte_order.h"
#include "core/crc32.h"
#include "readers/inflate.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>

namespace nv {
namespace {

constexpr const wchar_t* kUndecodable = L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).";

// Deflate cannot expand data by more than 1032:1 (a 258-byte copy in two bits), so a header that promises far
// more pixel bytes than its compressed data could ever hold is refused before any buffer is reserved for it.
constexpr uint64_t kMaxDeflateRatio = 1032;

// c * a / 255, rounded to the nearest integer (never a tie for 8-bit values), as GDI+ premultiplies.
uint32_t premultiply(uint32_t c, uint32_t a) {
    return (c * a + 127) / 255;
}

uint32_t argb(uint32_t r, uint32_t g, uint32_t b, uint32_t a) {
    if (a == 255) return 0xFF000000u | r << 16 | g << 8 | b;
    return a << 24 | premultiply(r, a) << 16 | premultiply(g, a) << 8 | premultiply(b, a);
}

bool validSide(int64_t side) {
    return side >= 1 && side <= kMaxImageSide;
}

// The pixels while they are being decoded; published as a DecodedImage once complete.
struct Canvas {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;
};

void allocatePixels(Canvas& image, int width, int height) {
    image.pixels.assign(size_t(width) * size_t(height), 0);
    image.width = width;
    image.height = height;
}

// ---- PNG ------------------------------------------------------------------------------------------------

constexpr size_t kPngSignatureSize = 8; // checked by sniffImage before the decoder is chosen

struct PngHeader {
    uint32_t width = 0;
    uint32_t height = 0;
    int depth = 0;
    int colourType = 0;
    bool interlaced = false;

    int channels() const {
        switch (colourType) {
        case 2:
            return 3;
        case 4:
            return 2;
        case 6:
            return 4;
        default:
            return 1;
        }
    }
    int bitsPerPixel() const { return depth * channels(); }
    // The filter's "previous pixel" distance: whole bytes per pixel, at least one.
    size_t filterStep() const { return size_t(bitsPerPixel() + 7) / 8; }
    size_t rowBytes(uint32_t pixels) const { return (size_t(pixels) * size_t(bitsPerPixel()) + 7) / 8; }
};

bool validDepth(int colourType, int depth) {
    switch (colourType) {
    case 0:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6:
        return depth == 8 || depth == 16;
    default:
        return false;
    }
}

struct PngChunks {
    PngHeader header;
    std::array<uint32_t, 256> palette{}; // straight (not premultiplied) 0xAARRGGBB
    size_t paletteSize = 0;
    bool hasTransparentKey = false; // tRNS of colour types 0 and 2: one colour that is fully transparent
    uint16_t keyR = 0, keyG = 0, keyB = 0;
    Bytes compressed; // the IDAT payloads, joined
};

// Walks the chunks from the signature to IEND, checking each chunk's CRC and the order that the decoding
// depends on; collects the header, the palette, the transparency and the compressed data.
bool readPngChunks(const uint8_t* data, size_t size, PngChunks& png) {
    size_t pos = kPngSignatureSize;
    bool haveHeader = false;
    bool inData = false;    // inside the run of IDAT chunks
    bool afterData = false; // the run of IDAT chunks has ended
    for (;;) {
        if (size - pos < 12) return false; // no IEND before the end of the bytes
        const uint32_t length = readBe32(data + pos);
        if (length > 0x7FFFFFFFu || size - pos - 12 < length) return false;
        const uint8_t* type = data + pos + 4;
        const uint8_t* body = data + pos + 8;
        if (Crc32::of(type, size_t(length) + 4) != readBe32(body + length)) return false;
        pos += size_t(length) + 12;

        const bool isHeader = std::memcmp(type, "IHDR", 4) == 0;
        if (haveHeader == isHeader) return false; // IHDR first, and only once
        const bool isData = std::memcmp(type, "IDAT", 4) == 0;
        if (inData && !isData) afterData = true;
        inData = isData;

        if (isHeader) {
            if (length != 13) return false;
            PngHeader& h = png.header;
            h.width = readBe32(body);
            h.height = readBe32(body + 4);
            h.depth = body[8];
            h.colourType = body[9];
            if (body[10] != 0 || body[11] != 0 || body[12] > 1)
                return false; // compression, filter, interlace
            h.interlaced = body[12] == 1;
            if (!validDepth(h.colourType, h.depth)) return false;
            // The limit is checked here, before any size is derived from the header.
            if (!validSide(h.width) || !validSide(h.height)) return false;
            haveHeader = true;
        } else if (isData) {
            if (afterData) return false;
            png.compressed.insert(png.compressed.end(), body, body + length);
        } else if (std::memcmp(type, "IEND", 4) == 0) {
            return !png.compressed.empty();
        } else if (std::memcmp(type, "PLTE", 4) == 0) {
            if (inData || afterData || png.paletteSize != 0) return false;
            if (length == 0 || length % 3 != 0 || length / 3 > 256) return false;
            png.paletteSize = length / 3;
            for (size_t i = 0; i < png.paletteSize; ++i) {
                const uint8_t* c = body + 3 * i;
                png.palette[i] = 0xFF000000u | uint32_t(c[0]) << 16 | uint32_t(c[1]) << 8 | c[2];
            }
        } else if (std::memcmp(type, "tRNS", 4) == 0) {
            if (inData || afterData) continue; // too late to matter: ignored like other ancillary chunks
            const int colourType = png.header.colourType;
            if (colourType == 3) {
                if (png.paletteSize == 0 || length > png.paletteSize) return false;
                for (size_t i = 0; i < length; ++i)
                    png.palette[i] = (png.palette[i] & 0xFFFFFF) | uint32_t(body[i]) << 24;
            } else if (colourType == 0 && length == 2) {
                png.hasTransparentKey = true;
                png.keyR = png.keyG = png.keyB = uint16_t(body[0] << 8 | body[1]);
            } else if (colourType == 2 && length == 6) {
                png.hasTransparentKey = true;
                png.keyR = uint16_t(body[0] << 8 | body[1]);
                png.keyG = uint16_t(body[2] << 8 | body[3]);
                png.keyB = uint16_t(body[4] << 8 | body[5]);
            } else if (colourType == 0 || colourType == 2) {
                return false;
            } // colour types with an alpha channel have no use for tRNS; it is ignored
        } else if ((type[0] & 0x20) == 0) {
            return false; // an unknown critical chunk: the picture cannot be understood without it
        }
    }
}

uint8_t paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a);
    const int pb = std::abs(p - b);
    const int pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return uint8_t(a);
    return uint8_t(pb <= pc ? b : c);
}

// Reverses the filter of one row in place; prior is the previous reconstructed row of the same pass (or
// null).
bool unfilterRow(int filter, uint8_t* row, const uint8_t* prior, size_t length, size_t step) {
    switch (filter) {
    case 0:
        return true;
    case 1:
        for (size_t i = step; i < length; ++i)
            row[i] = uint8_t(row[i] + row[i - step]);
        return true;
    case 2:
        if (prior)
            for (size_t i = 0; i < length; ++i)
                row[i] = uint8_t(row[i] + prior[i]);
        return true;
    case 3:
        for (size_t i = 0; i < length; ++i) {
            const int left = i >= step ? row[i - step] : 0;
            const int up = prior ? prior[i] : 0;
            row[i] = uint8_t(row[i] + (left + up) / 2);
        }
        return true;
    case 4:
        for (size_t i = 0; i < length; ++i) {
            const int left = i >= step ? row[i - step] : 0;
            const int up = prior ? prior[i] : 0;
            const int upLeft = prior && i >= step ? prior[i - step] : 0;
            row[i] = uint8_t(row[i] + paeth(left, up, upLeft));
        }
        return true;
    default:
        return false;
    }
}

// Sample x of a row of one-sample pixels of up to 8 bits (grey or palette index), packed from the high bit.
uint32_t packedSample(const uint8_t* row, uint32_t x, int depth) {
    const size_t bit = size_t(x) * size_t(depth);
    const unsigned shift = unsigned(8 - depth - int(bit % 8));
    return (row[bit / 8] >> shift) & ((1u << depth) - 1);
}

// One pixel of a reconstructed row as premultiplied ARGB. 16-bit samples keep their high byte.
// Palette indexes have been checked against the palette by the caller.
uint32_t pngPixel(const PngChunks& png, const uint8_t* row, uint32_t x) {
    const PngHeader& h = png.header;
    if (h.colourType == 3) {
        const uint32_t c = png.palette[packedSample(row, x, h.depth)];
        return argb(c >> 16 & 0xFF, c >> 8 & 0xFF, c & 0xFF, c >> 24);
    }
    if (h.depth < 8) {
        const uint32_t value = packedSample(row, x, h.depth);
        if (png.hasTransparentKey && value == png.keyR) return 0;
        const uint32_t grey = value * 255 / ((1u << h.depth) - 1);
        return argb(grey, grey, grey, 255);
    }
    const size_t bytes = size_t(h.depth / 8);
    const uint8_t* p = row + size_t(x) * bytes * size_t(h.channels());
    auto sample = [&](int i) -> uint32_t {
        return bytes == 2 ? uint32_t(p[2 * i] << 8 | p[2 * i + 1]) : uint32_t(p[i]);
    };
    auto high = [&](uint32_t v) -> uint32_t { return bytes == 2 ? v >> 8 : v; };
    switch (h.colourType) {
    case 0: {
        const uint32_t grey = sample(0);
        if (png.hasTransparentKey && grey == png.keyR) return 0;
        return argb(high(grey), high(grey), high(grey), 255);
    }
    case 2: {
        const uint32_t r = sample(0), g = sample(1), b = sample(2);
        if (png.hasTransparentKey && r == png.keyR && g == png.keyG && b == png.keyB) return 0;
        return argb(high(r), high(g), high(b), 255);
    }
    case 4:
        return argb(high(sample(0)), high(sample(0)), high(sample(0)), high(sample(1)));
    default:
        return argb(high(sample(0)), high(sample(1)), high(sample(2)), high(sample(3)));
    }
}

struct Pass {
    uint32_t x0, y0, dx, dy;
};
const Pass kWholeImage[1] = {{0, 0, 1, 1}};
const Pass kAdam7[7] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                        {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

uint32_t passSpan(uint32_t size, uint32_t start, uint32_t step) {
    return size > start ? (size - start + step - 1) / step : 0;
}

uint32_t adler32(const uint8_t* data, size_t size) {
    uint32_t a = 1, b = 0;
    while (size > 0) {
        const size_t n = size < 5552 ? size : 5552; // the longest run before the sums can overflow
        for (size_t i = 0; i < n; ++i) {
            a += data[i];
            b += a;
        }
        a %= 65521;
        b %= 65521;
        data += n;
        size -= n;
    }
    return b << 16 | a;
}

bool decodePng(const uint8_t* data, size_t size, Canvas& image) {
    PngChunks png;
    if (!readPngChunks(data, size, png)) return false;
    const PngHeader& h = png.header;
    if (h.colourType == 3 && png.paletteSize == 0) return false;

    const Pass* passes = h.interlaced ? kAdam7 : kWholeImage;
    const size_t passCount = h.interlaced ? 7 : 1;
    uint64_t expected = 0; // at most 8192 * (1 + 8192 * 8) per pass: no overflow
    for (size_t i = 0; i < passCount; ++i) {
        const uint32_t w = passSpan(h.width, passes[i].x0, passes[i].dx);
        const uint32_t rows = passSpan(h.height, passes[i].y0, passes[i].dy);
        if (w > 0 && rows > 0) expected += uint64_t(rows) * (1 + h.rowBytes(w));
    }

    // The zlib wrapper: a two-byte header (deflate, no preset dictionary), the data, an Adler-32 trailer.
    const Bytes& z = png.compressed;
    if (z.size() < 6) return false;
    if ((z[0] & 0x0F) != 8 || (z[0] >> 4) > 7 || (z[1] & 0x20) != 0 || (z[0] << 8 | z[1]) % 31 != 0)
        return false;
    if (expected > uint64_t(z.size()) * kMaxDeflateRatio) return false;
    Bytes raw;
    if (!inflateRaw(z.data() + 2, z.size() - 2, size_t(expected), raw)) return false;
    if (raw.size() != expected || adler32(raw.data(), raw.size()) != readBe32(z.data() + z.size() - 4))
        return false;

    allocatePixels(image, int(h.width), int(h.height));
    const size_t step = h.filterStep();
    const bool checkIndex = h.colourType == 3 && png.paletteSize < (size_t(1) << h.depth);
    uint8_t* cursor = raw.data();
    for (size_t i = 0; i < passCount; ++i) {
        const Pass& pass = passes[i];
        const uint32_t w = passSpan(h.width, pass.x0, pass.dx);
        const uint32_t rows = passSpan(h.height, pass.y0, pass.dy);
        if (w == 0 || rows == 0) continue;
        const size_t length = h.rowBytes(w);
        const uint8_t* prior = nullptr;
        for (uint32_t r = 0; r < rows; ++r) {
            uint8_t* row = cursor + 1;
            if (!unfilterRow(cursor[0], row, prior, length, step)) return false;
            uint32_t* out = image.pixels.data() + size_t(pass.y0 + r * pass.dy) * h.width;
            for (uint32_t x = 0; x < w; ++x) {
                if (checkIndex && packedSample(row, x, h.depth) >= png.paletteSize) return false;
                out[pass.x0 + x * pass.dx] = pngPixel(png, row, x);
            }
            prior = row;
            cursor += 1 + length;
        }
    }
    return true;
}

// ---- BMP ------------------------------------------------------------------------------------------------

// Byte position of a colour channel from a BI_BITFIELDS mask: only whole, byte-aligned 8-bit fields.
bool maskShift(uint32_t mask, unsigned& shift) {
    for (shift = 0; shift < 32; shift += 8) {
        if (mask == 0xFFu << shift) return true;
    }
    return false;
}

bool decodeBmp(const uint8_t* data, size_t size, Canvas& image) {
    if (size < 14 + 40) return false;
    const uint32_t pixelOffset = readLe32(data + 10);
    const uint32_t headerSize = readLe32(data + 14);
    if (headerSize < 40 || headerSize > size - 14) return false;
    const uint8_t* info = data + 14;
    const int32_t width = int32_t(readLe32(info + 4));
    const int32_t rawHeight = int32_t(readLe32(info + 8));
    const int bitCount = readLe16(info + 14);
    const uint32_t compression = readLe32(info + 16);
    const bool topDown = rawHeight < 0;
    const int64_t height = topDown ? -int64_t(rawHeight) : int64_t(rawHeight);
    if (!validSide(width) || !validSide(height)) return false;
    if (bitCount != 24 && bitCount != 32) return false;

    // Channel positions inside a pixel's little-endian value; alpha is never read, as GDI+ ignores it in
    // BMPs.
    unsigned red = 16, green = 8, blue = 0;
    size_t headersEnd = 14 + size_t(headerSize);
    if (compression == 3 && bitCount == 32) {
        const uint8_t* masks = info + 40;
        if (headerSize == 40) { // the masks follow a plain BITMAPINFOHEADER
            if (size - headersEnd < 12) return false;
            headersEnd += 12;
        } else if (headerSize < 52) {
            return false;
        }
        if (!maskShift(readLe32(masks), red) || !maskShift(readLe32(masks + 4), green) ||
            !maskShift(readLe32(masks + 8), blue))
            return false;
        if (red == green || red == blue || green == blue) return false;
    } else if (compression != 0) {
        return false;
    }

    const size_t stride = (size_t(width) * size_t(bitCount) + 31) / 32 * 4;
    if (pixelOffset < headersEnd || pixelOffset > size) return false;
    if ((size - pixelOffset) / stride < size_t(height)) return false; // every row, padding included

    allocatePixels(image, width, int(height));
    const size_t bytesPerPixel = size_t(bitCount) / 8;
    for (int64_t y = 0; y < height; ++y) {
        const int64_t fileRow = topDown ? y : height - 1 - y;
        const uint8_t* row = data + pixelOffset + size_t(fileRow) * stride;
        uint32_t* out = image.pixels.data() + size_t(y) * size_t(width);
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t* p = row + size_t(x) * bytesPerPixel;
            const uint32_t value = bitCount == 32 ? readLe32(p) : uint32_t(p[0] | p[1] << 8 | p[2] << 16);
            out[x] = argb(value >> red & 0xFF, value >> green & 0xFF, value >> blue & 0xFF, 255);
        }
    }
    return true;
}

} // namespace

bool decodeImage(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error) {
    image = DecodedImage();
    if (data == nullptr || size == 0) {
        if (error) *error = L"Bos gorsel.";
        return false;
    }
    Canvas canvas;
    bool ok = false;
    try {
        const ImageSignature signature = sniffImage(data, size);
        if (signature.format == ImageFormat::Png)
            ok = decodePng(data, size, canvas);
        else if (signature.format == ImageFormat::Bmp)
            ok = decodeBmp(data, size, canvas);
    } catch (const std::bad_alloc&) {
        ok = false; // GDI+ reports a picture it has no memory for as one it cannot decode; so does this
    }
    if (!ok) {
        if (error) *error = kUndecodable;
        return false;
    }
    image = DecodedImage::fromPixels(canvas.width, canvas.height, std::move(canvas.pixels));
    return true;
}

} // namespace nv
