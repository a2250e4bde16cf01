// The file list decides which files the patcher writes in the player's game folder: any bytes must end in a
// list or a refusal, and every path of an accepted list must be one that stays inside the folder, clashes
// with no other and reads back unchanged from the list the writer makes of it.

#include "core/text.h"
#include "update/file_list.h"

#include <cstdlib>
#include <set>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace nv::update;
    FileList list;
    std::string error;
    if (!parseFileList(std::string_view(reinterpret_cast<const char*>(data), size), "crclist.txt", list,
                       error)) {
        check(!error.empty() && list.files.empty());
        return 0;
    }
    std::set<std::string> seen;
    for (const ListEntry& entry : list.files) {
        std::string why;
        check(isValidListPath(entry.path, why));
        check(entry.size <= kMaxListFileSize);
        check(seen.insert(nv::asciiLower(entry.path)).second);
    }
    FileList again;
    check(parseFileList(writeFileList(list), "crclist.txt", again, error));
    check(again.files.size() == list.files.size() && again.comments == list.comments);
    for (size_t i = 0; i < list.files.size(); ++i)
        check(again.files[i].path == list.files[i].path && again.files[i].size == list.files[i].size &&
              again.files[i].crc == list.files[i].crc);
    return 0;
}
