#pragma once
// Path splitting and joining. Both '\\' and '/' count as separators everywhere.

#include <string>
#include <string_view>

namespace nv {

// The part after the last separator, or the whole string when there is none.
std::wstring pathFileName(std::wstring_view path);

// The part before the last separator, or empty when there is none.
std::wstring pathParent(std::wstring_view path);

// b when a is empty; a when b is empty; a + b when a already ends with a separator; else a, the separator and
// b: "/" natively; on Windows "\\", or "/" when a is written with '/' alone, so a path keeps one style.
std::wstring pathJoin(std::wstring_view a, std::wstring_view b);

bool isPathSeparator(wchar_t c);

// The same split for narrow (UTF-8) names, such as paths written inside skin files.
std::string_view bareFileName(std::string_view path);

// Windows opens these names as devices whatever their extension ("con.png" is the console), at least before
// Windows 11: con, prn, aux, nul, conin$, conout$, com0-9, lpt0-9 (ASCII case ignored).
bool isWindowsDeviceName(std::string_view name);

// One file or folder name (UTF-8) that Windows keeps exactly as written: not empty, "." or "..", no control
// character and none of \ / : * ? " < > |, no trailing dot or space (Windows would drop it and let two names
// meet), not a device name.
bool isKeptFileName(std::string_view name);

} // namespace nv
