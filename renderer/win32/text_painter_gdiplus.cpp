// Text through GDI+, drawn straight into the renderer's premultiplied pixels: GDI+ wraps the canvas as a
// 32bppPARGB bitmap without copying it, so text composites source-over exactly like the pictures around it.
// Anti-aliased greyscale, not ClearType: the pixels may end up in a layered window over anything.

#include "renderer/text_painter.h"

#include "core/win32/gdiplus_include.h"
#include "core/win32/gdiplus_session.h"

#include <algorithm>
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

} // namespace

struct TextPainter::Impl {
    Gdiplus::GpBitmap* bitmap = nullptr;
    Gdiplus::GpGraphics* graphics = nullptr;
    Gdiplus::GpStringFormat* formats[3] = {}; // by alignment
    std::vector<std::pair<std::wstring, Gdiplus::GpFontFamily*>> families;

    ~Impl() {
        for (auto& entry : families)
            if (entry.second) gp::GdipDeleteFontFamily(entry.second);
        for (Gdiplus::GpStringFormat* format : formats)
            if (format) gp::GdipDeleteStringFormat(format);
        if (graphics) gp::GdipDeleteGraphics(graphics);
        if (bitmap) gp::GdipDisposeImage(bitmap);
    }

    bool open(Canvas& canvas) {
        if (graphics) return true;
        if (!GdiplusSession::active() || canvas.width <= 0 || canvas.height <= 0) return false;
        if (gp::GdipCreateBitmapFromScan0(canvas.width, canvas.height, canvas.width * 4,
                                          PixelFormat32bppPARGB, reinterpret_cast<BYTE*>(canvas.pixels),
                                          &bitmap) != Gdiplus::Ok)
            return false;
        if (gp::GdipGetImageGraphicsContext(bitmap, &graphics) != Gdiplus::Ok) return false;
        gp::GdipSetPageUnit(graphics, Gdiplus::UnitPixel);
        gp::GdipSetCompositingMode(graphics, Gdiplus::CompositingModeSourceOver);
        gp::GdipSetTextRenderingHint(graphics, Gdiplus::TextRenderingHintAntiAliasGridFit);
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
        return true;
    }

    // The named face, else the first of the common UI faces the system has, else its generic sans serif.
    // Looked up once per face and render.
    Gdiplus::GpFontFamily* family(std::wstring_view name) {
        for (auto& entry : families)
            if (entry.first == name) return entry.second;
        const std::wstring face(name);
        Gdiplus::GpFontFamily* found = nullptr;
        for (const wchar_t* candidate :
             {face.c_str(), L"Tahoma", L"Segoe UI", L"Arial", L"Microsoft Sans Serif"}) {
            if (*candidate && gp::GdipCreateFontFamilyFromName(candidate, nullptr, &found) == Gdiplus::Ok &&
                found)
                break;
            found = nullptr;
        }
        if (!found && gp::GdipGetGenericFontFamilySansSerif(&found) != Gdiplus::Ok) found = nullptr;
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

    void drawString(const TextRun& run, Gdiplus::GpFont* gpFont, Gdiplus::GpStringFormat* format,
                    uint32_t color, float dx, float dy, const Gdiplus::RectF& layout) {
        Gdiplus::GpSolidFill* made = nullptr;
        if (gp::GdipCreateSolidFill(Gdiplus::ARGB(color), &made) != Gdiplus::Ok) return;
        std::unique_ptr<Gdiplus::GpSolidFill, BrushDelete> brush(made);
        Gdiplus::RectF rect(layout.X + dx, layout.Y + dy, layout.Width, layout.Height);
        gp::GdipDrawString(graphics, run.text.data(), INT(run.text.size()), gpFont, &rect, format,
                           reinterpret_cast<Gdiplus::GpBrush*>(brush.get()));
    }
};

TextPainter::TextPainter(Canvas& canvas) : canvas_(canvas) {}
TextPainter::~TextPainter() = default;

void TextPainter::draw(const TextRun& run) {
    if (run.text.empty() || run.box.x1 <= run.box.x0 || run.box.x1 <= 0 || run.box.x0 >= canvas_.width)
        return;
    const float em = emPixels(run.sizePoints);
    // Vertically the layout box is stretched around the control's centre line: the line stays centred, and
    // descenders or accents that reach past a tight control are not cut off.
    const double centre = (double(run.box.y0) + double(run.box.y1)) / 2.0;
    const double half = std::max((double(run.box.y1) - double(run.box.y0)) / 2.0, double(em) * 1.5);
    if (centre + half <= 0 || centre - half >= canvas_.height) return;

    if (!impl_) impl_ = std::make_unique<Impl>();
    if (!impl_->open(canvas_)) return;
    auto gpFont = impl_->font(run);
    if (!gpFont) return;
    const Gdiplus::RectF layout(float(run.box.x0), float(centre - half), float(run.box.x1 - run.box.x0),
                                float(2 * half));
    Gdiplus::GpStringFormat* format = impl_->formats[std::clamp(run.align, 0, 2)];
    if (run.shadow) impl_->drawString(run, gpFont.get(), format, run.shadowColor, 1.f, 1.f, layout);
    impl_->drawString(run, gpFont.get(), format, run.color, 0.f, 0.f, layout);
    // The canvas is written directly between text runs too: nothing may stay pending inside GDI+.
    gp::GdipFlush(impl_->graphics, Gdiplus::FlushIntentionSync);
}

bool TextPainter::available() {
    return true;
}

} // namespace nv
