#pragma once
// --headless: the update without a window, for operators' smoke tests and ours. One line per step and per
// finished file on standard output, the failure's text on standard error; exit 0 when the game is up to date,
// 1 otherwise. It never starts the game.

#include "patcher/patcher_logic.h"
#include "patcher/win32/update_session.h"
#include "renderer/scene.h"

namespace nv {

int runHeadless(const PatcherScene& scene, const UpdateSource& source, const PatcherOptions& options);

} // namespace nv
