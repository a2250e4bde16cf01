#pragma once
// A raw Deflate (RFC 1951) decoder for zip entries whose uncompressed size is known in advance.

#include "core/files.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nv {

// Decodes exactly expectedSize bytes into out. On failure returns false with one of the decoder's messages
// ("Deflate verisi erken bitti." and its siblings) in error, and out is empty. Input after the final block is
// ignored. The output is reserved at expectedSize up front, so the caller bounds it.
bool inflateRaw(const uint8_t* data, size_t size, size_t expectedSize, Bytes& out,
                std::wstring* error = nullptr);

} // namespace nv
