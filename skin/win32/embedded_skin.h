#pragma once
// The skin package inside an executable module (the running program or one loaded as a data file).

#include "readers/skin_files.h"

#include <windows.h>

#include <string>

namespace nv {

// Finds RT_RCDATA 900 in the module and reads it ("Gomulu skin yok.", "Gomulu skin okunamadi.", or the
// package reader's own messages).
bool readEmbeddedSkin(HMODULE module, SkinFileSet& out, std::wstring* error = nullptr);

} // namespace nv
