#include "ui/win32/draw.h"

#include "ui/icon_path.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace nv::ui::win {
namespace {

using Gdiplus::GpGraphics;
using Gdiplus::GpPath;
using Gdiplus::REAL;

// A GDI+ surface on the DC for one primitive: anti-aliased, pixel centres at half coordinates.
GraphicsPtr graphicsFor(HDC dc) {
    GpGraphics* graphics = nullptr;
    if (gp::GdipCreateFromHDC(dc, &graphics) != Gdiplus::Ok) return nullptr;
    gp::GdipSetSmoothingMode(graphics, Gdiplus::SmoothingModeAntiAlias);
    gp::GdipSetPixelOffsetMode(graphics, Gdiplus::PixelOffsetModeHalf);
    return GraphicsPtr(graphics);
}

PathPtr roundedPath(REAL left, REAL top, REAL right, REAL bottom, REAL radius) {
    GpPath* path = nullptr;
    if (gp::GdipCreatePath(Gdiplus::FillModeAlternate, &path) != Gdiplus::Ok) return nullptr;
    PathPtr owned(path);
    const REAL width = right - left, height = bottom - top;
    radius = std::min({radius, width / 2, height / 2});
    if (radius <= 0) {
        gp::GdipAddPathRectangle(path, left, top, width, height);
        return owned;
    }
    const REAL d = radius * 2;
    gp::GdipAddPathArc(path, left, top, d, d, 180, 90);
    gp::GdipAddPathArc(path, right - d, top, d, d, 270, 90);
    gp::GdipAddPathArc(path, right - d, bottom - d, d, d, 0, 90);
    gp::GdipAddPathArc(path, left, bottom - d, d, d, 90, 90);
    gp::GdipClosePathFigure(path);
    return owned;
}

BrushPtr solidBrush(Rgb color, int alpha) {
    Gdiplus::GpSolidFill* brush = nullptr;
    gp::GdipCreateSolidFill(argb(color, alpha), &brush);
    return BrushPtr(brush);
}

PenPtr pen(Rgb color, REAL width, int alpha) {
    Gdiplus::GpPen* p = nullptr;
    gp::GdipCreatePen1(argb(color, alpha), width, Gdiplus::UnitPixel, &p);
    return PenPtr(p);
}

} // namespace

void FontSet::create(int dpi) {
    WindowDC screen(nullptr);
    for (int i = 0; i < kFontCount; ++i) {
        const FontSpec& spec = fontSpec(i);
        LOGFONTW lf{};
        lf.lfHeight = -scaleLength(spec.pixels, dpi);
        lf.lfWeight = spec.weight;
        lf.lfCharSet = DEFAULT_CHARSET;
        lf.lfOutPrecision = OUT_TT_PRECIS;
        lf.lfQuality = CLEARTYPE_QUALITY;
        wcsncpy(lf.lfFaceName, spec.face, LF_FACESIZE - 1);
        HFONT font = CreateFontIndirectW(&lf);
        if (!font) {
            wcsncpy(lf.lfFaceName, kFallbackFace, LF_FACESIZE - 1);
            font = CreateFontIndirectW(&lf);
        }
        fonts_[static_cast<size_t>(i)].reset(font);
        TEXTMETRICW metrics{};
        SelectIn select(screen.get(), font);
        heights_[static_cast<size_t>(i)] = GetTextMetricsW(screen.get(), &metrics)
                                               ? metrics.tmHeight
                                               : scaleLength(spec.pixels * 4 / 3, dpi);
    }
}

int GdiMeasure::width(std::wstring_view text, int font) const {
    return measureText(dc_, text, fonts_.get(font), DT_SINGLELINE).cx;
}

int GdiMeasure::wrappedHeight(std::wstring_view text, int font, int width) const {
    const SIZE size = measureText(dc_, text, fonts_.get(font), DT_WORDBREAK, std::max(1, width));
    return std::max<int>(size.cy, fonts_.textHeight(font));
}

