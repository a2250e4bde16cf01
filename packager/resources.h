#pragma once
// Resources of an executable as the build sees them: which ones a build replaces, and the new ones it writes.
// Reading and writing them is the platform's part (packager/win32).

#include "packager/icon.h"
#include "core/files.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nv {

constexpr uint16_t kResourceIcon = 3;       // RT_ICON
constexpr uint16_t kResourceRcdata = 10;    // RT_RCDATA
constexpr uint16_t kResourceGroupIcon = 14; // RT_GROUP_ICON
constexpr uint16_t kResourceVersion = 16;   // RT_VERSION

// A resource type or name: an integer identifier or a string.
struct ResourceId {
    bool isInteger = true;
    uint16_t id = 0;
    std::wstring text;

    static ResourceId number(uint16_t id) { return {true, id, {}}; }
    bool is(uint16_t number) const { return isInteger && id == number; }
    bool operator==(const ResourceId&) const = default;
};

// One resource with its data.
struct ResourceItem {
    ResourceId type, name;
    uint16_t language = 0;
    Bytes data;
};

// One existing resource of an integer type, as listed from a file.
struct ResourceRef {
    uint32_t type = 0;
    std::wstring name; // when the name is a string
    uint16_t id = 0;   // when the name is an integer
    bool isIntegerName = true;
    uint16_t language = 0;
};

// Every resource of the given type in the file, one entry per name and language; empty when the file cannot
// be loaded as a data file.
std::vector<ResourceRef> listResources(const std::wstring& path, uint32_t type);

// True for the resources a build writes anew: the version information, the skin package and the update keys
// (RT_RCDATA 900 and 901 in any language, no other RT_RCDATA) and, when a new icon is given, every icon and
// icon group.
bool replacedByBuild(const ResourceId& type, const ResourceId& name, bool newIcon);

// The RT_ICON images 1..n (language 0) of a checked ICO file, followed by its RT_GROUP_ICON 1.
std::vector<ResourceItem> iconResources(const Bytes& ico, const std::vector<IcoEntry>& entries);

} // namespace nv
