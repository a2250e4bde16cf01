#pragma once
// The drawing toolkit: the ten fonts, plain fills, anti-aliased rounded shapes and line icons through GDI+,
// text drawing and measuring, and premultiplied pixels scaled into a rectangle.

#include "ui/icons.h"
#include "ui/layout.h"
#include "ui/style.h"
#include "core/win32/gdi.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace nv::ui::win {

using nv::win::BrushPtr;
using nv::win::GdiObject;
using nv::win::GraphicsPtr;
using nv::win::ImagePtr;
using nv::win::MemoryDC;
using nv::win::paintBuffered;
using nv::win::PathPtr;
using nv::win::PenPtr;
using nv::win::SavedDC;
using nv::win::SelectIn;
using nv::win::WindowDC;
namespace gp = Gdiplus::DllExports;

// The fonts of the UI, created for one DPI; a face that cannot be created falls back to Tahoma.
class FontSet {
public:
    void create(int dpi);
    HFONT get(int font) const {
        return fonts_[static_cast<size_t>(font >= 0 && font < kFontCount ? font : 0)].get();
    }
    // The text height of a font (ascent plus descent), measured once.
    int textHeight(int font) const {
        return heights_[static_cast<size_t>(font >= 0 && font < kFontCount ? font : 0)];
    }

private:
    std::array<GdiObject<HFONT>, kFontCount> fonts_;
    std::array<int, kFontCount> heights_{};
};

// Text measured with the real fonts, for the layout.
class GdiMeasure : public TextMeasure {
public:
    GdiMeasure(HDC dc, const FontSet& fonts) : dc_(dc), fonts_(fonts) {}
    int width(std::wstring_view text, int font) const override;
    int lineHeight(int font) const override { return fonts_.textHeight(font); }
    int wrappedHeight(std::wstring_view text, int font, int width) const override;

private:
    HDC dc_;
    const FontSet& fonts_;
};

RECT toRECT(const Rect& r);

void fillRect(HDC dc, const Rect& rect, Rgb color);
void fillRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, int alpha = 255);
void strokeRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, float penWidth, int alpha = 255);
// A dashed outline, for the drop area.
void strokeDashedRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, float penWidth);
void fillEllipse(HDC dc, const Rect& rect, Rgb color);
// An open arc (degrees, clockwise from three o'clock), for the busy spinner.
void strokeArc(HDC dc, const Rect& rect, float startDegrees, float sweepDegrees, Rgb color, float penWidth);

// DrawTextW with the font selected and a transparent background; the old font comes back. DT_NOPREFIX is
// always added: the texts are the system's own, an ampersand in a path is not a mnemonic.
void drawText(HDC dc, std::wstring_view text, const Rect& rect, HFONT font, Rgb color, UINT flags);
SIZE measureText(HDC dc, std::wstring_view text, HFONT font, UINT flags, int wrapWidth = 0);

// A 24 x 24 icon path stroked into the largest centred square of the rectangle.
void drawIcon(HDC dc, const Rect& rect, Icon icon, Rgb color, float strokeWidth);

// width x height premultiplied ARGB pixels scaled (keeping their aspect) into the rectangle and blended over
// what is there.
void drawPixels(HDC dc, const Rect& rect, int width, int height, const uint32_t* pixels);

} // namespace nv::ui::win
