#pragma once
// Text into the renderer's canvas: GDI+ on Windows; the native build has no text engine and draws nothing.

#include "renderer/composite.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

struct TextRun {
    std::wstring_view text;
    std::wstring_view font; // face name; a missing face falls back to Tahoma, then to any installed one
    int sizePoints = 12;    // points at 96 DPI
    bool bold = false;
    uint32_t color = 0xFFFFFFFFu; // straight ARGB; its alpha is honoured
    bool shadow = false;          // the same text 1 px right and down in shadowColor, drawn first
    uint32_t shadowColor = 0xFF000000u;
    int align = 0; // 0 left, 1 centre, 2 right, inside [box.x0, box.x1)
    Box box;       // the text is centred vertically in it and clipped to its horizontal extent
};

// Text runs already drawn for a scene, each as a premultiplied layer of the window's pixels under it: a
// refresh that shows the same text in the same place (a hover, a press) only composites the layer again.
// Shared by the copies of one scene; bounded, so that a text that keeps changing cannot make it grow without
// end.
class TextCache {
public:
    struct Layer {
        Box area; // in window pixels, inside the window
        std::vector<uint32_t> pixels;
    };

    // A copy of the layer drawn for this key, or false.
    bool find(const std::wstring& key, std::shared_ptr<const Layer>& layer) const;
    void put(const std::wstring& key, std::shared_ptr<const Layer> layer);

private:
    static constexpr size_t kMaxBytes = 16u << 20;
    mutable std::mutex mutex_;
    std::map<std::wstring, std::shared_ptr<const Layer>> layers_;
    size_t bytes_ = 0;
};

// One painter serves one render: it holds what the platform needs to draw (and the fonts it made) until the
// render ends.
class TextPainter {
public:
    TextPainter(Canvas& canvas, TextCache* cache);
    ~TextPainter();
    TextPainter(const TextPainter&) = delete;
    TextPainter& operator=(const TextPainter&) = delete;

    void draw(const TextRun& run);

    static bool available();

private:
    struct Impl;
    [[maybe_unused]] Canvas& canvas_;   // unused where there is no text engine
    [[maybe_unused]] TextCache* cache_; // likewise
    std::unique_ptr<Impl> impl_;
};

} // namespace nv
