#pragma once
// The platform's game folder: the patcher's folder on Windows (update/win32/), any folder in the native build
// (update/posix/), where the engine's tests and tools run on real files.

#include "update/game_files.h"

#include <memory>
#include <string>

namespace nv::update {

// folder: an existing folder (absolute or relative to the current one).
std::unique_ptr<GameFiles> openGameFolder(const std::wstring& folder);

} // namespace nv::update
