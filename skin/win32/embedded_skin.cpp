#include "skin/win32/embedded_skin.h"

#include "skin/package.h"

namespace nv {

bool findEmbeddedSkin(HMODULE module, const uint8_t*& data, size_t& size, std::wstring* error) {
    HRSRC resource =
        FindResourceW(module, MAKEINTRESOURCEW(SKIN_RESOURCE_ID), MAKEINTRESOURCEW(10) /* RT_RCDATA */);
    if (!resource) {
        if (error) *error = L"Gomulu skin yok.";
        return false;
    }
    // Resource memory belongs to the module: nothing here is freed.
    HGLOBAL loaded = LoadResource(module, resource);
    size = SizeofResource(module, resource);
    data = loaded ? static_cast<const uint8_t*>(LockResource(loaded)) : nullptr;
    if (!data || size == 0) {
        if (error) *error = L"Gomulu skin okunamadi.";
        return false;
    }
    return true;
}

bool readEmbeddedSkin(HMODULE module, SkinFileSet& out, std::wstring* error) {
    out.clear();
    const uint8_t* data = nullptr;
    size_t size = 0;
    return findEmbeddedSkin(module, data, size, error) && readSkinPackage(data, size, out, error);
}

} // namespace nv
