#pragma once
// Rendered pictures as PNG files: 8-bit RGBA with straight alpha, compressed with a small Deflate encoder of
// our own (fixed Huffman codes). Portable and deterministic, so the patcher's snapshot and `nvbuild render`
// write the same bytes for the same pixels on every platform.

#include "core/files.h"

#include <cstdint>

namespace nv {

// width * height premultiplied 0xAARRGGBB pixels, rows from the top. Throws only std::bad_alloc.
Bytes encodePng(const uint32_t* pixels, int width, int height);

// A zlib stream (RFC 1950) of the bytes: one fixed-Huffman Deflate block with LZ77 matches.
Bytes zlibCompress(const uint8_t* data, size_t size);

} // namespace nv
