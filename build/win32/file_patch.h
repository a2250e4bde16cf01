#pragma once
// Rewriting a file in place from its bytes as they were read and as they are to become.

#include "core/files.h"

#include <windows.h>

#include <string>

namespace nv {

// Writes only the blocks of after that differ from before (the file's current bytes), then sets the file's
// length to after's. False with the system's error code when the file cannot be opened or written.
bool patchFile(const std::wstring& path, const Bytes& before, const Bytes& after, DWORD& error);

} // namespace nv
