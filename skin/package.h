#pragma once
// The skin package: a skin's files as one checksummed block of bytes, stored in the patcher executable as
// resource RT_RCDATA 900, language 0.
//
//   "NVSK" | version u32 = 1 | count u32 (<= 4096) | count x { name length u16 | name | data length u32 |
//   data } | CRC-32 u32 of everything before it          (all integers little-endian)

#include "core/files.h"
#include "readers/skin_files.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nv {

constexpr uint16_t SKIN_RESOURCE_ID = 900;
// The update keys a build embeds (RT_RCDATA, the .pub files' lines); a patcher without it trusts its server.
constexpr uint16_t UPDATE_KEYS_RESOURCE_ID = 901;
constexpr uint32_t kSkinPackageVersion = 1;
constexpr uint32_t kSkinPackageMaxEntries = 0x1000;

// Never fails.
Bytes writeSkinPackage(const SkinFileSet& files);

// writeSkinPackage, then the package read back as the patcher will read it: what the reader would refuse
// (more than 4096 files, say) is refused here with the reader's message, and out is left empty.
bool packSkinFiles(const SkinFileSet& files, Bytes& out, std::wstring* error = nullptr);

// Empties out, then reads the entries in package order, names exactly as stored. Messages:
// "Skin paketi bulunamadi ya da bozuk.", "Skin paketi bozuk (CRC).", "Skin paketi surumu desteklenmiyor.",
// "Skin paketi bozuk (adet).", "Skin paketi bozuk.".
bool readSkinPackage(const uint8_t* data, size_t size, SkinFileSet& out, std::wstring* error = nullptr);

// The same checks and messages as readSkinPackage, without copying the files out: whether the patcher would
// read these bytes.
bool checkSkinPackage(const uint8_t* data, size_t size, std::wstring* error = nullptr);

} // namespace nv
