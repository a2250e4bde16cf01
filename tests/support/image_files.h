#pragma once
// Small picture files made in memory for tests: PNG (RGBA, 8 bits, stored deflate) and BMP (24 bits).

#include "core/files.h"

#include <cstdint>
#include <vector>

namespace nv::test {

// pixels: width * height straight (not premultiplied) 0xAARRGGBB values, rows from the top.
Bytes makePng(int width, int height, const std::vector<uint32_t>& pixels);
Bytes makePng(int width, int height, uint32_t argb); // one colour everywhere

// An opaque 24-bit bottom-up BMP of one colour (the alpha byte of argb is ignored).
Bytes makeBmp(int width, int height, uint32_t argb);

} // namespace nv::test
