#pragma once
// Reading every resource of an executable and writing a whole new resource set into it.

#include "packager/resources.h"

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace nv {

// Every resource of the file in the order the module lists them (types, then names, then languages); the data
// of those for which keep says so is copied into kept. False (with the system's error code) when the file
// cannot be loaded as a data file. The module is freed before returning, so the file can be updated
// afterwards.
using KeepResourceFn = std::function<bool(const ResourceId& type, const ResourceId& name)>;
bool readResources(const std::wstring& path, const KeepResourceFn& keep, std::vector<ResourceItem>& kept,
                   DWORD& error);

// A resource update that starts from an empty resource set. Some resource writers keep resources that are
// "deleted" by an update (UpdateResourceW with no data), so the build never deletes: it discards everything
// at the start and writes back what is to stay.
class ResourceRewrite {
public:
    ResourceRewrite() = default;
    ~ResourceRewrite();
    ResourceRewrite(const ResourceRewrite&) = delete;
    ResourceRewrite& operator=(const ResourceRewrite&) = delete;

    bool begin(const std::wstring& path);
    // Stops at the first failure: later writes do nothing and report false, and error() keeps that failure's
    // code.
    bool write(const ResourceItem& item) {
        return write(item.type, item.name, item.language, item.data.data(), item.data.size());
    }
    // The same for bytes the caller keeps (a package of many megabytes is not copied into an item).
    bool write(const ResourceId& type, const ResourceId& name, uint16_t language, const uint8_t* data,
               size_t size);
    // Commits when every write succeeded, discards otherwise. False when anything failed.
    bool end();
    DWORD error() const { return error_; }

private:
    HANDLE handle_ = nullptr;
    bool failed_ = false;
    DWORD error_ = 0;
};

} // namespace nv
