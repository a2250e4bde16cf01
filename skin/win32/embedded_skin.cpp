#include "skin/win32/embedded_skin.h"

#include "skin/package.h"

namespace nv {

bool readEmbeddedSkin(HMODULE module, SkinFileSet& out, std::wstring* error) {
    out.clear();
    HRSRC resource =
        FindResourceW(module, MAKEINTRESOURCEW(SKIN_RESOURCE_ID), MAKEINTRESOURCEW(10) /* RT_RCDATA */);
    if (!resource) {
        if (error) *error = L"Gomulu skin yok.";
        return false;
    }
    // Resource memory belongs to the module: nothing here is freed.
    HGLOBAL loaded = LoadResource(module, resource);
    DWORD size = SizeofResource(module, resource);
    const void* bytes = loaded ? LockResource(loaded) : nullptr;
    if (!bytes || size == 0) {
        if (error) *error = L"Gomulu skin okunamadi.";
        return false;
    }
    return readSkinPackage(static_cast<const uint8_t*>(bytes), size, out, error);
}

} // namespace nv
