#include "renderer/composite.h"

namespace nv {

void drawImage(Canvas& canvas, const DecodedImage& image, int64_t x, int64_t y, const Box& clip) {
    if (image.empty()) return;
    const Box area = Box::at(x, y, image.width, image.height).intersect(clip).intersect(canvas.bounds());
    if (area.empty()) return;
    const uint32_t* src = image.data();
    const bool opaque = !image.hasTransparency;
    for (int64_t row = area.y0; row < area.y1; ++row) {
        const uint32_t* from = src + size_t(row - y) * size_t(image.width) + size_t(area.x0 - x);
        uint32_t* to = canvas.pixels + size_t(row) * size_t(canvas.width) + size_t(area.x0);
        const size_t count = size_t(area.x1 - area.x0);
        if (opaque) {
            std::copy(from, from + count, to);
            continue;
        }
        for (size_t i = 0; i < count; ++i)
            to[i] = sourceOver(from[i], to[i]);
    }
}

void fillBox(Canvas& canvas, const Box& box, uint32_t premultiplied) {
    const Box area = box.intersect(canvas.bounds());
    for (int64_t row = area.y0; row < area.y1; ++row) {
        uint32_t* to = canvas.pixels + size_t(row) * size_t(canvas.width);
        for (int64_t col = area.x0; col < area.x1; ++col)
            to[col] = sourceOver(premultiplied, to[col]);
    }
}

void drawLayer(Canvas& canvas, const uint32_t* pixels, const Box& area) {
    const Box clipped = area.intersect(canvas.bounds());
    const size_t width = size_t(area.x1 - area.x0);
    for (int64_t row = clipped.y0; row < clipped.y1; ++row) {
        const uint32_t* from = pixels + size_t(row - area.y0) * width + size_t(clipped.x0 - area.x0);
        uint32_t* to = canvas.pixels + size_t(row) * size_t(canvas.width);
        for (int64_t col = clipped.x0; col < clipped.x1; ++col, ++from)
            to[col] = sourceOver(*from, to[col]);
    }
}

uint32_t premultiply(uint32_t argb) {
    const uint32_t alpha = argb >> 24;
    uint32_t out = alpha << 24;
    for (int shift = 0; shift < 24; shift += 8)
        out |= divide255(((argb >> shift) & 0xFF) * alpha) << shift;
    return out;
}

} // namespace nv
