// Zip skins come from anyone. Any bytes must end in a set or in one message, and whatever reached the set,
// before an error too, must be something the folder reader could have produced: a name the filter keeps as it
// is, no name twice, no file over 32 MiB, no more than 64 MiB in all, and the count of added files behind it.

#include "core/text.h"
#include "readers/zip_reader.h"

#include <cstdlib>
#include <set>
#include <string>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::SkinFileSet set;
    std::wstring error;
    int added = -1;
    const bool ok = nv::readZipSkinBytes(set, data, size, &added, &error);
    check(ok == error.empty());

    std::set<std::string> names;
    for (const nv::SkinEntry& entry : set.entries) {
        check(nv::skinFileName(nv::utf8ToWide(entry.name)) == entry.name);
        check(names.insert(entry.name).second);
        check(entry.data.size() <= nv::SkinFileSet::kMaxFileBytes);
    }
    check(set.totalBytes() <= nv::SkinFileSet::kMaxTotalBytes);
    // Replacements count as added files too, so the count is at least the number of distinct names.
    check(added >= int(set.entries.size()));
    return 0;
}
