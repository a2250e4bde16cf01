#include "patcher/win32/update_session.h"

#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "patcher/patcher_logic.h"
#include "update/folder_files.h"
#include "update/remote_config.h"
#include "update/win32/winhttp_transport.h"

#include <windows.h>

namespace nv {

bool openUpdateSession(const PatcherScene& scene, const UpdateSource& source, bool repair,
                       UpdateSession& session, std::wstring& error) {
    std::wstring reason;
    session.transport = update::openWinHttpTransport(update::WinHttpOptions{}, &reason);
    if (!session.transport) {
        error = fillPlaceholder(sceneText(scene, "INTERNET_OPEN_ERROR"), std::to_wstring(GetLastError()));
        if (!reason.empty()) error += L"\n" + reason;
        return false;
    }
    const std::wstring exe = exePath();
    session.files = update::openGameFolder(exeFolder());
    update::UpdateRequest& r = session.request;
    r.configUrl = wideToUtf8(trim(source.remoteConfigPath));
    r.localConfigName = wideToUtf8(pathFileName(source.localConfigPath));
    r.connections = scene.settings.connections;
    r.segmentMb = scene.settings.segmentMb;
    r.repair = repair;
    r.selfPath = wideToUtf8(pathFileName(exe));
    uint32_t crc = 0;
    uint64_t size = 0;
    if (fileCrc32(exe, crc, size)) r.selfCrc = crc;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    r.cacheToken = (uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime) ^ GetCurrentProcessId();
    session.log.open(*session.files, "Norvane patcher " + r.selfPath + " (CRC " +
                                         (r.selfCrc ? update::crcText(*r.selfCrc) : std::string("?")) + ")");
    return true;
}

} // namespace nv
