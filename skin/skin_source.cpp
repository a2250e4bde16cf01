#include "skin/skin_source.h"

#include "core/files.h"
#include "core/text.h"
#include "readers/zip_reader.h"

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
    if (endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip")))
        return readZipSkin(set, path, &message, added);
    message = L"Zip dosyası ya da klasör bırakın.";
    return false;
}

} // namespace nv
