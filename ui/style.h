#pragma once
// The builder's look in numbers: colours, the blend between two of them, DPI scaling and the font set.
// Portable, so that the arithmetic is tested natively; the Windows painter turns these into GDI objects.

#include <cstdint>

namespace nv::ui {

// Laid out like a Win32 COLORREF (0x00BBGGRR), so a value passes to GDI unchanged.
using Rgb = uint32_t;

constexpr Rgb rgb(int r, int g, int b) {
    return Rgb(r & 0xFF) | (Rgb(g & 0xFF) << 8) | (Rgb(b & 0xFF) << 16);
}
constexpr int red(Rgb c) {
    return int(c & 0xFF);
}
constexpr int green(Rgb c) {
    return int((c >> 8) & 0xFF);
}
constexpr int blue(Rgb c) {
    return int((c >> 16) & 0xFF);
}

// Each channel a + (b - a) * percent / 100, truncated toward zero.
Rgb blend(Rgb a, Rgb b, int percent);

// 0xAARRGGBB for GDI+.
constexpr uint32_t argb(Rgb c, int alpha = 255) {
    return (uint32_t(alpha & 0xFF) << 24) | (uint32_t(red(c)) << 16) | (uint32_t(green(c)) << 8) |
           uint32_t(blue(c));
}

namespace color {
constexpr Rgb kPage = rgb(0xF7, 0xFA, 0xF8);
constexpr Rgb kText = rgb(0x12, 0x1C, 0x16);
constexpr Rgb kSecondary = rgb(0x4D, 0x5D, 0x53);
constexpr Rgb kMuted = rgb(0x84, 0x94, 0x8A);
constexpr Rgb kAccent = rgb(0x0F, 0x62, 0x33);
constexpr Rgb kError = rgb(0x9E, 0x2A, 0x2B);
constexpr Rgb kHairline = rgb(0xE2, 0xE8, 0xE4);
constexpr Rgb kChip = rgb(0xEE, 0xF2, 0xEF);
constexpr Rgb kThumb = rgb(0xCD, 0xD7, 0xD0);
constexpr Rgb kThumbActive = rgb(0x1C, 0x8A, 0x4B);
constexpr Rgb kWhite = rgb(0xFF, 0xFF, 0xFF);
// Tints of the accent for selected and finished things, and the drop area's dashed edge.
constexpr Rgb kAccentSoft = rgb(0xE8, 0xF3, 0xEC);
constexpr Rgb kAccentTint = rgb(0xD7, 0xEB, 0xDF);
constexpr Rgb kErrorTint = rgb(0xF6, 0xE4, 0xE4);
constexpr Rgb kDropEdge = rgb(0xB9, 0xC8, 0xBE);
constexpr Rgb kDropFill = rgb(0xFB, 0xFD, 0xFC);
// What does not stop a build but leaves the patcher short of something (an address it cannot use), and a
// result that the settings have moved on from.
constexpr Rgb kWarning = rgb(0x9A, 0x5C, 0x00);
constexpr Rgb kWarningTint = rgb(0xFA, 0xEE, 0xD7);
// The edit controls' text and the static (disabled) background.
constexpr Rgb kEditText = kText;
constexpr Rgb kStaticText = kMuted;
} // namespace color

// MulDiv(length, dpi, 96): rounded to the nearest pixel, halves away from zero. A dpi of 0 or less counts
// as 96.
int scaleLength(int length, int dpi);

// The ten fonts, by role.
enum Font : int {
    kFontBody = 0,       // Segoe UI 13
    kFontBodyBold = 1,   // Segoe UI 13 semibold
    kFontSmall = 2,      // Segoe UI 12
    kFontSmallBold = 3,  // Segoe UI 12 semibold
    kFontTiny = 4,       // Segoe UI 11
    kFontPageTitle = 5,  // Segoe UI 21 semibold
    kFontStateTitle = 6, // Segoe UI 16 semibold
    kFontCardTitle = 7,  // Segoe UI 14 semibold
    kFontMono = 8,       // Consolas 12
    kFontBrand = 9,      // Segoe UI 18 semibold
    kFontCount = 10
};

struct FontSpec {
    const wchar_t* face;
    int pixels; // at 96 DPI
    int weight;
};

const FontSpec& fontSpec(int font);

// Used when a face cannot be created.
constexpr const wchar_t* kFallbackFace = L"Tahoma";

} // namespace nv::ui
