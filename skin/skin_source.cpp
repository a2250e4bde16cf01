#include "skin/skin_source.h"

#include "core/files.h"
#include "core/text.h"

namespace nv {

bool readSkinSource(const std::wstring& path, SkinFileSet& set, std::wstring& message, int* added,
                    std::wstring* note) {
    if (added) *added = 0;
    if (folderExists(path)) {
        std::wstring firstFailure;
        if (!addSkinFolder(set, path, added, &firstFailure)) {
            message = firstFailure;
            return false;
        }
        if (note) *note = firstFailure;
        return true;
    }
    message = L"Zip dosyası ya da klasör bırakın.";
    return false;
}

} // namespace nv
