// Text through GDI+. Each run is drawn once into a transparent 32bppPARGB layer of its own (GDI+ wraps the
// layer's pixels without copying them) and the layer is composited source-over like the pictures around it;
// the scene's text cache keeps the layer for the next render. Anti-aliased greyscale, not ClearType: the
// pixels may end up in a layered window over anything.

#include "renderer/text_painter.h"

#include "core/win32/gdiplus_include.h"
#include "core/win32/gdiplus_session.h"
#include "renderer/win32/fallback_faces.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace nv {
namespace {

namespace gp = Gdiplus::DllExports;

// Points at 96 DPI to pixels.
float emPixels(int points) {
    return float(points) * 96.f / 72.f;
}

struct BrushDelete {
    void operator()(Gdiplus::GpSolidFill* brush) const { gp::GdipDeleteBrush(brush); }
};
struct FontDelete {
    void operator()(Gdiplus::GpFont* font) const { gp::GdipDeleteFont(font); }
};
struct GraphicsDelete {
    void operator()(Gdiplus::GpGraphics* graphics) const { gp::GdipDeleteGraphics(graphics); }
};
struct BitmapDispose {
    void operator()(Gdiplus::GpBitmap* bitmap) const { gp::GdipDisposeImage(bitmap); }
};

// Everything that decides a run's pixels, so that equal keys mean equal layers.
std::wstring cacheKey(const TextRun& run, const Box& area, const Gdiplus::RectF& layout) {
    std::wstring key(run.text);
    key += L'\x1F';
    key += run.font;
    for (int64_t v : {int64_t(run.sizePoints), int64_t(run.bold), int64_t(run.color), int64_t(run.shadow),
                      int64_t(run.shadowColor), int64_t(run.align), area.x0, area.y0, area.x1, area.y1,
                      int64_t(std::lround(layout.X * 16)), int64_t(std::lround(layout.Y * 16)),
                      int64_t(std::lround(layout.Width * 16)), int64_t(std::lround(layout.Height * 16))})
        key += L'\x1F' + std::to_wstring(v);
    return key;
}

} // namespace

// What one render needs to draw text: the string formats and the font families it looked up.
struct TextPainter::Impl {
    Gdiplus::GpStringFormat* formats[3] = {}; // by alignment
    std::vector<std::pair<std::wstring, Gdiplus::GpFontFamily*>> families;
    bool ready = false;

    ~Impl() {
        for (auto& entry : families)
            if (entry.second) gp::GdipDeleteFontFamily(entry.second);
        for (Gdiplus::GpStringFormat* format : formats)
            if (format) gp::GdipDeleteStringFormat(format);
    }

    bool open() {
        if (ready) return true;
        if (!GdiplusSession::active()) return false;
        const Gdiplus::StringAlignment alignments[3] = {
            Gdiplus::StringAlignmentNear, Gdiplus::StringAlignmentCenter, Gdiplus::StringAlignmentFar};
        for (int i = 0; i < 3; ++i) {
            if (gp::GdipCreateStringFormat(Gdiplus::StringFormatFlagsNoWrap, LANG_NEUTRAL, &formats[i]) !=
                Gdiplus::Ok)
                return false;
            gp::GdipSetStringFormatAlign(formats[i], alignments[i]);
            gp::GdipSetStringFormatLineAlign(formats[i], Gdiplus::StringAlignmentCenter);
            gp::GdipSetStringFormatTrimming(formats[i], Gdiplus::StringTrimmingEllipsisCharacter);
        }
        ready = true;
        return true;
    }

    // The named face, else the first of the common UI faces the system has, else its generic sans serif, else
    // whatever the system itself writes with (fallbackFaces): a text is drawn whenever any usable font is
    // installed. Looked up once per face and render.
    Gdiplus::GpFontFamily* family(std::wstring_view name) {
        for (auto& entry : families)
            if (entry.first == name) return entry.second;
        const std::wstring face(name);
        Gdiplus::GpFontFamily* found = nullptr;
        auto open = [&found](const wchar_t* candidate) {
            if (*candidate && gp::GdipCreateFontFamilyFromName(candidate, nullptr, &found) == Gdiplus::Ok &&
                found)
                return true;
            found = nullptr;
            return false;
        };
        bool opened = false;
        for (const wchar_t* candidate :
             {face.c_str(), L"Tahoma", L"Segoe UI", L"Arial", L"Microsoft Sans Serif"})
            if ((opened = open(candidate))) break;
        if (!opened && (gp::GdipGetGenericFontFamilySansSerif(&found) != Gdiplus::Ok || !found)) {
            found = nullptr;
            for (const std::wstring& candidate : fallbackFaces())
                if (open(candidate.c_str())) break;
        }
        families.emplace_back(face, found);
        return found;
    }

