// Files and folders on Windows.

#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"

#include <windows.h>

#include <algorithm>
#include <new>

namespace nv {
namespace {

constexpr DWORD kPiece = 0x1000000; // 16 MiB per ReadFile / WriteFile call

} // namespace

bool readFileBytes(const std::wstring& path, Bytes& out, uint64_t maxSize) {
    out.clear();
    win::ScopedHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid()) return false;

    LARGE_INTEGER size;
    if (!GetFileSizeEx(file.get(), &size) || uint64_t(size.QuadPart) > maxSize) return false;
    try {
        out.resize(size_t(uint64_t(size.QuadPart)));
    } catch (const std::bad_alloc&) {
        return false; // a cap of hundreds of megabytes can meet a machine that has less
    }
    size_t done = 0;
    while (done < out.size()) {
        DWORD want = DWORD(std::min<size_t>(out.size() - done, kPiece));
        DWORD got = 0;
        if (!ReadFile(file.get(), out.data() + done, want, &got, nullptr) || got == 0) {
            out.clear();
            return false;
        }
        done += got;
    }
    return true;
}

bool readFileHead(const std::wstring& path, size_t count, Bytes& out) {
    out.clear();
    win::ScopedHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size;
    if (!file.valid() || GetFileType(file.get()) != FILE_TYPE_DISK || !GetFileSizeEx(file.get(), &size))
        return false;
    out.resize(size_t(std::min<uint64_t>(uint64_t(size.QuadPart), std::min<size_t>(count, kPiece))));
    DWORD got = 0;
    if (!out.empty() && (!ReadFile(file.get(), out.data(), DWORD(out.size()), &got, nullptr) || got == 0)) {
        out.clear();
        return false;
    }
    out.resize(got);
    return true;
}

namespace {

// Removes the temporary file of a failed write, keeping the error of the step that failed for the caller:
// the clean-up's own calls would otherwise overwrite it.
bool abandon(const std::wstring& temp, win::ScopedHandle& file) {
    const DWORD error = GetLastError();
    file.close();
    DeleteFileW(temp.c_str());
    SetLastError(error);
    return false;
}

} // namespace

bool writeFileAtomic(const std::wstring& path, const void* data, size_t size) {
    const std::wstring temp = path + L".nvtmp";
    win::ScopedHandle file(
        CreateFileW(temp.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid()) return false;

    const uint8_t* p = static_cast<const uint8_t*>(data);
    size_t done = 0;
    while (done < size) {
        DWORD want = DWORD(std::min<size_t>(size - done, kPiece));
        DWORD wrote = 0;
        if (!WriteFile(file.get(), p + done, want, &wrote, nullptr) || wrote == 0) return abandon(temp, file);
        done += wrote;
    }
    if (!file.close()) return abandon(temp, file);

    // A read-only target cannot be replaced; its attribute is cleared for the move and put back if the move
    // fails, so that a failed write leaves the old file exactly as it was.
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (readOnly) SetFileAttributesW(path.c_str(), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));

    if (!MoveFileExW(temp.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        const DWORD error = GetLastError();
        if (readOnly) SetFileAttributesW(path.c_str(), attributes);
        DeleteFileW(temp.c_str());
        SetLastError(error);
        return false;
    }
    return true;
}

bool fileExists(const std::wstring& path) {
    DWORD a = GetFileAttributesW(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool folderExists(const std::wstring& path) {
    DWORD a = GetFileAttributesW(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

namespace {

bool fileIdentity(const std::wstring& path, BY_HANDLE_FILE_INFORMATION& info) {
    // No access rights asked for: the file's identity can be read even while another program holds it open.
    win::ScopedHandle file(CreateFileW(path.c_str(), 0,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return file.valid() && GetFileInformationByHandle(file.get(), &info);
}

} // namespace

bool sameFile(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION first, second;
    return fileIdentity(a, first) && fileIdentity(b, second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

std::wstring absolutePath(const std::wstring& path) {
    if (path.empty()) return path;
    std::wstring full(MAX_PATH, L'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        const DWORD length = GetFullPathNameW(path.c_str(), DWORD(full.size()), full.data(), nullptr);
        if (length == 0) return path;
        if (length < full.size()) {
            full.resize(length);
            return full;
        }
        full.resize(length); // too small: length is the size needed, terminator included
    }
    return path;
}

bool createFolders(const std::wstring& path) {
    if (path.empty() || folderExists(path)) return true;
    std::wstring parent = pathParent(path);
    bool bareDrive = parent.size() == 2 && parent[1] == L':';
    if (!parent.empty() && parent != path && !bareDrive && !createFolders(parent)) return false;
    if (CreateDirectoryW(path.c_str(), nullptr)) return true;
    return GetLastError() == ERROR_ALREADY_EXISTS && folderExists(path);
}

std::wstring systemErrorText(uint32_t code) {
    wchar_t* buffer = nullptr;
    DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                 FORMAT_MESSAGE_IGNORE_INSERTS,
                             nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::wstring text;
    if (buffer) {
        text.assign(buffer, n);
        LocalFree(buffer);
    }
    while (!text.empty() &&
           (text.back() == L' ' || text.back() == L'\t' || text.back() == L'\r' || text.back() == L'\n'))
        text.pop_back();
    if (text.empty()) return L"Hata kodu " + std::to_wstring(code);
    return text + L" (" + std::to_wstring(code) + L")";
}

uint32_t lastSystemError() {
    return GetLastError();
}

std::wstring exePath() {
    // Grown and retried while the result fills the buffer, so that long paths work.
    std::wstring buffer(260, L'\0');
    for (;;) {
        DWORD n = GetModuleFileNameW(nullptr, buffer.data(), DWORD(buffer.size()));
        if (n == 0) return {};
        if (n < buffer.size()) {
            buffer.resize(n);
            return buffer;
        }
        if (buffer.size() >= 0x8000) return {};
        buffer.resize(buffer.size() * 2);
    }
}

std::wstring exeFolder() {
    return pathParent(exePath());
}

bool listFolder(const std::wstring& folder, std::vector<FolderEntry>& entries) {
    entries.clear();
    WIN32_FIND_DATAW data;
    win::ScopedFind find(FindFirstFileW(pathJoin(folder, L"*").c_str(), &data));
    if (!find.valid()) return false;
    do {
        std::wstring name = data.cFileName;
        if (name == L"." || name == L"..") continue;
        entries.push_back({name, (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(find.get(), &data));
    return true;
}

bool fileCrc32(const std::wstring& path, uint32_t& crc, uint64_t& size) {
    crc = 0;
    size = 0;
    win::ScopedHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.valid()) return false;
    LARGE_INTEGER fileSize;
    if (!GetFileSizeEx(file.get(), &fileSize)) return false;
    size = uint64_t(fileSize.QuadPart);

    // Small enough to stay in the heap's reused memory: a fresh megabyte costs more to fault in than fewer
    // reads save.
    constexpr DWORD kBuffer = 0x10000;
    void* buffer = HeapAlloc(GetProcessHeap(), 0, kBuffer);
    if (!buffer) return false;
    Crc32 sum;
    bool ok = false;
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file.get(), buffer, kBuffer, &got, nullptr)) break;
        if (got == 0) {
            ok = true;
            break;
        }
        sum.update(buffer, got);
    }
    HeapFree(GetProcessHeap(), 0, buffer);
    crc = sum.value();
    return ok;
}

} // namespace nv
