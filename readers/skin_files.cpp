#include "readers/skin_files.h"

#include "core/paths.h"
#include "core/text.h"

namespace nv {
namespace {

// Tested in this order against the end of the lower-cased name.
constexpr std::string_view kAcceptedExtensions[] = {".png", ".jpg", ".jpeg", ".bmp", ".gif",
                                                    ".ico", ".xml", ".ini",  ".txt"};

} // namespace

void SkinFileSet::putFile(std::string_view name, Bytes data) {
    std::string key = asciiLower(name);
    for (SkinEntry& entry : entries) {
        if (entry.name == key) {
            entry.data = std::move(data);
            return;
        }
    }
    entries.push_back({std::move(key), std::move(data)});
}

const Bytes* SkinFileSet::findFile(std::string_view name) const {
    // A package read back keeps its names as stored, so a foreign writer's "Fernwick.url.xml" is found too.
    for (const SkinEntry& entry : entries)
        if (equalsIgnoreCase(entry.name, name)) return &entry.data.bytes();
    return nullptr;
}

SkinSetFiller::SkinSetFiller(SkinFileSet& set) : set_(set), total_(set.totalBytes()) {
    // The first of two equal names is the one that putFile would find.
    for (size_t i = 0; i < set.entries.size(); ++i)
        index_.try_emplace(set.entries[i].name, i);
}

void SkinSetFiller::putFile(std::string_view name, Bytes data) {
    std::string key = asciiLower(name);
    total_ += data.size();
    auto [it, added] = index_.try_emplace(key, set_.entries.size());
    if (added) {
        set_.entries.push_back({std::move(key), std::move(data)});
        return;
    }
    SharedBytes& old = set_.entries[it->second].data;
    total_ -= old.size();
    old = SharedBytes(std::move(data));
}

uint64_t SkinFileSet::totalBytes() const {
    uint64_t total = 0;
    for (const SkinEntry& entry : entries)
        total += entry.data.size();
    return total;
}

std::string skinFileName(std::wstring_view path) {
    std::string name = asciiLower(wideToUtf8(pathFileName(path)));
    // Dot-files include the "._name" resource forks that some systems leave beside every file.
    if (name.empty() || name[0] == '.' || name == "thumbs.db" || name == "desktop.ini") return {};
    for (std::string_view extension : kAcceptedExtensions)
        if (endsWithIgnoreCase(name, extension)) return name;
    return {};
}

bool addSkinFile(SkinFileSet& set, const std::wstring& path, std::wstring* error) {
    std::string name = skinFileName(path);
    if (name.empty()) {
        if (error) *error = L"Desteklenmeyen dosya: " + pathFileName(path);
        return false;
    }
    Bytes data;
    if (!readFileBytes(path, data, SkinFileSet::kMaxFileBytes)) {
        if (error) *error = L"Okunamadi: " + path;
        return false;
    }
    // The current total counts even when the new file will replace an entry of the same name.
    if (set.totalBytes() + data.size() > SkinFileSet::kMaxTotalBytes) {
        if (error) *error = L"Skin paketi 64 MB sinirini asiyor.";
        return false;
    }
    set.putFile(name, std::move(data));
    return true;
}

bool addSkinFolder(SkinFileSet& set, const std::wstring& folder, int* added, std::wstring* error) {
    if (added) *added = 0;
    std::vector<FolderEntry> listing;
    if (!listFolder(folder, listing)) {
        if (error) *error = L"Klasor okunamadi: " + folder;
        return false;
    }
    for (const FolderEntry& entry : listing) {
        if (entry.isFolder || skinFileName(entry.name).empty()) continue;
        std::wstring message;
        if (addSkinFile(set, pathJoin(folder, entry.name), &message)) {
            if (added) ++*added;
        } else if (error && error->empty()) {
            *error = message;
        }
    }
    return true;
}

} // namespace nv
