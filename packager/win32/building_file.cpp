#include "packager/win32/building_file.h"

#include "core/paths.h"
#include "core/win32/scoped_win.h"

#include <cstdio>

namespace nv {
namespace {

// One name per output file however it is spelt: the folder by its identity on its volume (case, short names,
// links and relative paths all lead to it), the file by its name in upper case, as the file system compares.
bool claimName(const std::wstring& output, std::wstring& name, DWORD& error) {
    std::wstring folder = pathParent(output);
    if (folder.empty()) folder = L".";
    win::ScopedHandle handle(CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION info;
    if (!handle.valid() || !GetFileInformationByHandle(handle.get(), &info)) {
        error = win::lastErrorOr(ERROR_PATH_NOT_FOUND);
        return false;
    }
    std::wstring file = pathFileName(output);
    if (!file.empty()) CharUpperBuffW(file.data(), DWORD(file.size()));
    // FNV-1a over the file name keeps the object's name short whatever the file's.
    uint64_t hash = 0xCBF29CE484222325ull;
    for (wchar_t c : file)
        hash = (hash ^ uint16_t(c)) * 0x100000001B3ull;
    wchar_t text[96];
    std::swprintf(text, 96, L"Global\\Norvane.Building.%08lX.%08lX%08lX.%016llX", info.dwVolumeSerialNumber,
                  info.nFileIndexHigh, info.nFileIndexLow, static_cast<unsigned long long>(hash));
    name = text;
    return true;
}

} // namespace

BuildingFile::BuildingFile(const std::wstring& outputPath)
    : output_(outputPath), path_(outputPath + L".building") {}

BuildingFile::Start BuildingFile::create(DWORD& error) {
    std::wstring name;
    if (!claimName(output_, name, error)) return Start::Failed;
    claim_ = CreateMutexW(nullptr, FALSE, name.c_str());
    if (!claim_) {
        error = win::lastErrorOr(ERROR_INVALID_HANDLE);
        return Start::Failed;
    }
    // Abandoned: its build died, and what it left is a leftover.
    const DWORD wait = WaitForSingleObject(claim_, 0);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
        CloseHandle(claim_);
        claim_ = nullptr;
        if (wait == WAIT_TIMEOUT) return Start::InUse;
        error = win::lastErrorOr(ERROR_INVALID_HANDLE);
        return Start::Failed;
    }
    if (!DeleteFileW(path_.c_str())) {
        const DWORD e = GetLastError();
        if (e != ERROR_FILE_NOT_FOUND && e != ERROR_PATH_NOT_FOUND) {
            error = win::lastErrorOr(ERROR_ACCESS_DENIED);
            release();
            return Start::Failed;
        }
    }
    HANDLE file = CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        error = win::lastErrorOr(ERROR_CANNOT_MAKE);
        release();
        return Start::Failed;
    }
    CloseHandle(file);
    created_ = true;
    return Start::Created;
}

bool BuildingFile::write(const void* data, size_t size, DWORD& error) {
    win::ScopedHandle file(CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
    const auto* bytes = static_cast<const uint8_t*>(data);
    while (file.valid() && size > 0) {
        const DWORD chunk = size > 0x1000000 ? 0x1000000 : DWORD(size);
        DWORD wrote = 0;
        if (!WriteFile(file.get(), bytes, chunk, &wrote, nullptr) || wrote == 0) break;
        bytes += wrote;
        size -= wrote;
    }
    // A short write sets no error of its own.
    if (!file.valid() || size > 0 || !file.close()) {
        error = win::lastErrorOr(ERROR_WRITE_FAULT);
        return false;
    }
    return true;
}

bool BuildingFile::moveOver(const std::wstring& target, DWORD& error) {
    if (!MoveFileExW(path_.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED)) {
        error = win::lastErrorOr(ERROR_WRITE_FAULT);
        return false;
    }
    created_ = false;
    release();
    return true;
}

void BuildingFile::remove() {
    if (created_) DeleteFileW(path_.c_str());
    created_ = false;
    release();
}

void BuildingFile::release() {
    if (!claim_) return;
    ReleaseMutex(claim_);
    CloseHandle(claim_);
    claim_ = nullptr;
}

} // namespace nv
