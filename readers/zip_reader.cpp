// A small zip reader for skins. It trusts the central directory for every entry's sizes, method and CRC, so
// data descriptors never matter; it supports only the stored and deflate methods, refuses encrypted and zip64
// archives, and checks the CRC-32 of every file it extracts. Entries that would never enter the set (folders,
// resource forks, names the filter refuses) are skipped before any of their other fields are judged, so a
// skin is not refused for a file it would not use.

#include "readers/zip_reader.h"

#include "core/crc32.h"
#include "core/memory_guard.h"
#include "core/text.h"
#include "readers/inflate.h"

#include <string_view>

namespace nv {
namespace {

constexpr uint64_t kMaxArchiveBytes = 0x10000000; // 256 MiB

constexpr uint32_t kEndSignature = 0x06054b50;
constexpr uint32_t kCentralSignature = 0x02014b50;
constexpr uint32_t kLocalSignature = 0x04034b50;

constexpr size_t kEndSize = 22;
constexpr size_t kCentralSize = 46;
constexpr size_t kLocalSize = 30;
constexpr size_t kMaxCommentSize = 0xFFFF;

constexpr uint16_t kFlagEncrypted = 0x0001;
constexpr uint16_t kFlagUtf8Name = 0x0800;

constexpr uint16_t kMethodStored = 0;
constexpr uint16_t kMethodDeflate = 8;

// A window onto the archive. Every read is checked against the window's size; a read that does not fit gives
// zero, which the callers never rely on because they check the window's length first.
struct Window {
    const uint8_t* data = nullptr;
    size_t size = 0;

