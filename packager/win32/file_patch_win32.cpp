#include "packager/win32/file_patch.h"

#include "core/win32/scoped_win.h"

namespace nv {
namespace {

win::ScopedHandle openForWriting(const std::wstring& path) {
    return win::ScopedHandle(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace

bool replaceFileEnd(const std::wstring& path, uint64_t keep, const Bytes& bytes, DWORD& error) {
    win::ScopedHandle file = openForWriting(path);
    LARGE_INTEGER at;
    at.QuadPart = LONGLONG(keep);
    DWORD wrote = 0;
    if (!file.valid() || !SetFilePointerEx(file.get(), at, nullptr, FILE_BEGIN) ||
        !SetEndOfFile(file.get()) ||
        (!bytes.empty() && (!WriteFile(file.get(), bytes.data(), DWORD(bytes.size()), &wrote, nullptr) ||
                            wrote != bytes.size())) ||
        !file.close()) {
        // A short write sets no error of its own.
        error = win::lastErrorOr(ERROR_WRITE_FAULT);
        return false;
    }
    return true;
}

bool editFileInPlace(const std::wstring& path, const FileEditFn& edit, DWORD& error) {
    win::ScopedHandle file = openForWriting(path);
    LARGE_INTEGER size = {};
    if (!file.valid() || !GetFileSizeEx(file.get(), &size)) {
        error = win::lastErrorOr(ERROR_OPEN_FAILED);
        return false;
    }
    win::ScopedHandle mapping(CreateFileMappingW(file.get(), nullptr, PAGE_READWRITE, 0, 0, nullptr));
    win::ScopedView view(mapping.valid() ? MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0) : nullptr);
    if (!view.get()) {
        error = win::lastErrorOr(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    if (!edit(view.get(), size_t(size.QuadPart))) {
        error = ERROR_BAD_EXE_FORMAT;
        return false;
    }
    return true;
}

} // namespace nv
