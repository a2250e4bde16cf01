#include "cli/skin_input.h"

#include "core/win32/scoped_win.h"
#include "skin/win32/embedded_skin.h"

#include <windows.h>

namespace nv {

bool readExecutableSkin(const std::wstring& path, SkinFileSet& files, std::wstring& message) {
    // As an image resource first, as a plain data file when the loader refuses that.
    win::ScopedModule module(
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    if (!module.get()) module.reset(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    if (!module.get()) {
        message = L"Okunamadı: " + path;
        return false;
    }
    return readEmbeddedSkin(module.get(), files, &message);
}

} // namespace nv
