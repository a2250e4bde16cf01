#pragma once
// The skin package inside an executable module (the running program or one loaded as a data file).

#include "readers/skin_files.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace nv {

// Finds RT_RCDATA 900 in the module and reads it ("Gomulu skin yok.", "Gomulu skin okunamadi.", or the
// package reader's own messages).
bool readEmbeddedSkin(HMODULE module, SkinFileSet& out, std::wstring* error = nullptr);

// The package resource's bytes as the module holds them (they live as long as the module), with the first two
// messages above.
bool findEmbeddedSkin(HMODULE module, const uint8_t*& data, size_t& size, std::wstring* error = nullptr);

} // namespace nv
