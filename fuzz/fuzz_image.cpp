// Skin images are untrusted bytes: any input must either fail with a message and leave no picture behind, or
// give a picture within the size limit whose pixels are validly premultiplied.

#include "readers/image.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::DecodedImage image;
    std::wstring error;
    if (!nv::decodeImage(data, size, image, &error)) {
        if (error.empty() || !image.empty()) std::abort();
        return 0;
    }
    if (image.width < 1 || image.width > nv::kMaxImageSide || image.height < 1 ||
        image.height > nv::kMaxImageSide)
        std::abort();
    if (image.pixels->size() != size_t(image.width) * size_t(image.height)) std::abort();
    bool transparent = false;
    for (uint32_t pixel : *image.pixels) {
        const uint32_t alpha = pixel >> 24;
        if ((pixel >> 16 & 0xFF) > alpha || (pixel >> 8 & 0xFF) > alpha || (pixel & 0xFF) > alpha)
            std::abort();
        transparent = transparent || alpha != 0xFF;
    }
    if (transparent != image.hasTransparency) std::abort();
    return 0;
}