RECT toRECT(const Rect& r) {
    return RECT{r.left, r.top, r.right, r.bottom};
}

void fillRect(HDC dc, const Rect& rect, Rgb color) {
    GdiObject<HBRUSH> brush(CreateSolidBrush(color));
    const RECT r = toRECT(rect);
    FillRect(dc, &r, brush.get());
}

void fillRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, int alpha) {
    GraphicsPtr graphics = graphicsFor(dc);
    PathPtr path = roundedPath(REAL(rect.left), REAL(rect.top), REAL(rect.right), REAL(rect.bottom), radius);
    BrushPtr brush = solidBrush(color, alpha);
    if (graphics && path && brush) gp::GdipFillPath(graphics.get(), brush.get(), path.get());
}

void strokeRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, float penWidth, int alpha) {
    // The outline is filled as a ring between the shape and the shape moved in by the pen's width, rather
    // than stroked: GDI+ implementations differ by half a pixel in where a pen with a half-pixel offset
    // falls, while fills land the same everywhere, so a 1 px border stays on the rectangle's own edge pixels.
    GraphicsPtr graphics = graphicsFor(dc);
    PathPtr ring = roundedPath(REAL(rect.left), REAL(rect.top), REAL(rect.right), REAL(rect.bottom), radius);
    PathPtr inner = roundedPath(rect.left + penWidth, rect.top + penWidth, rect.right - penWidth,
                                rect.bottom - penWidth, std::max(0.0f, radius - penWidth));
    BrushPtr brush = solidBrush(color, alpha);
    if (!graphics || !ring || !inner || !brush) return;
    gp::GdipAddPathPath(ring.get(), inner.get(), FALSE);
    gp::GdipFillPath(graphics.get(), brush.get(), ring.get());
}

void strokeDashedRoundRect(HDC dc, const Rect& rect, float radius, Rgb color, float penWidth) {
    const REAL half = penWidth / 2;
    GraphicsPtr graphics = graphicsFor(dc);
    PathPtr path = roundedPath(rect.left + half, rect.top + half, rect.right - half, rect.bottom - half,
                               std::max(0.0f, radius - half));
    PenPtr p = pen(color, penWidth, 255);
    if (!graphics || !path || !p) return;
    const REAL dashes[2] = {4, 3};
    gp::GdipSetPenDashArray(p.get(), dashes, 2);
    gp::GdipDrawPath(graphics.get(), p.get(), path.get());
}

void fillEllipse(HDC dc, const Rect& rect, Rgb color) {
    GraphicsPtr graphics = graphicsFor(dc);
    BrushPtr brush = solidBrush(color, 255);
    if (graphics && brush)
        gp::GdipFillEllipse(graphics.get(), brush.get(), REAL(rect.left), REAL(rect.top), REAL(rect.width()),
                            REAL(rect.height()));
}

void strokeArc(HDC dc, const Rect& rect, float startDegrees, float sweepDegrees, Rgb color, float penWidth) {
    GraphicsPtr graphics = graphicsFor(dc);
    PenPtr p = pen(color, penWidth, 255);
    if (!graphics || !p) return;
    gp::GdipSetPenStartCap(p.get(), Gdiplus::LineCapRound);
    gp::GdipSetPenEndCap(p.get(), Gdiplus::LineCapRound);
    gp::GdipDrawArc(graphics.get(), p.get(), REAL(rect.left), REAL(rect.top), REAL(rect.width()),
                    REAL(rect.height()), startDegrees, sweepDegrees);
}

void drawText(HDC dc, std::wstring_view text, const Rect& rect, HFONT font, Rgb color, UINT flags) {
    if (text.empty()) return;
    SelectIn select(dc, font);
    const int oldMode = SetBkMode(dc, TRANSPARENT);
    const COLORREF oldColor = SetTextColor(dc, color);
    RECT r = toRECT(rect);
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &r, flags | DT_NOPREFIX);
    SetTextColor(dc, oldColor);
    SetBkMode(dc, oldMode);
}

