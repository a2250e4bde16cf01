#pragma once
// What one update run of this patcher needs, made the same way for the window and for --headless: the
// request from the skin's addresses and settings, the WinHTTP transport, the game folder (the folder this exe
// lies in) and the run's log there.

#include "renderer/scene.h"
#include "update/game_files.h"
#include "update/http.h"
#include "update/run_log.h"
#include "update/update_run.h"

#include <memory>
#include <string>

namespace nv {

// The address file's values this patcher was built with.
struct UpdateSource {
    std::wstring remoteConfigPath;
    std::wstring localConfigPath;
};

struct UpdateSession {
    update::UpdateRequest request;
    std::unique_ptr<update::HttpTransport> transport;
    std::unique_ptr<update::GameFiles> files;
    update::RunLog log;
};

// False with the player's message (INTERNET_OPEN_ERROR) when the transport cannot be set up.
bool openUpdateSession(const PatcherScene& scene, const UpdateSource& source, bool repair,
                       UpdateSession& session, std::wstring& error);

} // namespace nv
