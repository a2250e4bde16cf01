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

namespace {

// Lightness of a premultiplied pixel as a share of its alpha, in 1/255ths: 0 black, 255 white.
uint32_t lightness(uint32_t pixel) {
    const uint32_t alpha = pixel >> 24;
    if (alpha == 0) return 0;
    const uint32_t luma =
        (((pixel >> 16) & 0xFF) * 77 + ((pixel >> 8) & 0xFF) * 150 + (pixel & 0xFF) * 29) >> 8;
    return std::min<uint32_t>(255, luma * 255 / alpha);
}

} // namespace

void drawImageTinted(Canvas& canvas, const DecodedImage& image, int64_t x, int64_t y, const Box& clip,
                     uint32_t rgb) {
    if (image.empty()) return;
    const Box area = Box::at(x, y, image.width, image.height).intersect(clip).intersect(canvas.bounds());
    if (area.empty()) return;
    const uint32_t* src = image.data();
    const size_t count = size_t(image.width) * size_t(image.height);
    uint32_t lightest = 1;
    for (size_t i = 0; i < count; ++i)
        lightest = std::max(lightest, lightness(src[i]));
    for (int64_t row = area.y0; row < area.y1; ++row) {
        const uint32_t* from = src + size_t(row - y) * size_t(image.width) + size_t(area.x0 - x);
        uint32_t* to = canvas.pixels + size_t(row) * size_t(canvas.width) + size_t(area.x0);
        for (int64_t col = area.x0; col < area.x1; ++col, ++from, ++to) {
            const uint32_t alpha = *from >> 24;
            // The tint scaled by the pixel's relative lightness, then by its alpha (premultiplied).
            const uint32_t scale =
                divide255(std::min<uint32_t>(255, lightness(*from) * 255 / lightest) * alpha);
            uint32_t tinted = alpha << 24;
            for (int shift = 0; shift < 24; shift += 8)
                tinted |= divide255(((rgb >> shift) & 0xFF) * scale) << shift;
            *to = sourceOver(tinted, *to);
        }
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
