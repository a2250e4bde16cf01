#include "packager/icon.h"

#include "core/byte_order.h"
#include "core/text.h"

#include <algorithm>

namespace nv {
namespace {

constexpr size_t kIcoHeader = 6;
constexpr size_t kIcoEntry = 16;

// The square canvas of the conversion, read in place: the picture centred, transparent around it. Building it
// would cost side x side pixels for a picture of 8192 x 1.
struct CenteredCanvas {
    const DecodedImage& image;
    int side, left, top;

    uint32_t at(int x, int y) const {
        x -= left;
        y -= top;
        if (x < 0 || y < 0 || x >= image.width || y >= image.height) return 0;
        return image.at(x, y);
    }
};

template <typename Source>
std::vector<uint32_t> boxAverage(const Source& source, int sourceWidth, int sourceHeight, int width,
                                 int height) {
    std::vector<uint32_t> out(size_t(width) * size_t(height), 0);
    for (int y = 0; y < height; ++y) {
        int y0 = int(int64_t(y) * sourceHeight / height);
        int y1 = std::max(int(int64_t(y + 1) * sourceHeight / height), y0 + 1);
        y1 = std::min(y1, sourceHeight);
        for (int x = 0; x < width; ++x) {
            int x0 = int(int64_t(x) * sourceWidth / width);
            int x1 = std::max(int(int64_t(x + 1) * sourceWidth / width), x0 + 1);
            x1 = std::min(x1, sourceWidth);
            uint64_t a = 0, r = 0, g = 0, b = 0, n = 0;
            for (int sy = y0; sy < y1; ++sy)
                for (int sx = x0; sx < x1; ++sx) {
                    uint32_t p = source.at(sx, sy);
                    a += p >> 24;
                    r += (p >> 16) & 0xFF;
                    g += (p >> 8) & 0xFF;
                    b += p & 0xFF;
                    ++n;
                }
            if (n == 0) continue;
            out[size_t(y) * size_t(width) + size_t(x)] =
                uint32_t(a / n) << 24 | uint32_t(r / n) << 16 | uint32_t(g / n) << 8 | uint32_t(b / n);
        }
    }
    return out;
}

uint8_t straight(uint32_t colour, uint32_t alpha) {
    if (alpha == 0 || alpha == 255) return uint8_t(colour);
    return uint8_t(std::min<uint32_t>(colour * 255 / alpha, 255));
}

// One icon image: BITMAPINFOHEADER, colour rows bottom-up as blue, green, red, alpha, then an all-zero mask.
Bytes iconBitmap(const std::vector<uint32_t>& pixels, int side) {
    const uint32_t maskRow = uint32_t((side + 31) / 32) * 4;
    const uint32_t imageSize = 4 * uint32_t((side + 31) / 32 + side) * uint32_t(side);
    Bytes out;
    out.reserve(40 + imageSize);
    appendLe32(out, 40);
    appendLe32(out, uint32_t(side));
    appendLe32(out, uint32_t(side) * 2);
    appendLe16(out, 1);
    appendLe16(out, 32);
    appendLe32(out, 0);
    appendLe32(out, imageSize);
    for (int i = 0; i < 4; ++i)
        appendLe32(out, 0);
    for (int y = side - 1; y >= 0; --y)
        for (int x = 0; x < side; ++x) {
            uint32_t p = pixels[size_t(y) * size_t(side) + size_t(x)];
            uint32_t a = p >> 24;
            out.push_back(straight(p & 0xFF, a));
            out.push_back(straight((p >> 8) & 0xFF, a));
            out.push_back(straight((p >> 16) & 0xFF, a));
            out.push_back(uint8_t(a));
        }
    out.resize(out.size() + size_t(maskRow) * size_t(side), 0);
    return out;
}

} // namespace

bool isIcoHeader(const Bytes& ico) {
    return ico.size() >= 22 && readLe16(&ico[0]) == 0 && readLe16(&ico[2]) == 1 && readLe16(&ico[4]) != 0;
}

bool readIcoDirectory(const Bytes& ico, std::vector<IcoEntry>& entries, std::wstring& message) {
    entries.clear();
    if (!isIcoHeader(ico)) {
        message = L"İkon dosyası geçersiz.";
        return false;
    }
    const size_t count = readLe16(&ico[4]);
    if (kIcoHeader + kIcoEntry * count > ico.size()) {
        message = L"İkon dosyası bozuk.";
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* e = &ico[kIcoHeader + kIcoEntry * i];
        IcoEntry entry{
            e[0], e[1], e[2], e[3], readLe16(e + 4), readLe16(e + 6), readLe32(e + 8), readLe32(e + 12)};
        uint64_t end = uint64_t(entry.offset) + entry.byteSize;
        if (entry.byteSize == 0 || end > 0xFFFFFFFFu || end > ico.size()) {
            entries.clear();
            message = L"İkon dosyası bozuk.";
            return false;
        }
        entries.push_back(entry);
    }
    return true;
}

Bytes iconGroupResource(const std::vector<IcoEntry>& entries) {
    Bytes out;
    out.reserve(6 + 14 * entries.size());
    appendLe16(out, 0);
    appendLe16(out, 1);
    appendLe16(out, uint32_t(entries.size()));
    for (size_t i = 0; i < entries.size(); ++i) {
        const IcoEntry& e = entries[i];
        out.push_back(e.width);
        out.push_back(e.height);
        out.push_back(e.colorCount);
        out.push_back(0);
        appendLe16(out, e.planes ? e.planes : 1);
        appendLe16(out, e.bitCount ? e.bitCount : 32);
        appendLe32(out, e.byteSize);
        appendLe16(out, uint32_t(i + 1));
    }
    return out;
}

DecodedImage resampleBox(const DecodedImage& source, int width, int height) {
    if (width <= 0 || height <= 0) return DecodedImage();
    if (source.empty()) {
        DecodedImage blank =
            DecodedImage::fromPixels(width, height, std::vector<uint32_t>(size_t(width) * height));
        blank.hasTransparency = true;
        return blank;
    }
    DecodedImage out = DecodedImage::fromPixels(
        width, height, boxAverage(source, source.width, source.height, width, height));
    out.hasTransparency = true;
    return out;
}

bool imageToIco(const uint8_t* data, size_t size, Bytes& ico, std::wstring& message) {
    DecodedImage image;
    if (!decodeImage(data, size, image, &message)) return false;
    const int side = std::max(image.width, image.height);
    const CenteredCanvas canvas{image, side, (side - image.width) / 2, (side - image.height) / 2};

    std::vector<Bytes> bitmaps;
    for (int s : kIconSizes)
        bitmaps.push_back(iconBitmap(boxAverage(canvas, side, side, s, s), s));

    ico.clear();
    appendLe16(ico, 0);
    appendLe16(ico, 1);
    appendLe16(ico, uint32_t(bitmaps.size()));
    uint32_t offset = uint32_t(kIcoHeader + kIcoEntry * bitmaps.size());
    for (size_t i = 0; i < bitmaps.size(); ++i) {
        const uint8_t dimension = uint8_t(kIconSizes[i] == 256 ? 0 : kIconSizes[i]);
        ico.push_back(dimension);
        ico.push_back(dimension);
        ico.push_back(0);
        ico.push_back(0);
        appendLe16(ico, 1);
        appendLe16(ico, 32);
        appendLe32(ico, uint32_t(bitmaps[i].size()));
        appendLe32(ico, offset);
        offset += uint32_t(bitmaps[i].size());
    }
    for (const Bytes& bitmap : bitmaps)
        ico.insert(ico.end(), bitmap.begin(), bitmap.end());
    return true;
}

bool readIconFile(const std::wstring& path, Bytes& icoBytes, DecodedImage& preview, bool& previewDecoded,
                  std::wstring& message) {
    Bytes bytes;
    if (!readFileBytes(path, bytes, kMaxIconFile)) {
        message = L"Simge okunamadı.";
        return false;
    }
    Bytes ico;
    if (endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".ico")) && isIcoHeader(bytes)) {
        ico = std::move(bytes);
    } else {
        std::wstring reason;
        if (!imageToIco(bytes.data(), bytes.size(), ico, reason)) {
            message = L"Simge dönüştürülemedi: " + reason;
            return false;
        }
    }
    DecodedImage decoded;
    previewDecoded = decodeImage(ico.data(), ico.size(), decoded, nullptr);
    preview = previewDecoded ? decoded : DecodedImage();
    icoBytes = std::move(ico);
    return true;
}

} // namespace nv
