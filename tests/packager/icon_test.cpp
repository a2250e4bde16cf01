#include "packager/icon.h"

#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

uint32_t get32(const Bytes& b, size_t at) {
    return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 3]) << 24;
}

Bytes convert(const Bytes& picture) {
    Bytes ico;
    std::wstring message;
    EXPECT_TRUE(imageToIco(picture.data(), picture.size(), ico, message));
    return ico;
}

// Pixel (x, y from the top) of image i of a converted icon, as its bytes blue, green, red, alpha read
// little-endian.
uint32_t iconPixel(const Bytes& ico, int i, int x, int y) {
    const size_t image = get32(ico, 6 + 16 * i + 12);
    const int side = int(get32(ico, image + 4));
    return get32(ico, image + 40 + 4 * (size_t(side - 1 - y) * side + x));
}

TEST(ImageToIco, SixBitmapsBackToBack) {
    const Bytes ico = convert(test::makePng(300, 100, 0xFF336699));
    ASSERT_EQ(get32(ico, 0), 0x00010000u);
    ASSERT_EQ(get32(ico, 4) & 0xFFFF, 6u);
    uint32_t offset = 102;
    for (int i = 0; i < 6; ++i) {
        const uint32_t s = uint32_t(kIconSizes[i]), imageSize = 4 * ((s + 31) / 32 + s) * s;
        const size_t e = 6 + 16 * size_t(i);
        EXPECT_EQ(get32(ico, e), s == 256 ? 0u : s | s << 8) << s; // width, height, no palette, reserved
        EXPECT_EQ(get32(ico, e + 4), 0x00200001u);                 // one plane, 32 bits
        EXPECT_EQ(get32(ico, e + 8), 40 + imageSize);
        EXPECT_EQ(get32(ico, e + 12), offset);
        const uint32_t header[10] = {40, s, 2 * s, 0x00200001u, 0, imageSize, 0, 0, 0, 0};
        for (int f = 0; f < 10; ++f)
            EXPECT_EQ(get32(ico, offset + 4 * f), header[f]) << s << ", field " << f;
        const auto mask = ico.begin() + offset + 40 + 4 * s * s;
        EXPECT_TRUE(std::all_of(mask, mask + 4 * ((s + 31) / 32) * s, [](uint8_t b) { return b == 0; })) << s;
        offset += 40 + imageSize;
    }
    EXPECT_EQ(ico.size(), offset);
}

// A wide picture lies in the middle rows of its square, a tall one in the middle columns; boxes that straddle
// its edge average it with the transparent padding; colours go out with straight alpha.
TEST(ImageToIco, CentredAveragedAndUnpremultiplied) {
    const Bytes wide = convert(test::makePng(48, 16, 0xFFFF0000));
    const Bytes tall = convert(test::makePng(16, 48, 0xFFFF0000));
    const struct {
        int image, row;
        uint32_t pixel;
    } rows[] = {
        {2, 15, 0}, {2, 16, 0xFFFF0000}, {2, 31, 0xFFFF0000}, {2, 32, 0}, // 48: one to one
        {4, 7, 0},  {4, 8, 0xFFFF0000},  {4, 16, 0},                      // 24: two by two
        {5, 4, 0},  {5, 5, 0xAAFF0000},  {5, 6, 0xFFFF0000},  {5, 11, 0}, // 16: three by three, 2 of 3 opaque
    };
    for (const auto& r : rows) {
        EXPECT_EQ(iconPixel(wide, r.image, 3, r.row), r.pixel) << "image " << r.image << " row " << r.row;
        EXPECT_EQ(iconPixel(tall, r.image, r.row, 3), r.pixel) << "image " << r.image << " column " << r.row;
    }
    // Red 128 at alpha 128 decodes as premultiplied 64, which goes out as 64 * 255 / 128 = 127. In the 48 x
    // 48 image every pixel of the 3 x 3 square is a 16 x 16 block.
    const Bytes ico = convert(test::makePng(3, 1, {0x80800000, 0xFF112233, 0x00FFFFFF}));
    EXPECT_EQ(iconPixel(ico, 2, 8, 24), 0x807F0000u);
    EXPECT_EQ(iconPixel(ico, 2, 24, 24), 0xFF112233u);
    EXPECT_EQ(iconPixel(ico, 2, 40, 24), 0u);
}

