#pragma once
// The code page 437 table for builds without a platform converter (bytes 0x00-0x7F are ASCII).

#include <cstdint>

namespace nv {

wchar_t cp437Char(uint8_t byte);

// The byte that stands for the character in code page 437; false when the code page has none for it.
bool cp437Byte(wchar_t c, uint8_t& byte);

} // namespace nv
