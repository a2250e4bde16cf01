// A patcher with update keys parses the signed fields of whatever list a server sends before it can know the
// list is genuine: any bytes must end in a refusal or in fields that are whole (every listed file with its
// hash, the signature covering every byte before its line) and that the writer reproduces.

#include "update/signed_list.h"

#include <cstdlib>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace nv::update;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    FileList list;
    SignedList info;
    std::string error;
    if (!parseSignedList(bytes, "crclist.txt", list, info, error)) {
        check(!error.empty() && list.files.empty());
        return 0;
    }
    check(info.signedSize < size && bytes.substr(info.signedSize) == signatureLine(info.signature));
    check(info.version >= 1 && info.version <= kMaxListVersion);
    for (const ListEntry& entry : list.files)
        check(info.sha256.count(entry.path) == 1);
    // The writer's lines for the same fields read back as the same fields.
    FileList rest = list;
    rest.comments.clear();
    for (const std::string& comment : list.comments)
        if (!comment.starts_with("#nvversion") && !comment.starts_with("#nvexpires") &&
            !comment.starts_with("#nvsha256"))
            rest.comments.push_back(comment);
    FileList again;
    SignedList back;
    check(parseSignedList(signedListBody(rest, info.version, info.expires, info.sha256) +
                              signatureLine(info.signature),
                          "crclist.txt", again, back, error));
    check(back.version == info.version && back.expires == info.expires && back.sha256 == info.sha256 &&
          again.files.size() == list.files.size());
    return 0;
}
