#include "patcher/win32/update_session.h"

#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "patcher/patcher_logic.h"
#include "update/folder_files.h"
#include "skin/package.h"
#include "update/remote_config.h"
#include "update/update_key.h"
#include "update/win32/winhttp_transport.h"

#include <windows.h>

namespace nv {
namespace {

// The keys embedded by the build. A resource that is there but unreadable is kept as "signed lists only,
// with no key": every list is then refused rather than the server trusted.
void readUpdateKeys(update::UpdateRequest& r, std::string& note) {
    HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(UPDATE_KEYS_RESOURCE_ID), MAKEINTRESOURCEW(10));
    if (!found) return;
    HGLOBAL loaded = LoadResource(nullptr, found);
    const void* data = loaded ? LockResource(loaded) : nullptr;
    const DWORD size = SizeofResource(nullptr, found);
    r.requireSigned = true;
    r.crypto = update::systemCrypto();
    std::string error;
    if (!data || !update::parsePublicKeys(std::string_view(static_cast<const char*>(data), size),
                                          r.updateKeys, error)) {
        r.updateKeys.clear();
        note = ", guncelleme anahtarlari okunamadi: " + error;
        return;
    }
    note = ", " + std::to_string(r.updateKeys.size()) + " guncelleme anahtari";
    for (const update::PublicKey& key : r.updateKeys)
        note += " " + update::keyLabel(key);
    Bytes self;
    update::Sha256Digest digest;
    if (r.crypto && readFileBytes(exePath(), self, 1u << 30) &&
        update::sha256Of(*r.crypto, self.data(), self.size(), digest))
        r.selfSha256 = digest;
}

} // namespace

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
    // FILETIME counts 100 ns steps from 1601; the lists' expiry counts seconds from 1970.
    r.now = int64_t((uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime) / 10000000 - 11644473600ull);
    std::string keys;
    readUpdateKeys(r, keys);
    session.log.open(*session.files, "Norvane patcher " + r.selfPath + " (CRC " +
                                         (r.selfCrc ? update::crcText(*r.selfCrc) : std::string("?")) + ")" +
                                         keys);
    return true;
}

} // namespace nv
