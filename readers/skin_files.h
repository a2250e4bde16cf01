#pragma once
// A skin's usable files, whatever their source: a flat, ordered list of (bare lower-case name, bytes).

#include "core/files.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nv {

// A file's bytes, shared by every copy of the set that holds them and never changed: a set is copied for each
// composition, preview and build, and only the few files an edit rewrites get new bytes (putFile). A copy of
// a 64 MiB skin is then a list of names, not 64 MiB more memory to fill.
class SharedBytes {
public:
    SharedBytes() = default;
    SharedBytes(Bytes bytes) : bytes_(std::make_shared<const Bytes>(std::move(bytes))) {}

    const Bytes& bytes() const { return bytes_ ? *bytes_ : none(); }
    operator const Bytes&() const { return bytes(); }
    const uint8_t* data() const { return bytes().data(); }
    size_t size() const { return bytes().size(); }
    bool empty() const { return bytes().empty(); }
    Bytes::const_iterator begin() const { return bytes().begin(); }
    Bytes::const_iterator end() const { return bytes().end(); }
    bool operator==(const SharedBytes& other) const { return bytes() == other.bytes(); }
    bool operator==(const Bytes& other) const { return bytes() == other; }

private:
    static const Bytes& none() {
        static const Bytes nothing;
        return nothing;
    }
    std::shared_ptr<const Bytes> bytes_;
};

struct SkinEntry {
    std::string name; // UTF-8 bare file name, ASCII letters lower-cased
    SharedBytes data;
};

struct SkinFileSet {
    static constexpr uint64_t kMaxFileBytes = 0x2000000;  // 32 MiB for one file
    static constexpr uint64_t kMaxTotalBytes = 0x4000000; // 64 MiB for the whole set (exactly 64 MiB is fine)

    // In insertion order; nothing ever sorts them.
    std::vector<SkinEntry> entries;

    // Lower-cases the name's ASCII letters; replaces the data of an entry of the same name in place, or
    // appends.
    void putFile(std::string_view name, Bytes data);
    // The data of the entry of that name (compared without regard to ASCII case), or null.
    const Bytes* findFile(std::string_view name) const;
    bool hasFile(std::string_view name) const { return findFile(name) != nullptr; }
    uint64_t totalBytes() const;
    void clear() { entries.clear(); }
};

// Fills a set with many files in one go (an archive's entries) at a constant cost per file, by putFile's
// rules: an index of the names and a running total, instead of a scan of the set for each file. An archive of
// tens of thousands of tiny entries would otherwise cost minutes. Nothing else may change the set while a
// filler works on it.
class SkinSetFiller {
public:
    explicit SkinSetFiller(SkinFileSet& set);
    uint64_t totalBytes() const { return total_; }
    void putFile(std::string_view name, Bytes data);

private:
    SkinFileSet& set_;
    std::unordered_map<std::string, size_t> index_; // set name -> position in set_.entries
    uint64_t total_ = 0;
};

// The set name of a file ("" when the file does not belong in a skin): the bare name, UTF-8,
// ASCII-lower-cased; dot-files, thumbs.db and desktop.ini are refused; only the picture, XML, INI and text
// extensions pass.
std::string skinFileName(std::wstring_view path);

// Reads one file into the set. Messages: "Desteklenmeyen dosya: " + name, "Okunamadi: " + path,
// "Skin paketi 64 MB sinirini asiyor.". A failure leaves the set unchanged.
bool addSkinFile(SkinFileSet& set, const std::wstring& path, std::wstring* error = nullptr);

// Reads the accepted files directly inside a folder (not recursive). False only when the folder cannot be
// listed
// ("Klasor okunamadi: " + folder); a file that fails is skipped, and the first such message is kept in error
// when error is still empty. added (when given) counts the files added.
bool addSkinFolder(SkinFileSet& set, const std::wstring& folder, int* added = nullptr,
                   std::wstring* error = nullptr);

} // namespace nv
