#include "build/icon.h"

#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

uint16_t get16(const Bytes& b, size_t at) {
    return uint16_t(b[at] | b[at + 1] << 8);
}
uint32_t get32(const Bytes& b, size_t at) {
    return get16(b, at) | uint32_t(get16(b, at + 2)) << 16;
}

Bytes convert(const Bytes& picture) {
    Bytes ico;
    std::wstring message;
    EXPECT_TRUE(imageToIco(picture.data(), picture.size(), ico, message)) << test::fsPath(message).string();
    return ico;
}

// Pixel (x, y from the top) of image i of a converted icon as blue, green, red, alpha.
uint32_t iconPixel(const Bytes& ico, int i, int x, int y) {
    const size_t image = get32(ico, 6 + 16 * i + 12);
    const int side = int(get32(ico, image + 4));
    const size_t at = image + 40 + 4 * (size_t(side - 1 - y) * side + x);
    return get32(ico, at);
}

TEST(ImageToIco, SixBitmapsBackToBack) {
    const Bytes ico = convert(test::makePng(300, 100, 0xFF336699));
    ASSERT_GE(ico.size(), 102u);
    EXPECT_EQ(get16(ico, 0), 0);
    EXPECT_EQ(get16(ico, 2), 1);
    ASSERT_EQ(get16(ico, 4), 6);
    uint32_t offset = 102;
    const int sizes[] = {256, 64, 48, 32, 24, 16};
    for (int i = 0; i < 6; ++i) {
        const size_t e = 6 + 16 * size_t(i);
        const int s = sizes[i];
        const uint32_t imageSize = 4 * uint32_t((s + 31) / 32 + s) * s;
        EXPECT_EQ(ico[e], s == 256 ? 0 : s);
        EXPECT_EQ(ico[e + 1], s == 256 ? 0 : s);
        EXPECT_EQ(ico[e + 2], 0);
        EXPECT_EQ(get16(ico, e + 4), 1);
        EXPECT_EQ(get16(ico, e + 6), 32);
        EXPECT_EQ(get32(ico, e + 8), 40 + imageSize);
        EXPECT_EQ(get32(ico, e + 12), offset);
        // BITMAPINFOHEADER: size, width, twice the height, one plane, 32 bits, no compression, image size.
        EXPECT_EQ(get32(ico, offset), 40u);
        EXPECT_EQ(get32(ico, offset + 4), uint32_t(s));
        EXPECT_EQ(get32(ico, offset + 8), uint32_t(2 * s));
        EXPECT_EQ(get16(ico, offset + 12), 1);
        EXPECT_EQ(get16(ico, offset + 14), 32);
        EXPECT_EQ(get32(ico, offset + 16), 0u);
        EXPECT_EQ(get32(ico, offset + 20), imageSize);
        for (size_t f = 24; f < 40; ++f)
            EXPECT_EQ(ico[offset + f], 0) << "header byte " << f;
        for (size_t m = offset + 40 + 4 * size_t(s) * s; m < offset + 40 + imageSize; ++m)
            ASSERT_EQ(ico[m], 0) << "mask byte of size " << s;
        offset += 40 + imageSize;
    }
    EXPECT_EQ(ico.size(), offset);
}

// A wide picture lies in the middle rows of the square and a tall one in the middle columns; boxes that
// straddle the picture's edge average it with the transparent padding.
TEST(ImageToIco, PicturesAreCentredOnATransparentSquare) {
    const Bytes wide = convert(test::makePng(48, 16, 0xFFFF0000));
    const Bytes tall = convert(test::makePng(16, 48, 0xFFFF0000));
    const uint32_t red = 0xFFFF0000, clear = 0;
    const struct {
        int image, row;
        uint32_t pixel;
    } rows[] = {
        {2, 15, clear},     {2, 16, red},        {2, 31, red}, {2, 32, clear}, // 48: one to one
        {4, 7, clear},      {4, 8, red},         {4, 15, red}, {4, 16, clear}, // 24: two by two
        {5, 4, clear},      {5, 6, red},         {5, 9, red},  {5, 11, clear}, // 16: three by three
        {5, 5, 0xAAFF0000}, {5, 10, 0xAAFF0000},                               // two of three rows opaque
    };
    for (const auto& r : rows) {
        EXPECT_EQ(iconPixel(wide, r.image, 3, r.row), r.pixel)
            << "wide, image " << r.image << " row " << r.row;
        EXPECT_EQ(iconPixel(tall, r.image, r.row, 3), r.pixel)
            << "tall, image " << r.image << " column " << r.row;
    }
}

