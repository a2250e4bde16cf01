#include "build/win32/file_patch.h"

#include "core/win32/scoped_win.h"

#include <algorithm>
#include <cstring>

namespace nv {
namespace {

constexpr size_t kBlock = 0x10000;

bool seek(HANDLE file, size_t offset) {
    LARGE_INTEGER at;
    at.QuadPart = LONGLONG(offset);
    return SetFilePointerEx(file, at, nullptr, FILE_BEGIN) != 0;
}

} // namespace

bool patchFile(const std::wstring& path, const Bytes& before, const Bytes& after, DWORD& error) {
    win::ScopedHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid()) {
        error = GetLastError();
        return false;
    }
    for (size_t at = 0; at < after.size(); at += kBlock) {
        const size_t length = std::min(kBlock, after.size() - at);
        if (at + length <= before.size() && std::memcmp(&before[at], &after[at], length) == 0) continue;
        DWORD wrote = 0;
        if (!seek(file.get(), at) || !WriteFile(file.get(), &after[at], DWORD(length), &wrote, nullptr) ||
            wrote != length) {
            error = GetLastError();
            return false;
        }
    }
    if (!seek(file.get(), after.size()) || !SetEndOfFile(file.get()) || !file.close()) {
        error = GetLastError();
        return false;
    }
    return true;
}

} // namespace nv
