#pragma once
// Text into the renderer's canvas: GDI+ on Windows; the native build has no text engine and draws nothing.

#include "renderer/composite.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace nv {

struct TextRun {
    std::wstring_view text;
    std::wstring_view font; // face name; a face the system lacks falls back to Tahoma, then to a sans serif
    int sizePoints = 12;    // points at 96 DPI
    bool bold = false;
    uint32_t color = 0xFFFFFFFFu; // straight ARGB; its alpha is honoured
    bool shadow = false;          // the same text 1 px right and down in shadowColor, drawn first
    uint32_t shadowColor = 0xFF000000u;
    int align = 0; // 0 left, 1 centre, 2 right, inside [box.x0, box.x1)
    Box box;       // the text is centred vertically in it and clipped to its horizontal extent
};

// One painter serves one render: it holds what the platform needs to draw into the canvas (and the fonts it
// made) until the render ends.
class TextPainter {
public:
    explicit TextPainter(Canvas& canvas);
    ~TextPainter();
    TextPainter(const TextPainter&) = delete;
    TextPainter& operator=(const TextPainter&) = delete;

    void draw(const TextRun& run);

    static bool available();

private:
    struct Impl;
    [[maybe_unused]] Canvas& canvas_; // unused where there is no text engine
    std::unique_ptr<Impl> impl_;
};

} // namespace nv
