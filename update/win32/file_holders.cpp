#include "update/win32/file_holders.h"

#include "core/files.h"
#include "core/win32/scoped_win.h"

#include <windows.h>
#include <restartmanager.h>

namespace nv::update {

namespace {

class RestartSession {
public:
    ~RestartSession() {
        if (open_) RmEndSession(handle_);
    }
    DWORD start() {
        WCHAR key[CCH_RM_SESSION_KEY + 1] = {};
        DWORD rc = RmStartSession(&handle_, 0, key);
        open_ = rc == ERROR_SUCCESS;
        return rc;
    }
    DWORD handle() const { return handle_; }

private:
    DWORD handle_ = 0;
    bool open_ = false;
};

// The file name of the process's program, for a holder the Restart Manager lists without a name.
std::wstring imageName(DWORD processId) {
    win::ScopedHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    if (!process.valid()) return L"";
    wchar_t path[MAX_PATH];
    DWORD size = MAX_PATH;
    if (!QueryFullProcessImageNameW(process.get(), 0, path, &size)) return L"";
    std::wstring full(path, size);
    size_t slash = full.find_last_of(L"\\/");
    return slash == std::wstring::npos ? full : full.substr(slash + 1);
}

bool failed(DWORD code, std::wstring* error) {
    if (error) *error = systemErrorText(code);
    return false;
}

} // namespace

bool findFileHolders(const std::vector<std::wstring>& paths, std::vector<FileHolder>& holders,
                     std::wstring* error) {
    holders.clear();
    if (paths.empty()) return true;
    RestartSession session;
    if (DWORD rc = session.start(); rc != ERROR_SUCCESS) return failed(rc, error);
    std::vector<LPCWSTR> names;
    names.reserve(paths.size());
    for (const std::wstring& p : paths)
        names.push_back(p.c_str());
    if (DWORD rc =
            RmRegisterResources(session.handle(), UINT(names.size()), names.data(), 0, nullptr, 0, nullptr);
        rc != ERROR_SUCCESS)
        return failed(rc, error);

    // The list may grow between asking its size and fetching it: a few tries, then the reason.
    std::vector<RM_PROCESS_INFO> infos;
    DWORD rc = ERROR_MORE_DATA;
    UINT count = 0;
    for (int attempt = 0; attempt < 4 && rc == ERROR_MORE_DATA; ++attempt) {
        UINT needed = 0;
        count = UINT(infos.size());
        DWORD reasons = 0;
        rc = RmGetList(session.handle(), &needed, &count, infos.empty() ? nullptr : infos.data(), &reasons);
        if (rc == ERROR_MORE_DATA) infos.resize(needed + 4);
    }
    if (rc != ERROR_SUCCESS) return failed(rc, error);

    for (UINT i = 0; i < count && i < infos.size(); ++i) {
        const RM_PROCESS_INFO& info = infos[i];
        FileHolder holder;
        holder.processId = info.Process.dwProcessId;
        holder.name = info.strAppName;
        if (holder.name.empty()) holder.name = info.strServiceShortName;
        if (holder.name.empty()) holder.name = imageName(info.Process.dwProcessId);
        holder.systemService = info.ApplicationType == RmService || info.ApplicationType == RmCritical;
        holders.push_back(std::move(holder));
    }
    return true;
}

} // namespace nv::update
