#include "skin/package.h"

#include "core/byte_order.h"
#include "core/crc32.h"
#include "core/memory_guard.h"

#include <cstring>

namespace nv {
namespace {

bool fail(std::wstring* error, const wchar_t* message) {
    if (error) *error = message;
    return false;
}

// The checks of readSkinPackage, in their order; the entries go to out when one is given.
bool readEntries(const uint8_t* data, size_t size, SkinFileSet* out, std::wstring* error) {
    if (size < 16 || std::memcmp(data, "NVSK", 4) != 0)
        return fail(error, L"Skin paketi bulunamadi ya da bozuk.");
    // Nothing in the header is believed before the checksum over everything before it matches.
    const size_t end = size - 4;
    if (Crc32::of(data, end) != readLe32(data + end)) return fail(error, L"Skin paketi bozuk (CRC).");
    if (readLe32(data + 4) != kSkinPackageVersion) return fail(error, L"Skin paketi surumu desteklenmiyor.");
    const uint32_t count = readLe32(data + 8);
    if (count > kSkinPackageMaxEntries) return fail(error, L"Skin paketi bozuk (adet).");

    // Every test compares against what remains before end, so no sum can overflow.
    size_t pos = 12;
    for (uint32_t i = 0; i < count; ++i) {
        if (end - pos < 2) return fail(error, L"Skin paketi bozuk.");
        const size_t nameLength = readLe16(data + pos);
        if (end - pos - 2 < nameLength + 4) return fail(error, L"Skin paketi bozuk.");
        const uint8_t* name = data + pos + 2;
        const size_t dataLength = readLe32(name + nameLength);
        const size_t start = pos + 2 + nameLength + 4;
        if (end - start < dataLength) return fail(error, L"Skin paketi bozuk.");
        // Names are taken exactly as stored: a plain append, no lower-casing, no duplicate check.
        if (out)
            out->entries.push_back({std::string(reinterpret_cast<const char*>(name), nameLength),
                                    Bytes(data + start, data + start + dataLength)});
        pos = start + dataLength;
    }
    // Bytes between the last entry and the checksum are ignored on purpose.
    return true;
}

} // namespace

Bytes writeSkinPackage(const SkinFileSet& files) {
    Bytes out;
    out.reserve(size_t(files.totalBytes()) + 16 + 64 * files.entries.size());
    out.insert(out.end(), {'N', 'V', 'S', 'K'});
    appendLe32(out, kSkinPackageVersion);
    appendLe32(out, uint32_t(files.entries.size()));
    for (const SkinEntry& entry : files.entries) {
        appendLe16(out, uint32_t(entry.name.size()));
        out.insert(out.end(), entry.name.begin(), entry.name.end());
        appendLe32(out, uint32_t(entry.data.size()));
        out.insert(out.end(), entry.data.begin(), entry.data.end());
    }
    appendLe32(out, Crc32::of(out.data(), out.size()));
    return out;
}

bool readSkinPackage(const uint8_t* data, size_t size, SkinFileSet& out, std::wstring* error) {
    out.clear();
    return failOnBadAlloc(error, [&] { return readEntries(data, size, &out, error); });
}

bool checkSkinPackage(const uint8_t* data, size_t size, std::wstring* error) {
    return readEntries(data, size, nullptr, error);
}

bool packSkinFiles(const SkinFileSet& files, Bytes& out, std::wstring* error) {
    out.clear();
    const bool ok = failOnBadAlloc(error, [&] {
        out = writeSkinPackage(files);
        return checkSkinPackage(out.data(), out.size(), error);
    });
    if (!ok) out = Bytes();
    return ok;
}

} // namespace nv
