#pragma once
// Zip skins: stored and deflated entries through the central directory, every file's CRC checked,
// the same name filter and limits as a folder. Stops at the first error.

#include "readers/skin_files.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nv {

// The archive's bytes in memory; accepted files are added to set (what it holds stays). added (when given)
// counts the files put into the set.
bool readZipSkinBytes(SkinFileSet& set, const uint8_t* data, size_t size, int* added = nullptr,
                      std::wstring* error = nullptr);

// Reads the archive from disk (at most 256 MiB; "Zip okunamadi: " + path) and hands it to readZipSkinBytes.
bool readZipSkin(SkinFileSet& set, const std::wstring& path, std::wstring* error = nullptr,
                 int* added = nullptr);

} // namespace nv
