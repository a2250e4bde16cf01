#include "update/win32/self_update.h"

#include "core/files.h"
#include "core/paths.h"

#include <shellapi.h>

namespace nv::update {

std::wstring asideCopyPath(const std::wstring& exe) {
    return exe + L".nvold";
}

void removeAsideCopy(const std::wstring& exe) {
    const std::wstring aside = asideCopyPath(exe);
    // The old patcher started this one and is ending: its file stays locked until it has.
    for (int i = 0; i < 20 && GetFileAttributesW(aside.c_str()) != INVALID_FILE_ATTRIBUTES; ++i) {
        if (DeleteFileW(aside.c_str())) return;
        Sleep(100);
    }
}

bool swapRunningExe(const std::wstring& exe, const std::wstring& newFile, std::wstring& error) {
    const std::wstring aside = asideCopyPath(exe);
    DeleteFileW(aside.c_str()); // an aside copy an earlier update could not delete
    if (!MoveFileExW(exe.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        error = systemErrorText(GetLastError());
        return false;
    }
    if (!MoveFileExW(newFile.c_str(), exe.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        error = systemErrorText(GetLastError());
        MoveFileExW(aside.c_str(), exe.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        return false;
    }
    return true;
}

std::wstring ownArguments() {
    const wchar_t* line = GetCommandLineW();
    bool quoted = false;
    for (; *line && (quoted || (*line != L' ' && *line != L'\t')); ++line)
        if (*line == L'"') quoted = !quoted;
    while (*line == L' ' || *line == L'\t')
        ++line;
    return line;
}

bool startProgram(const std::wstring& exe, const std::wstring& arguments, bool elevated, HANDLE* process,
                  std::wstring& error) {
    const std::wstring folder = pathParent(exe);
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC;
    info.lpVerb = elevated ? L"runas" : nullptr;
    info.lpFile = exe.c_str();
    info.lpParameters = arguments.c_str();
    info.lpDirectory = folder.c_str();
    info.nShow = SW_SHOWNORMAL;
    if (!elevated) {
        // Not through the shell: the new patcher inherits this one's standard streams (--headless).
        std::wstring commandLine = L"\"" + exe + L"\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        if (!CreateProcessW(exe.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                            folder.c_str(), &startup, &started)) {
            error = systemErrorText(GetLastError());
            return false;
        }
        CloseHandle(started.hThread);
        if (process)
            *process = started.hProcess;
        else
            CloseHandle(started.hProcess);
        return true;
    }
    if (!ShellExecuteExW(&info)) {
        error = systemErrorText(GetLastError());
        return false;
    }
    if (process)
        *process = info.hProcess;
    else if (info.hProcess)
        CloseHandle(info.hProcess);
    return true;
}

} // namespace nv::update