TEST(IcoDirectory, ChecksAndTheGroupBuiltFromIt) {
    auto ico = [](std::initializer_list<uint8_t> head, size_t size) {
        Bytes b(head);
        b.resize(size, 0xAB);
        return b;
    };
    // header, then entries of width, height, colours, reserved, planes, bits, byte size, offset
    const Bytes good = ico({0, 0, 1, 0,  2,  0,  0, 0, 0, 7, 0, 0, 0, 0, 2, 0,  0, 0, 38,
                            0, 0, 0, 32, 24, 16, 0, 2, 0, 8, 0, 1, 0, 0, 0, 39, 0, 0, 0},
                           40);
    const std::wstring bad = L"İkon dosyası geçersiz.", broken = L"İkon dosyası bozuk.";
    const std::pair<Bytes, std::wstring> cases[] = {
        {ico({0, 0, 1, 0, 1, 0}, 21), bad},
        {ico({0, 0, 1, 0, 0, 0}, 40), bad},    // no images
        {ico({0, 0, 2, 0, 1, 0}, 40), bad},    // a cursor
        {ico({0, 0, 1, 0, 2, 0}, 37), broken}, // the directory runs past the end
        {ico({0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 4, 0, 0, 0, 22, 0, 0, 0}, 22), broken},
        {ico({0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 0, 0, 0, 0, 22, 0, 0, 0}, 30),
         broken}, // empty image
        {ico({0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 16, 0, 0, 0, 0xF8, 0xFF, 0xFF, 0xFF}, 40), broken},
        {good, L""},
    };
    for (const auto& [bytes, message] : cases) {
        std::vector<IcoEntry> entries;
        std::wstring said;
        EXPECT_EQ(readIcoDirectory(bytes, entries, said), message.empty());
        EXPECT_EQ(said, message);
        EXPECT_EQ(entries.size(), message.empty() ? 2u : 0u);
        if (!message.empty()) continue;
        // Planes 0 and bit count 0 are written as 1 and 32, the reserved byte as 0, the images numbered
        // from 1.
        EXPECT_EQ(iconGroupResource(entries), (Bytes{0, 0, 1, 0,  2,  0,  0, 0, 0, 0, 1, 0, 32, 0, 2, 0, 0,
                                                     0, 1, 0, 32, 24, 16, 0, 2, 0, 8, 0, 1, 0,  0, 0, 2, 0}));
    }
}

TEST(ReadIconFile, IcoKeptPicturesConvertedFailuresChangeNothing) {
    test::TempDir dir;
    const Bytes ico = convert(test::makePng(20, 20, 0xFF00FF00)), png = test::makePng(10, 30, 0xFF0000FF);
    test::writeFile(dir.file(L"kept.ICO"), ico);
    test::writeFile(dir.file(L"picture.ico"), png); // named .ico but a PNG inside
    test::writeFile(dir.file(L"junk.png"), "junk");
    const std::tuple<const wchar_t*, Bytes, std::wstring> cases[] = {
        {L"kept.ICO", ico, L""},
        {L"picture.ico", convert(png), L""},
        {L"missing.png", {}, L"Simge okunamadı."},
        {L"junk.png", {}, L"Simge dönüştürülemedi: Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF)."},
    };
    for (const auto& [name, expected, message] : cases) {
        Bytes icoBytes = test::bytesOf("previous");
        DecodedImage preview;
        bool decoded = false;
        std::wstring said;
        EXPECT_EQ(readIconFile(dir.file(name), icoBytes, preview, decoded, said), message.empty());
        EXPECT_EQ(said, message);
        EXPECT_EQ(icoBytes, message.empty() ? expected : test::bytesOf("previous"));
    }
}

} // namespace
} // namespace nv
