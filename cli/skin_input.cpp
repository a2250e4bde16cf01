#include "cli/skin_input.h"

#include "core/files.h"
#include "core/text.h"
#include "skin/package.h"

namespace nv {
namespace {

// A package holds at most 64 MiB of data plus its names; anything this large is not one.
constexpr uint64_t kMaxPackageFile = 0x10000000;

} // namespace

bool loadSkinInput(const std::wstring& path, SkinWorkspace& workspace, std::wstring& message, std::wstring& note) {
    note.clear();
    if (folderExists(path) || endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip"))) {
        if (!workspace.loadSkinSource(path, message)) return false;
        note = message;
        message.clear();
        return true;
    }
    SkinFileSet files;
    if (endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".exe"))) {
        if (!readExecutableSkin(path, files, message)) return false;
    } else {
        Bytes bytes;
        if (!readFileBytes(path, bytes, kMaxPackageFile)) {
            message = fileExists(path) ? L"Okunamadi: " + path : L"Zip dosyası ya da klasör bırakın.";
            return false;
        }
        if (!readSkinPackage(bytes.data(), bytes.size(), files, &message)) return false;
    }
    return workspace.loadSkinSet(std::move(files), path, message);
}

} // namespace nv