SIZE measureText(HDC dc, std::wstring_view text, HFONT font, UINT flags, int wrapWidth) {
    if (text.empty()) return SIZE{0, 0};
    SelectIn select(dc, font);
    RECT r{0, 0, wrapWidth, 0};
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &r, flags | DT_CALCRECT | DT_NOPREFIX);
    return SIZE{r.right - r.left, r.bottom - r.top};
}

void drawIcon(HDC dc, const Rect& rect, Icon icon, Rgb color, float strokeWidth) {
    const IconPlacement place = placeIcon(rect.width(), rect.height());
    if (place.scale <= 0) return;
    GraphicsPtr graphics = graphicsFor(dc);
    GpPath* raw = nullptr;
    if (!graphics || gp::GdipCreatePath(Gdiplus::FillModeAlternate, &raw) != Gdiplus::Ok) return;
    PathPtr path(raw);
    const double x0 = rect.left + place.offsetX, y0 = rect.top + place.offsetY, k = place.scale;
    auto X = [&](double x) { return REAL(x * k + x0); };
    auto Y = [&](double y) { return REAL(y * k + y0); };
    for (const PathFigure& figure : parseIconPath(iconPath(icon))) {
        gp::GdipStartPathFigure(raw);
        PathPoint at = figure.start;
        for (const PathSegment& s : figure.segments) {
            if (s.cubic)
                gp::GdipAddPathBezier(raw, X(at.x), Y(at.y), X(s.c1.x), Y(s.c1.y), X(s.c2.x), Y(s.c2.y),
                                      X(s.end.x), Y(s.end.y));
            else
                gp::GdipAddPathLine(raw, X(at.x), Y(at.y), X(s.end.x), Y(s.end.y));
            at = s.end;
        }
        if (figure.closed) gp::GdipClosePathFigure(raw);
    }
    PenPtr p = pen(color, REAL(strokeWidth * k), 255);
    if (!p) return;
    gp::GdipSetPenStartCap(p.get(), Gdiplus::LineCapRound);
    gp::GdipSetPenEndCap(p.get(), Gdiplus::LineCapRound);
    gp::GdipSetPenLineJoin(p.get(), Gdiplus::LineJoinRound);
    gp::GdipDrawPath(graphics.get(), p.get(), raw);
}

void drawPixels(HDC dc, const Rect& rect, int width, int height, const uint32_t* pixels) {
    if (!pixels || width <= 0 || height <= 0 || rect.empty()) return;
    Gdiplus::GpBitmap* bitmap = nullptr;
    // GDI+ only reads the pixels here; the cast is its API's, not a write.
    if (gp::GdipCreateBitmapFromScan0(width, height, width * 4, PixelFormat32bppPARGB,
                                      reinterpret_cast<BYTE*>(const_cast<uint32_t*>(pixels)),
                                      &bitmap) != Gdiplus::Ok)
        return;
    ImagePtr image(bitmap);
    GraphicsPtr graphics = graphicsFor(dc);
    if (!graphics) return;
    // Fit inside the rectangle, never enlarged, centred.
    const double scale = std::min({1.0, double(rect.width()) / width, double(rect.height()) / height});
    const REAL w = REAL(width * scale), h = REAL(height * scale);
    const REAL x = REAL(rect.left + (rect.width() - w) / 2), y = REAL(rect.top + (rect.height() - h) / 2);
    gp::GdipSetInterpolationMode(graphics.get(), Gdiplus::InterpolationModeHighQualityBicubic);
    gp::GdipDrawImageRectI(graphics.get(), image.get(), INT(x), INT(y), INT(w + 0.5f), INT(h + 0.5f));
}

} // namespace nv::ui::win
