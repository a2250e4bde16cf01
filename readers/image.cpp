#include "readers/image.h"

#include <algorithm>

namespace nv {

DecodedImage DecodedImage::fromPixels(int width, int height, std::vector<uint32_t> pixels) {
    DecodedImage image;
    image.width = width;
    image.height = height;
    image.hasTransparency =
        std::any_of(pixels.begin(), pixels.end(), [](uint32_t pixel) { return (pixel >> 24) != 0xFF; });
    image.pixels = std::make_shared<const std::vector<uint32_t>>(std::move(pixels));
    return image;
}

} // namespace nv