    std::unique_ptr<Gdiplus::GpFont, FontDelete> font(const TextRun& run) {
        Gdiplus::GpFontFamily* fontFamily = family(run.font);
        if (!fontFamily) return nullptr;
        Gdiplus::GpFont* made = nullptr;
        const INT style = run.bold ? Gdiplus::FontStyleBold : Gdiplus::FontStyleRegular;
        if (gp::GdipCreateFont(fontFamily, emPixels(run.sizePoints), style, Gdiplus::UnitPixel, &made) !=
            Gdiplus::Ok) {
            // A face without a bold cut still draws, regular.
            made = nullptr;
            if (gp::GdipCreateFont(fontFamily, emPixels(run.sizePoints), Gdiplus::FontStyleRegular,
                                   Gdiplus::UnitPixel, &made) != Gdiplus::Ok)
                made = nullptr;
        }
        return std::unique_ptr<Gdiplus::GpFont, FontDelete>(made);
    }

    // Draws the run (its shadow first) into the layer; layout is in the layer's own pixels.
    bool drawInto(const TextRun& run, TextCache::Layer& layer, const Gdiplus::RectF& layout) {
        if (!open()) return false;
        auto gpFont = font(run);
        if (!gpFont) return false;
        const int width = int(layer.area.x1 - layer.area.x0), height = int(layer.area.y1 - layer.area.y0);
        Gdiplus::GpBitmap* bitmap = nullptr;
        if (gp::GdipCreateBitmapFromScan0(width, height, width * 4, PixelFormat32bppPARGB,
                                          reinterpret_cast<BYTE*>(layer.pixels.data()),
                                          &bitmap) != Gdiplus::Ok)
            return false;
        std::unique_ptr<Gdiplus::GpBitmap, BitmapDispose> ownedBitmap(bitmap);
        Gdiplus::GpGraphics* graphics = nullptr;
        if (gp::GdipGetImageGraphicsContext(bitmap, &graphics) != Gdiplus::Ok) return false;
        std::unique_ptr<Gdiplus::GpGraphics, GraphicsDelete> ownedGraphics(graphics);
        gp::GdipSetPageUnit(graphics, Gdiplus::UnitPixel);
        gp::GdipSetCompositingMode(graphics, Gdiplus::CompositingModeSourceOver);
        gp::GdipSetTextRenderingHint(graphics, Gdiplus::TextRenderingHintAntiAliasGridFit);
        Gdiplus::GpStringFormat* format = formats[std::clamp(run.align, 0, 2)];
        auto draw = [&](uint32_t color, float offset) {
            Gdiplus::GpSolidFill* made = nullptr;
            if (gp::GdipCreateSolidFill(Gdiplus::ARGB(color), &made) != Gdiplus::Ok) return;
            std::unique_ptr<Gdiplus::GpSolidFill, BrushDelete> brush(made);
            Gdiplus::RectF rect(layout.X + offset, layout.Y + offset, layout.Width, layout.Height);
            gp::GdipDrawString(graphics, run.text.data(), INT(run.text.size()), gpFont.get(), &rect, format,
                               reinterpret_cast<Gdiplus::GpBrush*>(brush.get()));
        };
        if (run.shadow) draw(run.shadowColor, 1.f);
        draw(run.color, 0.f);
        gp::GdipFlush(graphics, Gdiplus::FlushIntentionSync);
        return true;
    }
};

TextPainter::TextPainter(Canvas& canvas, TextCache* cache) : canvas_(canvas), cache_(cache) {}
TextPainter::~TextPainter() = default;

void TextPainter::draw(const TextRun& run) {
    if (run.text.empty() || run.box.x1 <= run.box.x0) return;
    const float em = emPixels(run.sizePoints);
    // Vertically the layout box is stretched around the control's centre line: the line stays centred, and
    // descenders or accents that reach past a tight control are not cut off.
    const double centre = (double(run.box.y0) + double(run.box.y1)) / 2.0;
    const double half = std::max((double(run.box.y1) - double(run.box.y0)) / 2.0, double(em) * 1.5);
    const int64_t top = int64_t(std::floor(centre - half)), bottom = int64_t(std::ceil(centre + half));
    // The layer: the layout box and the shadow's extra pixel, inside the window.
    const Box area = Box{run.box.x0, top, run.box.x1 + 1, bottom + 1}.intersect(canvas_.bounds());
    if (area.empty()) return;
    const Gdiplus::RectF layout(float(run.box.x0 - area.x0), float(centre - half - double(area.y0)),
                                float(run.box.x1 - run.box.x0), float(2 * half));
    const std::wstring key = cacheKey(run, area, layout);

    std::shared_ptr<const TextCache::Layer> layer;
    if (!cache_ || !cache_->find(key, layer)) {
        auto drawn = std::make_shared<TextCache::Layer>();
        drawn->area = area;
        drawn->pixels.assign(size_t(area.x1 - area.x0) * size_t(area.y1 - area.y0), 0);
        if (!impl_) impl_ = std::make_unique<Impl>();
        if (!impl_->drawInto(run, *drawn, layout)) return;
        layer = drawn;
        if (cache_) cache_->put(key, layer);
    }
    drawLayer(canvas_, layer->pixels.data(), layer->area);
}

bool TextPainter::available() {
    return true;
}

} // namespace nv
