#include "packager/resources.h"

#include "skin/package.h"

namespace nv {

bool replacedByBuild(const ResourceId& type, const ResourceId& name, bool newIcon) {
    if (type.is(kResourceVersion)) return true;
    if (type.is(kResourceRcdata)) return name.is(SKIN_RESOURCE_ID) || name.is(UPDATE_KEYS_RESOURCE_ID);
    return newIcon && (type.is(kResourceIcon) || type.is(kResourceGroupIcon));
}

std::vector<ResourceItem> iconResources(const Bytes& ico, const std::vector<IcoEntry>& entries) {
    std::vector<ResourceItem> items;
    for (size_t i = 0; i < entries.size(); ++i) {
        const auto first = ico.begin() + entries[i].offset;
        items.push_back({ResourceId::number(kResourceIcon), ResourceId::number(uint16_t(i + 1)), 0,
                         Bytes(first, first + entries[i].byteSize)});
    }
    items.push_back(
        {ResourceId::number(kResourceGroupIcon), ResourceId::number(1), 0, iconGroupResource(entries)});
    return items;
}

} // namespace nv
