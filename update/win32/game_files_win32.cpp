// The game folder on Windows files. Downloads are written through positional writes (several connections
// fill one ".nvpart" at once), flushed, and moved over the old file with MOVEFILE_WRITE_THROUGH, so a file is
// either the old one or the new one, also after a power cut.

#include "core/crc32.h"
#include "core/files.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"
#include "update/folder_files.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace nv::update {
namespace {

// Moving over a file fails with 5 when another program holds it (or it is a running program); the folder
// itself was writable, since the download was created there (see the wine notes: 5 and 32 alike).
enum class Operation { Create, Write, Replace };

FileFault faultOf(DWORD code, Operation operation) {
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return FileFault::NotFound;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return FileFault::DiskFull;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return FileFault::InUse;
    case ERROR_ACCESS_DENIED:
        return operation == Operation::Replace ? FileFault::InUse : FileFault::AccessDenied;
    case ERROR_WRITE_PROTECT:
        return FileFault::AccessDenied;
    default:
        return FileFault::Other;
    }
}

bool failWith(FileError& error, const std::string& path, Operation operation, DWORD code = GetLastError()) {
    error.fault = faultOf(code, operation);
    error.code = code;
    error.path = path;
    return false;
}

class WinPart : public PartFile {
public:
    WinPart(HANDLE handle, std::string path) : handle_(handle), path_(std::move(path)) {}

    bool write(uint64_t offset, const uint8_t* data, size_t size, FileError& error) override {
        while (size > 0) {
            OVERLAPPED at = positioned(offset);
            DWORD wrote = 0;
            const DWORD n = DWORD(std::min<size_t>(size, 1u << 30));
            if (!WriteFile(handle_.get(), data, n, &wrote, &at))
                return failWith(error, path_, Operation::Write);
            if (wrote == 0) return failWith(error, path_, Operation::Write, ERROR_DISK_FULL);
            data += wrote, size -= wrote, offset += wrote;
        }
        return true;
    }
    bool read(uint64_t offset, uint8_t* data, size_t size, FileError& error) override {
        while (size > 0) {
            OVERLAPPED at = positioned(offset);
            DWORD got = 0;
            const DWORD n = DWORD(std::min<size_t>(size, 1u << 30));
            if (!ReadFile(handle_.get(), data, n, &got, &at)) return failWith(error, path_, Operation::Write);
            if (got == 0) return failWith(error, path_, Operation::Write, ERROR_HANDLE_EOF);
            data += got, size -= got, offset += got;
        }
        return true;
    }
    bool flush(FileError& error) override {
        return FlushFileBuffers(handle_.get()) || failWith(error, path_, Operation::Write);
    }

private:
    static OVERLAPPED positioned(uint64_t offset) {
        OVERLAPPED at{};
        at.Offset = DWORD(offset);
        at.OffsetHigh = DWORD(offset >> 32);
        return at;
    }

    win::ScopedHandle handle_;
    std::string path_;
};

class WinGameFiles : public GameFiles {
public:
    explicit WinGameFiles(std::wstring root) : root_(std::move(root)) {
        while (root_.size() > 3 && (root_.back() == L'\\' || root_.back() == L'/'))
            root_.pop_back();
    }

    std::wstring displayPath(const std::string& path) const override { return joined(path); }

    bool info(const std::string& path, FileInfo& info) override {
        info = FileInfo();
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!GetFileAttributesExW(full(path).c_str(), GetFileExInfoStandard, &data)) {
            const DWORD code = GetLastError();
            return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
        }
        info.exists = true;
        info.isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        info.size = uint64_t(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
        info.writeTime =
            int64_t(uint64_t(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime);
        return true;
    }

    bool checksum(const std::string& path, uint32_t& crc, uint64_t& size, const std::atomic<bool>& cancel,
                  FileError& error) override {
        crc = 0, size = 0;
        win::ScopedHandle file(CreateFileW(full(path).c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!file.valid()) return failWith(error, path, Operation::Create);
        std::vector<uint8_t> buffer(1 << 20);
        Crc32 sum;
        for (;;) {
            if (cancel.load(std::memory_order_relaxed))
                return failWith(error, path, Operation::Write, ERROR_CANCELLED);
            DWORD got = 0;
            if (!ReadFile(file.get(), buffer.data(), DWORD(buffer.size()), &got, nullptr))
                return failWith(error, path, Operation::Write);
            if (got == 0) break;
            sum.update(buffer.data(), got);
            size += got;
        }
        crc = sum.value();
        return true;
    }

    std::unique_ptr<PartFile> open(const std::string& path, bool keep, FileError& error) override {
        if (!createParents(path, error)) return nullptr;
        HANDLE handle =
            CreateFileW(full(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                        keep ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            failWith(error, path, Operation::Create);
            return nullptr;
        }
        return std::make_unique<WinPart>(handle, path);
    }

    std::unique_ptr<PartFile> openRead(const std::string& path, FileError& error) override {
        HANDLE handle = CreateFileW(full(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            failWith(error, path, Operation::Create);
            return nullptr;
        }
        return std::make_unique<WinPart>(handle, path);
    }

    bool replace(const std::string& from, const std::string& to, FileError& error) override {
        const std::wstring target = full(to);
        const DWORD attributes = GetFileAttributesW(target.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
            SetFileAttributesW(target.c_str(), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
        if (MoveFileExW(full(from).c_str(), target.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD code = GetLastError();
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
            SetFileAttributesW(target.c_str(), attributes);
        return failWith(error, to, Operation::Replace, code);
    }

    bool remove(const std::string& path, FileError& error) override {
        if (DeleteFileW(full(path).c_str())) return true;
        const DWORD code = GetLastError();
        return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
               failWith(error, path, Operation::Replace, code);
    }

    bool readSmall(const std::string& path, Bytes& bytes, uint64_t maxSize) override {
        return readFileBytes(full(path), bytes, maxSize);
    }

    bool writeSmall(const std::string& path, const Bytes& bytes, FileError& error) override {
        return (createParents(path, error) && writeFileAtomic(full(path), bytes)) ||
               failWith(error, path, Operation::Create);
    }

private:
    std::wstring joined(const std::string& path) const {
        std::wstring out = root_ + L"\\" + utf8ToWide(path);
        std::replace(out.begin(), out.end(), L'/', L'\\');
        return out;
    }
    // Deep game folders pass the classic 260-character limit: such paths take the long form.
    std::wstring full(const std::string& path) const {
        std::wstring out = joined(path);
        if (out.size() >= 240 && out.size() > 2 && out[1] == L':') out = L"\\\\?\\" + out;
        return out;
    }
    bool createParents(const std::string& path, FileError& error) const {
        for (size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            const std::wstring folder = full(path.substr(0, slash));
            if (!CreateDirectoryW(folder.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
                return failWith(error, path.substr(0, slash), Operation::Create);
        }
        return true;
    }

    std::wstring root_;
};

} // namespace

std::unique_ptr<GameFiles> openGameFolder(const std::wstring& folder) {
    return std::make_unique<WinGameFiles>(absolutePath(folder));
}

} // namespace nv::update
