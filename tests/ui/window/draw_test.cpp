// The drawing toolkit on a real GDI surface: where icons, rounded shapes and scaled pixels land.

#include "ui/win32/draw.h"

#include <gtest/gtest.h>

#include <vector>

namespace nv::ui::win {
namespace {

// A white 32-bit top-down DIB section selected into a memory DC.
class Surface {
public:
    Surface(int width, int height) : width_(width), height_(height), dc_(nullptr) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        bitmap_.reset(CreateDIBSection(dc_.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        bits_ = static_cast<uint32_t*>(bits);
        select_ = std::make_unique<SelectIn>(dc_.get(), bitmap_.get());
        fillRect(dc_.get(), {0, 0, width, height}, color::kWhite);
        GdiFlush();
    }
    HDC dc() const { return dc_.get(); }
    // The pixel as an Rgb (COLORREF layout).
    Rgb at(int x, int y) const {
        GdiFlush();
        const uint32_t p = bits_[y * width_ + x];
        return rgb((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
    }
    bool white(int x, int y) const { return at(x, y) == color::kWhite; }

private:
    int width_, height_;
    MemoryDC dc_;
    GdiObject<HBITMAP> bitmap_;
    uint32_t* bits_ = nullptr;
    std::unique_ptr<SelectIn> select_;
};

TEST(DrawToolkit, IconsLandInTheirCentredSquare) {
    // Minus is the line (6,12)-(18,12); in a 48 x 24 rectangle at scale 1 it moves 12 px right.
    Surface surface(48, 24);
    drawIcon(surface.dc(), {0, 0, 48, 24}, Icon::Minus, color::kText, 2.0f);
    EXPECT_FALSE(surface.white(24, 12));
    EXPECT_FALSE(surface.white(19, 12)); // 12 + 6 + a hair of the round cap
    EXPECT_TRUE(surface.white(14, 12));  // left of where the line starts
    EXPECT_TRUE(surface.white(24, 4));
    EXPECT_TRUE(surface.white(24, 20));

    // Plus at scale 2: its vertical stroke runs down the middle of the 48 px square.
    Surface big(48, 48);
    drawIcon(big.dc(), {0, 0, 48, 48}, Icon::Plus, color::kAccent, 2.0f);
    EXPECT_EQ(big.at(24, 14), color::kAccent);
    EXPECT_EQ(big.at(14, 24), color::kAccent);
    EXPECT_TRUE(big.white(14, 14));
}

TEST(DrawToolkit, RoundedFillsKeepTheirCornersAndEdges) {
    Surface surface(40, 30);
    fillRoundRect(surface.dc(), {0, 0, 40, 30}, 10, color::kAccent);
    EXPECT_TRUE(surface.white(0, 0)); // the corner is cut
    EXPECT_TRUE(surface.white(39, 29));
    EXPECT_EQ(surface.at(20, 0), color::kAccent); // the straight edges reach the rectangle's edge
    EXPECT_EQ(surface.at(0, 15), color::kAccent);
    EXPECT_EQ(surface.at(39, 15), color::kAccent);
    EXPECT_EQ(surface.at(20, 29), color::kAccent);

    // A 1 px outline stays inside the rectangle and leaves the inside alone.
    Surface outline(40, 30);
    strokeRoundRect(outline.dc(), {5, 5, 35, 25}, 0, color::kText, 1.0f);
    EXPECT_EQ(outline.at(20, 5), color::kText);
    EXPECT_EQ(outline.at(34, 15), color::kText);
    EXPECT_TRUE(outline.white(20, 4));
    EXPECT_TRUE(outline.white(35, 15));
    EXPECT_TRUE(outline.white(20, 15));
}

TEST(DrawToolkit, PixelsFitTheRectangleWithoutGrowing) {
    // A 4 x 2 opaque red picture in a 20 x 20 rectangle: drawn at its own size, centred.
    std::vector<uint32_t> red(8, 0xFFFF0000u);
    Surface surface(20, 20);
    drawPixels(surface.dc(), {0, 0, 20, 20}, 4, 2, red.data());
    EXPECT_EQ(surface.at(9, 9), rgb(255, 0, 0));
    EXPECT_TRUE(surface.white(9, 5));
    EXPECT_TRUE(surface.white(3, 10));

    // Larger than the rectangle: scaled down to its width, keeping the aspect.
    std::vector<uint32_t> wide(40 * 10, 0xFF0000FFu);
    Surface small(20, 20);
    drawPixels(small.dc(), {0, 0, 20, 20}, 40, 10, wide.data());
    EXPECT_EQ(small.at(10, 10), rgb(0, 0, 255));
    EXPECT_EQ(small.at(1, 10), rgb(0, 0, 255));
    EXPECT_TRUE(small.white(10, 3));
}

TEST(DrawToolkit, FontsAndMeasuring) {
    FontSet fonts;
    fonts.create(96);
    Surface surface(10, 10);
    GdiMeasure measure(surface.dc(), fonts);
    for (int f = 0; f < kFontCount; ++f) {
        EXPECT_NE(fonts.get(f), nullptr) << f;
        EXPECT_GT(fonts.textHeight(f), 0) << f;
    }
    EXPECT_GT(fonts.textHeight(kFontPageTitle), fonts.textHeight(kFontTiny));
    const std::wstring text = L"Skinden okunan değerler doldurulur; değiştirdiğiniz alan exe'ye yazılır.";
    const int oneLine = measure.width(text, kFontSmall);
    EXPECT_GT(oneLine, measure.width(L"Skin", kFontSmall));
    EXPECT_EQ(measure.wrappedHeight(text, kFontSmall, oneLine + 10), fonts.textHeight(kFontSmall));
    EXPECT_GE(measure.wrappedHeight(text, kFontSmall, oneLine / 3), 3 * fonts.textHeight(kFontSmall));

    // Twice the DPI, twice the height (give or take the rounding of the font's metrics).
    FontSet large;
    large.create(192);
    EXPECT_NEAR(large.textHeight(kFontBody), 2 * fonts.textHeight(kFontBody), 2);
}

} // namespace
} // namespace nv::ui::win
