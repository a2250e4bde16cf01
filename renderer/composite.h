#pragma once
// Source-over compositing on premultiplied 0xAARRGGBB pixels, clipped. Box arithmetic is 64-bit: control
// positions come from a stranger's skin.xml and may sit anywhere in the 32-bit range.

#include "readers/image.h"

#include <algorithm>
#include <cstdint>

namespace nv {

// A half-open rectangle [x0, x1) x [y0, y1); empty when either side has no extent.
struct Box {
    int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    static Box at(int64_t x, int64_t y, int64_t width, int64_t height) {
        return {x, y, x + width, y + height};
    }
    bool empty() const { return x1 <= x0 || y1 <= y0; }
    bool contains(int64_t x, int64_t y) const { return x >= x0 && x < x1 && y >= y0 && y < y1; }
    Box intersect(const Box& o) const {
        return {std::max(x0, o.x0), std::max(y0, o.y0), std::min(x1, o.x1), std::min(y1, o.y1)};
    }
};

struct Canvas {
    uint32_t* pixels = nullptr;
    int width = 0, height = 0;

    Box bounds() const { return {0, 0, width, height}; }
};

// x / 255, rounded to nearest, for 0 <= x <= 255 * 255.
inline uint32_t divide255(uint32_t x) {
    x += 128;
    return (x + (x >> 8)) >> 8;
}

// One premultiplied pixel over another. A source channel above its alpha (not validly premultiplied) is
// clamped rather than allowed to spill into the next channel.
inline uint32_t sourceOver(uint32_t src, uint32_t dst) {
    const uint32_t alpha = src >> 24;
    if (alpha == 255) return src;
    if (alpha == 0 && (src & 0xFFFFFFu) == 0) return dst;
    const uint32_t keep = 255 - alpha;
    uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t c = ((src >> shift) & 0xFF) + divide255(((dst >> shift) & 0xFF) * keep);
        out |= std::min<uint32_t>(c, 255) << shift;
    }
    return out;
}

// Composites the picture with its top-left corner at (x, y), only where it falls inside clip and the canvas.
void drawImage(Canvas& canvas, const DecodedImage& image, int64_t x, int64_t y, const Box& clip);

// Composites the picture recoloured in one straight RGB colour: each pixel keeps its alpha and its lightness
// relative to the picture's lightest pixel, so a lamp of one colour shows in another with its glow and
// shading.
void drawImageTinted(Canvas& canvas, const DecodedImage& image, int64_t x, int64_t y, const Box& clip,
                     uint32_t rgb);

// Composites area.width x area.height premultiplied pixels (rows from the top) at the area's place.
void drawLayer(Canvas& canvas, const uint32_t* pixels, const Box& area);

// Composites one premultiplied colour over the box (clipped to the canvas).
void fillBox(Canvas& canvas, const Box& box, uint32_t premultiplied);

// Straight 0xAARRGGBB to premultiplied.
uint32_t premultiply(uint32_t argb);

} // namespace nv