TEST(ImageToIco, ColoursAreWrittenWithStraightAlpha) {
    // Half-transparent red 128 is decoded as premultiplied red 64; written back it is 64 * 255 / 128 = 127.
    const Bytes ico = convert(test::makePng(3, 1, {0x80800000, 0xFF112233, 0x00FFFFFF}));
    // Image 2 is 48 x 48: each canvas pixel of the 3 x 3 square becomes a 16 x 16 block; the picture is
    // row 1.
    EXPECT_EQ(iconPixel(ico, 2, 8, 24), 0x807F0000u);
    EXPECT_EQ(iconPixel(ico, 2, 24, 24), 0xFF112233u);
    EXPECT_EQ(iconPixel(ico, 2, 40, 24), 0u);
    EXPECT_EQ(iconPixel(ico, 2, 24, 8), 0u);
}

TEST(ImageToIco, UndecodablePicturesKeepTheDecodersMessage) {
    Bytes ico;
    std::wstring message;
    const Bytes junk = test::bytesOf("not a picture at all");
    EXPECT_FALSE(imageToIco(junk.data(), junk.size(), ico, message));
    EXPECT_EQ(message, L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).");
}

TEST(ResampleBox, AveragesEachChannelOverItsBox) {
    const struct {
        int w, h;
        std::vector<uint32_t> pixels;
        int tw, th;
        std::vector<uint32_t> expected;
    } cases[] = {
        // 2 x 2 boxes, integer division per channel.
        {4,
         2,
         {0xFF000000, 0xFF030303, 0x10FFFFFF, 0x00000000, 0xFF000000, 0xFF000000, 0x10FFFFFF, 0x00000001},
         2,
         1,
         {0xFF000000, 0x087F7F7F}},
        // 3 -> 2: the first box holds one column, the second two.
        {3, 1, {0xFF000010, 0xFF000020, 0xFF000031}, 2, 1, {0xFF000010, 0xFF000028}},
        // Growing repeats pixels.
        {2, 1, {0xFF0000FF, 0x80000080}, 4, 1, {0xFF0000FF, 0xFF0000FF, 0x80000080, 0x80000080}},
    };
    for (const auto& c : cases) {
        const DecodedImage out = resampleBox(DecodedImage::fromPixels(c.w, c.h, c.pixels), c.tw, c.th);
        ASSERT_EQ(out.width, c.tw);
        ASSERT_EQ(out.height, c.th);
        EXPECT_EQ(*out.pixels, c.expected);
        EXPECT_TRUE(out.hasTransparency);
    }
}

Bytes icoWith(uint16_t count, std::vector<std::array<uint32_t, 2>> entries, size_t size) {
    Bytes b = {0, 0, 1, 0, uint8_t(count), uint8_t(count >> 8)};
    for (auto [byteSize, offset] : entries) {
        Bytes e = {16, 16, 0, 0, 1, 0, 32, 0};
        for (uint32_t v : {byteSize, offset})
            for (int k = 0; k < 4; ++k)
                e.push_back(uint8_t(v >> (8 * k)));
        b.insert(b.end(), e.begin(), e.end());
    }
    b.resize(std::max(size, b.size()), 0xAB);
    return b;
}

