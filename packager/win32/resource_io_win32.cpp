#include "packager/win32/resource_io.h"

#include "core/win32/scoped_win.h"

namespace nv {
namespace {

ResourceId idOf(LPCWSTR value) {
    if (IS_INTRESOURCE(value)) return ResourceId::number(LOWORD(reinterpret_cast<ULONG_PTR>(value)));
    return {false, 0, value};
}

LPCWSTR pointerOf(const ResourceId& id) {
    return id.isInteger ? MAKEINTRESOURCEW(id.id) : id.text.c_str();
}

HMODULE loadAsData(const std::wstring& path) {
    HMODULE module =
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (!module) module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    return module;
}

struct Listing {
    std::vector<ResourceId> ids;
    std::vector<WORD> languages;
};

BOOL CALLBACK addType(HMODULE, LPWSTR type, LONG_PTR context) {
    reinterpret_cast<Listing*>(context)->ids.push_back(idOf(type));
    return TRUE;
}

BOOL CALLBACK addName(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR context) {
    reinterpret_cast<Listing*>(context)->ids.push_back(idOf(name));
    return TRUE;
}

BOOL CALLBACK addLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR context) {
    reinterpret_cast<Listing*>(context)->languages.push_back(language);
    return TRUE;
}

std::vector<ResourceId> namesOf(HMODULE module, const ResourceId& type) {
    Listing names;
    EnumResourceNamesW(module, pointerOf(type), addName, reinterpret_cast<LONG_PTR>(&names));
    return names.ids;
}

std::vector<WORD> languagesOf(HMODULE module, const ResourceId& type, const ResourceId& name) {
    Listing languages;
    EnumResourceLanguagesW(module, pointerOf(type), pointerOf(name), addLanguage,
                           reinterpret_cast<LONG_PTR>(&languages));
    return languages.languages;
}

} // namespace

std::vector<ResourceRef> listResources(const std::wstring& path, uint32_t type) {
    std::vector<ResourceRef> refs;
    win::ScopedModule module(loadAsData(path));
    if (!module.get()) return refs;
    const ResourceId typeId = ResourceId::number(uint16_t(type));
    for (const ResourceId& name : namesOf(module.get(), typeId))
        for (WORD language : languagesOf(module.get(), typeId, name))
            refs.push_back({type, name.text, name.id, name.isInteger, language});
    return refs;
}

bool readResources(const std::wstring& path, const KeepResourceFn& keep, std::vector<ResourceItem>& kept,
                   DWORD& error) {
    kept.clear();
    win::ScopedModule module(loadAsData(path));
    if (!module.get()) {
        error = win::lastErrorOr(ERROR_BAD_EXE_FORMAT);
        return false;
    }
    Listing types;
    // A module without resources ends the enumeration with an error; there is simply nothing to keep.
    EnumResourceTypesW(module.get(), addType, reinterpret_cast<LONG_PTR>(&types));
    for (const ResourceId& type : types.ids) {
        for (const ResourceId& name : namesOf(module.get(), type)) {
            if (!keep(type, name)) continue;
            for (WORD language : languagesOf(module.get(), type, name)) {
                HRSRC found = FindResourceExW(module.get(), pointerOf(type), pointerOf(name), language);
                HGLOBAL loaded = found ? LoadResource(module.get(), found) : nullptr;
                const uint8_t* data = loaded ? static_cast<const uint8_t*>(LockResource(loaded)) : nullptr;
                if (!data) {
                    error = found ? win::lastErrorOr(ERROR_RESOURCE_DATA_NOT_FOUND)
                                  : ERROR_RESOURCE_DATA_NOT_FOUND;
                    return false;
                }
                kept.push_back(
                    {type, name, language, Bytes(data, data + SizeofResource(module.get(), found))});
            }
        }
    }
    return true;
}

ResourceRewrite::~ResourceRewrite() {
    if (handle_) EndUpdateResourceW(handle_, TRUE);
}

bool ResourceRewrite::begin(const std::wstring& path) {
    handle_ = BeginUpdateResourceW(path.c_str(), TRUE);
    // Wine fails without an error code on a file that this process still has loaded.
    if (!handle_) error_ = win::lastErrorOr(ERROR_OPEN_FAILED);
    return handle_ != nullptr;
}

bool ResourceRewrite::write(const ResourceId& type, const ResourceId& name, uint16_t language,
                            const uint8_t* data, size_t size) {
    if (failed_ || !handle_) return false;
    // A null pointer with no bytes would ask for a deletion; an empty resource still needs a valid pointer.
    static const uint8_t kNothing = 0;
    if (size == 0) data = &kNothing;
    if (!UpdateResourceW(handle_, pointerOf(type), pointerOf(name), language, const_cast<uint8_t*>(data),
                         DWORD(size))) {
        failed_ = true;
        error_ = win::lastErrorOr(ERROR_WRITE_FAULT);
        return false;
    }
    return true;
}

bool ResourceRewrite::end() {
    if (!handle_) return false;
    HANDLE handle = handle_;
    handle_ = nullptr;
    if (!EndUpdateResourceW(handle, failed_ ? TRUE : FALSE)) {
        if (!failed_) error_ = win::lastErrorOr(ERROR_WRITE_FAULT);
        return false;
    }
    return !failed_;
}

} // namespace nv
