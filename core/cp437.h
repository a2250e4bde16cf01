#pragma once
// The code page 437 table for builds without a platform converter (bytes 0x00-0x7F are ASCII).

#include <cstdint>

namespace nv {

wchar_t cp437Char(uint8_t byte);

} // namespace nv