    uint32_t u16(size_t at) const {
        if (at > size || size - at < 2) return 0;
        return uint32_t(data[at]) | uint32_t(data[at + 1]) << 8;
    }
    uint32_t u32(size_t at) const {
        if (at > size || size - at < 4) return 0;
        return u16(at) | u16(at + 2) << 16;
    }
    // The bytes from at to the end, or an empty window when at lies beyond it.
    Window from(uint64_t at) const {
        if (at >= size) return {data + size, 0};
        return {data + at, size - size_t(at)};
    }
};

// The central directory's view of one entry.
struct CentralEntry {
    uint16_t flags = 0;
    uint16_t method = 0;
    uint32_t crc = 0;
    uint32_t compressedSize = 0;
    uint32_t uncompressedSize = 0;
    uint32_t localOffset = 0;
    std::string_view rawName;
};

bool fail(std::wstring* error, std::wstring message) {
    if (error) *error = std::move(message);
    return false;
}

// Scans backwards from the last place a record fits to the earliest place one could start while its comment
// still reaches the end of the file; the match closest to the end wins.
bool findEndRecord(Window archive, size_t& at) {
    const size_t last = archive.size - kEndSize;
    const size_t first =
        archive.size > kEndSize + kMaxCommentSize ? archive.size - kEndSize - kMaxCommentSize : 0;
    for (size_t pos = last;; --pos) {
        if (archive.u32(pos) == kEndSignature) {
            at = pos;
            return true;
        }
        if (pos == first) return false;
    }
}

// Resource forks that one archiver adds under "__MACOSX/"; matched anywhere in the raw name, case included.
bool isResourceFork(std::string_view rawName) {
    return rawName.size() >= 8 && rawName.find("__MACOSX") != std::string_view::npos;
}

bool isFolderEntry(std::string_view rawName) {
    return !rawName.empty() && (rawName.back() == '/' || rawName.back() == '\\');
}

// Extracts one accepted entry into out, checked against its CRC. name is the converted full name for
// messages.
bool extractEntry(Window archive, const CentralEntry& entry, const std::wstring& name, Bytes& out,
                  std::wstring* error) {
    if (uint64_t(entry.localOffset) + kLocalSize > archive.size ||
        archive.u32(entry.localOffset) != kLocalSignature)
        return fail(error, L"Zip yerel basligi bozuk.");
    // Only the local name and extra lengths are taken from the local header: they place the data.
    const Window local = archive.from(entry.localOffset);
    const uint64_t dataStart = uint64_t(entry.localOffset) + kLocalSize + local.u16(26) + local.u16(28);
    if (dataStart + entry.compressedSize > archive.size) return fail(error, L"Zip verisi bozuk.");
    const uint8_t* data = archive.data + size_t(dataStart);

    if (entry.method == kMethodStored) {
        if (entry.compressedSize != entry.uncompressedSize) return fail(error, L"Zip verisi bozuk.");
        out.assign(data, data + entry.compressedSize);
    } else if (entry.method == kMethodDeflate) {
        std::wstring message;
        if (!inflateRaw(data, entry.compressedSize, entry.uncompressedSize, out, &message))
            return fail(error, name + L": " + message);
    } else {
        return fail(error, L"Desteklenmeyen zip sikistirma yontemi: " + name);
    }

    if (Crc32::of(out.data(), out.size()) != entry.crc) return fail(error, L"Zip CRC hatasi: " + name);
    return true;
}

// The walk over the central directory, for readZipSkinBytes.
bool readEntries(SkinFileSet& set, const uint8_t* data, size_t size, int* added, std::wstring* error) {
    const Window archive{data, size};
    if (size < kEndSize) return fail(error, L"Gecersiz zip dosyasi.");

    size_t endAt = 0;
    if (!findEndRecord(archive, endAt)) return fail(error, L"Gecersiz zip dosyasi (dizin sonu yok).");
    const Window end = archive.from(endAt);
    const uint32_t count = end.u16(10);
    const uint32_t directorySize = end.u32(12);
    const uint32_t directoryOffset = end.u32(16);
    if (count == 0xFFFF || directoryOffset == 0xFFFFFFFF) return fail(error, L"Zip64 desteklenmiyor.");
    if (uint64_t(directoryOffset) + directorySize > size) return fail(error, L"Zip dizini bozuk.");

    // The walk trusts the count, not the directory size: each header must lie inside the archive.
    uint64_t pos = directoryOffset;
    SkinSetFiller filler(set);
    for (uint32_t i = 0; i < count; ++i) {
        const Window header = archive.from(pos);
        if (header.size < kCentralSize || header.u32(0) != kCentralSignature)
            return fail(error, L"Zip dizini bozuk.");
        const size_t nameLength = header.u16(28);
        if (header.size - kCentralSize < nameLength) return fail(error, L"Zip dizini bozuk.");
        pos += kCentralSize + nameLength + header.u16(30) + header.u16(32);

        CentralEntry entry;
        entry.flags = uint16_t(header.u16(8));
        entry.method = uint16_t(header.u16(10));
        entry.crc = header.u32(16);
        entry.compressedSize = header.u32(20);
        entry.uncompressedSize = header.u32(24);
        entry.localOffset = header.u32(42);
        entry.rawName =
            std::string_view(reinterpret_cast<const char*>(header.data) + kCentralSize, nameLength);

        if (isFolderEntry(entry.rawName) || isResourceFork(entry.rawName)) continue;
        const std::wstring name =
            (entry.flags & kFlagUtf8Name) ? utf8ToWide(entry.rawName) : cp437ToWide(entry.rawName);
        // Folders inside the archive, a single wrapping folder included, fall away here.
        std::string setName = skinFileName(name);
        if (setName.empty()) continue;

        if (entry.flags & kFlagEncrypted) return fail(error, L"Sifreli zip desteklenmiyor.");
        if (entry.uncompressedSize > SkinFileSet::kMaxFileBytes)
            return fail(error, L"Zip icinde cok buyuk dosya: " + name);
        Bytes bytes;
        if (!extractEntry(archive, entry, name, bytes, error)) return false;
        // The current total counts even when the entry will replace an earlier one of the same name.
        if (filler.totalBytes() + bytes.size() > SkinFileSet::kMaxTotalBytes)
            return fail(error, L"Skin paketi 64 MB sinirini asiyor.");
        filler.putFile(setName, std::move(bytes));
        if (added) ++*added;
    }
    return true;
}

} // namespace

bool readZipSkinBytes(SkinFileSet& set, const uint8_t* data, size_t size, int* added, std::wstring* error) {
    if (added) *added = 0;
    return failOnBadAlloc(error, [&] { return readEntries(set, data, size, added, error); });
}

bool readZipSkin(SkinFileSet& set, const std::wstring& path, std::wstring* error, int* added) {
    if (added) *added = 0;
    Bytes archive;
    if (!readFileBytes(path, archive, kMaxArchiveBytes)) return fail(error, L"Zip okunamadi: " + path);
    return readZipSkinBytes(set, archive.data(), archive.size(), added, error);
}

} // namespace nv
