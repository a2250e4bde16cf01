#pragma once
// The patcher's version information (RT_VERSION): a VS_VERSIONINFO block with the fixed file information and
// the eight standard strings in a US English, Unicode table ("040904b0").

#include "packager/build_job.h"
#include "core/files.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nv {

// Up to four numbers from the start of the text, each capped at 65535: "2" is 2.0.0.0, "1..2" is 1.2.0.0,
// "1.2-beta" is 1.2.0.0, "v1.2" (or an empty text) is 1.0.0.0.
std::array<uint16_t, 4> versionNumbers(const std::wstring& versionText);

// Whether the text is exactly what versionNumbers reads without loss: one to four decimal numbers of
// 0..65535, apart by single dots, nothing else.
bool isVersionText(std::wstring_view text);

// The eight strings in the order they are written, with every empty field replaced by its derived value.
std::vector<std::pair<std::wstring, std::wstring>> versionStrings(const VersionInfoFields& fields);

// The whole resource data.
Bytes buildVersionResource(const VersionInfoFields& fields);

} // namespace nv