TEST(IcoDirectory, ChecksBeforeTheBuildSplitsTheFile) {
    const std::wstring bad = L"İkon dosyası geçersiz.", broken = L"İkon dosyası bozuk.";
    Bytes wrongType = icoWith(1, {{4, 22}}, 26);
    wrongType[2] = 2;
    Bytes short21 = icoWith(1, {{1, 21}}, 22);
    short21.resize(21);
    const struct {
        const char* what;
        Bytes ico;
        std::wstring message; // empty: accepted
    } cases[] = {
        {"21 bytes", short21, bad},
        {"no images", icoWith(0, {}, 40), bad},
        {"a cursor file", wrongType, bad},
        {"directory longer than the file", icoWith(2, {{1, 21}}, 22), broken},
        {"22 bytes pointing past the end", icoWith(1, {{4, 22}}, 22), broken},
        {"an empty image", icoWith(1, {{0, 22}}, 30), broken},
        {"offset and size overflow", icoWith(1, {{0x10, 0xFFFFFFF8u}}, 40), broken},
        {"the second entry is the bad one", icoWith(2, {{2, 38}, {9, 39}}, 40), broken},
        {"ends exactly at the end", icoWith(2, {{2, 38}, {1, 39}}, 40), L""},
    };
    for (const auto& c : cases) {
        std::vector<IcoEntry> entries;
        std::wstring message;
        bool ok = readIcoDirectory(c.ico, entries, message);
        EXPECT_EQ(ok, c.message.empty()) << c.what;
        EXPECT_EQ(ok ? std::wstring() : message, c.message) << c.what;
        EXPECT_EQ(entries.size(), ok ? 2u : 0u) << c.what;
    }
}

TEST(IcoDirectory, GroupEntriesNumberTheImagesAndFillMissingPlanesAndDepth) {
    std::vector<IcoEntry> entries = {{0, 0, 0, 7, 0, 0, 1000, 38}, {32, 24, 16, 0, 2, 8, 300, 1038}};
    const Bytes group = iconGroupResource(entries);
    const Bytes expected = {0,    0,    1,  0, 2, 0, 0, 0, 0,    0,    1, 0, 32, 0,
                            0xE8, 0x03, 0,  0, 1, 0, // planes 1, 32 bits, id 1
                            32,   24,   16, 0, 2, 0, 8, 0, 0x2C, 0x01, 0, 0, 2,  0}; // as given, id 2
    EXPECT_EQ(group, expected);
}

TEST(ReadIconFile, IcoKeptPicturesConvertedFailuresChangeNothing) {
    test::TempDir dir;
    const Bytes ico = convert(test::makePng(20, 20, 0xFF00FF00));
    const Bytes png = test::makePng(10, 30, 0xFF0000FF);
    test::writeFile(dir.file(L"kept.ICO"), ico);
    test::writeFile(dir.file(L"picture.ico"), png); // named .ico but a PNG inside
    test::writeFile(dir.file(L"picture.png"), png);
    test::writeFile(dir.file(L"junk.png"), test::bytesOf("junk"));

    const Bytes previous = test::bytesOf("previous icon");
    const struct {
        const wchar_t* name;
        bool ok;
        bool keptAsIs;
        std::wstring message;
    } cases[] = {
        {L"kept.ICO", true, true, L""},
        {L"picture.ico", true, false, L""},
        {L"picture.png", true, false, L""},
        {L"missing.png", false, false, L"Simge okunamadı."},
        {L"junk.png", false, false,
         L"Simge dönüştürülemedi: Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF)."},
    };
    for (const auto& c : cases) {
        Bytes icoBytes = previous;
        DecodedImage preview;
        bool decoded = false;
        std::wstring message;
        EXPECT_EQ(readIconFile(dir.file(c.name), icoBytes, preview, decoded, message), c.ok)
            << test::fsPath(c.name).string();
        if (!c.ok) {
            EXPECT_EQ(message, c.message);
            EXPECT_EQ(icoBytes, previous);
            continue;
        }
        if (c.keptAsIs) {
            EXPECT_EQ(icoBytes, ico);
        } else {
            EXPECT_EQ(icoBytes, convert(png));
        }
    }
}

} // namespace
} // namespace nv
